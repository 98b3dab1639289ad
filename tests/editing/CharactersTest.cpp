#include "editing/Characters.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/PlainCodec.h"

#include <gtest/gtest.h>

#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Where a character of `text` begins, and its end.
QList<qsizetype> boundaries(const QString &text)
{
    QList<qsizetype> positions{0};
    for (const QString &character : PlainCodec::characters(text))
        positions.append(positions.last() + character.size());
    return positions;
}

} // namespace

TEST(Characters, ASignWithAnythingOnItIsAnotherCharacter)
{
    const QString extending[] = {u"\u0301"_s, u"\u200D"_s, u"\uFE0F"_s, u"\u20E3"_s, u"\u0903"_s, u"\U0001F3FD"_s};

    for (const QString &mark : extending) {
        EXPECT_FALSE(Characters::standAlone(u"*"_s + mark, 0)) << mark.toStdString();
        EXPECT_FALSE(Characters::startsWith(u"```"_s + mark, u"```")) << mark.toStdString();
        EXPECT_EQ(Characters::indexOf(u"a*"_s + mark + u"*"_s, u'*'), 2 + mark.size()) << mark.toStdString();
    }
}

TEST(Characters, ASignBehindOneThatDrawsItInIsAnotherCharacter)
{
    EXPECT_FALSE(Characters::standAlone(u"\u0600*"_s, 1));
    EXPECT_FALSE(Characters::standAlone(u"\U000110BD*"_s, 2));
    EXPECT_TRUE(Characters::standAlone(u"\u0600**"_s, 2));
}

TEST(Characters, LettersAndHalfPairsLeaveASignAlone)
{
    for (const QString &other : {u"a"_s, u"é"_s, u"漢"_s, u"\U0001F600"_s, QString(QChar(0xD83D)), u"\u2028"_s}) {
        EXPECT_TRUE(Characters::standAlone(u"*"_s + other, 0));
        EXPECT_TRUE(Characters::standAlone(other + u"*"_s, other.size()));
    }
    EXPECT_TRUE(Characters::standAlone(u"*"_s + QChar(0xDC00), 0));
}

TEST(Characters, SignsStandAloneWhereABreakIteratorCutsAroundThem)
{
    GeneratedMarkdown random(1);
    for (int i = 0; i < 4000; ++i) {
        const QString text = random.noise(random.below(12));
        const QList<qsizetype> cuts = boundaries(text);
        for (qsizetype at = 0; at < text.size(); ++at) {
            if (text.at(at) < u' ' || text.at(at) > u'~')
                continue;
            ASSERT_EQ(Characters::standAlone(text, at), cuts.contains(at) && cuts.contains(at + 1))
                << text.toStdString() << " at " << at;
        }
    }
}

TEST(Characters, IndexOfBeginsWhereItIsTold)
{
    EXPECT_EQ(Characters::indexOf(u"||", u'|', 1), 1);
    EXPECT_EQ(Characters::indexOf(u"||", u'|', 2), -1);
    EXPECT_EQ(Characters::indexOf(u"", u'|'), -1);
}

TEST(Characters, TrimmingTakesHorizontalSpacesOnly)
{
    EXPECT_EQ(Characters::trimmed(u" \t\u00A0\u1680\u2003\u202F\u205F\u3000a b\u3000 "), u"a b");
    EXPECT_EQ(Characters::trimmed(u" \n "), u"\n");
    for (const QString &other : {u"\u2028"_s, u"\u2029"_s, u"\u0085"_s, u"\v"_s, u"\f"_s, u"\r"_s, u"\u200B"_s})
        EXPECT_EQ(Characters::trimmed(other), other);
    EXPECT_EQ(Characters::trimmed(u"  "), u"");
    EXPECT_EQ(Characters::trimmed(u""), u"");
}

TEST(Characters, TrimmingLeavesASpaceThatCarriesAMark)
{
    EXPECT_EQ(Characters::trimmed(u"  \u0301a"), u" \u0301a");
    EXPECT_EQ(Characters::trimmed(u"\t\u0301a"), u"\u0301a"); // nothing sticks to a tab
    EXPECT_EQ(Characters::trimmed(u"a\u0600 "), u"a\u0600 ");
    EXPECT_EQ(Characters::trimmed(u"a\u0600\t"), u"a\u0600");
    EXPECT_EQ(Characters::trimmed(u"a\u0301 "), u"a\u0301");
}

TEST(Characters, TrimmingIsThatOfWholeCharacters)
{
    GeneratedMarkdown random(2);
    for (int i = 0; i < 4000; ++i) {
        const QString text = random.noise(random.below(8));
        ASSERT_EQ(Characters::trimmed(text).toString(), PlainCodec::trimmed(text)) << text.toStdString();
    }
}

TEST(Characters, IntegersHaveDecimalDigitsAndASign)
{
    EXPECT_EQ(Characters::integer(u"0"), 0);
    EXPECT_EQ(Characters::integer(u"007"), 7);
    EXPECT_EQ(Characters::integer(u"+5"), 5);
    EXPECT_EQ(Characters::integer(u"-5"), -5);
    EXPECT_EQ(Characters::integer(u"-0"), 0);
    for (const QString &text : {u""_s, u"+"_s, u"-"_s, u"+-5"_s, u" 5"_s, u"5 "_s, u"5a"_s, u"0x5"_s, u"1e3"_s, u"٣"_s})
        EXPECT_EQ(Characters::integer(text), std::nullopt) << text.toStdString();
}

TEST(Characters, IntegersFit64Bits)
{
    EXPECT_EQ(Characters::integer(u"9223372036854775807"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(Characters::integer(u"-9223372036854775808"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(Characters::integer(u"9223372036854775808"), std::nullopt);
    EXPECT_EQ(Characters::integer(u"-9223372036854775809"), std::nullopt);
    EXPECT_EQ(Characters::integer(u"18446744073709551617"), std::nullopt);
    EXPECT_EQ(Characters::integer(u"00000000000000000000000000000000000001"), 1);
}

} // namespace Tessaline
