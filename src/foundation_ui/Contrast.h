#pragma once

#include <QtGui/QColor>

namespace Tessaline {

/// `color` with its opacity replaced by `opacity` (0 to 1).
QColor withOpacity(QColor color, double opacity);

/// What is seen where `color`, which may be translucent, lies on the opaque `background`.
QColor composed(const QColor &color, const QColor &background);

/// The contrast of two opaque colours as the web's accessibility guidelines define it: 1 for equal ones, 21 for black
/// on white.
double contrastRatio(const QColor &first, const QColor &second);

} // namespace Tessaline
