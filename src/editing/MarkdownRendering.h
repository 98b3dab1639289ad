#pragma once

#include "editing/AttributedText.h"
#include "editing/MarkdownBlocks.h"

namespace Tessaline {

/// A Markdown text as a person sees it: the blocks as paragraphs with one line break between two, which belongs to the
/// block that it ends.
AttributedText renderMarkdown(QStringView markdown);

/// One block as a paragraph, without a line break: its marker, then its content. All of it carries the block's tag.
AttributedText renderBlock(const Block &block);
void appendBlock(const Block &block, AttributedText &text);

} // namespace Tessaline
