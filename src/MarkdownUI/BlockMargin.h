#pragma once

#include "MarkdownUI/RelativeSize.h"

#include <QtCore/QList>

#include <optional>

namespace MarkdownUI {

/// The space that a block asks for above and below it, in points.
struct BlockMargin {
    std::optional<double> top;
    std::optional<double> bottom;
    friend bool operator==(const BlockMargin &, const BlockMargin &) = default;
};

/// Whether the space that a block leaves below itself counts. It does not in a tight list.
enum class BlockSpacing { Loose, Tight };

/// The padding above a block without any known margin around it, in points.
constexpr double kDefaultBlockPadding = 16; // Source: chosen here; what the theme leaves below a paragraph.

/// The padding above each block of a sequence; there is no other space between them. 0 above the first; above another
/// the larger of its own top margin and the bottom margin of the one before, where known. Absent, which stands for
/// kDefaultBlockPadding, if neither is. With tight spacing the bottom margin of the one before counts as 0.
QList<std::optional<double>> topPaddings(const QList<BlockMargin> &margins, BlockSpacing spacing);

/// The same for a single block that is not the first.
std::optional<double> topPadding(const BlockMargin &before, const BlockMargin &block, BlockSpacing spacing);

/// What a block that holds others reports: its own margins where it has them; where not, the top margin of the first
/// block in it and the bottom margin of the last.
BlockMargin reportedMargin(const BlockMargin &own, const BlockMargin &first, const BlockMargin &last);

/// A margin of the theme, before a font gives it points.
struct ThemeMargin {
    std::optional<ThemeLength> top;
    std::optional<ThemeLength> bottom;

    BlockMargin resolved(const std::optional<FontProperties> &font) const;

    friend bool operator==(const ThemeMargin &, const ThemeMargin &) = default;
};

} // namespace MarkdownUI
