#include "MarkdownUI/Theme.h"

#include <gtest/gtest.h>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

using Weight = FontProperties::Weight;
using Variant = FontProperties::FamilyVariant;

/// What a style makes of a plain font of 16 points.
MarkdownUIAttributes attributesOf(const TextStyle &style, double size = 16, double scale = 1)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties{.size = size, .scale = scale};
    return style.applied(attributes);
}

BlockMargin marginOf(const ThemeMargin &margin, double size = 16)
{
    return margin.resolved(FontProperties{.size = size});
}

TEST(Theme, TextIsSixteenPointsInItsColourOnItsBackground)
{
    MarkdownUIAttributes attributes = attributesOf(TextStyle());
    attributes.fontProperties->size = 13;
    defaultTheme().text.apply(attributes);

    EXPECT_EQ(attributes.fontProperties->size, 16);
    EXPECT_EQ(attributes.fontProperties->scale, 1);
    EXPECT_EQ(attributes.foregroundColor, Palette::kText);
    EXPECT_EQ(attributes.backgroundColor, Palette::kBackground);
}

TEST(Theme, CodeIsMonospacedSmallerAndOnItsOwnBackground)
{
    const MarkdownUIAttributes code = attributesOf(defaultTheme().code);

    EXPECT_EQ(code.fontProperties->familyVariant, Variant::Monospaced);
    EXPECT_DOUBLE_EQ(code.fontProperties->scaledSize(), 13.6);
    EXPECT_EQ(code.backgroundColor, Palette::kSecondaryBackground);
    EXPECT_EQ(code.foregroundColor, std::nullopt);
}

TEST(Theme, InlineStylesChangeOneThingEach)
{
    const Theme &theme = defaultTheme();

    EXPECT_EQ(attributesOf(theme.strong).fontProperties->weight, Weight::Semibold);
    EXPECT_EQ(attributesOf(theme.strong).fontProperties->style, FontProperties::Style::Normal);
    EXPECT_EQ(attributesOf(theme.emphasis).fontProperties->style, FontProperties::Style::Italic);
    EXPECT_EQ(attributesOf(theme.emphasis).fontProperties->weight, Weight::Regular);
    EXPECT_EQ(attributesOf(theme.strikethrough).strikethroughStyle, LineStyle{});
    EXPECT_EQ(attributesOf(theme.link).foregroundColor, Palette::kLink);
    EXPECT_EQ(attributesOf(theme.link).underlineStyle, std::nullopt);
}

TEST(Theme, HeadingsHaveTheirSizes)
{
    const double expected[] = {32, 24, 20, 16, 14, 13.6};
    for (size_t i = 0; i < 6; ++i) {
        const MarkdownUIAttributes heading = attributesOf(defaultTheme().headings[i].text);
        EXPECT_DOUBLE_EQ(heading.fontProperties->scaledSize(), expected[i]) << "level " << i + 1;
        EXPECT_EQ(heading.fontProperties->weight, Weight::Semibold) << "level " << i + 1;
    }
}

TEST(Theme, HeadingsStandApartFromTheTextAroundThem)
{
    for (const HeadingStyle &heading : defaultTheme().headings) {
        EXPECT_EQ(marginOf(heading.margin), (BlockMargin{24, 16}));
        EXPECT_EQ(heading.lineSpacing, em(0.125));
    }
}

TEST(Theme, OnlyTheFirstTwoHeadingsHaveADivider)
{
    for (size_t i = 0; i < 6; ++i) {
        const std::optional<HeadingDivider> &divider = defaultTheme().headings[i].divider;
        ASSERT_EQ(divider.has_value(), i < 2) << "level " << i + 1;
        if (divider) {
            EXPECT_EQ(divider->color, Palette::kDivider);
            EXPECT_EQ(divider->padding, em(0.3));
        }
    }
    // 0.3 em of the heading's own font.
    EXPECT_EQ(em(0.3).points(attributesOf(defaultTheme().headings[0].text).fontProperties), 10);
    EXPECT_EQ(em(0.3).points(attributesOf(defaultTheme().headings[1].text).fontProperties), 7);
}

TEST(Theme, OnlyTheSixthHeadingHasAColour)
{
    for (size_t i = 0; i < 6; ++i) {
        const MarkdownUIAttributes heading = attributesOf(defaultTheme().headings[i].text);
        EXPECT_EQ(heading.foregroundColor, i == 5 ? std::optional(Palette::kTertiaryText) : std::nullopt);
    }
}

TEST(Theme, ParagraphsHaveASpaceBelow)
{
    EXPECT_EQ(marginOf(defaultTheme().paragraph.margin), (BlockMargin{0, 16}));
    EXPECT_EQ(defaultTheme().paragraph.lineSpacing.points(FontProperties{.size = 16}), 4);
}

TEST(Theme, AQuoteHasABarAndItsTextIsInset)
{
    const BlockquoteStyle &quote = defaultTheme().blockquote;

    EXPECT_EQ(quote.barColor, Palette::kBorder);
    EXPECT_EQ(quote.barCornerRadius, 6);
    EXPECT_EQ(quote.barWidth.points(FontProperties{.size = 16}), 3);
    EXPECT_EQ(quote.inset.points(FontProperties{.size = 16}), 16);
    EXPECT_EQ(quote.inset.points(FontProperties{.size = 16, .scale = 0.85}), 14);
    EXPECT_EQ(attributesOf(quote.text).foregroundColor, Palette::kSecondaryText);
    EXPECT_EQ(attributesOf(quote.text).fontProperties, attributesOf({}).fontProperties);
    EXPECT_EQ(marginOf(quote.margin), BlockMargin());
}

TEST(Theme, ACodeBlockHasPaddingAndABackground)
{
    const CodeBlockStyle &code = defaultTheme().codeBlock;
    const MarkdownUIAttributes text = attributesOf(code.text);

    EXPECT_EQ(text.fontProperties->familyVariant, Variant::Monospaced);
    EXPECT_DOUBLE_EQ(text.fontProperties->scaledSize(), 13.6);
    EXPECT_EQ(text.backgroundColor, std::nullopt);
    EXPECT_EQ(code.lineSpacing, em(0.225));
    EXPECT_EQ(code.padding, 16);
    EXPECT_EQ(code.cornerRadius, 6);
    EXPECT_EQ(code.background, Palette::kSecondaryBackground);
    EXPECT_EQ(marginOf(code.margin), (BlockMargin{0, 16}));
}

TEST(Theme, ListItemsStandAQuarterOfTheFontApart)
{
    EXPECT_EQ(marginOf(defaultTheme().listItem.margin), (BlockMargin{4, std::nullopt}));
    EXPECT_EQ(marginOf(defaultTheme().listItem.margin, 13), (BlockMargin{3, std::nullopt}));
    EXPECT_EQ(marginOf(defaultTheme().list.margin), BlockMargin());
}

TEST(Theme, MarkersAreAtLeastOneAndAHalfOfTheFontWide)
{
    EXPECT_EQ(defaultTheme().bulletedListMarker.minimumWidth.points(FontProperties{.size = 16}), 24);
    EXPECT_EQ(defaultTheme().numberedListMarker.minimumWidth.points(FontProperties{.size = 13}), 20);
    EXPECT_EQ(attributesOf(defaultTheme().numberedListMarker.text).fontProperties->digitVariant,
              FontProperties::DigitVariant::Monospaced);

    const TaskListMarkerStyle &task = defaultTheme().taskListMarker;
    EXPECT_EQ(task.completedSymbol, u"checkmark.square.fill"_s);
    EXPECT_EQ(task.openSymbol, u"square"_s);
    EXPECT_EQ(task.width, em(1.5));
}

TEST(Theme, TableRowsAlternateBelowTheHeader)
{
    const TableBackgroundStyle &style = defaultTheme().table.background;
    const DynamicColor plain = Palette::kBackground;
    const DynamicColor other = Palette::kSecondaryBackground;
    const DynamicColor expected[] = {plain, plain, other, plain, other, plain};
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(style.background(row, column), expected[row]) << "row " << row;
    }
}

TEST(Theme, ATableHasLinesOfOnePointEverywhere)
{
    const TableStyle &table = defaultTheme().table;

    EXPECT_EQ(table.border, (TableBorderStyle{TableBorderSelector::All, Palette::kBorder, 1}));
    EXPECT_EQ(marginOf(table.margin), (BlockMargin{0, 16}));
}

TEST(Theme, TableCellsArePaddedAndTheHeaderIsSemibold)
{
    const TableCellStyle &cell = defaultTheme().tableCell;

    EXPECT_EQ(cell.verticalPadding, 6);
    EXPECT_EQ(cell.horizontalPadding, 13);
    EXPECT_EQ(cell.lineSpacing, em(0.25));
    EXPECT_EQ(attributesOf(cell.headerText).fontProperties->weight, Weight::Semibold);
}

TEST(Theme, AThematicBreakIsAThickLineWithSpace)
{
    const ThematicBreakStyle &style = defaultTheme().thematicBreak;

    EXPECT_EQ(style.color, Palette::kBorder);
    EXPECT_EQ(style.height.points(FontProperties{.size = 16}), 4);
    EXPECT_EQ(marginOf(style.margin), (BlockMargin{24, 24}));
}

TEST(Theme, ColoursHaveALightValueAndADarkOneForAllElse)
{
    EXPECT_EQ(Palette::kLink.rgba(ColorScheme::Light), (Rgba{0x2c / 255.0, 0x65 / 255.0, 0xcf / 255.0, 1}));
    EXPECT_EQ(Palette::kLink.rgba(ColorScheme::Dark), (Rgba{0x4c / 255.0, 0x8e / 255.0, 0xf8 / 255.0, 1}));
    EXPECT_EQ(Palette::kLink.rgba(ColorScheme::Other), Palette::kLink.rgba(ColorScheme::Dark));
    EXPECT_EQ((DynamicColor{0x01020380, 0}.rgba(ColorScheme::Light).alpha), 0x80 / 255.0);
}

TEST(Theme, ColoursAreThoseOfTheTable)
{
    const std::pair<DynamicColor, DynamicColor> rows[] = {
        {Palette::kText, {0x060606ff, 0xfbfbfcff}},
        {Palette::kBackground, {0xffffffff, 0x18191dff}},
        {Palette::kSecondaryText, {0x6b6e7bff, 0x9294a0ff}},
        {Palette::kTertiaryText, {0x6b6e7bff, 0x6d707dff}},
        {Palette::kSecondaryBackground, {0xf7f7f9ff, 0x25262aff}},
        {Palette::kLink, {0x2c65cfff, 0x4c8ef8ff}},
        {Palette::kBorder, {0xe4e4e8ff, 0x42444eff}},
        {Palette::kDivider, {0xd0d0d3ff, 0x333438ff}},
        {Palette::kCheckbox, {0xb9b9bbff, 0xb9b9bbff}},
        {Palette::kCheckboxBackground, {0xeeeeefff, 0xeeeeefff}},
    };
    for (const auto &[color, expected] : rows)
        EXPECT_EQ(color, expected);
}

// --- inside something with a look of its own ---

TEST(EmbeddedTheme, KeepsTheFontAndColourThatAreAround)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties{.family = FontProperties::Design::Serif, .size = 13};
    attributes.foregroundColor = DynamicColor{0x112233ff, 0x445566ff};
    attributes.backgroundColor = Palette::kBackground;
    const MarkdownUIAttributes text = embeddedTheme().text.applied(attributes);

    EXPECT_EQ(text.fontProperties, attributes.fontProperties);
    EXPECT_EQ(text.foregroundColor, attributes.foregroundColor);
    EXPECT_EQ(text.backgroundColor, std::nullopt);
    EXPECT_EQ(embeddedTheme().headings[2].text.applied(text).foregroundColor, attributes.foregroundColor);
    EXPECT_EQ(embeddedTheme().link.applied(text).foregroundColor->rgba(ColorScheme::Dark),
              Palette::kLink.rgba(ColorScheme::Dark));
}

TEST(EmbeddedTheme, DiffersInTheTextOnly)
{
    Theme theme = embeddedTheme();
    EXPECT_NE(theme, defaultTheme());

    theme.text = defaultTheme().text;
    EXPECT_EQ(theme, defaultTheme());
}

// --- sizes that depend on what is around ---

TEST(Theme, CodeInAHeadingIsSmallerThanTheHeading)
{
    const MarkdownUIAttributes heading = attributesOf(defaultTheme().headings[1].text);
    const MarkdownUIAttributes code = defaultTheme().code.applied(heading);

    EXPECT_DOUBLE_EQ(code.fontProperties->scale, 1.275);
    EXPECT_DOUBLE_EQ(code.fontProperties->scaledSize(), 20.4);
    EXPECT_EQ(code.fontProperties->weight, Weight::Semibold);
}

TEST(Theme, AHeadingInAQuoteIsRelativeToTheQuotesFont)
{
    Theme theme = defaultTheme();
    theme.blockquote.text = theme.blockquote.text + TextStyle{FontSize{em(0.5)}};
    const MarkdownUIAttributes quote = attributesOf(theme.blockquote.text);
    const MarkdownUIAttributes heading = theme.headings[0].text.applied(quote);

    EXPECT_DOUBLE_EQ(heading.fontProperties->scaledSize(), 16);
    EXPECT_EQ(heading.foregroundColor, Palette::kSecondaryText);
}

} // namespace
