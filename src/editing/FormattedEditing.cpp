#include "editing/FormattedEditing.h"

#include "editing/FormatCommands.h"
#include "editing/InlineWriting.h"
#include "editing/TaskMarkers.h"
#include "editing/TextBoundaries.h"
#include "editing/TextDifference.h"

#include <algorithm>

namespace Tessaline {

FormattedEditing::FormattedEditing(EditableText &text, QObject *parent) : QObject(parent), m_text(text)
{
    connect(&m_text, &EditableText::selectionChanged, this, &FormattedEditing::refreshTypingAttributes);
    connect(&m_text, &EditableText::changed, this, &FormattedEditing::refreshTypingAttributes);
    connect(&m_text, &EditableText::wasReset, this, &FormattedEditing::refreshTypingAttributes);
}

/// The character at the caret decides, not the one before it; at the end of the text the last one.
void FormattedEditing::refreshTypingAttributes()
{
    const AttributedDocument &document = m_text.document();
    if (document.size() == 0) {
        m_text.setTypingAttributes({});
        return;
    }
    const qsizetype index = std::min(document.size() - 1, m_text.selection().range().location);
    m_text.setTypingAttributes(typingAttributes(document.attributesAt(index)));
}

bool FormattedEditing::continueList()
{
    if (!m_text.selection().isEmpty())
        return false;
    // The character before the caret is all that counts.
    const qsizetype caret = m_text.selection().caret;
    const qsizetype start = std::max<qsizetype>(caret - 1, 0);
    const qsizetype end = std::min(caret + 1, m_text.document().size());
    const std::optional<AttributedText> continuation =
        listContinuation(m_text.document().sliced({start, end - start}), caret - start);
    if (!continuation)
        return false;
    const qsizetype behind = caret + continuation->size();
    m_text.replace({caret, 0}, *continuation, TextSelection{behind, behind});
    return true;
}

bool FormattedEditing::applyFormat(const QString &type)
{
    // The selected paragraphs and the one unit before them decide.
    const TextRange selection = m_text.selection().range();
    const TextRange first = TextBoundaries::paragraphAt(m_text.text(), selection.location);
    const TextRange last = TextBoundaries::paragraphAt(m_text.text(), selection.end());
    const qsizetype start = std::max<qsizetype>(first.location - 1, 0);
    const TextRange range{start, last.end() - start};
    const AttributedText old = m_text.document().sliced(range);
    const std::optional<FormattedText> formatted =
        Tessaline::applyFormat({old, {selection.location - start, selection.length}}, type);
    if (!formatted)
        return false;
    const qsizetype location = start + formatted->selection.location;
    exchange(range, old, formatted->text, {location, location + formatted->selection.length});
    return true;
}

bool FormattedEditing::toggleTask(qsizetype index)
{
    if (index < 0 || index >= m_text.document().size())
        return false;
    const TextRange paragraph = TextBoundaries::paragraphAt(m_text.text(), index);
    const AttributedText old = m_text.document().sliced(paragraph);
    AttributedText toggled = old;
    if (!toggleTaskMarker(index - paragraph.location, toggled))
        return false;
    exchange(paragraph, old, toggled, m_text.selection());
    return true;
}

/// One step of undo for what differs; none for nothing.
void FormattedEditing::exchange(const TextRange &range, const AttributedText &old, const AttributedText &fresh,
                                const TextSelection &selection)
{
    const TextChange change = differenceBetween(old, fresh);
    if (change.removed == 0 && change.inserted == 0) {
        m_text.select(selection);
        return;
    }
    m_text.replace({range.location + change.location, change.removed}, fresh.sliced({change.location, change.inserted}),
                   selection);
}

bool FormattedEditing::isContent(const TextRange &range) const
{
    const AttributedText text = m_text.document().sliced(range);
    return std::none_of(text.runs().begin(), text.runs().end(), [](const AttributeRun &run) {
        return run.attributes.generatedMarker || run.attributes.imageSource.isPresent();
    });
}

QString FormattedEditing::plainText(const TextRange &range) const
{
    return Tessaline::plainText(m_text.document().sliced(range), {0, range.length});
}

QString FormattedEditing::sourceText(const TextRange &range) const
{
    return serializeInline(m_text.document().sliced(range), {0, range.length});
}

} // namespace Tessaline
