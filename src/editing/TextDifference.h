#pragma once

#include "editing/AttributedText.h"
#include "foundation/ChunkedText.h"

#include <QtCore/QList>

namespace Tessaline {

/// The exchange of one stretch that makes `old` into `fresh`: what is left between their common beginning and their
/// common end. It cuts neither surrogate pairs nor CR LF. Nothing is removed and inserted if they are equal. Linear in
/// the texts.
TextChange differenceBetween(const ChunkedText &old, const ChunkedText &fresh);

/// The same for attributed texts; units are alike only with the same attributes.
TextChange differenceBetween(const AttributedText &old, const AttributedText &fresh);

/// Several exchanges that make `old` into `fresh`, as small as a comparison of lines finds them, so that what stands
/// between them is left alone. In the order of the text and apart; each location is one of `old`. There are never more
/// than `kMostDifferences`, however much differs. Linear in the texts.
QList<TextChange> differencesByLine(const AttributedText &old, const AttributedText &fresh);

inline constexpr qsizetype kMostDifferences = 256; // Source: chosen here; views follow one by one.

} // namespace Tessaline
