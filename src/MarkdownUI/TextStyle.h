#pragma once

#include "MarkdownUI/DynamicColor.h"
#include "MarkdownUI/RelativeSize.h"

#include <QtCore/QList>

#include <initializer_list>
#include <variant>

namespace MarkdownUI {

/// A line under or through a text.
enum class LinePattern { Solid, Dash, Dot, DashDot, DashDotDot };
struct LineStyle {
    LinePattern pattern = LinePattern::Solid;
    std::optional<DynamicColor> color; // absent: that of the text
    friend bool operator==(const LineStyle &, const LineStyle &) = default;
};

/// The attributes in force at some point of a text. Absent ones are as the place has them.
struct MarkdownUIAttributes {
    std::optional<FontProperties> fontProperties; // absent: no font is known, and styles have none to change
    std::optional<DynamicColor> foregroundColor;
    std::optional<DynamicColor> backgroundColor;
    std::optional<LineStyle> strikethroughStyle;
    std::optional<LineStyle> underlineStyle;
    std::optional<double> kerning;  // points between letters, given up for a ligature
    std::optional<double> tracking; // points between letters, everywhere
    std::optional<QString> link;    // a URL, as text
    friend bool operator==(const MarkdownUIAttributes &, const MarkdownUIAttributes &) = default;
};

// The kinds of text styles. Each changes the one thing it is named after.
struct EmptyTextStyle {
    friend bool operator==(const EmptyTextStyle &, const EmptyTextStyle &) = default;
};
struct ForegroundColor {
    std::optional<DynamicColor> color; // absent: takes the colour away
    friend bool operator==(const ForegroundColor &, const ForegroundColor &) = default;
};
struct BackgroundColor {
    std::optional<DynamicColor> color;
    friend bool operator==(const BackgroundColor &, const BackgroundColor &) = default;
};
struct FontFamily {
    FontProperties::Family family;
    friend bool operator==(const FontFamily &, const FontFamily &) = default;
};
struct FontFamilyVariant {
    FontProperties::FamilyVariant variant = FontProperties::FamilyVariant::Normal;
    friend bool operator==(const FontFamilyVariant &, const FontFamilyVariant &) = default;
};
struct FontCapsVariant {
    FontProperties::CapsVariant variant = FontProperties::CapsVariant::Normal;
    friend bool operator==(const FontCapsVariant &, const FontCapsVariant &) = default;
};
struct FontDigitVariant {
    FontProperties::DigitVariant variant = FontProperties::DigitVariant::Normal;
    friend bool operator==(const FontDigitVariant &, const FontDigitVariant &) = default;
};
/// As ThemeLength::resize: points set `size`, and `scale` to 1; em multiplies `scale`, rem sets it.
struct FontSize {
    ThemeLength size = 0.0;
    friend bool operator==(const FontSize &, const FontSize &) = default;
};
struct FontStyle {
    FontProperties::Style style = FontProperties::Style::Normal;
    friend bool operator==(const FontStyle &, const FontStyle &) = default;
};
struct FontWeight {
    FontProperties::Weight weight = FontProperties::Weight::Regular;
    friend bool operator==(const FontWeight &, const FontWeight &) = default;
};
struct FontWidth {
    std::optional<FontProperties::Width> width;
    friend bool operator==(const FontWidth &, const FontWidth &) = default;
};
struct StrikethroughStyle {
    std::optional<LineStyle> line; // absent: takes the line away
    friend bool operator==(const StrikethroughStyle &, const StrikethroughStyle &) = default;
};
struct UnderlineStyle {
    std::optional<LineStyle> line;
    friend bool operator==(const UnderlineStyle &, const UnderlineStyle &) = default;
};
struct TextKerning {
    std::optional<double> kerning;
    friend bool operator==(const TextKerning &, const TextKerning &) = default;
};
struct TextTracking {
    std::optional<double> tracking;
    friend bool operator==(const TextTracking &, const TextTracking &) = default;
};

using TextStyleKind = std::variant<EmptyTextStyle, ForegroundColor, BackgroundColor, FontFamily, FontFamilyVariant,
                                   FontCapsVariant, FontDigitVariant, FontSize, FontStyle, FontWeight, FontWidth,
                                   StrikethroughStyle, UnderlineStyle, TextKerning, TextTracking>;

/// Kinds in the order in which they are applied. A value; without any it changes nothing.
class TextStyle
{
public:
    TextStyle() = default;
    TextStyle(std::initializer_list<TextStyleKind> kinds) : m_kinds(kinds) {}

    void apply(MarkdownUIAttributes &attributes) const;
    /// A copy of `attributes` with the style applied: what is inside inherits, and nothing leaks beside it.
    MarkdownUIAttributes applied(MarkdownUIAttributes attributes) const;

    /// First all of `first`, then all of `second`.
    friend TextStyle operator+(const TextStyle &first, const TextStyle &second);
    friend bool operator==(const TextStyle &, const TextStyle &) = default;

private:
    QList<TextStyleKind> m_kinds;
};

} // namespace MarkdownUI
