#pragma once

#include <QtCore/QHashFunctions>
#include <QtCore/QString>

#include <optional>
#include <variant>

namespace MarkdownUI {

/// The description of a font, changed piece by piece by text styles and made into a font once for each run of text.
struct FontProperties {
    enum class Design { Default, Serif, Rounded, Monospaced };
    /// A face of the system in one of its designs, or a family by its name.
    using Family = std::variant<Design, QString>;
    enum class FamilyVariant { Normal, Monospaced };
    enum class CapsVariant { Normal, SmallCaps, LowercaseSmallCaps, UppercaseSmallCaps };
    enum class DigitVariant { Normal, Monospaced };
    enum class Style { Normal, Italic };
    enum class Weight { UltraLight, Thin, Light, Regular, Medium, Semibold, Bold, Heavy, Black };
    enum class Width { Compressed, Condensed, Standard, Expanded };

    static constexpr double kDefaultSize = 13;

    Family family = Design::Default;
    FamilyVariant familyVariant = FamilyVariant::Normal;
    CapsVariant capsVariant = CapsVariant::Normal;
    DigitVariant digitVariant = DigitVariant::Normal;
    Style style = Style::Normal;
    Weight weight = Weight::Regular;
    std::optional<Width> widthStorage = {}; // absent: as the face has it
    double size = kDefaultSize;             // points; what rem is measured by
    double scale = 1;                       // factor on `size`

    /// The size that is drawn.
    double scaledSize() const { return size * scale; }

    size_t hash(size_t seed) const noexcept;
    friend bool operator==(const FontProperties &, const FontProperties &) = default;
    friend size_t qHash(const FontProperties &font, size_t seed = 0) noexcept { return font.hash(seed); }
};

} // namespace MarkdownUI
