#include "documents/EditorHost.h"

#include "editing/DocumentEditor.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QSplitter>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString identitySuffix(ViewMode mode, EditorKind kind)
{
    switch (mode) {
    case ViewMode::Editor:
        return u"-editor"_s;
    case ViewMode::RawMarkdown:
        return u"-raw-markdown-editor"_s;
    case ViewMode::Split:
        return kind == EditorKind::Source ? u"-split-markdown-editor"_s : u"-split-formatted-editor"_s;
    case ViewMode::PlainText:
        return u"-plain-text-editor"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

QString EditorHost::identity(const FileURL &url, ViewMode mode, EditorKind kind)
{
    return url.path() + identitySuffix(mode, kind);
}

EditorHost::EditorHost(const FileURL &url, ViewMode mode, const EditorAreaViewParts &parts, QWidget *parent)
    : QWidget(parent), m_url(url), m_mode(mode), m_parts(parts)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    switch (mode) {
    case ViewMode::Editor:
        layout->addWidget(makePane(EditorKind::Formatted, this));
        break;
    case ViewMode::RawMarkdown:
    case ViewMode::PlainText:
        layout->addWidget(makePane(EditorKind::Source, this));
        break;
    case ViewMode::Split: {
        auto *splitter = new QSplitter(Qt::Horizontal, this);
        splitter->setChildrenCollapsible(false);
        splitter->setHandleWidth(1);
        for (const EditorKind kind : {EditorKind::Source, EditorKind::Formatted}) {
            DocumentEditor *pane = makePane(kind, splitter);
            pane->setMinimumWidth(kMinimumPaneWidth);
            splitter->addWidget(pane);
        }
        splitter->setSizes({1, 1}); // shared out evenly
        layout->addWidget(splitter);
        break;
    }
    }
    m_current = m_editors.constFirst();

    connect(&parts.area, &EditorArea::textEdited, this,
            [this](const FileURL &edited, const TextChange &change, const QObject *origin) {
                if (edited != m_url)
                    return;
                for (DocumentEditor *editor : std::as_const(m_editors))
                    if (editor != origin)
                        editor->followEdit(m_parts.area.text(m_url), change);
            });
    connect(&parts.area, &EditorArea::textReplaced, this, [this](const FileURL &replaced) {
        if (replaced == m_url)
            for (DocumentEditor *editor : std::as_const(m_editors))
                editor->setDocument(m_url, m_parts.area.text(m_url));
    });
    connect(&parts.preferences, &AppPreferences::editorFontSizeChanged, this, [this] {
        for (DocumentEditor *editor : std::as_const(m_editors))
            editor->setFontSize(m_parts.preferences.editorFontSize());
    });
    if (m_editors.size() > 1)
        m_focusConnection =
            connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { noteFocus(now); });
}

EditorHost::~EditorHost()
{
    disconnect(m_focusConnection); // the focus leaves the editors when QWidget deletes them, after the members here
}

DocumentEditor *EditorHost::makePane(EditorKind kind, QWidget *parent)
{
    DocumentEditor *editor = m_parts.makeEditor(kind, parent);
    m_editors.append(editor);
    editor->setObjectName(identity(m_url, m_mode, kind));
    editor->setFontSize(m_parts.preferences.editorFontSize());
    editor->setDocument(m_url, m_parts.area.text(m_url));
    connect(editor, &DocumentEditor::edited, this, [this, editor](const ChunkedText &text, const TextChange &change) {
        m_parts.area.setText(m_url, text, change, editor);
    });
    return editor;
}

void EditorHost::noteFocus(QWidget *now)
{
    if (!now)
        return;
    for (DocumentEditor *editor : std::as_const(m_editors)) {
        if (editor != m_current && (editor == now || editor->isAncestorOf(now))) {
            m_current = editor;
            Q_EMIT currentChanged();
            return;
        }
    }
}

} // namespace Tessaline
