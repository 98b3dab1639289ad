#pragma once

#include "MarkdownUI/BlockMargin.h"
#include "MarkdownUI/InlineRenderer.h"
#include "MarkdownUI/TableBounds.h"

#include <array>

namespace MarkdownUI {

/// How each kind of block is drawn. Lengths are in points unless they are relative; margins that are absent are those
/// of what the block holds.

struct HeadingDivider {
    DynamicColor color;
    RelativeSize padding; // between the text and the divider, which is one point high
    friend bool operator==(const HeadingDivider &, const HeadingDivider &) = default;
};

struct HeadingStyle {
    TextStyle text;
    RelativeSize lineSpacing; // between the lines of the text, as everywhere below; by the font of `text`
    std::optional<HeadingDivider> divider;
    ThemeMargin margin;
    friend bool operator==(const HeadingStyle &, const HeadingStyle &) = default;
};

struct ParagraphStyle {
    RelativeSize lineSpacing;
    ThemeMargin margin;
    friend bool operator==(const ParagraphStyle &, const ParagraphStyle &) = default;
};

struct BlockquoteStyle {
    DynamicColor barColor;
    RelativeSize barWidth;
    double barCornerRadius = 0;
    RelativeSize inset; // on both sides of the blocks, from the bar and from the trailing edge
    TextStyle text;
    ThemeMargin margin;
    friend bool operator==(const BlockquoteStyle &, const BlockquoteStyle &) = default;
};

struct CodeBlockStyle {
    TextStyle text;
    RelativeSize lineSpacing; // by the font of `text`
    double padding = 0;       // on all sides
    DynamicColor background;
    double cornerRadius = 0;
    ThemeMargin margin;
    friend bool operator==(const CodeBlockStyle &, const CodeBlockStyle &) = default;
};

/// Blocks that have nothing but a margin: an image on its own, a list, an item.
struct PlainBlockStyle {
    ThemeMargin margin;
    friend bool operator==(const PlainBlockStyle &, const PlainBlockStyle &) = default;
};

/// The check box before a task, at the trailing edge of its frame.
struct TaskListMarkerStyle {
    QString completedSymbol;
    QString openSymbol;
    DynamicColor color;
    DynamicColor background; // the inner layer of a symbol that has one
    RelativeSize width;
    friend bool operator==(const TaskListMarkerStyle &, const TaskListMarkerStyle &) = default;
};

/// discCircleSquare and decimalMarker, at the trailing edge of their frame.
struct ListMarkerStyle {
    TextStyle text;
    RelativeSize minimumWidth;
    friend bool operator==(const ListMarkerStyle &, const ListMarkerStyle &) = default;
};

struct TableBorderStyle {
    TableBorderSelector visibleBorders = TableBorderSelector::All;
    DynamicColor color;
    double width = 1; // of the lines, and thereby the space around and between cells
    friend bool operator==(const TableBorderStyle &, const TableBorderStyle &) = default;
};

/// Fills by rows: the header row and odd ones are plain, even ones from row 2 on are the other.
struct TableBackgroundStyle {
    DynamicColor plain;
    DynamicColor alternate;
    DynamicColor background(int row, int column) const;
    friend bool operator==(const TableBackgroundStyle &, const TableBackgroundStyle &) = default;
};

struct TableStyle {
    TableBorderStyle border;
    TableBackgroundStyle background;
    ThemeMargin margin;
    friend bool operator==(const TableStyle &, const TableStyle &) = default;
};

struct TableCellStyle {
    TextStyle headerText; // of row 0; the other rows have the text as it is
    double verticalPadding = 0;
    double horizontalPadding = 0;
    RelativeSize lineSpacing;
    friend bool operator==(const TableCellStyle &, const TableCellStyle &) = default;
};

struct ThematicBreakStyle {
    DynamicColor color;
    RelativeSize height;
    ThemeMargin margin;
    friend bool operator==(const ThematicBreakStyle &, const ThematicBreakStyle &) = default;
};

struct Theme {
    TextStyle text; // of everything, around all other styles
    TextStyle code;
    TextStyle emphasis;
    TextStyle strong;
    TextStyle strikethrough;
    TextStyle link;
    std::array<HeadingStyle, 6> headings; // level 1 first
    ParagraphStyle paragraph;
    BlockquoteStyle blockquote;
    CodeBlockStyle codeBlock;
    PlainBlockStyle image;
    PlainBlockStyle list;
    PlainBlockStyle listItem;
    TaskListMarkerStyle taskListMarker;
    ListMarkerStyle bulletedListMarker;
    ListMarkerStyle numberedListMarker;
    TableStyle table;
    TableCellStyle tableCell;
    ThematicBreakStyle thematicBreak;

    InlineTextStyles inlineTextStyles() const { return {code, emphasis, strong, strikethrough, link}; }

    friend bool operator==(const Theme &, const Theme &) = default;
};

/// The colours of the default theme.
namespace Palette {
inline constexpr DynamicColor kText{0x060606ff, 0xfbfbfcff};
inline constexpr DynamicColor kBackground{0xffffffff, 0x18191dff};
inline constexpr DynamicColor kSecondaryText{0x6b6e7bff, 0x9294a0ff};
inline constexpr DynamicColor kTertiaryText{0x6b6e7bff, 0x6d707dff};
inline constexpr DynamicColor kSecondaryBackground{0xf7f7f9ff, 0x25262aff};
inline constexpr DynamicColor kLink{0x2c65cfff, 0x4c8ef8ff};
inline constexpr DynamicColor kBorder{0xe4e4e8ff, 0x42444eff};
inline constexpr DynamicColor kDivider{0xd0d0d3ff, 0x333438ff};
inline constexpr DynamicColor kCheckbox{0xb9b9bbff, 0xb9b9bbff};
inline constexpr DynamicColor kCheckboxBackground{0xeeeeefff, 0xeeeeefff};
} // namespace Palette

/// Built once, on first use. Safe from any thread.
const Theme &defaultTheme();

/// The default theme inside something that has a look of its own, as a bubble of a chat: without the text's colour,
/// background and size.
Theme embeddedTheme();

} // namespace MarkdownUI
