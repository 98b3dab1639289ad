#pragma once

namespace Tessaline {

/// The bounds of a column of the window, in device-independent pixels.
struct ColumnBounds {
    int minimum;
    int ideal;
    int maximum;
};

constexpr int kNoMaximum = 16777215; // the toolkit's own bound
constexpr ColumnBounds kSidebarBounds{200, 260, 350};
constexpr ColumnBounds kContentBounds{520, 720, kNoMaximum};
constexpr ColumnBounds kDetailBounds{320, 380, 480};

struct ColumnWidths {
    int sidebar = kSidebarBounds.ideal;
    int content = kContentBounds.ideal;
    int detail = kDetailBounds.ideal;
    friend bool operator==(const ColumnWidths &, const ColumnWidths &) = default;
};

/// Shares `total` among the three columns: the side columns get what is wanted for them, within their bounds, and the
/// content the rest. Where that would be less than its minimum, the side columns give way in proportion to what each
/// has above its own. Below the sum of the minimums each has its minimum.
ColumnWidths columnWidths(int total, int wantedSidebar, int wantedDetail);

} // namespace Tessaline
