#include "MarkdownUI/ImageFlow.h"

namespace MarkdownUI {

size_t RawImageData::hash(size_t seed) const noexcept
{
    return qHashMulti(seed, source, alt, destination.has_value(), destination.value_or(QString()));
}

std::optional<RawImageData> RawImageData::of(const InlineNode &node)
{
    std::optional<QString> destination;
    const InlineNode *inner = &node;
    while (const auto *link = inner->as<InlineNode::Link>()) {
        if (link->children.size() != 1)
            return std::nullopt;
        if (!destination)
            destination = link->destination;
        inner = &link->children.first();
    }
    const auto *image = inner->as<InlineNode::Image>();
    if (!image)
        return std::nullopt;
    return RawImageData{image->source, plainText(image->children), destination};
}

std::optional<ImageFlow> ImageFlow::of(const QList<InlineNode> &content)
{
    ImageFlow flow;
    for (const InlineNode &node : content) {
        if (const auto *text = node.as<InlineNode::Text>(); text && text->text.isEmpty())
            continue;
        if (node.as<InlineNode::SoftBreak>())
            continue;
        if (node.as<InlineNode::LineBreak>())
            flow.items.append(LineBreak());
        else if (std::optional<RawImageData> image = RawImageData::of(node))
            flow.items.append(*std::move(image));
        else
            return std::nullopt;
    }
    return flow;
}

ParagraphForm paragraphForm(const QList<InlineNode> &content)
{
    if (content.size() == 1) {
        if (std::optional<RawImageData> image = RawImageData::of(content.first()))
            return *std::move(image);
    }
    if (std::optional<ImageFlow> flow = ImageFlow::of(content))
        return *std::move(flow);
    return content;
}

} // namespace MarkdownUI
