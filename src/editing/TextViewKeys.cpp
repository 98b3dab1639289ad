#include "editing/TextViewKeys.h"

#include "editing/TextBoundaries.h"
#include "editing/TextView.h"
#include "editing/TextViewDelegate.h"

#include <QtGui/QKeyEvent>

#include <algorithm>

namespace Tessaline {

namespace {

using AnchorMode = EditableText::AnchorMode;

/// Whether a key types its text, as opposed to being a command.
bool isTyping(const QKeyEvent &event)
{
    const QString text = event.text();
    if (text.isEmpty())
        return false;
    const QChar first = text.at(0);
    if (first.category() == QChar::Other_Format)
        return true; // joiners and direction marks are typed with Ctrl on some layouts
    // One of these alone makes a command, on the number pad too. Ctrl and Alt together are the AltGr of some keyboards.
    const auto held = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (held == Qt::ControlModifier || held == Qt::MetaModifier)
        return false;
#ifndef Q_OS_MACOS // where Alt types
    if (held == Qt::AltModifier)
        return false;
#endif
    return first.isPrint() || first.category() == QChar::Other_PrivateUse || first.isHighSurrogate() || first == u'\t';
}

} // namespace

bool TextViewKeys::isOurs(const QKeyEvent &event)
{
    const bool isPlain = !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    const bool isFunctionKey = event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F35;
    return isTyping(event) || (isPlain && !isFunctionKey && event.key() != Qt::Key_Escape);
}

bool TextViewKeys::handle(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isTyping(*event) || isReturn)
        return move(event) || edit(event);
    m_desiredFor = -1;
    m_view.document().insert(event->text(), EditKind::Typing);
    m_view.ensureCaretVisible();
    return true;
}

bool TextViewKeys::move(QKeyEvent *event)
{
    using Key = QKeySequence::StandardKey;
    const EditableText &document = m_view.document();
    const ChunkedText &text = document.text();
    const qsizetype caret = document.selection().caret;
    TextLayout &layout = m_view.textLayout();
    // In text that runs from right to left the next character is on the left.
    const bool isRightToLeft = layout.blockAt(caret).layout->textOption().textDirection() == Qt::RightToLeft;

    const auto run = [event](Key moves, Key selects, const auto &go) {
        const bool isMove = event->matches(moves);
        if (isMove || event->matches(selects))
            go(isMove ? AnchorMode::MoveAnchor : AnchorMode::KeepAnchor);
        return isMove || event->matches(selects);
    };
    const auto step = [this](bool isForward, bool byWord) {
        return [this, isForward, byWord](AnchorMode mode) { moveTo(stepTarget(isForward, byWord, mode), mode); };
    };
    const auto to = [this](qsizetype position) {
        return [this, position](AnchorMode mode) { moveTo(position, mode); };
    };
    const auto rows = [this](int count) { return [this, count](AnchorMode mode) { moveByRows(count, mode); }; };
    const auto page = [this](int direction) {
        return [this, direction](AnchorMode mode) { moveByPage(direction, mode); };
    };
    return run(Key::MoveToNextChar, Key::SelectNextChar, step(!isRightToLeft, false)) ||
           run(Key::MoveToPreviousChar, Key::SelectPreviousChar, step(isRightToLeft, false)) ||
           run(Key::MoveToNextLine, Key::SelectNextLine, rows(1)) ||
           run(Key::MoveToPreviousLine, Key::SelectPreviousLine, rows(-1)) ||
           run(Key::MoveToNextWord, Key::SelectNextWord, step(!isRightToLeft, true)) ||
           run(Key::MoveToPreviousWord, Key::SelectPreviousWord, step(isRightToLeft, true)) ||
           run(Key::MoveToStartOfLine, Key::SelectStartOfLine,
               [&](AnchorMode mode) { moveTo(layout.rowStart(caret), mode); }) ||
           run(Key::MoveToEndOfLine, Key::SelectEndOfLine,
               [&](AnchorMode mode) { moveTo(layout.rowEnd(caret), mode); }) ||
           run(Key::MoveToStartOfBlock, Key::SelectStartOfBlock,
               [&](AnchorMode mode) { moveTo(paragraphStartTarget(), mode); }) ||
           run(Key::MoveToEndOfBlock, Key::SelectEndOfBlock,
               [&](AnchorMode mode) { moveTo(TextBoundaries::paragraphContentAt(text, caret).end(), mode); }) ||
           run(Key::MoveToStartOfDocument, Key::SelectStartOfDocument, to(0)) ||
           run(Key::MoveToEndOfDocument, Key::SelectEndOfDocument, to(text.size())) ||
           run(Key::MoveToNextPage, Key::SelectNextPage, page(1)) ||
           run(Key::MoveToPreviousPage, Key::SelectPreviousPage, page(-1));
}

qsizetype TextViewKeys::stepTarget(bool isForward, bool byWord, AnchorMode mode) const
{
    const EditableText &document = m_view.document();
    const ChunkedText &text = document.text();
    const qsizetype caret = document.selection().caret;
    const TextRange selection = document.selection().range();
    if (byWord)
        return isForward ? TextBoundaries::nextWordStart(text, caret) : TextBoundaries::previousWordStart(text, caret);
    if (mode == AnchorMode::MoveAnchor && !selection.isEmpty())
        return isForward ? selection.end() : selection.location; // a plain arrow leaves a selection at its end
    return isForward ? TextBoundaries::nextCharacter(text, caret) : TextBoundaries::previousCharacter(text, caret);
}

/// The start of the paragraph; from there, the start of the one before.
qsizetype TextViewKeys::paragraphStartTarget() const
{
    const ChunkedText &text = m_view.document().text();
    const qsizetype caret = m_view.document().selection().caret;
    const qsizetype start = TextBoundaries::paragraphAt(text, caret).location;
    return start < caret || caret == 0 ? start : TextBoundaries::paragraphAt(text, caret - 1).location;
}

void TextViewKeys::moveTo(qsizetype position, AnchorMode mode)
{
    m_desiredFor = -1;
    m_view.document().moveCaret(position, mode);
    m_view.ensureCaretVisible();
}

void TextViewKeys::moveByRows(int rows, AnchorMode mode)
{
    TextLayout &layout = m_view.textLayout();
    const qsizetype caret = m_view.document().selection().caret;
    if (m_desiredFor != caret)
        m_desiredX = layout.caretRect(caret).x();
    moveTo(layout.positionRowsAway(caret, rows, m_desiredX), mode);
    m_desiredFor = m_view.document().selection().caret;
}

void TextViewKeys::moveByPage(int direction, AnchorMode mode)
{
    // One row of the old page stays in view, and the caret keeps its place on the screen.
    const int rowHeight = m_view.textLayout().rowHeight();
    const int rows = std::max(1, m_view.viewport()->height() / rowHeight - 1);
    m_view.scrollBy(direction * rows * rowHeight);
    moveByRows(direction * rows, mode);
}

bool TextViewKeys::edit(QKeyEvent *event)
{
    using Key = QKeySequence::StandardKey;
    EditableText &document = m_view.document();
    const auto isKey = [event](Key key) { return event->matches(key); };
    const bool isPlain = !(event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier));
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && isPlain) {
        if (!m_view.delegate().handleReturn())
            document.insertLineEnd();
    } else if (event->key() == Qt::Key_Backspace && isPlain)
        document.deleteBackward();
    else if (isKey(Key::Cut)) // before Delete: Shift+Delete is a key of both
        m_view.cut();
    else if (isKey(Key::Delete))
        document.deleteForward();
    else if (isKey(Key::DeleteStartOfWord))
        document.deleteWordBackward();
    else if (isKey(Key::DeleteEndOfWord))
        document.deleteWordForward();
    else if (isKey(Key::Undo))
        m_view.undo();
    else if (isKey(Key::Redo))
        m_view.redo();
    else if (isKey(Key::Paste))
        m_view.paste();
    else if (isKey(Key::Copy) || isKey(Key::SelectAll)) {
        isKey(Key::Copy) ? m_view.copy() : m_view.selectAll();
        return true; // what is in view stays in view
    } else
        return false;
    m_desiredFor = -1;
    m_view.ensureCaretVisible();
    return true;
}

} // namespace Tessaline
