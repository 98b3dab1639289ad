#include "MarkdownUI/BlockMargin.h"
#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/FlowLayout.h"
#include "MarkdownUI/ImageFlow.h"
#include "MarkdownUI/ListNumbering.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/RelativeSize.h"
#include "MarkdownUI/TableBounds.h"
#include "MarkdownUI/TextStyle.h"
#include "TreeText.h"

#include <gtest/gtest.h>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

using Paddings = QList<std::optional<double>>;
constexpr std::nullopt_t kUnknown = std::nullopt;

// --- space between blocks ---

TEST(BlockMargin, TwoParagraphsAreAsFarApartAsTheFirstAsks)
{
    EXPECT_EQ(topPaddings({{0, 16}, {0, 16}}, BlockSpacing::Loose), (Paddings{0.0, 16.0}));
}

TEST(BlockMargin, TheLargerOfTwoMarginsCounts)
{
    EXPECT_EQ(topPaddings({{0, 16}, {24, 16}, {0, 16}}, BlockSpacing::Loose), (Paddings{0.0, 24.0, 16.0}));
}

TEST(BlockMargin, TheFirstBlockHasNoPaddingWhateverItAsksFor)
{
    EXPECT_EQ(topPaddings({{24, 16}}, BlockSpacing::Loose), Paddings{0.0});
    EXPECT_EQ(topPaddings({{kUnknown, kUnknown}}, BlockSpacing::Tight), Paddings{0.0});
    EXPECT_EQ(topPaddings({}, BlockSpacing::Loose), Paddings());
}

TEST(BlockMargin, ATightSequenceLeavesNothingBelowItsBlocks)
{
    EXPECT_EQ(topPaddings({{4, 16}, {4, 16}, {kUnknown, 16}, {kUnknown, kUnknown}}, BlockSpacing::Tight),
              (Paddings{0.0, 4.0, 0.0, 0.0}));
}

TEST(BlockMargin, WithoutAnyMarginThePaddingIsTheDefaultOne)
{
    EXPECT_EQ(topPaddings({{1, kUnknown}, {kUnknown, 2}, {kUnknown, kUnknown}, {3, 0}}, BlockSpacing::Loose),
              (Paddings{0.0, kUnknown, 2.0, 3.0}));
}

TEST(BlockMargin, ABlockThatHoldsOthersReportsTheirsWhereItHasNone)
{
    EXPECT_EQ(reportedMargin({}, {24, 16}, {0, 8}), (BlockMargin{24, 8}));
    EXPECT_EQ(reportedMargin({4, kUnknown}, {24, 16}, {0, 8}), (BlockMargin{4, 8}));
    EXPECT_EQ(reportedMargin({}, {}, {}), BlockMargin());
}

// --- relative sizes ---

TEST(RelativeSize, EmIsOfTheScaledSizeAndRemOfTheRootSize)
{
    const FontProperties font{.size = 16, .scale = 1.5};
    EXPECT_EQ(em(0.25).points(font), 6);
    EXPECT_EQ(rem(0.25).points(font), 4);
}

TEST(RelativeSize, TheBaseOfEmAndTheResultAreWholePoints)
{
    EXPECT_EQ(em(0.25).points(FontProperties{.size = 13, .scale = 0.85}), 3); // 11.05 is 11, of which a quarter is 2.75
    EXPECT_EQ(em(1).points(FontProperties{.size = 13, .scale = 0.5}), 7);     // 6.5
    EXPECT_EQ(em(2).points(FontProperties{.size = 13, .scale = 0.5}), 14);    // not 13
    EXPECT_EQ(em(0.5).points(FontProperties{.size = 13}), 7);                 // 6.5
    EXPECT_EQ(em(-0.5).points(FontProperties{.size = 13}), -7);
    EXPECT_EQ(rem(0.3).points(FontProperties{.size = 12.5}), 4); // 3.75: the base of rem is not rounded
}

TEST(RelativeSize, WithoutAFontItIsOneOfThirteenPoints)
{
    EXPECT_EQ(em(1.5).points(std::nullopt), 20);
    EXPECT_EQ(rem(2).points(std::nullopt), 26);
}

TEST(ThemeLength, PointsAreTakenAsTheyAre)
{
    EXPECT_EQ(ThemeLength(0.25).points(FontProperties{.size = 99}), 0.25);
    EXPECT_EQ(ThemeLength(em(2)).points(FontProperties{.size = 10}), 20);
}

// --- text styles ---

TEST(TextStyle, RelativeSizesMultiply)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties{.size = 16};
    const TextStyle style{FontSize{em(1.5)}, FontSize{em(0.85)}};

    EXPECT_DOUBLE_EQ(style.applied(attributes).fontProperties->scale, 1.275);
    EXPECT_EQ(style.applied(attributes).fontProperties->size, 16);
    EXPECT_EQ((style + TextStyle{FontSize{rem(2)}}).applied(attributes).fontProperties->scale, 2);
    EXPECT_EQ((style + TextStyle{FontSize{20.0}}).applied(attributes).fontProperties->scaledSize(), 20);
}

TEST(TextStyle, KindsAreAppliedInOrder)
{
    const DynamicColor red{1, 2};
    const DynamicColor blue{3, 4};
    const MarkdownUIAttributes none;

    EXPECT_EQ((TextStyle{ForegroundColor{red}, ForegroundColor{blue}}).applied(none).foregroundColor, blue);
    EXPECT_EQ((TextStyle{ForegroundColor{red}} + TextStyle{ForegroundColor{kUnknown}}).applied(none), none);
    EXPECT_EQ((TextStyle{EmptyTextStyle{}}).applied(none), none);
    EXPECT_EQ(none.foregroundColor, kUnknown);
}

TEST(TextStyle, EachKindChangesItsOwnThing)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties();
    const LineStyle dots{LinePattern::Dot, std::nullopt};
    const TextStyle style{BackgroundColor{DynamicColor{1, 2}},
                          FontFamily{u"Serif"_s},
                          FontFamilyVariant{FontProperties::FamilyVariant::Monospaced},
                          FontCapsVariant{FontProperties::CapsVariant::SmallCaps},
                          FontDigitVariant{FontProperties::DigitVariant::Monospaced},
                          FontStyle{FontProperties::Style::Italic},
                          FontWeight{FontProperties::Weight::Heavy},
                          FontWidth{FontProperties::Width::Condensed},
                          StrikethroughStyle{dots},
                          UnderlineStyle{dots},
                          TextKerning{1.0},
                          TextTracking{2.0}};
    style.apply(attributes);

    MarkdownUIAttributes expected;
    expected.fontProperties = FontProperties{u"Serif"_s,
                                             FontProperties::FamilyVariant::Monospaced,
                                             FontProperties::CapsVariant::SmallCaps,
                                             FontProperties::DigitVariant::Monospaced,
                                             FontProperties::Style::Italic,
                                             FontProperties::Weight::Heavy,
                                             FontProperties::Width::Condensed,
                                             13,
                                             1};
    expected.backgroundColor = DynamicColor{1, 2};
    expected.strikethroughStyle = dots;
    expected.underlineStyle = dots;
    expected.kerning = 1;
    expected.tracking = 2;
    EXPECT_EQ(attributes, expected);
    EXPECT_EQ(qHash(*attributes.fontProperties), qHash(*expected.fontProperties));
    EXPECT_NE(qHash(*attributes.fontProperties), qHash(FontProperties()));
}

TEST(TextStyle, WithoutAFontThereIsNoneToChange)
{
    EXPECT_EQ((TextStyle{FontSize{20.0}, FontWeight{FontProperties::Weight::Bold}}).applied({}),
              MarkdownUIAttributes());
}

// --- lists ---

TEST(ListNumbering, BulletsGoByLevelAndStayAtTheThird)
{
    EXPECT_EQ(discCircleSquare(1), ListBullet::Disc);
    EXPECT_EQ(discCircleSquare(2), ListBullet::Circle);
    EXPECT_EQ(discCircleSquare(3), ListBullet::Square);
    EXPECT_EQ(discCircleSquare(4), ListBullet::Square);
    EXPECT_EQ(discCircleSquare(10000), ListBullet::Square);
}

TEST(ListNumbering, ABulletIsAThirdOfTheFont)
{
    EXPECT_EQ(bulletFontSize(16), 5);
    EXPECT_EQ(bulletFontSize(17), 6);
    EXPECT_EQ(bulletFontSize(std::nullopt), 4);
}

TEST(ListNumbering, NumbersCountFromTheStart)
{
    EXPECT_EQ(decimalMarker(itemNumber(1, 0)), u"1."_s);
    EXPECT_EQ(decimalMarker(itemNumber(9, 1)), u"10."_s);
    EXPECT_EQ(decimalMarker(itemNumber(0, 0)), u"0."_s);
    EXPECT_EQ(decimalMarker(itemNumber(999999999, 2000000000)), u"2999999999."_s);
}

TEST(ListNumbering, AllMarkersAreAsWideAsTheWidest)
{
    EXPECT_EQ(markerWidth({20, 28, 20}, 24), 28);
    EXPECT_EQ(markerWidth({10, 12}, 24), 24);
    EXPECT_EQ(markerWidth({}, 24), 24);
}

// --- images ---

QList<InlineNode> inlinesOf(QStringView markdown)
{
    return parseBlocks(markdown).first().as<BlockNode::Paragraph>()->content;
}

std::string flowOf(QStringView markdown)
{
    const std::optional<ImageFlow> flow = ImageFlow::of(inlinesOf(markdown));
    if (!flow)
        return "none";
    QStringList items;
    for (const ImageFlow::Item &item : flow->items) {
        const auto *image = std::get_if<RawImageData>(&item);
        items.append(image ? image->source + u'/' + image->alt + u'/' + image->destination.value_or(u"-"_s)
                           : u"break"_s);
    }
    return items.join(u' ').toStdString();
}

TEST(ImageFlow, HasImagesLinkedImagesAndBreaks)
{
    EXPECT_EQ(flowOf(u"![a](b)\n[![c *d*](e)](f)  \n![g](h)"), "b/a/- e/c d/f break h/g/-");
    EXPECT_EQ(flowOf(u"![a](b)  \n![c](d)"), "b/a/- break d/c/-");
}

TEST(ImageFlow, CannotBeMadeWithAnythingElse)
{
    EXPECT_EQ(flowOf(u"![a](b) c"), "none");
    EXPECT_EQ(flowOf(u"![a](b) ![c](d)"), "none"); // the blank between is a text
    EXPECT_EQ(flowOf(u"![a](b)*![c](d)*"), "none");
    EXPECT_EQ(flowOf(u"![a](b)[![c](d) e](f)"), "none");
    EXPECT_EQ(flowOf(u"![a](b)`c`"), "none");
    EXPECT_EQ(flowOf(u"![a](b)<br>![c](d)"), "none");
}

TEST(ImageFlow, IgnoresEmptyTextsAndCanBeEmpty)
{
    EXPECT_EQ(ImageFlow::of({InlineNode::Text{}, InlineNode::SoftBreak()}), ImageFlow());
    EXPECT_EQ(ImageFlow::of({}), ImageFlow());
}

TEST(RawImageData, ComesFromAnImageOrALinkAroundOne)
{
    const InlineNode image = InlineNode::Image{u"a"_s, {InlineNode::Text{u"b"_s}, InlineNode::Code{u"c"_s}}};
    const InlineNode link = InlineNode::Link{u"d"_s, {image}};

    EXPECT_EQ(RawImageData::of(image), (RawImageData{u"a"_s, u"bc"_s, kUnknown}));
    EXPECT_EQ(RawImageData::of(link), (RawImageData{u"a"_s, u"bc"_s, u"d"_s}));
    EXPECT_EQ(RawImageData::of(InlineNode::Link{u"e"_s, {link}})->destination, u"e"_s);
    EXPECT_EQ(RawImageData::of(InlineNode::Link{u"e"_s, {image, image}}), kUnknown);
    EXPECT_EQ(RawImageData::of(InlineNode::Link{u"e"_s, {}}), kUnknown);
    EXPECT_EQ(RawImageData::of(InlineNode::Emphasis{{image}}), kUnknown);
    EXPECT_EQ(qHash(*RawImageData::of(link)), qHash(RawImageData{u"a"_s, u"bc"_s, u"d"_s}));
}

TEST(ParagraphForm, IsAnImageAFlowOrText)
{
    EXPECT_TRUE(std::holds_alternative<RawImageData>(paragraphForm(inlinesOf(u"![a](b)"))));
    EXPECT_TRUE(std::holds_alternative<RawImageData>(paragraphForm(inlinesOf(u"[![a](b)](c)"))));
    EXPECT_TRUE(std::holds_alternative<ImageFlow>(paragraphForm(inlinesOf(u"![a](b)\n![c](d)"))));
    EXPECT_TRUE(std::holds_alternative<QList<InlineNode>>(paragraphForm(inlinesOf(u"a ![b](c)"))));
    EXPECT_TRUE(std::holds_alternative<ImageFlow>(paragraphForm({})));
}

// --- flows ---

struct FlowItem {
    double width;
    double height;
    double priority = 0;
};

FlowLayout::Frames flow(std::optional<double> width, const QList<FlowItem> &items)
{
    QList<double> priorities;
    for (const FlowItem &item : items)
        priorities.append(item.priority);
    return FlowLayout{4, 3}.frames(width, priorities, [&items](qsizetype i, std::optional<double> proposed) {
        const FlowItem &item = items.at(i);
        return QSizeF(item.priority < 0 && proposed ? *proposed : item.width, item.height);
    });
}

TEST(FlowLayout, PlacesItemsSideBySideOnACommonBottom)
{
    EXPECT_EQ(flow(100, {{30, 10}, {20, 25}}), (FlowLayout::Frames{{54, 25}, {{0, 15, 30, 10}, {34, 0, 20, 25}}}));
}

TEST(FlowLayout, OpensANewRowForWhatDoesNotFit)
{
    EXPECT_EQ(flow(60, {{30, 10}, {26, 5}, {30, 10}}),
              (FlowLayout::Frames{{60, 23}, {{0, 0, 30, 10}, {34, 5, 26, 5}, {0, 13, 30, 10}}}));
}

TEST(FlowLayout, AnItemWiderThanThePlaceStaysAloneOnItsRow)
{
    EXPECT_EQ(flow(50, {{80, 10}, {20, 10}}), (FlowLayout::Frames{{80, 23}, {{0, 0, 80, 10}, {0, 13, 20, 10}}}));
}

TEST(FlowLayout, ABreakTakesTheRestOfItsRow)
{
    EXPECT_EQ(flow(100, {{30, 10}, {0, 0, -1}, {20, 10}}),
              (FlowLayout::Frames{{100, 23}, {{0, 0, 30, 10}, {34, 10, 66, 0}, {0, 13, 20, 10}}}));
}

TEST(FlowLayout, ABreakBehindAFullRowAddsNothing)
{
    EXPECT_EQ(flow(100, {{100, 10}, {0, 0, -1}, {20, 10}}).size, QSizeF(100, 23));
    EXPECT_EQ(flow(100, {{100, 10}, {0, 0, -1}, {20, 10}}).frames.last(), QRectF(0, 13, 20, 10));
}

TEST(FlowLayout, WithoutAWidthThereIsOneRow)
{
    EXPECT_EQ(flow(std::nullopt, {{300, 10}, {400, 20}, {5, 5, -1}}),
              (FlowLayout::Frames{{713, 20}, {{0, 10, 300, 10}, {304, 0, 400, 20}, {708, 15, 5, 5}}}));
}

TEST(FlowLayout, NothingTakesNoPlace)
{
    EXPECT_EQ(flow(100, {}), (FlowLayout::Frames{{0, 0}, {}}));
}

TEST(ResizedToFit, ScalesDownWithTheProportionsAndNeverUp)
{
    EXPECT_EQ(resizedToFit({400, 300}, 200), QSizeF(200, 150));
    EXPECT_EQ(resizedToFit({40, 30}, 200), QSizeF(40, 30));
    EXPECT_EQ(resizedToFit({40, 30}, std::nullopt), QSizeF(40, 30));
    EXPECT_EQ(resizedToFit({40, 30}, -5), QSizeF(0, 0));
    EXPECT_EQ(resizedToFit({0, 0}, -5), QSizeF(0, 0));
}

// --- tables ---

TableBounds twoByTwo()
{
    return {2,
            2,
            {{{0, 0}, {1, 1, 30, 20}}, {{0, 1}, {42, 1, 20, 10}}, {{1, 0}, {1, 22, 40, 12}}, {{1, 1}, {42, 22, 25, 9}}},
            {0, 0, 68, 35}};
}

TEST(TableBounds, RowsAndColumnsReachOverTheirCells)
{
    const TableBounds bounds = twoByTwo();

    EXPECT_EQ(bounds.rows(), (QList<TableBounds::Row>{{1, 20}, {22, 12}}));
    EXPECT_EQ(bounds.columns(), (QList<TableBounds::Column>{{1, 40}, {42, 25}}));
    EXPECT_EQ(bounds.cell({1, 1}), QRectF(42, 22, 25, 12));
}

TEST(TableBounds, ARowWithoutCellsIsEmpty)
{
    const TableBounds bounds(3, 2, {{{0, 0}, {1, 1, 30, 20}}, {{7, 7}, {0, 0, 1, 1}}}, {0, 0, 50, 50});

    EXPECT_EQ(bounds.rows(), (QList<TableBounds::Row>{{1, 20}, {21, 0}, {21, 0}}));
    EXPECT_EQ(bounds.columns(), (QList<TableBounds::Column>{{1, 30}, {31, 0}}));
    EXPECT_EQ(TableBounds().borders(TableBorderSelector::All, 1), QList<QRectF>());
}

TEST(TableBounds, LinesAreAroundAndBetweenTheCells)
{
    const QList<QRectF> horizontal{{0, 0, 68, 1}, {0, 21, 68, 1}, {0, 34, 68, 1}};
    const QList<QRectF> vertical{{0, 0, 1, 35}, {41, 0, 1, 35}, {67, 0, 1, 35}};
    const TableBounds bounds = twoByTwo();

    EXPECT_EQ(bounds.borders(TableBorderSelector::All, 1), horizontal + vertical);
    EXPECT_EQ(bounds.borders(TableBorderSelector::Horizontal, 1), horizontal);
    EXPECT_EQ(bounds.borders(TableBorderSelector::Vertical, 1), vertical);
    EXPECT_EQ(bounds.borders(TableBorderSelector::Inside, 1), (QList<QRectF>{horizontal.at(1), vertical.at(1)}));
    EXPECT_EQ(bounds.borders(TableBorderSelector::Outside, 1),
              (QList<QRectF>{horizontal.at(0), horizontal.at(2), vertical.at(0), vertical.at(2)}));
    EXPECT_EQ(bounds.borders(TableBorderSelector::None, 1), QList<QRectF>());
}

// --- URLs ---

TEST(ContentURL, ATextStandsAsWrittenWithoutABase)
{
    EXPECT_EQ(resolvedURL(u"https://a.org/%41?b=c d"_s, {}), kUnknown);
    EXPECT_EQ(resolvedURL(u"https://a.org/%41/\u00e4"_s, {}), u"https://a.org/%41/\u00e4"_s);
    EXPECT_EQ(resolvedURL(u"a.png"_s, {}), u"a.png"_s);
    EXPECT_EQ(resolvedURL(u"#top"_s, {}), u"#top"_s);
    EXPECT_EQ(resolvedURL(u"tessaline://add-context?concept=a%20b"_s, {}), u"tessaline://add-context?concept=a%20b"_s);
}

TEST(ContentURL, WhatIsNoUrlGivesNone)
{
    for (const QString &text : {u""_s, u"a b"_s, u"http://[a"_s, u"a<b>"_s, u"%zz"_s})
        EXPECT_EQ(resolvedURL(text, QUrl(u"https://a.org"_s)), kUnknown) << text.toStdString();
}

TEST(ContentURL, ARelativeTextIsResolved)
{
    EXPECT_EQ(resolvedURL(u"../b c"_s, QUrl(u"file:///d/e/"_s)), kUnknown);
    EXPECT_EQ(resolvedURL(u"../b%20c"_s, QUrl(u"file:///d/e/"_s)), u"file:///d/b%20c"_s);
    EXPECT_EQ(resolvedURL(u"http://x/y"_s, QUrl(u"file:///d/e/"_s)), u"http://x/y"_s);
}

TEST(ContentURL, FragmentsHideAnImageInTheOtherScheme)
{
    using enum ColorScheme;
    EXPECT_FALSE(isVisible(u"a.png#gh-dark-mode-only", Light));
    EXPECT_TRUE(isVisible(u"a.png#gh-dark-mode-only", Dark));
    EXPECT_TRUE(isVisible(u"a.png#gh-light-mode-only", Light));
    EXPECT_FALSE(isVisible(u"a.png#GH-Light-Mode-Only", Dark));
    EXPECT_TRUE(isVisible(u"a.png#gh-dark-mode-only", Other));
    EXPECT_TRUE(isVisible(u"a.png#gh-light-mode-only", Other));
    EXPECT_TRUE(isVisible(u"a.png", Light));
    EXPECT_TRUE(isVisible(u"a.png#", Light));
    EXPECT_TRUE(isVisible(u"a.png#gh-dark-mode-only2", Light));
    EXPECT_TRUE(isVisible(u"gh-dark-mode-only", Light));
}

std::string visibleIn(ColorScheme scheme, QStringView markdown)
{
    return treeText(QList<BlockNode>{visibleBlock(parseBlocks(markdown).first(), scheme)}).toStdString();
}

TEST(ContentURL, HiddenImagesAreTakenOutWhereverTheyStand)
{
    using enum ColorScheme;
    const QStringView both = u"- > a ![](d#gh-dark-mode-only) *![](l#gh-light-mode-only)*";
    EXPECT_EQ(visibleIn(Light, both), R"(tight-bullets[item(quote(p("a " " " em(image<l#gh-light-mode-only>()))))])");
    EXPECT_EQ(visibleIn(Dark, both), R"(tight-bullets[item(quote(p("a " image<d#gh-dark-mode-only>() " " em())))])");
    EXPECT_EQ(visibleIn(Light, u"|![](d#gh-dark-mode-only)|\n|-|"), "table<->[]");
    EXPECT_EQ(visibleIn(Light, u"![](d#gh-dark-mode-only)"), "p()");
}

TEST(ContentURL, ABlockWithoutHiddenImagesIsNotCopied)
{
    const BlockNode block = parseBlocks(u"a ![](b#gh-light-mode-only)").first();
    const BlockNode visible = visibleBlock(block, ColorScheme::Light);
    EXPECT_EQ(visible.as<BlockNode::Paragraph>()->content.constData(),
              block.as<BlockNode::Paragraph>()->content.constData());
}

} // namespace
