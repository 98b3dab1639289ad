#include "MarkdownUI/DynamicColor.h"

namespace MarkdownUI {

Rgba DynamicColor::rgba(ColorScheme scheme) const
{
    const quint32 bytes = scheme == ColorScheme::Light ? light : dark;
    const auto part = [bytes](int shift) { return ((bytes >> shift) & 0xff) / 255.0; };
    return {part(24), part(16), part(8), part(0)};
}

} // namespace MarkdownUI
