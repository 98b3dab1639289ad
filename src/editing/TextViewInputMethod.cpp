#include "editing/TextViewInputMethod.h"

#include "editing/TextView.h"

#include <QtGui/QInputMethodEvent>

#include <algorithm>

namespace Tessaline {

namespace {

/// The stretch of a paragraph around a position; what an input method needs to see of a long one.
TextRange surroundings(const ChunkedText &text, qsizetype position)
{
    constexpr qsizetype kMost = 1024; // units on each side
    const auto isLineEnd = [](QChar unit) {
        return unit == u'\n' || unit == u'\r' || unit == QChar(QChar::ParagraphSeparator);
    };
    const qsizetype start = std::max<qsizetype>(position - kMost, 0);
    const QString before = text.sliced(start, position - start);
    const QString after = text.sliced(position, std::min(kMost, text.size() - position));
    const auto lastEnd = std::find_if(before.crbegin(), before.crend(), isLineEnd);
    const auto firstEnd = std::find_if(after.cbegin(), after.cend(), isLineEnd);
    const qsizetype lengthBefore = lastEnd - before.crbegin();
    return {position - lengthBefore, lengthBefore + (firstEnd - after.cbegin())};
}

} // namespace

void TextViewInputMethod::handle(QInputMethodEvent *event)
{
    m_view.textLayout().setPreedit({});
    if (!event->commitString().isEmpty() || event->replacementLength() > 0)
        commit(*event);
    if (!event->preeditString().isEmpty())
        compose(*event);
}

void TextViewInputMethod::commit(const QInputMethodEvent &event)
{
    EditableText &document = m_view.document();
    TextRange range = document.selection().range();
    if (event.replacementLength() > 0) {
        const qsizetype size = document.text().size();
        const qsizetype start = std::clamp<qsizetype>(document.selection().caret + event.replacementStart(), 0, size);
        range = {start, std::min<qsizetype>(event.replacementLength(), size - start)};
    }
    document.replace(range, event.commitString(), EditKind::Typing);
}

void TextViewInputMethod::compose(const QInputMethodEvent &event)
{
    m_view.deleteSelection(); // what is being composed takes its place
    TextLayout::Preedit preedit;
    preedit.position = m_view.document().selection().caret;
    preedit.text = event.preeditString();
    preedit.caret = static_cast<int>(preedit.text.size());
    for (const QInputMethodEvent::Attribute &attribute : event.attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor)
            preedit.caret = std::clamp(attribute.start, 0, static_cast<int>(preedit.text.size()));
        if (attribute.type != QInputMethodEvent::TextFormat)
            continue;
        const QTextCharFormat format = attribute.value.value<QTextFormat>().toCharFormat();
        if (format.isValid())
            preedit.formats.append({attribute.start, attribute.length, format});
    }
    m_view.textLayout().setPreedit(preedit);
}

QVariant TextViewInputMethod::answerAboutSurroundings(Qt::InputMethodQuery query) const
{
    const ChunkedText &text = m_view.document().text();
    const TextSelection selection = m_view.document().selection();
    const TextRange range = surroundings(text, selection.caret);
    const qsizetype before = selection.caret - range.location;
    switch (query) {
    case Qt::ImSurroundingText:
        return text.sliced(range.location, range.length);
    case Qt::ImTextBeforeCursor:
        return text.sliced(range.location, before);
    case Qt::ImTextAfterCursor:
        return text.sliced(selection.caret, range.length - before);
    case Qt::ImCursorPosition:
        return static_cast<int>(before);
    case Qt::ImAnchorPosition:
        return static_cast<int>(std::clamp(selection.anchor, range.location, range.end()) - range.location);
    default:
        return {};
    }
}

QVariant TextViewInputMethod::answer(Qt::InputMethodQuery query) const
{
    const EditableText &document = m_view.document();
    switch (query) {
    case Qt::ImEnabled:
        return true;
    case Qt::ImFont:
        return m_view.textLayout().look().font();
    case Qt::ImCursorRectangle:
        return m_view.caretRectInViewport(document.selection().caret).translated(m_view.viewport()->pos());
    case Qt::ImCurrentSelection:
        return document.selectedText();
    case Qt::ImAbsolutePosition:
        return static_cast<int>(document.selection().caret);
    default:
        return answerAboutSurroundings(query);
    }
}

} // namespace Tessaline
