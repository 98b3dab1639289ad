#include "Services/ContextStats.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

ContextStats tokens(qint64 count)
{
    ContextStats stats;
    stats.estimatedInputTokens = count;
    return stats;
}

} // namespace

TEST(ContextStats, TheStatusLineNamesTheDocumentTheSumOfSourcesAndTheTokens)
{
    EXPECT_EQ(statusLine({16384, 2345, 800, 1, 3, 2}), u"Using document + 4 sources · ~2.3K tokens"_s);
}

TEST(ContextStats, TheStatusLineSaysNoDocumentWhenItHasNoCharacters)
{
    EXPECT_EQ(statusLine({}), u"Using no document + 0 sources · ~0 tokens"_s);
    EXPECT_EQ(statusLine({0, 0, 1, 0, 0, 0}), u"Using document + 0 sources · ~0 tokens"_s);
}

TEST(ContextStats, OneSourceIsStillSources)
{
    EXPECT_EQ(statusLine({0, 1, 0, 1, 0, 0}), u"Using no document + 1 sources · ~1 tokens"_s);
}

TEST(ContextStats, TokensAreShortenedFromOneThousandOn)
{
    const QString around = u"Using no document + 0 sources · ~%1 tokens"_s;

    EXPECT_EQ(statusLine(tokens(999)), around.arg(u"999"_s));
    EXPECT_EQ(statusLine(tokens(1000)), around.arg(u"1.0K"_s));
    EXPECT_EQ(statusLine(tokens(1049)), around.arg(u"1.0K"_s));
    EXPECT_EQ(statusLine(tokens(1250)), around.arg(u"1.2K"_s)); // a tie goes to the even digit
    EXPECT_EQ(statusLine(tokens(9960)), around.arg(u"10.0K"_s));
    EXPECT_EQ(statusLine(tokens(1234567)), around.arg(u"1234.6K"_s));
    EXPECT_EQ(statusLine(tokens(-5)), around.arg(u"-5"_s));
}

TEST(ContextStats, CountsThatOverflowTogetherAreTheLargestNumber)
{
    constexpr qint64 kLargest = std::numeric_limits<qint64>::max();

    EXPECT_EQ(statusLine({0, 0, 0, kLargest, 1, 0}), u"Using no document + 9223372036854775807 sources · ~0 tokens"_s);
}

} // namespace Tessaline
