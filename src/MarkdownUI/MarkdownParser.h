#pragma once

#include "MarkdownUI/BlockNode.h"

#include <QtCore/QStringView>

namespace MarkdownUI {

/// Reads GitHub's dialect of Markdown: tables, task lists, strikethrough, bare links. Every text is Markdown: nothing
/// is refused, and what is no construct stays as text. Empty only if the text has no block at all, or if there is no
/// memory for the parser. An unpaired surrogate becomes a replacement character, and so does U+0000. A text that is
/// made to keep the parser busy (see CostlyText.h) comes as plain paragraphs.
///
/// Safe from any thread; parses on several threads wait for each other, since the parser below has tables that they
/// share. Nothing of the parser is left when this returns.
QList<BlockNode> parseBlocks(QStringView markdown);

/// A block and where its source begins.
struct PlacedBlock {
    BlockNode block;
    qsizetype location = 0; // the start of its first line, in UTF-16 units from the start of the text
};

/// The same blocks, each with its place, in ascending order. NOTE: when a table takes its header from the last line of
/// a paragraph, both have the place of the paragraph.
QList<PlacedBlock> parsePlacedBlocks(QStringView markdown);

} // namespace MarkdownUI
