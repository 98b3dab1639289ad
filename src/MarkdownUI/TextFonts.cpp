#include "MarkdownUI/TextFonts.h"

#include "foundation_ui/Fonts.h"

#include <QtCore/QHash>

#include <algorithm>
#include <cmath>

namespace MarkdownUI {

namespace {

QFont face(const FontProperties &properties)
{
    const double size = properties.scaledSize();
    if (properties.familyVariant == FontProperties::FamilyVariant::Monospaced)
        return Tessaline::Fonts::code(size);
    if (const QString *const name = std::get_if<QString>(&properties.family)) {
        QFont font = Tessaline::Fonts::interface(size); // its size, and its substitutes for what the family lacks
        font.setFamilies(QStringList{*name} + font.families());
        return font;
    }
    switch (std::get<FontProperties::Design>(properties.family)) {
    case FontProperties::Design::Serif:
        return Tessaline::Fonts::body(size);
    case FontProperties::Design::Monospaced:
        return Tessaline::Fonts::code(size);
    case FontProperties::Design::Default:
    case FontProperties::Design::Rounded:
        break;
    }
    return Tessaline::Fonts::interface(size);
}

QFont::Weight weightOf(FontProperties::Weight weight)
{
    switch (weight) {
    case FontProperties::Weight::UltraLight:
        return QFont::Thin;
    case FontProperties::Weight::Thin:
        return QFont::ExtraLight;
    case FontProperties::Weight::Light:
        return QFont::Light;
    case FontProperties::Weight::Regular:
        return QFont::Normal;
    case FontProperties::Weight::Medium:
        return QFont::Medium;
    case FontProperties::Weight::Semibold:
        return QFont::DemiBold;
    case FontProperties::Weight::Bold:
        return QFont::Bold;
    case FontProperties::Weight::Heavy:
        return QFont::ExtraBold;
    case FontProperties::Weight::Black:
        return QFont::Black;
    }
    return QFont::Normal;
}

int stretchOf(FontProperties::Width width)
{
    switch (width) {
    case FontProperties::Width::Compressed:
        return QFont::ExtraCondensed;
    case FontProperties::Width::Condensed:
        return QFont::Condensed;
    case FontProperties::Width::Standard:
        return QFont::Unstretched;
    case FontProperties::Width::Expanded:
        return QFont::Expanded;
    }
    return QFont::Unstretched;
}

QFont made(const FontProperties &properties)
{
    QFont font = face(properties);
    font.setWeight(weightOf(properties.weight));
    font.setItalic(properties.style == FontProperties::Style::Italic);
    if (properties.capsVariant != FontProperties::CapsVariant::Normal)
        font.setCapitalization(QFont::SmallCaps);
    if (properties.widthStorage)
        font.setStretch(stretchOf(*properties.widthStorage));
    return font;
}

int byteOf(double number)
{
    return static_cast<int>(std::lround(std::clamp(number, 0.0, 1.0) * 255));
}

} // namespace

QFont fontOf(const FontProperties &properties)
{
    // A text has few looks and many runs. Sizes can multiply, so hostile text must not make this grow for ever.
    constexpr qsizetype kMostFonts = 200;
    static QHash<FontProperties, QFont> fonts;
    if (fonts.size() > kMostFonts)
        fonts.clear();
    const auto known = fonts.constFind(properties);
    return known != fonts.constEnd() ? *known : *fonts.insert(properties, made(properties));
}

QColor colorOf(const DynamicColor &color, ColorScheme scheme)
{
    const Rgba rgba = color.rgba(scheme);
    return QColor(byteOf(rgba.red), byteOf(rgba.green), byteOf(rgba.blue), byteOf(rgba.alpha));
}

DynamicColor dynamicColor(Tessaline::ColorRole role)
{
    const auto bytes = [role](Tessaline::Appearance appearance) {
        const QColor color = Tessaline::color(role, appearance);
        return (static_cast<quint32>(color.rgb()) << 8) | static_cast<quint32>(color.alpha());
    };
    return {bytes(Tessaline::Appearance::Light), bytes(Tessaline::Appearance::Dark)};
}

ColorScheme colorScheme(Tessaline::Appearance appearance)
{
    return appearance == Tessaline::Appearance::Light ? ColorScheme::Light : ColorScheme::Dark;
}

} // namespace MarkdownUI
