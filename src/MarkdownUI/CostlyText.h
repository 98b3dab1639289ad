#pragma once

#include "MarkdownUI/MarkdownParser.h"

namespace MarkdownUI {

/// Whether the parser below would take much longer over this text than over an ordinary one of its length, or all the
/// memory there is. For most of what can be written its time grows with the length; for a few shapes that nobody writes
/// in earnest, and a hostile or broken answer may bring, it grows with the square: rows of dashes under a paragraph
/// without end, a row of ten thousand cells, short rows under a header of a thousand, many lines or many signs in a
/// thousand quotes or lists, a web address of brackets, declarations that are opened and never closed, a long
/// definition that is used without end. 100 kB of them can hold the window for half a minute.
///
/// An estimate from one walk over the text, about 10 ns a character. True from about 100 ms more than the text's length
/// explains; a text that people or models write for each other stays below that by far.
bool isCostlyToParse(QStringView markdown);

/// The text as paragraphs without any construct, for a text that is costly to parse: a paragraph ends at a blank line,
/// and a line's end within it is a soft break. Nothing but white space at the ends of lines is left out.
QList<PlacedBlock> plainParagraphs(QStringView markdown);

} // namespace MarkdownUI
