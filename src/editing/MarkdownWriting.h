#pragma once

#include "editing/AttributedText.h"

namespace Tessaline {

/// What one paragraph brings into the Markdown, without its neighbours.
struct ParagraphRecord {
    SharedText tag;  // its first character decides; "paragraph" if that has none
    QString content; // of a line of code its characters, of everything else its inline Markdown
    friend bool operator==(const ParagraphRecord &, const ParagraphRecord &) = default;
};

/// The record of a paragraph: a range with its line break, never empty. An empty paragraph is a line break alone; the
/// empty line behind a last line break is no paragraph and has no record.
ParagraphRecord paragraphRecord(const AttributedText &text, TextRange paragraph);

/// The Markdown of a text. It has no line break at its end, and reading it again gives the same text, but for what this
/// dialect cannot say: text that looks like the sign of a block, a pipe in a cell, a backtick in code and the like are
/// not protected.
QString serializeMarkdown(const AttributedText &text);

/// One line of a table: a pipe before, between and behind the cells. Pipes in the cells get a backslash.
QString formatTableRow(const QList<QStringView> &cells);

/// The Markdown is the pieces of all paragraphs one behind the other. A piece is shaped by the tag of the paragraph
/// before, by the tag of the one behind, and by whether a table is open; so an edit changes no more than the pieces of
/// its own paragraphs, the ends of the two that adjoin, and rows whose table begins or ends to be one.
namespace MarkdownPiece {

/// What the pieces behind a paragraph need to know of it.
struct Neighbour {
    SharedText tag;
    bool isInTable = false; // a header, or a row that belongs to one
    friend bool operator==(const Neighbour &, const Neighbour &) = default;
};

/// A paragraph with this tag behind `before`, which is null at the start of the document.
Neighbour follow(const Neighbour *before, const SharedText &tag);

/// What comes first in a piece: what parts it from the piece before, and the line that opens a block of code.
QString opening(const Neighbour *before, const Neighbour &paragraph);
/// What comes between: the paragraph's own line or lines.
void appendContent(const Neighbour &paragraph, QStringView content, QString &markdown);
/// What comes last, before a paragraph with the tag `next` (null at the end): the line that closes a block of code.
QStringView closing(const SharedText &tag, const SharedText *next);

} // namespace MarkdownPiece

} // namespace Tessaline
