#pragma once

#include "MarkdownUI/DisplayEnvironment.h"
#include "MarkdownUI/ListMarker.h"
#include "MarkdownUI/TableContent.h"

#include <memory>
#include <variant>
#include <vector>

namespace MarkdownUI {

// What a leaf shows. Equal values look the same at the same width.

struct TextLeaf {
    AttributedString text; // with the pictures that are known
    MarkdownUIAttributes attributes;
    int lineSpacing = 0;
    std::optional<HeadingDivider> divider;
    int headingLevel = 0;        // 0 for what is no heading
    QList<InlineNode> inlines;   // what `text` is rendered from when it is laid out; empty if `text` is all there is
    bool continuesAbove = false; // a later part of a long paragraph
    bool isHtml = false;
    friend bool operator==(const TextLeaf &, const TextLeaf &) = default;
};

struct CodeLeaf {
    QString content;
    QString language;
    MarkdownUIAttributes attributes;
    friend bool operator==(const CodeLeaf &, const CodeLeaf &) = default;
};

struct TableRowLeaf {
    std::shared_ptr<TableContent> table;
    qsizetype row = 0;
    friend bool operator==(const TableRowLeaf &left, const TableRowLeaf &right);
};

struct PictureLeaf {
    ImageFlow flow;
    MarkdownUIAttributes attributes;
    friend bool operator==(const PictureLeaf &, const PictureLeaf &) = default;
};

struct RuleLeaf {
    int height = 0;
    friend bool operator==(const RuleLeaf &, const RuleLeaf &) = default;
};

struct EmptyLeaf { // the place of an item without content
    int height = 0;
    friend bool operator==(const EmptyLeaf &, const EmptyLeaf &) = default;
};

using LeafContent = std::variant<TextLeaf, CodeLeaf, TableRowLeaf, PictureLeaf, RuleLeaf, EmptyLeaf>;

/// A block that holds no others: what is laid out and painted in one piece.
struct OutlineLeaf {
    LeafContent content;
    int container = -1; // the innermost one that holds it; negative for none
    int padding = 0;    // above it, points
};

/// The bar at the leading side of a quote.
struct QuoteBar {
    DynamicColor color;
    int width = 0;
    double radius = 0;
    friend bool operator==(const QuoteBar &, const QuoteBar &) = default;
};

/// An item of a list, with its marker at the height of its first leaf.
struct ItemPlace {
    ListMarker marker;
    bool isTight = false; // the list
    friend bool operator==(const ItemPlace &, const ItemPlace &) = default;
};

/// A quote or an item of a list. It draws something beside the leaves from `firstLeaf` to `lastLeaf`, which count from
/// the first of the block.
struct OutlineContainer {
    std::variant<QuoteBar, ItemPlace> kind;
    int parent = -1;
    int leading = 0;  // points from the edge of what is around to what is inside
    int trailing = 0; // the same at the other edge
    qsizetype firstLeaf = 0;
    qsizetype lastLeaf = -1; // before the first if it is empty
    friend bool operator==(const OutlineContainer &, const OutlineContainer &) = default;
};

/// A block of a document as a row of leaves. However deep blocks are nested, leaves are laid out one below the other,
/// and containers say how far they are indented.
struct BlockOutline {
    std::vector<OutlineContainer> containers; // outer ones before inner ones
    std::vector<OutlineLeaf> leaves;          // from top to bottom; the first has no padding
    BlockMargin margin;                       // of the whole block
};

/// `environment` must outlive the outline.
BlockOutline outlineOf(const BlockNode &block, const DisplayEnvironment &environment);

} // namespace MarkdownUI
