#pragma once

#include "editing/AttributedText.h"

namespace Tessaline {

/// Ticks or unticks the task whose box (with its tab) stands at `index`, any number: its whole paragraph gets the other
/// tag and its box the sign of that. False, and no change, where no task's box stands. What the box shows does not
/// count.
bool toggleTaskMarker(qsizetype index, AttributedText &text);

} // namespace Tessaline
