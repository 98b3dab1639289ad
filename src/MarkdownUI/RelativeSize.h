#pragma once

#include "MarkdownUI/FontProperties.h"

#include <optional>
#include <variant>

namespace MarkdownUI {

/// A length that follows the font.
struct RelativeSize {
    enum class Unit {
        Em,  // of the font size in force
        Rem, // of the root font size
    };
    double value = 0;
    Unit unit = Unit::Em;

    /// In whole points: `value` times the base, rounded, halves away from zero. The base is the font's size for rem,
    /// and its size times its scale, rounded, for em. Without a font it is one of size 13 and scale 1.
    double points(const std::optional<FontProperties> &font) const;

    friend bool operator==(const RelativeSize &, const RelativeSize &) = default;
};

constexpr RelativeSize em(double value)
{
    return {value, RelativeSize::Unit::Em};
}

constexpr RelativeSize rem(double value)
{
    return {value, RelativeSize::Unit::Rem};
}

/// A length of the theme: points, or relative to the font in force where it is used.
class ThemeLength
{
public:
    constexpr ThemeLength(double points) : m_value(points) {}
    constexpr ThemeLength(RelativeSize size) : m_value(size) {}

    double points(const std::optional<FontProperties> &font) const;

    /// Gives the font this size: points set its size, and its scale to 1; em multiplies its scale, rem sets it.
    void resize(FontProperties &font) const;

    friend bool operator==(const ThemeLength &, const ThemeLength &) = default;

private:
    std::variant<double, RelativeSize> m_value;
};

} // namespace MarkdownUI
