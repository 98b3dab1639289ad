#include "editing/ListMarkers.h"
#include "editing/FormatCommands.h"
#include "editing/MarkdownRendering.h"
#include "tests/editing/AttributedTextPrinter.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// "marker|style", or "-".
QString next(const QString &style)
{
    const std::optional<ListItem> item = nextListItem(style);
    return item ? visible(item->marker.toString()) + u'|' + item->style.toString() : u"-"_s;
}

/// What Return puts in, or "-".
QString continuation(const QString &markdown, qsizetype location)
{
    const std::optional<AttributedText> text = listContinuation(renderMarkdown(markdown), location);
    return text ? described(*text) : u"-"_s;
}

} // namespace

TEST(NextListItem, RepeatsABullet)
{
    EXPECT_EQ(next(u"bullet"_s), u"•⇥|bullet");
}

TEST(NextListItem, CountsUp)
{
    EXPECT_EQ(next(u"numbered:3"_s), u"4.⇥|numbered:4");
    EXPECT_EQ(next(u"numbered:-1"_s), u"0.⇥|numbered:0");
    EXPECT_EQ(next(u"numbered:09"_s), u"10.⇥|numbered:10");
}

TEST(NextListItem, IsTheSecondBehindANumberThatCannotBeRead)
{
    EXPECT_EQ(next(u"numbered:"_s), u"2.⇥|numbered:2");
    EXPECT_EQ(next(u"numbered:x"_s), u"2.⇥|numbered:2");
    EXPECT_EQ(next(u"numbered:9223372036854775808"_s), u"2.⇥|numbered:2");
}

TEST(NextListItem, StaysBehindTheLargestNumber)
{
    EXPECT_EQ(next(u"numbered:9223372036854775807"_s), u"9223372036854775807.⇥|numbered:9223372036854775807");
}

TEST(NextListItem, OfATaskKeepsItsTagAndShowsAnOpenBox)
{
    EXPECT_EQ(next(u"task:0"_s), u"☐⇥|task:0");
    EXPECT_EQ(next(u"task:1"_s), u"☐⇥|task:1");
    EXPECT_EQ(next(u"task:x"_s), u"☐⇥|task:x");
}

TEST(NextListItem, IsAbsentBehindOtherParagraphs)
{
    for (const QString &style : {u""_s, u"paragraph"_s, u"quote"_s, u"heading:1"_s, u"code:"_s, u"tableRow"_s,
                                 u"horizontalRule"_s, u"bullets"_s, u"task"_s, u"numbered"_s})
        EXPECT_EQ(next(style), u"-") << style.toStdString();
}

TEST(ListContinuation, IsALineBreakAndTheNextMarker)
{
    EXPECT_EQ(continuation(u"3. x"_s, 4), u"{numbered:4}⏎{numbered:4,marker}4.⇥");
    EXPECT_EQ(continuation(u"- [x] x"_s, 3), u"{task:1}⏎{task:1,marker}☐⇥");
}

TEST(ListContinuation, IsDecidedByTheUnitBefore)
{
    // "a⏎•⇥b"
    EXPECT_EQ(continuation(u"a\n- b"_s, 2), u"-");
    EXPECT_EQ(continuation(u"a\n- b"_s, 3), u"{bullet}⏎{bullet,marker}•⇥");
    EXPECT_EQ(continuation(u"- b"_s, 0), u"{bullet}⏎{bullet,marker}•⇥"); // or, at the very start, by the one behind
}

TEST(ListContinuation, AnEmptyItemIsContinuedToo)
{
    EXPECT_EQ(continuation(u"- "_s, 2), u"{bullet}⏎{bullet,marker}•⇥");
}

TEST(ListContinuation, AnEmptyTextHasNone)
{
    EXPECT_EQ(continuation(u""_s, 0), u"-");
}

TEST(ListContinuation, ALocationBehindTheTextIsItsEnd)
{
    EXPECT_EQ(continuation(u"- b"_s, 99), u"{bullet}⏎{bullet,marker}•⇥");
}

} // namespace Tessaline
