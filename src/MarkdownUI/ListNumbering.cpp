#include "MarkdownUI/ListNumbering.h"

#include "MarkdownUI/FontProperties.h"

#include <algorithm>
#include <cmath>

namespace MarkdownUI {

ListBullet discCircleSquare(int listLevel)
{
    constexpr ListBullet kBullets[] = {ListBullet::Disc, ListBullet::Circle, ListBullet::Square};
    return kBullets[std::clamp(listLevel, 1, 3) - 1];
}

double bulletFontSize(std::optional<double> fontSize)
{
    return std::round(fontSize.value_or(FontProperties::kDefaultSize) / 3);
}

qint64 itemNumber(int start, qsizetype index)
{
    return qint64(start) + index;
}

QString decimalMarker(qint64 number)
{
    return QString::number(number) + u'.';
}

double markerWidth(const QList<double> &widths, double minimum)
{
    return widths.isEmpty() ? minimum : std::max(minimum, *std::ranges::max_element(widths));
}

} // namespace MarkdownUI
