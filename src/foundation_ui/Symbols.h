#pragma once

#include <QtCore/QStringView>
#include <QtGui/QColor>
#include <QtGui/QPixmap>

class QPainter;

/// The symbols of the interface, by the names under which the rest of the program knows them ("sun.max.fill", "xmark").
/// They are drawn from outlines compiled into the program, in any colour and crisp at any scale; what was drawn once is
/// kept in QPixmapCache. Main thread only.
namespace Tessaline::Symbols {

/// Whether there is a symbol of this name. Drawing an unknown one draws nothing.
bool exists(QStringView name);

/// A square picture of `size` device-independent pixels. Null for an unknown name.
QPixmap pixmap(QStringView name, double size, const QColor &color, double devicePixelRatio);

/// Draws the symbol centred in `box`, `size` device-independent pixels wide and high, snapped to the device's pixels.
void draw(QPainter &painter, QStringView name, const QRectF &box, double size, const QColor &color);

} // namespace Tessaline::Symbols
