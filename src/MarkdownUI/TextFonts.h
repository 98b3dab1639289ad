#pragma once

#include "foundation_ui/Theme.h"
#include "MarkdownUI/DynamicColor.h"
#include "MarkdownUI/FontProperties.h"

#include <QtGui/QColor>
#include <QtGui/QFont>

namespace MarkdownUI {

/// The font that properties describe. Sizes are rounded to whole pixels, as everywhere in the application. The widths
/// of digits are left to the face.
QFont fontOf(const FontProperties &properties);

QColor colorOf(const DynamicColor &color, ColorScheme scheme);

/// A colour of the application's own table for use beside those of a Markdown theme.
DynamicColor dynamicColor(Tessaline::ColorRole role);

ColorScheme colorScheme(Tessaline::Appearance appearance);

} // namespace MarkdownUI
