#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace MarkdownUI {

/// The sign before an item of a bulleted list.
enum class ListBullet { Disc, Circle, Square }; // "circle.fill", "circle", "square.fill"

/// By the level of the list, 1 for the outermost: disc, circle, and square from the third on.
ListBullet discCircleSquare(int listLevel);

/// The points of the sign's font: a third of the drawn size of the font in force, rounded; of 13 if none is known.
double bulletFontSize(std::optional<double> fontSize);

/// The number of the item at `index`, counted from 0, in a list that begins with `start`.
qint64 itemNumber(int start, qsizetype index);

/// A number as a marker: "7.".
QString decimalMarker(qint64 number);

/// What all markers of a list take: the widest of them, and not less than `minimum`.
double markerWidth(const QList<double> &widths, double minimum);

} // namespace MarkdownUI
