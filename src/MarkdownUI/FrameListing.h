#pragma once

#include "MarkdownUI/MarkdownDisplay.h"

namespace MarkdownUI {

/// Where everything in a display stands, one line for each leaf from top to bottom: what it is, its place
/// ("x,y widthxheight", points), the beginning of its text; and before it, the bars and markers that begin there. Lays
/// everything out.
QString frameListing(MarkdownDisplay &display);

} // namespace MarkdownUI
