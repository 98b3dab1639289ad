#include "MarkdownUI/BlockMargin.h"

#include <algorithm>

namespace MarkdownUI {

std::optional<double> topPadding(const BlockMargin &before, const BlockMargin &block, BlockSpacing spacing)
{
    const std::optional<double> below = spacing == BlockSpacing::Tight ? 0.0 : before.bottom;
    if (below && block.top)
        return std::max(*below, *block.top);
    return below ? below : block.top;
}

QList<std::optional<double>> topPaddings(const QList<BlockMargin> &margins, BlockSpacing spacing)
{
    QList<std::optional<double>> paddings;
    paddings.reserve(margins.size());
    for (qsizetype i = 0; i < margins.size(); ++i)
        paddings.append(i < 1 ? 0.0 : topPadding(margins.at(i - 1), margins.at(i), spacing));
    return paddings;
}

BlockMargin reportedMargin(const BlockMargin &own, const BlockMargin &first, const BlockMargin &last)
{
    return {own.top ? own.top : first.top, own.bottom ? own.bottom : last.bottom};
}

BlockMargin ThemeMargin::resolved(const std::optional<FontProperties> &font) const
{
    BlockMargin margin;
    if (top)
        margin.top = top->points(font);
    if (bottom)
        margin.bottom = bottom->points(font);
    return margin;
}

} // namespace MarkdownUI
