#pragma once

#include <QtGui/QPixmap>

namespace Tessaline {

/// The application's icon, `side` device-independent pixels wide and high. Null where the toolkit's reader of SVG is
/// not installed. It takes milliseconds, so it is not for the way to the first picture.
QPixmap applicationIcon(int side, double devicePixelRatio);

} // namespace Tessaline
