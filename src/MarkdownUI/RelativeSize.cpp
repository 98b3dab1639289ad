#include "MarkdownUI/RelativeSize.h"

#include <cmath>

namespace MarkdownUI {

double RelativeSize::points(const std::optional<FontProperties> &font) const
{
    const FontProperties inForce = font.value_or(FontProperties());
    const double base = unit == Unit::Rem ? inForce.size : std::round(inForce.scaledSize());
    return std::round(base * value);
}

double ThemeLength::points(const std::optional<FontProperties> &font) const
{
    const RelativeSize *relative = std::get_if<RelativeSize>(&m_value);
    return relative ? relative->points(font) : std::get<double>(m_value);
}

void ThemeLength::resize(FontProperties &font) const
{
    if (const RelativeSize *relative = std::get_if<RelativeSize>(&m_value)) {
        font.scale = relative->unit == RelativeSize::Unit::Em ? font.scale * relative->value : relative->value;
    } else {
        font.size = std::get<double>(m_value);
        font.scale = 1;
    }
}

} // namespace MarkdownUI
