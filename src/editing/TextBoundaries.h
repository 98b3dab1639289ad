#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

/// Where characters, words and paragraphs begin and end in a text. A character is an extended grapheme cluster, and CR
/// LF is one. Positions count UTF-16 units. The cost depends on the surroundings of the position, not on the size of
/// the text.
namespace Tessaline::TextBoundaries {

/// The nearest boundary behind or before the position; the ends of the text stay where they are.
qsizetype nextCharacter(const ChunkedText &text, qsizetype position);
qsizetype previousCharacter(const ChunkedText &text, qsizetype position);
bool isCharacterBoundary(const ChunkedText &text, qsizetype position);

/// The end of the word at or behind the position, and the start of the word at or before it. A paragraph's end is
/// passed on its own.
qsizetype nextWordEnd(const ChunkedText &text, qsizetype position);
qsizetype nextWordStart(const ChunkedText &text, qsizetype position);
qsizetype previousWordStart(const ChunkedText &text, qsizetype position);

/// What a double click selects: the word, the run of spaces or the single sign that the position touches.
TextRange wordAt(const ChunkedText &text, qsizetype position);

/// The paragraph that holds the position, with its line end and without.
TextRange paragraphAt(const ChunkedText &text, qsizetype position);
TextRange paragraphContentAt(const ChunkedText &text, qsizetype position);

/// The line end that a new line takes after the position: the one of its own paragraph, or else of the one before; LF
/// in a text of one paragraph.
QString lineEndFor(const ChunkedText &text, qsizetype position);

} // namespace Tessaline::TextBoundaries
