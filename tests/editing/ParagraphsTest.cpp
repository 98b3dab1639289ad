#include "editing/Paragraphs.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QList<TextRange> all(const QString &text)
{
    return Paragraphs::in(text, {0, text.size()});
}

} // namespace

TEST(Paragraphs, EndWithTheirLineBreaks)
{
    EXPECT_EQ(all(u"a\nb\rc\r\nd\u2029e"_s), (QList<TextRange>{{0, 2}, {2, 2}, {4, 3}, {7, 2}, {9, 1}}));
    EXPECT_EQ(all(u"\n\r\n"_s), (QList<TextRange>{{0, 1}, {1, 2}}));
    EXPECT_EQ(all(u""_s), QList<TextRange>());
}

TEST(Paragraphs, DoNotEndAtLineSeparatorsAndOtherControls)
{
    EXPECT_EQ(all(u"a\u2028b\u0085c\vd\fe"_s), (QList<TextRange>{{0, 9}}));
}

TEST(Paragraphs, AnEmptyRangeTouchesTheOneItStandsIn)
{
    const QString text = u"ab\ncd\n"_s;
    EXPECT_EQ(Paragraphs::around(text, {0, 0}), (TextRange{0, 3}));
    EXPECT_EQ(Paragraphs::around(text, {2, 0}), (TextRange{0, 3}));
    EXPECT_EQ(Paragraphs::around(text, {3, 0}), (TextRange{3, 3}));
    EXPECT_EQ(Paragraphs::around(text, {6, 0}), (TextRange{6, 0}));
    EXPECT_EQ(Paragraphs::around(u"", {0, 0}), (TextRange{0, 0}));
    EXPECT_EQ(Paragraphs::around(u"ab", {2, 0}), (TextRange{0, 2}));
}

TEST(Paragraphs, ARangeTouchesAllThatItReachesInto)
{
    const QString text = u"ab\ncd\nef"_s;
    EXPECT_EQ(Paragraphs::around(text, {1, 1}), (TextRange{0, 3}));
    EXPECT_EQ(Paragraphs::around(text, {1, 3}), (TextRange{0, 6}));
    EXPECT_EQ(Paragraphs::around(text, {0, 8}), (TextRange{0, 8}));
}

TEST(Paragraphs, ARangeThatEndsBehindALineBreakTouchesNoFurther)
{
    EXPECT_EQ(Paragraphs::around(u"ab\ncd", {1, 2}), (TextRange{0, 3}));
    EXPECT_EQ(Paragraphs::around(u"ab\r\ncd", {1, 2}), (TextRange{0, 4})); // behind the CR of a pair
    EXPECT_EQ(Paragraphs::around(u"ab\r\ncd", {1, 3}), (TextRange{0, 4}));
}

TEST(Paragraphs, CarriageReturnAndLineFeedAreNotParted)
{
    EXPECT_EQ(Paragraphs::around(u"ab\r\ncd", {3, 0}), (TextRange{0, 4}));
    EXPECT_EQ(Paragraphs::around(u"\r\ncd", {1, 0}), (TextRange{0, 2}));
    EXPECT_EQ(Paragraphs::around(u"a\n\r\nb", {3, 1}), (TextRange{2, 2}));
}

TEST(Paragraphs, ContentIsWithoutLineFeedAndCarriageReturn)
{
    EXPECT_EQ(Paragraphs::contentOf(u"a\r\n", {0, 3}), (TextRange{0, 1}));
    EXPECT_EQ(Paragraphs::contentOf(u"\n", {0, 1}), (TextRange{0, 0}));
    EXPECT_EQ(Paragraphs::contentOf(u"a\u2029", {0, 2}), (TextRange{0, 2}));
    EXPECT_EQ(Paragraphs::contentOf(u"a", {0, 1}), (TextRange{0, 1}));
}

} // namespace Tessaline
