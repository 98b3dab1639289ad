#include "panels/RobustMatch.h"

#include "foundation/CharacterBreaks.h"
#include "panels/UniqueSearch.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <random>

using namespace Tessaline;

namespace {

/// The matched part of the document; null if there is none.
QString match(const QString &original, const QString &document)
{
    const std::optional<TextRange> range = robustMatchRange(original, document);
    return range ? document.mid(range->location, range->length) : QString();
}

/// Stage by stage, in the order in which the rules tell them.
std::optional<TextRange> stagedMatchRange(const QString &original, const QString &document)
{
    using Kind = UniqueRange::Kind;
    for (const Likeness likeness : {Likeness::Exact, Likeness::CaseIgnored}) {
        const UniqueRange found = uniqueRange(original, document, likeness);
        if (found.kind != Kind::Absent)
            return found.kind == Kind::Unique ? std::optional(found.range) : std::nullopt;
    }
    const NormalizedText normalized = normalizedForMatching(document);
    const QString sought = normalizedForMatching(original).text;
    UniqueRange found = uniqueRange(sought, normalized.text, Likeness::CaseIgnored);
    if (found.kind != Kind::Unique) {
        if (sought.trimmed() == sought)
            return std::nullopt;
        found = uniqueRange(sought.trimmed(), normalized.text, Likeness::CaseIgnored);
    }
    if (found.kind != Kind::Unique)
        return std::nullopt;
    const CharacterBreaks breaks(normalized.text);
    size_t first = 0;
    size_t last = 0;
    for (qsizetype at = 0; at < found.range.end(); ++last) {
        first += at < found.range.location ? 1 : 0;
        at = breaks.following(at);
    }
    const qsizetype begin = normalized.positions[first];
    return TextRange{begin, normalized.positions[last] - begin};
}

} // namespace

TEST(NormalizedForMatching, CurlyQuotesEmDashesAndLineBreaksAreWrittenInOneWay)
{
    EXPECT_EQ(normalizedForMatching(u"\u201Ca\u201D \u2018b\u2019 \u2014\r\n\r\n\r"_qs).text, u"\"a\" 'b' -\n\n\n"_qs);
    EXPECT_EQ(normalizedForMatching(u"\u2013 \u201E \u00AB"_qs).text, u"\u2013 \u201E \u00AB"_qs);
}

TEST(NormalizedForMatching, PositionsLeadBackFromEachCharacterAndFromTheEnd)
{
    const NormalizedText normalized = normalizedForMatching(u"a\r\ne\u0301\u2014"_qs);
    EXPECT_EQ(normalized.text, u"a\ne\u0301-"_qs);
    EXPECT_EQ(normalized.positions, (std::vector<qsizetype>{0, 1, 3, 5, 6}));
    EXPECT_EQ(normalizedForMatching(u"").positions, std::vector<qsizetype>{0});
}

TEST(NormalizedForMatching, AQuoteWithAMarkIsAnotherCharacter)
{
    EXPECT_EQ(normalizedForMatching(u"\u2019\u0301"_qs).text, u"\u2019\u0301"_qs);
}

TEST(RobustMatch, NothingIsFoundForAnEmptyTextOrInOne)
{
    EXPECT_FALSE(robustMatchRange(u"", u"abc"));
    EXPECT_FALSE(robustMatchRange(u"abc", u""));
    EXPECT_FALSE(robustMatchRange(u"\n ", u"abc"));
}

TEST(RobustMatch, TwoIdenticalSentencesAreNotResolvedByALooserStage)
{
    const QString document = u"It rains. It rains."_qs;
    EXPECT_FALSE(robustMatchRange(u"It rains.", document));
    // Stage 5 alone would find the second.
    EXPECT_FALSE(robustMatchRange(u"It rains.", u"It rains.\nIt rains."_qs));
}

TEST(RobustMatch, SeveralOccurrencesButForCaseEndTheSearch)
{
    EXPECT_FALSE(robustMatchRange(u"IT RAINS.", u"It rains. it rains."_qs));
}

TEST(RobustMatch, AnExactOccurrenceWinsOverOneInAnotherCase)
{
    EXPECT_EQ(robustMatchRange(u"rain", u"Rain rain"_qs), (TextRange{5, 4}));
}

TEST(RobustMatch, CurlyQuotesMatchStraightOnesAndTheDocumentsOwnTextIsFound)
{
    EXPECT_EQ(match(u"\u201CYes,\u201D she said \u2014 \u2018no\u2019"_qs, u"So: \"Yes,\" she said - 'no'. End."_qs),
              u"\"Yes,\" she said - 'no'"_qs);
    EXPECT_EQ(match(u"\"Yes\""_qs, u"So: \u201CYes\u201D."_qs), u"\u201CYes\u201D"_qs);
}

TEST(RobustMatch, LineFeedsMatchCarriageReturnsAndLineFeeds)
{
    EXPECT_EQ(match(u"one\ntwo"_qs, u"zero\r\none\r\ntwo\r\nthree"_qs), u"one\r\ntwo"_qs);
    EXPECT_EQ(match(u"one\r\ntwo"_qs, u"zero\none\ntwo\nthree"_qs), u"one\ntwo"_qs);
}

TEST(RobustMatch, AnEnDashIsNoHyphen)
{
    EXPECT_FALSE(robustMatchRange(u"a \u2013 b", u"a - b"_qs));
}

TEST(RobustMatch, AStrayBlankLineInFrontIsTrimmedAway)
{
    EXPECT_EQ(robustMatchRange(u"\nIt rains.", u"Today: It rains. Still."_qs), (TextRange{7, 9}));
    EXPECT_EQ(match(u" \n\u2018It rains.\u2019\n"_qs, u"Today:\r\n'It rains.'\r\n"_qs), u"'It rains.'"_qs);
}

TEST(RobustMatch, AmbiguityOfTheNormalizedFormGoesOnToTheTrimmedOne)
{
    // The space that is trimmed away carries an accent in the first two places; in the third the accent stands alone.
    const QString document = u" \u0301'a \u0301'a\n\u0301'a"_qs;
    EXPECT_EQ(robustMatchRange(u" \u0301\u2019a", document), (TextRange{9, 3}));
    EXPECT_FALSE(robustMatchRange(u"\u2018 x \u2019"_qs, u"' x ' ' x '"_qs));
}

TEST(RobustMatch, OtherWhiteSpaceMustAgree)
{
    EXPECT_FALSE(robustMatchRange(u"It  rains.", u"It rains."_qs));
    EXPECT_FALSE(robustMatchRange(u"It rains.", u"It\u00A0rains."_qs));
}

TEST(RobustMatch, AMatchAtTheEndOfTheDocumentEndsThere)
{
    EXPECT_EQ(robustMatchRange(u"b\u2019"_qs, u"a\r\nb'"_qs), (TextRange{3, 2}));
    EXPECT_EQ(robustMatchRange(u"B", u"ab"_qs), (TextRange{1, 1}));
    EXPECT_EQ(robustMatchRange(u"a\n"_qs, u"x a\r\n"_qs), (TextRange{2, 3}));
}

TEST(RobustMatch, ADecomposedDocumentMatchesAComposedBlockInWholeCharacters)
{
    EXPECT_EQ(match(u"\u201CCaf\u00E9\u201D"_qs, u"Au \"Cafe\u0301\"!"_qs), u"\"Cafe\u0301\""_qs);
    EXPECT_FALSE(robustMatchRange(u"Cafe", u"Cafe\u0301"_qs));
}

TEST(RobustMatch, FindsWhatTheStagesFindOneAfterTheOther)
{
    const QString pieces[] = {u"a"_qs,      u"A"_qs,      u" "_qs,      u"\n"_qs, u"\r\n"_qs, u"\u2019"_qs,
                              u"'"_qs,      u"\u2014"_qs, u"-"_qs,      u"\r"_qs, u"b"_qs,    u"\u0301"_qs,
                              u"\u00E9"_qs, u"e"_qs,      u"\u201C"_qs, u"\""_qs};
    std::mt19937 random(5);
    const auto text = [&](unsigned most) {
        QString result;
        const unsigned variety = 2 + unsigned(random() % (std::size(pieces) - 1));
        const unsigned first = unsigned(random() % std::size(pieces));
        for (auto count = random() % most; count > 0; --count)
            result += pieces[(first + random() % variety) % std::size(pieces)];
        return result;
    };
    int found = 0;
    for (int round = 0; round < 30'000; ++round) {
        const QString document = text(16);
        const QString original = text(5);
        const std::optional<TextRange> range = robustMatchRange(original, document);
        ASSERT_EQ(range, stagedMatchRange(original, document))
            << original.toStdString() << " in " << document.toStdString();
        found += range ? 1 : 0;
    }
    EXPECT_GT(found, 2000);
}

TEST(Replacing, TheRangeIsReplacedAndTheRestStays)
{
    EXPECT_EQ(replacing(u"abc"_qs, {1, 1}, u"XYZ"), u"aXYZc"_qs);
    EXPECT_EQ(replacing(u"abc"_qs, {3, 0}, u"d"), u"abcd"_qs);
    EXPECT_EQ(replacing(u"abc"_qs, {0, 3}, u""), QString(u""_qs));
}
