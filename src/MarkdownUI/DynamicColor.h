#pragma once

#include "MarkdownUI/ColorScheme.h"

#include <QtCore/QtGlobal>

namespace MarkdownUI {

/// A colour in sRGB; every number from 0 to 1.
struct Rgba {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const Rgba &, const Rgba &) = default;
};

/// A colour with a value for each appearance, as bytes 0xRRGGBBAA.
struct DynamicColor {
    quint32 light = 0;
    quint32 dark = 0;

    /// The light value in the light scheme, the dark one in every other.
    Rgba rgba(ColorScheme scheme) const;

    friend bool operator==(const DynamicColor &, const DynamicColor &) = default;
};

} // namespace MarkdownUI
