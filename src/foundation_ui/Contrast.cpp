#include "foundation_ui/Contrast.h"

#include <cmath>

namespace Tessaline {

namespace {

/// Relative luminance of an opaque sRGB colour.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QColor composed(const QColor &color, const QColor &background)
{
    const float opacity = color.alphaF();
    const auto mix = [opacity](float over, float under) { return over * opacity + under * (1 - opacity); };
    return QColor::fromRgbF(mix(color.redF(), background.redF()), mix(color.greenF(), background.greenF()),
                            mix(color.blueF(), background.blueF()));
}

double contrastRatio(const QColor &first, const QColor &second)
{
    const double one = luminance(first) + 0.05;
    const double other = luminance(second) + 0.05;
    return one > other ? one / other : other / one;
}

} // namespace Tessaline
