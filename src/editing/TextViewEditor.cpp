#include "editing/TextViewEditor.h"

#include "editing/TextView.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"

#include <QtGui/QShortcut>
#include <QtWidgets/QVBoxLayout>

#include <utility>

namespace Tessaline {

TextViewEditor::TextViewEditor(const Theme &theme, EventCenter &events, QWidget *parent)
    : DocumentEditor(parent), m_theme(theme), m_events(events)
{
    connect(&m_text, &EditableText::changed, this, &DocumentEditor::shownTextChanged);
    connect(&m_text, &EditableText::wasReset, this, &DocumentEditor::shownTextChanged);
    connect(&m_text, &EditableText::selectionChanged, this, &TextViewEditor::postSelection);
    connect(&m_text, &EditableText::selectionChanged, this, &DocumentEditor::shownSelectionChanged);

    m_events.observe(AppEvents::kClearEditorTextSelection, this, [this](const QVariantMap &) {
        const TextRange selection = m_text.selection().range();
        if (!selection.isEmpty())
            m_text.select({selection.location, selection.location});
    });
    m_events.observe(AppEvents::kInsertMarkdownFormat, this, [this](const QVariantMap &userInfo) {
        const QVariant type = userInfo.value(AppEvents::kType);
        // While another window is active, the widget that the keys would go to counts.
        if (type.typeId() == QMetaType::QString && m_view->window()->focusWidget() == m_view)
            applyFormat(type.toString());
    });
}

void TextViewEditor::makeView(const TextLook &look, TextViewDelegate &delegate, const QString &accessibleName)
{
    m_view = new TextView(m_text, look, delegate, m_theme, this);
    m_view->setAccessibleName(accessibleName);
    m_view->viewport()->setMouseTracking(true); // the pointer's shape depends on what it is over
    setFocusProxy(m_view);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    addFormatKeys();
    connect(m_view, &TextView::scrolled, this, [this] { m_events.post(AppEvents::kEditorTextSelectionChanged); });
    connect(m_view, &TextView::zoomRequested, this,
            [this](int steps) { m_events.post(steps > 0 ? AppEvents::kZoomInFont : AppEvents::kZoomOutFont); });
}

void TextViewEditor::deleteView()
{
    delete m_view;
    m_view = nullptr;
}

/// The keys of the commands that writers use most.
void TextViewEditor::addFormatKeys()
{
    const std::pair<QKeySequence, QString> keys[] = {{Qt::CTRL | Qt::Key_B, QStringLiteral("bold")},
                                                     {Qt::CTRL | Qt::Key_I, QStringLiteral("italic")},
                                                     {Qt::CTRL | Qt::Key_K, QStringLiteral("link")}};
    for (const auto &[key, type] : keys) {
        auto *const shortcut = new QShortcut(key, m_view, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, type = type] {
            m_events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, type}});
        });
    }
}

ChunkedText TextViewEditor::shownText() const
{
    return m_text.text();
}

TextRange TextViewEditor::selection() const
{
    return m_text.selection().range();
}

void TextViewEditor::select(const TextRange &range)
{
    m_text.select({range.location, range.end()});
    m_view->ensureVisible(range);
}

void TextViewEditor::replaceRanges(const QList<TextRange> &ranges, const QString &replacement)
{
    m_text.replaceAll(ranges, replacement);
    m_view->ensureCaretVisible();
}

void TextViewEditor::setHighlights(const QList<TextRange> &ranges)
{
    m_view->setHighlights(ranges);
}

QWidget *TextViewEditor::textView()
{
    return m_view;
}

void TextViewEditor::postSelection()
{
    const TextRange selection = m_text.selection().range();
    if (selection.isEmpty() || !m_view) {
        m_events.post(AppEvents::kEditorTextSelectionChanged);
        return;
    }
    QVariantMap userInfo = describeSelection(selection);
    userInfo.insert(AppEvents::kRect, m_view->rangeRect(selection));
    m_events.post(AppEvents::kEditorTextSelectionChanged, userInfo);
}

} // namespace Tessaline
