#include "shell/ColumnWidths.h"

#include <algorithm>

namespace Tessaline {

ColumnWidths columnWidths(int total, int wantedSidebar, int wantedDetail)
{
    ColumnWidths widths;
    widths.sidebar = std::clamp(wantedSidebar, kSidebarBounds.minimum, kSidebarBounds.maximum);
    widths.detail = std::clamp(wantedDetail, kDetailBounds.minimum, kDetailBounds.maximum);

    const int sidebarSpare = widths.sidebar - kSidebarBounds.minimum;
    const int detailSpare = widths.detail - kDetailBounds.minimum;
    const int spare = sidebarSpare + detailSpare;
    const int missing = std::min(kContentBounds.minimum - (total - widths.sidebar - widths.detail), spare);
    if (missing > 0) {
        const int fromSidebar = missing * sidebarSpare / spare;
        widths.sidebar -= fromSidebar;
        widths.detail -= missing - fromSidebar;
    }
    widths.content = std::max(total - widths.sidebar - widths.detail, kContentBounds.minimum);
    return widths;
}

} // namespace Tessaline
