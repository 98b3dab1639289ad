#include "MarkdownUI/DisplayPainting.h"
#include "tests/MarkdownUI_ui/ShownMarkdown.h"

#include <gtest/gtest.h>
#include <QtGui/QPainter>

// A text that grows while it is shown, and texts that are made to be slow.

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

/// The laid-out forms of the first leaves.
QList<const BlockBox *> boxes(MarkdownDisplay &display, qsizetype count)
{
    QList<const BlockBox *> boxes;
    for (qsizetype leaf = 0; leaf < count; ++leaf)
        boxes.append(&display.box(leaf));
    return boxes;
}

struct Growth {
    const char *name;
    const char *before;
    const char *added;
    qsizetype kept; // leaves that keep their laid-out form
};

class GrowthTest : public testing::TestWithParam<Growth>
{};

/// Paints the first screen, as a view does.
void paintScreen(MarkdownDisplay &display, int top = 0)
{
    QImage image(display.width(), 600, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    paintDisplay(painter, display, QPointF(0, -top), QRectF(image.rect()), {});
}

} // namespace

TEST_P(GrowthTest, WhatDidNotChangeKeepsItsLaidOutForm)
{
    ShownMarkdown shown(QString::fromUtf8(GetParam().before));
    const QList<const BlockBox *> before = boxes(shown.display, GetParam().kept);
    QList<QRectF> places;
    for (qsizetype leaf = 0; leaf < GetParam().kept; ++leaf)
        places.append(shown.display.leafRect(leaf));

    shown.display.setMarkdown(QString::fromUtf8(GetParam().before) + QString::fromUtf8(GetParam().added));

    EXPECT_EQ(boxes(shown.display, GetParam().kept), before);
    for (qsizetype leaf = 0; leaf < GetParam().kept; ++leaf)
        EXPECT_EQ(shown.display.leafRect(leaf), places.at(leaf));
}

INSTANTIATE_TEST_SUITE_P(All, GrowthTest,
                         testing::Values(Growth{"Paragraph", "one\n\ntwo", " three", 1},
                                         Growth{"NewBlock", "one\n\ntwo", "\n\nthree", 2},
                                         Growth{"OpenFence", "one\n\n- two\n\n```", "\n# code", 2},
                                         Growth{"HalfALink", "one\n\nsee [the", " log](https://a", 1},
                                         Growth{"HalfATable", "one\n\n| a | b |", "\n|---|---|\n| c", 1},
                                         Growth{"RowOfATable", "one\n\n| aaaa |\n|---|\n| b |\n", "| c |\n", 3},
                                         Growth{"ItemOfAList", "- one\n- two\n- three", "\n- four", 3},
                                         Growth{"InnerItem", "- one\n- two\n  - three", "\n  - four", 3},
                                         Growth{"LineOfAQuote", "> one\n>\n> two", "\n>\n> three", 2}),
                         [](const auto &row) { return row.param.name; });

TEST(GrowingDisplay, ATextThatGrewLooksAsIfItWereNew)
{
    const QString whole = everyConstruct();
    ShownMarkdown grown(QString(), 300);
    constexpr qsizetype kStep = 37;
    constexpr int kCompared = 10; // each so many steps
    int steps = 0;
    for (qsizetype length = 0; length < whole.size() + kStep; length += kStep) {
        grown.display.setMarkdown(whole.first(std::min(length, whole.size())));
        paintScreen(grown.display, std::max(0, grown.display.height() - 600));
        if (++steps % kCompared != 0 && length < whole.size())
            continue;
        ShownMarkdown fresh(whole.first(std::min(length, whole.size())), 300);
        ASSERT_EQ(frameListing(grown.display), frameListing(fresh.display)) << "after " << length << " units";
    }
}

TEST(GrowingDisplay, ATableThatGrowsIsLaidOutLikeANewOne)
{
    ShownMarkdown grown(u"| a | b |\n|---|---|\n| c | **bol"_s);
    grown.display.setMarkdown(u"| a | b |\n|---|---|\n| c | **bold** |\n| a longer cell | d |\n"_s);

    ShownMarkdown fresh(u"| a | b |\n|---|---|\n| c | **bold** |\n| a longer cell | d |\n"_s);
    for (qsizetype leaf = 0; leaf < 3; ++leaf)
        EXPECT_EQ(grown.display.caretRect({leaf, grown.display.leafText(leaf).size()}),
                  fresh.display.caretRect({leaf, fresh.display.leafText(leaf).size()}));
}

TEST(GrowingDisplay, AnotherWidthIsLaidOutAsIfItWereTheFirst)
{
    ShownMarkdown shown(everyConstruct(), 720);
    shown.display.setWidth(250);
    ShownMarkdown fresh(everyConstruct(), 250);

    EXPECT_EQ(frameListing(shown.display), frameListing(fresh.display));
}

TEST(GrowingDisplay, OnlyWhatIsInViewIsLaidOut)
{
    MarkdownDisplay display;
    display.setWidth(300);
    display.setMarkdown(u"a paragraph of some words that take a row or two\n\n"_s.repeated(2000));
    const int guess = display.height();

    paintScreen(display);
    display.keepOnly(0, 600);
    EXPECT_NEAR(display.height(), guess, 3000) << "the rest is still a guess";

    const MarkdownDisplay::Anchor anchor = display.anchorAt(guess / 2);
    paintScreen(display, display.yOf(anchor));
    EXPECT_EQ(display.anchorAt(display.yOf(anchor)), anchor);
    display.layOutAll();
    EXPECT_EQ(display.anchorAt(display.yOf(anchor)), anchor) << "the block stays, wherever it comes to stand";
}

TEST(GrowingDisplay, StepsGoExactlyAsFarAsTheyShould)
{
    MarkdownDisplay display;
    display.setWidth(300);
    display.setMarkdown(everyConstruct().repeated(3));
    MarkdownDisplay::Anchor anchor;
    for (int i = 0; i < 200; ++i)
        anchor = display.moved(anchor, 17);
    EXPECT_EQ(display.yOf(anchor), 200 * 17);
    for (int i = 0; i < 100; ++i)
        anchor = display.moved(anchor, -34);
    EXPECT_EQ(anchor, (MarkdownDisplay::Anchor{0, 0}));
}

// --- texts made to be slow, or to break something ---

namespace {

QString tableOf(int columns, int rows)
{
    QString text = u"|"_s + u"head|"_s.repeated(columns) + u"\n|"_s + u"-|"_s.repeated(columns) + u'\n';
    for (int row = 0; row < rows; ++row)
        text.append(u"|"_s + u"%1|"_s.arg(row).repeated(columns) + u'\n');
    return text;
}

struct Hostile {
    const char *name;
    QString (*make)();
};

class HostileTest : public testing::TestWithParam<Hostile>
{};

} // namespace

TEST_P(HostileTest, IsShownAtEveryWidthAndInParts)
{
    const QString text = GetParam().make();
    MarkdownDisplay display;
    display.setWidth(200);
    display.setMarkdown(text);
    paintScreen(display);
    EXPECT_GT(display.height(), 0);

    display.setWidth(1200);
    paintScreen(display, display.height() / 2);
    display.prepareEnd(600);
    paintScreen(display, display.height() - 600);
    display.setMarkdown(text + u"x"_s);
    paintScreen(display);
    EXPECT_TRUE(display.positionAt({100, 100}) >= DisplayPosition());
}

INSTANTIATE_TEST_SUITE_P(
    All, HostileTest,
    testing::Values(Hostile{"NestedQuotes", [] { return u">"_s.repeated(10000) + u"x"_s; }},
                    Hostile{"NestedLists", [] { return u"- "_s.repeated(10000) + u"x"_s; }},
                    Hostile{"WideAndLongTable", [] { return tableOf(200, 100); }},
                    Hostile{"OneLine", [] { return u"word "_s.repeated(200000); }},
                    Hostile{"OneWord", [] { return u"x"_s.repeated(1000000); }},
                    Hostile{"Asterisks", [] { return u"*"_s.repeated(1000000); }},
                    Hostile{"NestedEmphasis", [] { return u"*a **b "_s.repeated(20000); }},
                    Hostile{"LineOfCode", [] { return u"    "_s + u"x\t"_s.repeated(500000); }},
                    Hostile{"LinesOfCode", [] { return u"```\n"_s + u"line\n"_s.repeated(200000); }},
                    Hostile{"RightToLeft", [] { return u"العربية English עברית "_s.repeated(2000); }},
                    Hostile{"Emoji",
                            [] { return u"👩‍👩‍👧‍👦🏳️‍🌈é\u0301\u0301"_s.repeated(5000); }},
                    Hostile{"JoinedEmoji", [] { return u"👩\u200D"_s.repeated(300); }},
                    Hostile{"CellOfOneWord", [] { return u"|a|b|\n|-|-|\n|"_s + u"x"_s.repeated(100000) + u"|c|"_s; }},
                    Hostile{"EmptyItems", [] { return u"-\n"_s.repeated(50000); }},
                    Hostile{"Controls",
                            [] {
                                QString text;
                                for (char16_t unit = 0; unit < 0x100; ++unit)
                                    text.append(QChar(unit));
                                return text + u"\u2028\u2029\u202E\uFFFC\uFFFF"_s + QChar(0xD800) + u"\n\n```\n"_s +
                                       text;
                            }},
                    Hostile{"Html", [] { return u"<div><script>alert(1)</script></div>\n"_s.repeated(1000); }},
                    Hostile{"HugeImages", [] { return u"![a](https://gallery.invalid/1x1)\n"_s.repeated(500); }},
                    Hostile{"Empty", [] { return u"\u00A0"_s; }}),
    [](const auto &row) { return row.param.name; });

TEST(GrowingDisplay, AnEmptyTextHasNoHeight)
{
    ShownMarkdown shown(u"text"_s);
    shown.display.setMarkdown(QString());

    EXPECT_EQ(shown.display.height(), 0);
    EXPECT_EQ(shown.display.leafAtY(10), -1);
    EXPECT_EQ(shown.display.positionAt({10, 10}), DisplayPosition());
    EXPECT_FALSE(shown.display.targetAt({10, 10}).isValid());
    EXPECT_EQ(shown.display.moved({}, 10), (MarkdownDisplay::Anchor{0, 10}));
    paintScreen(shown.display);
}

} // namespace MarkdownUI
