#include "MarkdownUI/PictureBox.h"
#include "MarkdownUI/PictureStore.h"
#include "MarkdownUI/TableColumns.h"
#include "MarkdownUI/TextBox.h"
#include "MarkdownUI/TextFonts.h"
#include "tests/MarkdownUI_ui/ShownMarkdown.h"
#include "tests/support/Waiting.h"

#include <QtGui/QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

// Where blocks stand.

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

/// The distance from each leaf to the one below it.
QList<double> gaps(ShownMarkdown &shown)
{
    QList<double> gaps;
    for (qsizetype leaf = 1; leaf < shown.display.leafCount(); ++leaf)
        gaps.append(shown.display.leafRect(leaf).top() - shown.display.leafRect(leaf - 1).bottom());
    return gaps;
}

struct Spacing {
    const char *name;
    const char *markdown;
    QList<double> gaps;
};

class BlockSpacingTest : public testing::TestWithParam<Spacing>
{};

} // namespace

TEST_P(BlockSpacingTest, TheLargerMarginStandsBetweenTwoBlocks)
{
    ShownMarkdown shown(QString::fromUtf8(GetParam().markdown));

    EXPECT_EQ(gaps(shown), GetParam().gaps);
    EXPECT_EQ(shown.display.leafRect(0).top(), 0) << "The first block has no space above, whatever its margin.";
}

INSTANTIATE_TEST_SUITE_P(All, BlockSpacingTest,
                         testing::Values(Spacing{"TwoParagraphs", "one\n\ntwo", {16}},
                                         Spacing{"HeadingAfterParagraph", "one\n\n# two", {24}},
                                         Spacing{"ParagraphAfterHeading", "# one\n\ntwo", {16}},
                                         Spacing{"TwoHeadings", "# one\n\n# two", {24}},
                                         Spacing{"TightList", "- one\n- two", {4}},
                                         Spacing{"LooseList", "- one\n\n- two", {16}},
                                         Spacing{"ListInsideTightItem", "- one\n  - two\n- three", {4, 4}},
                                         Spacing{"ParagraphAfterTightList", "- one\n\ntwo", {16}},
                                         Spacing{"ListAfterParagraph", "one\n- two", {16}},
                                         Spacing{"ParagraphsInLooseItem", "- one\n\n  two", {16}},
                                         Spacing{"Quotes", "> one\n>\n> two\n\nthree", {16, 16}},
                                         Spacing{"HeadingThatBeginsAnItem", "- # one\n- # two", {4}},
                                         Spacing{"Rule", "one\n\n---\n\ntwo", {24, 24}},
                                         Spacing{"Code", "one\n```\ntwo\n```\nthree", {16, 16}},
                                         Spacing{"RowsOfATable", "one\n\n| a |\n|---|\n| b |\n\ntwo", {16, 0, 16}}),
                         [](const auto &row) { return row.param.name; });

TEST(BlockLayout, ItemsStandBehindTheirMarkers)
{
    ShownMarkdown shown(u"- one\n  - two\n    - three\n      - four"_s);

    const QList<QRectF> markers = shown.rects(u"marker"_s);
    const QList<QRectF> texts = shown.rects(u"paragraph"_s);
    ASSERT_EQ(markers.size(), 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(markers.at(i).width(), 24) << "one and a half em";
        EXPECT_EQ(markers.at(i).x(), 30 * i);
        EXPECT_EQ(texts.at(i).x(), 30 * (i + 1));
        EXPECT_EQ(texts.at(i).y(), markers.at(i).y());
    }
}

TEST(BlockLayout, EachLevelHasItsBulletAndTheThirdIsKept)
{
    ShownMarkdown shown(u"- one\n  - two\n    - three\n      - four"_s);

    QList<ListBullet> bullets;
    for (qsizetype leaf = 0; leaf < shown.display.leafCount(); ++leaf) {
        const auto &item = std::get<ItemPlace>(shown.display.containersOf(leaf).front()->kind);
        const BulletSign &bullet = std::get<BulletSign>(item.marker.sign);
        bullets.append(bullet.sign);
        EXPECT_EQ(bullet.size, 5) << "a third of 16, rounded";
    }
    EXPECT_EQ(bullets, (QList{ListBullet::Disc, ListBullet::Circle, ListBullet::Square, ListBullet::Square}));
}

TEST(BlockLayout, NumbersShareOneWidthAndGrowWithTheWidest)
{
    ShownMarkdown shown(u"9. nine\n10. ten\n\nand\n\n999998. a\n999999. b\n1000000. c"_s);

    const QList<QRectF> markers = shown.rects(u"marker"_s);
    ASSERT_EQ(markers.size(), 5);
    EXPECT_EQ(markers.at(0).width(), markers.at(1).width());
    EXPECT_GE(markers.at(0).width(), 24) << "one and a half em at the least";
    EXPECT_GT(markers.at(2).width(), markers.at(0).width());
    EXPECT_EQ(markers.at(2).width(), markers.at(4).width());
    EXPECT_EQ(shown.lines(u"marker"_s).at(1).section(u' ', 3), u"10.");
}

TEST(BlockLayout, NumbersAlignOnTheRight)
{
    const auto rightmostInk = [](const QString &number) {
        ListMarker marker;
        marker.sign = NumberSign{number};
        marker.font = fontOf({});
        marker.color = Qt::black;
        marker.width = 40;
        QImage image(60, 30, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        marker.paint(painter, 4, 20);
        painter.end();
        for (int x = image.width() - 1; x >= 0; --x)
            for (int y = 0; y < image.height(); ++y)
                if (image.pixelColor(x, y) != QColor(Qt::white))
                    return x;
        return -1;
    };

    EXPECT_GT(rightmostInk(u"9."_s), 30);
    EXPECT_EQ(rightmostInk(u"9."_s), rightmostInk(u"10."_s));
}

TEST(BlockLayout, AnEmptyItemKeepsItsPlace)
{
    ShownMarkdown shown(u"- one\n-\n- three"_s);

    const QList<QRectF> empty = shown.rects(u"empty"_s);
    ASSERT_EQ(empty.size(), 1);
    EXPECT_EQ(empty.first().height(), shown.rects(u"paragraph"_s).first().height());
}

TEST(BlockLayout, AQuoteHasABarAndIsInsetOnBothSides)
{
    ShownMarkdown shown(u"> one\n>\n> > two"_s);

    const QList<QRectF> bars = shown.rects(u"bar"_s);
    const QList<QRectF> texts = shown.rects(u"paragraph"_s);
    ASSERT_EQ(bars.size(), 2);
    EXPECT_EQ(bars.at(0), QRectF(0, 0, 3, texts.at(1).bottom())) << "a fifth of an em, from the first row to the last";
    EXPECT_EQ(texts.at(0).x(), 19);
    EXPECT_EQ(texts.at(0).width(), 400 - 19 - 16);
    EXPECT_EQ(bars.at(1).x(), 19);
    EXPECT_EQ(texts.at(1).x(), 38);
}

TEST(BlockLayout, HeadingsInAQuoteFollowItsFont)
{
    DisplayEnvironment environment;
    environment.theme = embeddedTheme();
    ShownMarkdown shown(u"> # one `two`"_s, 400, environment);

    const auto &heading = std::get<TextLeaf>(shown.display.leaf(0).content);
    const AttributedString text = shown.display.styledLeafText(0);
    EXPECT_EQ(heading.attributes.fontProperties->scaledSize(), 26);
    EXPECT_EQ(text.runs().last().attributes.fontProperties->scaledSize(), 26 * 0.85);
}

TEST(BlockLayout, AHeadingOfTheFirstTwoLevelsHasALineUnderIt)
{
    ShownMarkdown shown(u"# one\n\n## two\n\n### three"_s);

    const auto textHeight = [&shown](qsizetype leaf) {
        return std::ceil(shown.display.box(leaf).caretRect(0).height());
    };
    EXPECT_EQ(shown.display.leafRect(0).height(), textHeight(0) + 10 + 1) << "0.3 em of 32, and the line";
    EXPECT_EQ(shown.display.leafRect(1).height(), textHeight(1) + 7 + 1);
    EXPECT_EQ(shown.display.leafRect(2).height(), textHeight(2));
}

TEST(BlockLayout, CodeIsPaddedAndNeverWrapped)
{
    ShownMarkdown one(u"```\nshort\n```"_s);
    ShownMarkdown two(u"```\n"_s + u"long "_s.repeated(200) + u"\nx\n```"_s);

    const double row = one.display.box(0).caretRect(0).height();
    EXPECT_EQ(one.display.leafRect(0).height(), row + 32);
    EXPECT_EQ(two.display.leafRect(0).height(), 2 * row + 3 + 32) << "0.225 em between the lines";
    EXPECT_EQ(one.display.box(0).sidewaysRange(), 0);
    EXPECT_GT(two.display.box(0).sidewaysRange(), 2000);
}

TEST(BlockLayout, CodeMovesSidewaysOnItsOwn)
{
    ShownMarkdown shown(u"```\n"_s + u"long "_s.repeated(200) + u"\n```\n\nand text"_s);
    MarkdownDisplay &display = shown.display;
    const double x = display.caretRect({0, 10}).x();

    EXPECT_TRUE(display.scrollSideways({20, 20}, 50));
    EXPECT_EQ(display.caretRect({0, 10}).x(), x - 50);
    EXPECT_FALSE(display.scrollSideways(display.leafRect(1).center(), 50)) << "text has nothing beside";
    EXPECT_TRUE(display.scrollSideways({20, 20}, 1e9));
    EXPECT_EQ(display.box(0).sideways(), display.box(0).sidewaysRange());
    EXPECT_FALSE(display.scrollSideways({20, 20}, 50)) << "it is at its end";
    display.keepOnly(100000, 100001);
    EXPECT_EQ(display.box(0).sideways(), display.box(0).sidewaysRange()) << "the place is kept while it is out of view";
}

// --- tables ---

TEST(BlockLayout, ATableIsAsWideAsItsContentAndNoWiderThanTheView)
{
    const QString table = u"| one | two |\n| --- | ---: |\n| %1 | b |"_s;
    ShownMarkdown narrow(table.arg(u"a"_s));
    ShownMarkdown wide(table.arg(u"many words "_s.repeated(20)));

    const double row = narrow.rects(u"row"_s).first().height();
    EXPECT_EQ(narrow.rects(u"header"_s).first().height(), row + 1) << "the line above the first row";
    EXPECT_GT(wide.rects(u"row"_s).first().height(), 3 * row) << "the cell has several rows";
    EXPECT_EQ(wide.display.box(1).sidewaysRange(), 0);
    // Aligned to the right: the letter stands at the right edge of its column, 13 points and the line from the table's.
    const QRectF end = wide.display.caretRect({1, wide.display.leafText(1).size()});
    EXPECT_NEAR(end.right(), 400 - 13 - 1, 3);
}

TEST(BlockLayout, ATableOfTooManyColumnsMovesSidewaysAsAWhole)
{
    ShownMarkdown shown(u"|"_s + u" column |"_s.repeated(20) + u"\n|"_s + u"---|"_s.repeated(20) + u"\n|"_s +
                        u" cell |"_s.repeated(20));

    ASSERT_GT(shown.display.box(0).sidewaysRange(), 500);
    EXPECT_TRUE(shown.display.scrollSideways(shown.display.leafRect(1).center(), 100));
    EXPECT_EQ(shown.display.box(0).sideways(), 100);
    EXPECT_EQ(shown.display.box(1).sideways(), 100);
}

// --- pictures ---

TEST(BlockLayout, AnImageKeepsItsSizeOrIsScaledDownToFit)
{
    ShownMarkdown shown(u"![small](https://gallery.invalid/100x40)\n\n![wide](https://gallery.invalid/800x200)"_s);

    const QList<QRectF> pictures = shown.rects(u"picture"_s);
    ASSERT_EQ(pictures.size(), 2);
    EXPECT_EQ(pictures.at(0).height(), 40);
    EXPECT_EQ(pictures.at(1).height(), 100) << "half as wide, half as high";
}

TEST(BlockLayout, AnImageThatIsScaledDownLeavesNoPixelOut)
{
    Picture picture;
    picture.image = QImage(800, 8, QImage::Format_RGB32);
    picture.image.fill(Qt::black);
    for (int x = 0; x < picture.image.width(); x += 16)
        for (int y = 0; y < picture.image.height(); ++y)
            picture.image.setPixelColor(x, y, Qt::white);
    picture.idealSize = picture.image.size();
    std::vector<Picture> pictures;
    pictures.push_back(std::move(picture));
    PictureBox box(std::move(pictures), 4, Qt::white, Qt::black);
    box.layOut(100);

    QImage shown(100, 1, QImage::Format_RGB32);
    QPainter painter(&shown);
    box.paint(painter, {0, 0}, {});
    painter.end();
    for (int x = 2; x < 98; x += 2)
        EXPECT_GT(qGray(shown.pixel(x, 0)) + qGray(shown.pixel(x + 1, 0)), 10) << x << ": each line leaves its mark";
}

TEST(BlockLayout, PicturesBeyondTheMemoryOfADisplayAreNotShown)
{
    Gallery::SampleImages images;
    DisplayEnvironment environment;
    environment.imageLoader = &images;
    PictureStore store(environment, nullptr, 100 * 40 * 4);
    const QString fits = u"https://gallery.invalid/100x40"_s;
    const QString tooMuch = u"https://gallery.invalid/10x10"_s;
    int changes = 0;
    QObject::connect(&store, &PictureStore::changed, [&changes] { ++changes; });

    store.state(fits);
    EXPECT_TRUE(Tessaline::eventually([&] { return !store.image(fits).isNull(); }));
    store.state(tooMuch);
    EXPECT_TRUE(Tessaline::eventually([&] { return changes == 2; }));
    EXPECT_TRUE(store.image(tooMuch).isNull());
    EXPECT_FALSE(store.image(fits).isNull());
}

TEST(BlockLayout, ImagesFlowInRowsAndABreakBeginsANewOne)
{
    const QString image = u"![](https://gallery.invalid/100x40)"_s;
    ShownMarkdown together(image + u'\n' + image);
    ShownMarkdown broken(image + u"\\\n"_s + image);
    ShownMarkdown tooMany((image + u'\n').repeated(4));
    ShownMarkdown wide(u"![](https://gallery.invalid/100x40)\n![](https://gallery.invalid/800x200)"_s);

    EXPECT_EQ(together.rects(u"picture"_s).first().height(), 40);
    EXPECT_EQ(broken.rects(u"picture"_s).first().height(), 40 + 4 + 40) << "a quarter of a rem between the rows";
    EXPECT_EQ(tooMany.rects(u"picture"_s).first().height(), 40 + 4 + 40);
    EXPECT_EQ(wide.rects(u"picture"_s).first().height(), 40 + 4 + 100) << "a wide one stands alone";
}

TEST(BlockLayout, AnImageBesideTextStaysInItsLine)
{
    ShownMarkdown shown(u"text ![sign](https://gallery.invalid/20x60) text"_s);
    ShownMarkdown missing(u"text ![sign](https://gallery.invalid/none) text"_s);

    EXPECT_TRUE(shown.rects(u"picture"_s).isEmpty());
    EXPECT_GE(shown.rects(u"paragraph"_s).first().height(), 60) << "the row makes room for it";
    EXPECT_EQ(missing.display.leafText(0), u"text  text");
}

TEST(BlockLayout, ALinkedImageOpensItsLinkUnlessThatLeadsNowhere)
{
    const QString image = u"![a chart](https://gallery.invalid/100x40)"_s;
    ShownMarkdown linked(u"[%1](https://harbour.example)"_s.arg(image));
    ShownMarkdown broken(u"[%1](<not a url>)"_s.arg(image));

    const BlockTarget target = linked.display.target({0, 0});
    EXPECT_EQ(target.url, QUrl(u"https://harbour.example"_s));
    EXPECT_EQ(target.name, u"a chart");
    EXPECT_EQ(target.rects, QList{QRectF(0, 0, 100, 40)});
    EXPECT_EQ(broken.display.targetCount(0), 0);
}

TEST(BlockLayout, AnImageThatCannotBeShownGivesItsText)
{
    ShownMarkdown shown(u"![a chart](https://gallery.invalid/none)"_s);

    EXPECT_EQ(shown.display.leafText(0), u"a chart");
    EXPECT_GT(shown.rects(u"picture"_s).first().height(), 16);
}

TEST(BlockLayout, AnImageForTheOtherSchemeIsNotShown)
{
    const QString markdown = u"![a](https://gallery.invalid/10x10#gh-dark-mode-only) text"_s;
    DisplayEnvironment dark;
    dark.scheme = ColorScheme::Dark;

    EXPECT_EQ(ShownMarkdown(markdown).display.leafText(0), u" text");
    EXPECT_EQ(ShownMarkdown(markdown, 400, dark).display.leafText(0), u"\uFFFC text");
}

// --- width ---

TEST(BlockLayout, DeepContainersLeaveRoomForTheirText)
{
    ShownMarkdown shown(u"> "_s.repeated(40) + u"deep"_s, 200);

    EXPECT_GE(shown.rects(u"paragraph"_s).first().width(), 96);
    EXPECT_LE(shown.rects(u"bar"_s).size(), 6);
}

TEST(BlockLayout, FramesStayInsideOfEveryWidth)
{
    for (const int width : {200, 280, 720, 1200}) {
        ShownMarkdown shown(everyConstruct(), width);

        double bottom = 0;
        for (qsizetype leaf = 0; leaf < shown.display.leafCount(); ++leaf) {
            const QRectF rect = shown.display.leafRect(leaf);
            EXPECT_GE(rect.left(), 0);
            EXPECT_LE(rect.right(), width);
            EXPECT_GE(rect.top(), bottom) << "leaf " << leaf;
            EXPECT_GT(rect.height(), 0) << "leaf " << leaf;
            bottom = rect.bottom();
        }
        EXPECT_EQ(bottom, shown.display.height());
    }
}

} // namespace MarkdownUI
