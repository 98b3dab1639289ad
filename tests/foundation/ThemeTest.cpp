#include "foundation_ui/Theme.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Tag.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

constexpr double kForText = 4.5;
constexpr double kForSymbols = 3.0; // and for text of 18 pixels and more

/// What lies under a text, from the bottom to the top; all but the first may be translucent.
using Grounds = std::vector<ColorRole>;

struct Pair {
    const char *name;
    ColorRole text;
    Grounds grounds;
    double least;
};

const std::vector<Pair> &pairs()
{
    using R = ColorRole;
    static const std::vector<Pair> pairs{
        {"TextOnThePage", R::Text, {R::EditorBackground}, kForText},
        {"TextUnderTheSelection", R::Text, {R::EditorBackground, R::TextSelection}, kForText},
        {"TextInTheSidebar", R::Text, {R::SidebarBackground}, kForText},
        {"TextInASelectedRow", R::Text, {R::SidebarBackground, R::SelectedRow}, kForText},
        {"TextInAHoveredRow", R::Text, {R::SidebarBackground, R::Hover}, kForText},
        {"TextInAPressedRow", R::Text, {R::SidebarBackground, R::Pressed}, kForText},
        {"TextInTheRightColumn", R::Text, {R::RightColumn}, kForText},
        {"TextInABubble", R::Text, {R::RightColumn, R::Bubble}, kForText},
        {"TextOnAControl", R::Text, {R::Control}, kForText},
        {"TextOnAPressedControl", R::Text, {R::Control, R::Pressed}, kForText},
        {"TextInAField", R::Text, {R::Field}, kForText},
        {"TextInASelectedMenuItem", R::Text, {R::Control, R::SelectedRow}, kForText},
        {"HeadingOnThePage", R::Heading, {R::EditorBackground}, kForText},
        {"SecondaryTextOnThePage", R::SecondaryText, {R::EditorBackground}, kForText},
        {"SecondaryTextUnderTheSelection", R::SecondaryText, {R::EditorBackground, R::TextSelection}, kForSymbols},
        {"SecondaryTextInTheSidebar", R::SecondaryText, {R::SidebarBackground}, kForText},
        {"SecondaryTextInASelectedRow", R::SecondaryText, {R::SidebarBackground, R::SelectedRow}, kForText},
        {"SecondaryTextInAHoveredRow", R::SecondaryText, {R::SidebarBackground, R::Hover}, kForText},
        {"SecondaryTextInAPressedRow", R::SecondaryText, {R::SidebarBackground, R::Pressed}, kForText},
        {"SecondaryTextInTheRightColumn", R::SecondaryText, {R::RightColumn}, kForText},
        {"SecondaryTextInABubble", R::SecondaryText, {R::RightColumn, R::Bubble}, kForText},
        {"SecondaryTextOnAControl", R::SecondaryText, {R::Control}, kForText},
        {"ShortcutInASelectedMenuItem", R::SecondaryText, {R::Control, R::SelectedRow}, kForSymbols},
        {"PlaceholderInAField", R::TertiaryText, {R::Field}, kForText},
        {"TertiaryTextOnThePage", R::TertiaryText, {R::EditorBackground}, kForText},
        {"TertiaryTextInTheRightColumn", R::TertiaryText, {R::RightColumn}, kForText},
        {"AccentTextOnThePage", R::AccentText, {R::EditorBackground}, kForText},
        {"AccentTextInTheSidebar", R::AccentText, {R::SidebarBackground}, kForText},
        {"AccentTextInTheRightColumn", R::AccentText, {R::RightColumn}, kForText},
        {"AccentTextOnACard", R::AccentText, {R::Control}, kForText},
        {"AccentSymbolInASelectedRow", R::AccentText, {R::SidebarBackground, R::SelectedRow}, kForSymbols},
        {"TextOnTheAccent", R::OnAccent, {R::Accent}, kForText},
        {"SelectedSegment", R::SelectedSegmentText, {R::SelectedSegment}, kForText},
        {"InlineCodeOnItsGround", R::InlineCode, {R::InlineCodeBackground}, kForText},
        {"InlineCodeOnThePage", R::InlineCode, {R::EditorBackground}, kForText},
        {"LinkOnThePage", R::Link, {R::EditorBackground}, kForText},
        {"LinkInABubble", R::Link, {R::RightColumn, R::Bubble}, kForText},
        {"AcceptButton", R::AcceptText, {R::Accept}, kForText},
    };
    return pairs;
}

QColor composedGround(const Grounds &grounds, Appearance appearance)
{
    QColor ground = color(grounds.front(), appearance);
    for (const ColorRole role : grounds)
        ground = composed(color(role, appearance), ground);
    return ground;
}

const char *nameOf(Appearance appearance)
{
    return appearance == Appearance::Dark ? "dark" : "light";
}

} // namespace

TEST(Theme, EveryTextStandsOutFromEveryGroundItIsDrawnOn)
{
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark})
        for (const Pair &pair : pairs())
            EXPECT_GE(contrastRatio(color(pair.text, appearance), composedGround(pair.grounds, appearance)), pair.least)
                << pair.name << ", " << nameOf(appearance);
}

TEST(Theme, ProposedChangesStandOutFromTheirOwnTint)
{
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
        const double opacity = appearance == Appearance::Dark ? 0.12 : 0.09;
        const QColor card = composedGround({ColorRole::RightColumn, ColorRole::Bubble}, appearance);
        for (const ColorRole role : {ColorRole::RemovedText, ColorRole::AddedText}) {
            const QColor text = color(role, appearance);
            EXPECT_GE(contrastRatio(text, composed(withOpacity(text, opacity), card)), kForText) << nameOf(appearance);
        }
    }
}

TEST(Theme, TagsStandOutFromTheirTint)
{
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark})
        for (const ColorRole role : {ColorRole::EditorBackground, ColorRole::RightColumn}) {
            const QColor tint = withOpacity(color(ColorRole::Accent, appearance), Tag::kGroundOpacity);
            EXPECT_GE(contrastRatio(color(ColorRole::AccentText, appearance), composed(tint, color(role, appearance))),
                      kForText)
                << nameOf(appearance);
        }
}

TEST(Theme, SegmentsStandOutFromTheirFrame)
{
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
        const QColor secondary = color(ColorRole::SecondaryText, appearance);
        const QColor frame = composed(withOpacity(secondary, 0.08), color(ColorRole::EditorBackground, appearance));
        EXPECT_GE(contrastRatio(secondary, frame), kForText) << nameOf(appearance);
        EXPECT_GE(contrastRatio(secondary, composed(color(ColorRole::Hover, appearance), frame)), kForText)
            << nameOf(appearance);
    }
}

TEST(Theme, TheFourNamedColoursAreExact)
{
    EXPECT_EQ(color(ColorRole::EditorBackground, Appearance::Light), QColor(0xFFFFFF));
    EXPECT_EQ(color(ColorRole::EditorBackground, Appearance::Dark), QColor(0x1F1F24));
    EXPECT_EQ(color(ColorRole::SidebarBackground, Appearance::Light), QColor(0xF0EDE3));
    EXPECT_EQ(color(ColorRole::SidebarBackground, Appearance::Dark), QColor(0x141419));
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
        EXPECT_EQ(color(ColorRole::Accent, appearance), QColor(0xC29947));
        EXPECT_EQ(color(ColorRole::SelectedSegment, appearance), QColor(0x071123));
    }
}

TEST(Theme, GroundsAreOpaque)
{
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark})
        for (const ColorRole role : {ColorRole::EditorBackground, ColorRole::SidebarBackground, ColorRole::RightColumn,
                                     ColorRole::Control, ColorRole::Field})
            EXPECT_EQ(color(role, appearance).alpha(), 255);
}

TEST(Theme, TellsOfAChangeOnceAndOnlyIfThereIsOne)
{
    Theme theme;
    QSignalSpy changed(&theme, &Theme::changed);

    theme.setAppearance(Appearance::Light);
    EXPECT_EQ(changed.count(), 0);
    theme.setAppearance(Appearance::Dark);
    theme.setAppearance(Appearance::Dark);

    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(theme.isDark());
    EXPECT_EQ(theme.color(ColorRole::Text), color(ColorRole::Text, Appearance::Dark));
}

TEST(Contrast, IsTheRatioOfTheGuidelines)
{
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21.0, 0.001);
    EXPECT_NEAR(contrastRatio(Qt::white, Qt::black), 21.0, 0.001);
    EXPECT_NEAR(contrastRatio(QColor(0x777777), Qt::white), 4.48, 0.01);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::red, Qt::red), 1.0);
}

TEST(Contrast, ComposesATranslucentColourWithWhatLiesUnderIt)
{
    EXPECT_NEAR(composed(withOpacity(Qt::black, 0.5), Qt::white).red(), 128, 1);
    EXPECT_EQ(composed(withOpacity(Qt::black, 0), Qt::white), QColor(Qt::white));
    EXPECT_EQ(composed(Qt::red, Qt::white), QColor(Qt::red));
}

} // namespace Tessaline
