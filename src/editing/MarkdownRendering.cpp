#include "editing/MarkdownRendering.h"

#include "editing/InlineMarkdown.h"

namespace Tessaline {

namespace {

TextAttributes attributesOf(const Block &block)
{
    TextAttributes attributes;
    attributes.blockStyle = block.style;
    return attributes;
}

} // namespace

AttributedText renderMarkdown(QStringView markdown)
{
    AttributedText text;
    text.reserve(markdown.size());
    QList<Block> blocks;
    SharedText lastStyle;
    MarkdownBlockReader reader(markdown);
    while (!reader.atEnd()) {
        // One construct at a time, so that the blocks of a large text need not all exist at once.
        blocks.clear();
        reader.readNext(blocks);
        for (const Block &block : std::as_const(blocks)) {
            if (lastStyle.isPresent()) {
                TextAttributes lineBreak;
                lineBreak.blockStyle = lastStyle;
                text.append(u"\n", lineBreak);
            }
            appendBlock(block, text);
            lastStyle = block.style;
        }
    }
    return text;
}

AttributedText renderBlock(const Block &block)
{
    AttributedText text;
    appendBlock(block, text);
    return text;
}

void appendBlock(const Block &block, AttributedText &text)
{
    const TextAttributes attributes = attributesOf(block);
    if (block.marker.isPresent()) {
        TextAttributes ofMarker = attributes;
        ofMarker.generatedMarker = true;
        text.append(block.marker.view(), ofMarker);
    }
    if (block.parsesInlineMarkdown)
        appendInlineMarkdown(block.content, attributes, text);
    else
        text.append(block.content, attributes);
}

} // namespace Tessaline
