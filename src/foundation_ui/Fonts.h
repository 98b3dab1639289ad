#pragma once

#include <QtGui/QFont>

/// The faces of the application, each with its chain of substitutes. Sizes are device-independent pixels; the
/// toolkit lays text out in whole ones, so a fraction is rounded to the nearest. Below 1 they count as 1, above 1000 as
/// 1000.
namespace Tessaline::Fonts {

/// The desktop's own interface face if it sets one, else Inter, Noto Sans, DejaVu Sans.
QFont interface(double size, QFont::Weight weight = QFont::Normal);
/// A serif book face for the text of documents.
QFont body(double size);
/// A face of fixed width for the source editor and for code.
QFont code(double size);

inline constexpr double kInterfaceSize = 13;
inline constexpr double kSmallSize = 11;
inline constexpr double kCaptionSize = 10;

} // namespace Tessaline::Fonts
