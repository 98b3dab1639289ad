#include "foundation_ui/Theme.h"

#include <array>

namespace Tessaline {

namespace {

struct Tone {
    QRgb rgb;
    double opacity = 1;
};

struct Entry {
    ColorRole role;
    Tone light;
    Tone dark;
};

constexpr QRgb kAccent = 0xC29947;
constexpr QRgb kSelection = 0x071123;

// NOTE: several tones are a little darker or lighter than one would pick by eye: each text keeps a contrast of 4.5 on
// every ground it stands on, which ThemeTest checks pair by pair.
constexpr auto kColors = std::to_array<Entry>({
    {ColorRole::EditorBackground, {0xFFFFFF}, {0x1F1F24}},
    {ColorRole::SidebarBackground, {0xF0EDE3}, {0x141419}},
    {ColorRole::RightColumn, {0xFAF9F5}, {0x18181C}},
    {ColorRole::Text, {0x26241F}, {0xE8E6E1}},
    {ColorRole::Heading, {0x16140F}, {0xF4F2EE}},
    {ColorRole::SecondaryText, {0x636058}, {0xA19FA7}},
    {ColorRole::TertiaryText, {0x767169}, {0x8F8D96}},
    {ColorRole::Hairline, {0x28220E, 0.11}, {0xFFFFFF, 0.08}},
    {ColorRole::Control, {0xFFFFFF}, {0x232329}},
    {ColorRole::Field, {0xFFFFFF}, {0x26262C}},
    {ColorRole::Hover, {0x282214, 0.05}, {0xFFFFFF, 0.06}},
    {ColorRole::Pressed, {0x282214, 0.09}, {0xFFFFFF, 0.10}},
    {ColorRole::Accent, {kAccent}, {kAccent}},
    {ColorRole::OnAccent, {0x16140F}, {0x16140F}},
    {ColorRole::AccentText, {0x86641F}, {0xD5B06A}},
    {ColorRole::SelectedSegment, {kSelection}, {kSelection}},
    {ColorRole::SelectedSegmentText, {0xFFFFFF}, {0xFFFFFF}},
    {ColorRole::SegmentShadow, {0x000000, 0.12}, {0x000000, 0.12}},
    {ColorRole::SelectedRow, {kAccent, 0.22}, {kAccent, 0.20}},
    {ColorRole::TextSelection, {kAccent, 0.28}, {kAccent, 0.34}},
    {ColorRole::InlineCode, {0xA05E16}, {0xD9822B}},
    {ColorRole::InlineCodeBackground, {0xF3F1EA}, {0x2A2A30}},
    {ColorRole::Link, {0x2C65CF}, {0x8FB4FF}},
    {ColorRole::Bubble, {0x282214, 0.045}, {0xFFFFFF, 0.05}},
    {ColorRole::BubbleBorder, {0x282214, 0.11}, {0xFFFFFF, 0.12}},
    {ColorRole::RemovedText, {0xB3342A}, {0xFF7B72}},
    {ColorRole::AddedText, {0x1C7340}, {0x6FD08C}},
    {ColorRole::Accept, {0x2C8553}, {0x2C8553}},
    {ColorRole::AcceptText, {0xFFFFFF}, {0xFFFFFF}},
    {ColorRole::FocusRing, {kAccent, 0.6}, {kAccent, 0.6}},
});

constexpr bool isInTheOrderOfTheRoles()
{
    for (size_t index = 0; index < kColors.size(); ++index)
        if (static_cast<size_t>(kColors[index].role) != index)
            return false;
    return kColors.back().role == ColorRole::FocusRing; // the last role there is
}
static_assert(isInTheOrderOfTheRoles());

} // namespace

QColor color(ColorRole role, Appearance appearance)
{
    const Entry &entry = kColors[static_cast<size_t>(role)];
    const Tone &tone = appearance == Appearance::Dark ? entry.dark : entry.light;
    QColor color(tone.rgb);
    color.setAlphaF(static_cast<float>(tone.opacity));
    return color;
}

void Theme::setAppearance(Appearance appearance)
{
    if (m_appearance == appearance)
        return;
    m_appearance = appearance;
    Q_EMIT changed();
}

} // namespace Tessaline
