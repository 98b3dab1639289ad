#include "editing/EditableText.h"

#include "editing/TextBoundaries.h"
#include "editing/TextDifference.h"

#include <algorithm>

namespace Tessaline {

namespace {

/// Where a position stands after a change; one inside the removed text goes to the change's start.
qsizetype movedBy(qsizetype position, const TextChange &change)
{
    if (position <= change.location)
        return position;
    if (position >= change.location + change.removed)
        return position + change.inserted - change.removed;
    return change.location;
}

/// The range with both halves of a surrogate pair that it cuts. Input methods count in units and may name any range.
TextRange withWholePairs(const ChunkedText &text, const TextRange &range)
{
    const auto cutsPair = [&text](qsizetype position) {
        return position > 0 && position < text.size() && text.at(position - 1).isHighSurrogate() &&
               text.at(position).isLowSurrogate();
    };
    const qsizetype start = cutsPair(range.location) ? range.location - 1 : range.location;
    const qsizetype end = cutsPair(range.end()) ? range.end() + 1 : range.end();
    return {start, end - start};
}

} // namespace

QString EditableText::selectedText() const
{
    const TextRange range = m_selection.range();
    return text().sliced(range.location, range.length);
}

qsizetype EditableText::clamped(qsizetype position) const
{
    position = std::clamp<qsizetype>(position, 0, text().size());
    return TextBoundaries::isCharacterBoundary(text(), position) ? position
                                                                 : TextBoundaries::previousCharacter(text(), position);
}

qsizetype EditableText::clampedBehind(qsizetype position) const
{
    position = std::clamp<qsizetype>(position, 0, text().size());
    return TextBoundaries::isCharacterBoundary(text(), position) ? position
                                                                 : TextBoundaries::nextCharacter(text(), position);
}

void EditableText::setSelection(const TextSelection &selection)
{
    if (selection == m_selection)
        return;
    m_selection = selection;
    Q_EMIT selectionChanged();
}

void EditableText::reset(AttributedDocument document)
{
    m_document = std::move(document);
    m_history.clear();
    const TextSelection old = m_selection;
    m_selection = {clamped(old.range().location), clamped(old.range().end())};
    Q_EMIT wasReset();
    if (m_selection != old)
        Q_EMIT selectionChanged();
}

void EditableText::replaceFromOutside(const ChunkedText &text)
{
    const TextChange change = differenceBetween(this->text(), text);
    if (change.removed == 0 && change.inserted == 0)
        return;
    const TextRange old = m_selection.range();
    m_history.endRun();
    const TextRange range{change.location, change.removed};
    const qsizetype start = std::min(old.location, text.size());
    apply({range.location,
           m_document.sliced(range),
           AttributedText(text.sliced(change.location, change.inserted)),
           m_selection,
           {start, std::min(old.end(), text.size())},
           EditKind::Other},
          Author::Program);
}

void EditableText::followEdit(const ChunkedText &text, const TextChange &change)
{
    followEdit({change.location, change.removed}, AttributedText(text.sliced(change.location, change.inserted)));
}

void EditableText::followEdit(const TextRange &range, const AttributedText &text)
{
    const AttributedText old = m_document.sliced(range);
    const TextSelection before = m_selection;
    // A change from elsewhere may reach far and touch little: what it leaves alone must not move. Back to front, so
    // that the places of the next ones hold.
    const QList<TextChange> changes = differencesByLine(old, text);
    if (changes.isEmpty())
        return;
    qsizetype growth = text.size() - old.size();
    for (auto change = changes.crbegin(); change != changes.crend(); ++change) {
        growth -= change->inserted - change->removed;
        const AttributedText inserted = text.sliced({change->location + growth, change->inserted});
        const TextChange placed{range.location + change->location, change->removed, change->inserted};
        exchange({placed.location, placed.removed}, inserted,
                 {movedBy(m_selection.anchor, placed), movedBy(m_selection.caret, placed)}, Author::Program);
    }
    m_history.add(
        {range.location, old, text, before, m_selection, range.isEmpty() ? EditKind::Typing : EditKind::Other});
}

void EditableText::moveCaret(qsizetype position, AnchorMode mode)
{
    const qsizetype caret = clamped(position);
    select({mode == AnchorMode::KeepAnchor ? m_selection.anchor : caret, caret});
}

void EditableText::select(const TextSelection &selection)
{
    m_history.endRun();
    setSelection({clamped(selection.anchor), clamped(selection.caret)});
}

void EditableText::selectAll()
{
    select({0, text().size()});
}

/// The one place where the text changes together with the history.
void EditableText::apply(UndoStep step, Author author)
{
    const TextRange range{step.location, step.removed.size()};
    const AttributedText inserted = step.inserted;
    const TextSelection after = step.after;
    m_history.add(std::move(step));
    exchange(range, inserted, after, author);
}

void EditableText::exchange(const TextRange &range, const AttributedText &inserted, const TextSelection &selection,
                            Author author)
{
    Q_EMIT willChange({range.location, range.length, inserted.size()});
    const TextChange change = m_document.replace(range, inserted);
    const qsizetype size = m_document.size();
    m_selection = {std::min(m_selection.anchor, size), std::min(m_selection.caret, size)};
    Q_EMIT changed(change);
    // Text that joins what follows to one character, as a letter in front of a mark does, takes the caret behind it.
    m_selection = {clampedBehind(selection.anchor), clampedBehind(selection.caret)};
    Q_EMIT selectionChanged();
    if (author == Author::Person)
        Q_EMIT edited(change);
}

void EditableText::replace(const TextRange &range, QStringView text, EditKind kind)
{
    if (!range.isEmpty() || !text.isEmpty())
        replaceByPerson(range, text, text.size(), kind);
}

void EditableText::replace(const TextRange &range, QStringView text, qsizetype caretOffset)
{
    replaceByPerson(range, text, caretOffset, EditKind::Other);
}

void EditableText::replace(const TextRange &range, const AttributedText &text, const TextSelection &after)
{
    const TextRange whole = withWholePairs(this->text(), range);
    apply({whole.location, m_document.sliced(whole), text, m_selection, after, EditKind::Other}, Author::Person);
}

void EditableText::replaceByPerson(const TextRange &range, QStringView text, qsizetype caretOffset, EditKind kind)
{
    const TextRange whole = withWholePairs(this->text(), range);
    const qsizetype caret = whole.location + caretOffset;
    apply({whole.location,
           m_document.sliced(whole),
           AttributedText(text, m_typingAttributes),
           m_selection,
           {caret, caret},
           kind},
          Author::Person);
}

void EditableText::insertLineEnd()
{
    const TextRange range = m_selection.range();
    replace(range, TextBoundaries::lineEndFor(text(), range.location), EditKind::Typing);
}

void EditableText::deleteRange(const TextRange &range, EditKind kind)
{
    if (!m_selection.isEmpty())
        replace(m_selection.range(), {}, EditKind::Other);
    else if (!range.isEmpty())
        replace(range, {}, kind);
}

void EditableText::deleteBackward()
{
    const qsizetype start = TextBoundaries::previousCharacter(text(), m_selection.caret);
    deleteRange({start, m_selection.caret - start}, EditKind::DeletingBackward);
}

void EditableText::deleteForward()
{
    const qsizetype end = TextBoundaries::nextCharacter(text(), m_selection.caret);
    deleteRange({m_selection.caret, end - m_selection.caret}, EditKind::DeletingForward);
}

void EditableText::deleteWordBackward()
{
    const qsizetype start = TextBoundaries::previousWordStart(text(), m_selection.caret);
    deleteRange({start, m_selection.caret - start}, EditKind::Other);
}

void EditableText::deleteWordForward()
{
    const qsizetype end = TextBoundaries::nextWordEnd(text(), m_selection.caret);
    deleteRange({m_selection.caret, end - m_selection.caret}, EditKind::Other);
}

void EditableText::moveSelectionTo(qsizetype position)
{
    const TextRange from = m_selection.range();
    if (from.isEmpty() || (position >= from.location && position <= from.end()))
        return;
    // One exchange over the stretch from the nearer end of the one to the farther end of the other.
    const bool isForward = position > from.end();
    const TextRange span =
        isForward ? TextRange{from.location, position - from.location} : TextRange{position, from.end() - position};
    const AttributedText moved = m_document.sliced(from);
    const AttributedText between = m_document.sliced(isForward ? TextRange{from.end(), position - from.end()}
                                                               : TextRange{position, from.location - position});
    AttributedText exchanged = isForward ? between : moved;
    exchanged.append(isForward ? moved : between);
    const qsizetype start = isForward ? position - from.length : position;
    replace(span, exchanged, TextSelection{start, start + from.length});
}

void EditableText::replaceAll(const QList<TextRange> &ranges, const QString &replacement)
{
    if (ranges.isEmpty())
        return;
    const TextRange span{ranges.constFirst().location, ranges.constLast().end() - ranges.constFirst().location};
    // Every look into the document costs a way to its place, so what is replaced is taken out once and then walked.
    const AttributedText old = m_document.sliced(span);
    const QStringView oldText = old.text();
    AttributedText fresh;
    fresh.reserve(old.size() + ranges.size() * replacement.size());
    auto run = old.runs().begin(); // the one that holds `position`
    qsizetype position = 0;
    const auto moveTo = [&](qsizetype next) {
        position = next;
        while (run != old.runs().end() && run->range.end() <= position)
            ++run;
    };
    for (const TextRange &range : ranges) {
        const qsizetype start = range.location - span.location;
        while (position < start) {
            const qsizetype stop = std::min(start, run->range.end());
            fresh.append(oldText.sliced(position, stop - position), run->attributes);
            moveTo(stop);
        }
        // What is put in joins the kind of what it replaces, but never a marker or an image.
        fresh.append(replacement, range.isEmpty() ? m_typingAttributes : Tessaline::typingAttributes(run->attributes));
        moveTo(start + range.length);
    }
    const qsizetype caret = span.location + fresh.size();
    replace(span, fresh, TextSelection{caret, caret});
}

void EditableText::undo()
{
    if (const std::optional<UndoStep> step = m_history.takeUndo())
        exchange({step->location, step->inserted.size()}, step->removed, step->before, Author::Person);
}

void EditableText::redo()
{
    if (const std::optional<UndoStep> step = m_history.takeRedo())
        exchange({step->location, step->removed.size()}, step->inserted, step->after, Author::Person);
}

} // namespace Tessaline
