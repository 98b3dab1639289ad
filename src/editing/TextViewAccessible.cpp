#include "editing/TextViewAccessible.h"

#include "editing/TextBoundaries.h"
#include "editing/TextView.h"

#include <algorithm>

namespace Tessaline {

namespace {

QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    auto *const view = qobject_cast<TextView *>(object);
    return view ? new TextViewAccessible(*view) : nullptr;
}

} // namespace

TextViewAccessible::TextViewAccessible(TextView &view)
    : QAccessibleWidget(&view, QAccessible::EditableText), m_view(view)
{}

void TextViewAccessible::install()
{
    QAccessible::installFactory(makeInterface); // the same factory twice counts once
}

void *TextViewAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State TextViewAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.editable = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString TextViewAccessible::text(QAccessible::Text kind) const
{
    // The value is the text; whoever wants it in parts asks the text interface.
    if (kind == QAccessible::Value)
        return m_view.document().text().toString();
    return QAccessibleWidget::text(kind);
}

TextRange TextViewAccessible::clamped(int startOffset, int endOffset) const
{
    const qsizetype size = m_view.document().text().size();
    const qsizetype end = endOffset < 0 ? size : std::clamp<qsizetype>(endOffset, 0, size); // -1 is the end of the text
    const qsizetype start = std::clamp<qsizetype>(startOffset, 0, size);
    return {std::min(start, end), std::max(start, end) - std::min(start, end)};
}

void TextViewAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    const TextRange range = selectionIndex == 0 ? m_view.document().selection().range() : TextRange();
    *startOffset = static_cast<int>(range.location);
    *endOffset = static_cast<int>(range.end());
}

int TextViewAccessible::selectionCount() const
{
    return m_view.document().selection().isEmpty() ? 0 : 1;
}

void TextViewAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void TextViewAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex == 0)
        setCursorPosition(cursorPosition());
}

void TextViewAccessible::setSelection(int selectionIndex, int startOffset, int endOffset)
{
    if (selectionIndex != 0)
        return;
    const TextRange range = clamped(startOffset, endOffset);
    m_view.document().select({range.location, range.end()});
    m_view.ensureVisible(range);
}

int TextViewAccessible::cursorPosition() const
{
    return static_cast<int>(m_view.document().selection().caret);
}

void TextViewAccessible::setCursorPosition(int position)
{
    m_view.document().moveCaret(clamped(position, position).location, EditableText::AnchorMode::MoveAnchor);
    m_view.ensureCaretVisible();
}

QString TextViewAccessible::text(int startOffset, int endOffset) const
{
    const TextRange range = clamped(startOffset, endOffset);
    return m_view.document().text().sliced(range.location, range.length);
}

TextRange TextViewAccessible::unitAt(qsizetype offset, QAccessible::TextBoundaryType boundary) const
{
    const ChunkedText &text = m_view.document().text();
    switch (boundary) {
    case QAccessible::CharBoundary: {
        const qsizetype end = TextBoundaries::nextCharacter(text, offset);
        const qsizetype start = end > offset ? TextBoundaries::previousCharacter(text, end) : offset;
        return {start, end - start};
    }
    case QAccessible::WordBoundary:
        return TextBoundaries::wordAt(text, offset);
    case QAccessible::LineBoundary: {
        TextLayout &layout = m_view.textLayout();
        const qsizetype start = layout.rowStart(offset);
        const TextRange paragraph = TextBoundaries::paragraphAt(text, offset);
        const qsizetype rowEnd = layout.rowEnd(offset);
        const bool endsParagraph = rowEnd == TextBoundaries::paragraphContentAt(text, offset).end();
        const qsizetype end = endsParagraph ? paragraph.end() : TextBoundaries::nextCharacter(text, rowEnd);
        return {start, end - start};
    }
    case QAccessible::SentenceBoundary:
    case QAccessible::ParagraphBoundary:
        return TextBoundaries::paragraphAt(text, offset);
    case QAccessible::NoBoundary:
        break;
    }
    return {0, text.size()};
}

QString TextViewAccessible::textOf(const TextRange &range, int *startOffset, int *endOffset) const
{
    *startOffset = static_cast<int>(range.location);
    *endOffset = static_cast<int>(range.end());
    return m_view.document().text().sliced(range.location, range.length);
}

QString TextViewAccessible::textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                                         int *endOffset) const
{
    const qsizetype at = offset < 0 ? cursorPosition() : clamped(offset, offset).location;
    return textOf(unitAt(at, boundary), startOffset, endOffset);
}

QString TextViewAccessible::textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                                             int *endOffset) const
{
    const qsizetype at = offset < 0 ? cursorPosition() : clamped(offset, offset).location;
    const qsizetype start = unitAt(at, boundary).location;
    return textOf(start > 0 ? unitAt(start - 1, boundary) : TextRange(), startOffset, endOffset);
}

QString TextViewAccessible::textAfterOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                                            int *endOffset) const
{
    const qsizetype at = offset < 0 ? cursorPosition() : clamped(offset, offset).location;
    const qsizetype end = unitAt(at, boundary).end();
    const qsizetype size = m_view.document().text().size();
    return textOf(end < size ? unitAt(end, boundary) : TextRange{size, 0}, startOffset, endOffset);
}

int TextViewAccessible::characterCount() const
{
    return static_cast<int>(m_view.document().text().size());
}

QRect TextViewAccessible::characterRect(int offset) const
{
    const TextRange character = unitAt(clamped(offset, offset).location, QAccessible::CharBoundary);
    const QRect rect = m_view.rangeRect(character).toAlignedRect();
    return {m_view.mapToGlobal(rect.topLeft()), rect.size()};
}

int TextViewAccessible::offsetAtPoint(const QPoint &point) const
{
    const QPoint inViewport = m_view.viewport()->mapFromGlobal(point);
    return m_view.viewport()->rect().contains(inViewport) ? static_cast<int>(m_view.positionAt(inViewport)) : -1;
}

void TextViewAccessible::scrollToSubstring(int startIndex, int endIndex)
{
    m_view.ensureVisible(clamped(startIndex, endIndex));
}

QString TextViewAccessible::attributes(int, int *startOffset, int *endOffset) const
{
    *startOffset = 0;
    *endOffset = characterCount();
    return {}; // every character looks the same
}

void TextViewAccessible::deleteText(int startOffset, int endOffset)
{
    replaceText(startOffset, endOffset, {});
}

void TextViewAccessible::insertText(int offset, const QString &text)
{
    replaceText(offset, offset, text);
}

void TextViewAccessible::replaceText(int startOffset, int endOffset, const QString &text)
{
    m_view.document().replace(clamped(startOffset, endOffset), text, EditKind::Other);
}

TextViewAnnouncer::TextViewAnnouncer(TextView &view) : QObject(&view), m_view(view)
{
    const EditableText &document = view.document();
    connect(&document, &EditableText::willChange, this, [this](const TextChange &change) {
        m_removed =
            QAccessible::isActive() ? m_view.document().text().sliced(change.location, change.removed) : QString();
    });
    connect(&document, &EditableText::changed, this, &TextViewAnnouncer::announceChange);
    connect(&document, &EditableText::selectionChanged, this, &TextViewAnnouncer::announceSelection);
}

void TextViewAnnouncer::announceChange(const TextChange &change)
{
    if (!QAccessible::isActive())
        return;
    const int location = static_cast<int>(change.location);
    if (change.removed > 0) {
        QAccessibleTextRemoveEvent event(&m_view, location, m_removed);
        QAccessible::updateAccessibility(&event);
    }
    if (change.inserted > 0) {
        QAccessibleTextInsertEvent event(&m_view, location,
                                         m_view.document().text().sliced(change.location, change.inserted));
        QAccessible::updateAccessibility(&event);
    }
}

void TextViewAnnouncer::announceSelection()
{
    if (!QAccessible::isActive())
        return;
    const TextSelection selection = m_view.document().selection();
    const TextRange range = selection.range();
    if (!range.isEmpty() || m_hadSelection) {
        QAccessibleTextSelectionEvent event(&m_view, static_cast<int>(range.location), static_cast<int>(range.end()));
        event.setCursorPosition(static_cast<int>(selection.caret));
        QAccessible::updateAccessibility(&event);
    }
    m_hadSelection = !range.isEmpty();
    QAccessibleTextCursorEvent event(&m_view, static_cast<int>(selection.caret));
    QAccessible::updateAccessibility(&event);
}

} // namespace Tessaline
