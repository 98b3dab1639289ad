#pragma once

#include "MarkdownUI/InlineNode.h"

#include <optional>
#include <variant>

namespace MarkdownUI {

/// An image that stands as a block of its own or in a flow of images.
struct RawImageData {
    QString source;
    QString alt;
    std::optional<QString> destination; // where a click leads, as written
    size_t hash(size_t seed) const noexcept;
    friend bool operator==(const RawImageData &, const RawImageData &) = default;
    friend size_t qHash(const RawImageData &data, size_t seed = 0) noexcept { return data.hash(seed); }

    /// From an image, or from a link around exactly one thing that gives an image; of links around links the outermost
    /// leads. Absent for any other node.
    static std::optional<RawImageData> of(const InlineNode &node);
};

/// Images in rows.
struct ImageFlow {
    struct LineBreak {
        friend bool operator==(const LineBreak &, const LineBreak &) = default;
    };
    using Item = std::variant<RawImageData, LineBreak>;
    QList<Item> items;
    friend bool operator==(const ImageFlow &, const ImageFlow &) = default;

    /// From images, linked images, breaks and empty texts only; soft breaks give nothing. Absent if anything else is in
    /// the list. An empty list gives a flow without items.
    static std::optional<ImageFlow> of(const QList<InlineNode> &content);
};

/// What a paragraph is drawn as: an image, a flow of images, or else text.
using ParagraphForm = std::variant<RawImageData, ImageFlow, QList<InlineNode>>;
ParagraphForm paragraphForm(const QList<InlineNode> &content);

} // namespace MarkdownUI
