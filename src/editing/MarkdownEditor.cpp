#include "editing/MarkdownEditor.h"

#include "editing/SourceFormat.h"
#include "editing/TextView.h"
#include "foundation/AppEvents.h"

namespace Tessaline {

MarkdownEditor::MarkdownEditor(const Theme &theme, EventCenter &events, QWidget *parent)
    : TextViewEditor(theme, events, parent), m_look(editable().text()), m_delegate(editable())
{
    makeView(m_look, m_delegate, tr("Markdown Source"));
    connect(&editable(), &EditableText::edited, this, [this](const TextChange &change) {
        if (!m_isSynchronizing)
            Q_EMIT edited(editable().text(), change);
    });
}

MarkdownEditor::~MarkdownEditor()
{
    deleteView();
}

void MarkdownEditor::setDocument(const std::optional<FileURL> &url, const ChunkedText &text)
{
    const bool isSameDocument = url == m_lastOpenedURL;
    if (isSameDocument && editable().text() == text)
        return;
    m_isSynchronizing = true;
    if (isSameDocument && url)
        editable().replaceFromOutside(text);
    else
        editable().reset(text);
    m_isSynchronizing = false;
    m_lastOpenedURL = url;
}

void MarkdownEditor::followEdit(const ChunkedText &text, const TextChange &change)
{
    m_isSynchronizing = true;
    editable().followEdit(text, change);
    m_isSynchronizing = false;
}

void MarkdownEditor::setFontSize(double points)
{
    if (m_lastFontSize == points)
        return;
    m_lastFontSize = points;
    m_look.setFontSize(points);
    view().lookChanged();
}

QVariantMap MarkdownEditor::describeSelection(const TextRange &) const
{
    const QString selected = editable().selectedText();
    return {{AppEvents::kText, selected}, {AppEvents::kSourceText, selected}, {AppEvents::kIsRendered, false}};
}

void MarkdownEditor::applyFormat(const QString &type)
{
    const std::optional<SourceFormat> format = sourceFormat(type, editable().selectedText());
    if (!format)
        return;
    editable().replace(editable().selection().range(), format->replacement, format->caretOffset);
    view().ensureCaretVisible();
}

} // namespace Tessaline
