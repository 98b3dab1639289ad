#include "editing/TextSearch.h"
#include "editing/TextBoundaries.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QList<qsizetype> found(const SearchQuery &query, const QString &text)
{
    QList<qsizetype> locations;
    for (const TextRange &range : occurrences(query, ChunkedText(text)).ranges) {
        EXPECT_EQ(range.length, query.text.size());
        locations.append(range.location);
    }
    return locations;
}

char32_t codePointBefore(const QString &text, qsizetype position)
{
    const QChar unit = text.at(position - 1);
    return unit.isLowSurrogate() && position > 1 ? QChar::surrogateToUcs4(text.at(position - 2), unit) : unit.unicode();
}

char32_t codePointAt(const QString &text, qsizetype position)
{
    const QChar unit = text.at(position);
    return unit.isHighSurrogate() ? QChar::surrogateToUcs4(unit, text.at(position + 1)) : unit.unicode();
}

/// Looks at every position, one after the other.
QList<TextRange> occurrencesThePlainWay(const SearchQuery &query, const ChunkedText &chunked)
{
    const QString text = chunked.toString();
    const auto isBoundary = [&chunked](qsizetype position) {
        return TextBoundaries::isCharacterBoundary(chunked, position);
    };
    const auto isWord = [](char32_t c) { return QChar::isLetterOrNumber(c) || QChar::isMark(c) || c == U'_'; };
    const auto joinsWord = [&](qsizetype position) {
        return position > 0 && position < text.size() && isWord(codePointBefore(text, position)) &&
               isWord(codePointAt(text, position));
    };
    QList<TextRange> ranges;
    const qsizetype length = query.text.size();
    for (qsizetype at = 0; length > 0 && at + length <= text.size();) {
        const auto sensitivity = query.searchCase == SearchCase::Exact ? Qt::CaseSensitive : Qt::CaseInsensitive;
        const bool isWhole = query.words == SearchWords::Any || (!joinsWord(at) && !joinsWord(at + length));
        if (QStringView(text).sliced(at, length).compare(query.text, sensitivity) == 0 && isBoundary(at) &&
            isBoundary(at + length) && isWhole) {
            ranges.append({at, length});
            at += length;
        } else {
            ++at;
        }
    }
    return ranges;
}

} // namespace

TEST(TextSearch, FindsAllOccurrencesInOrder)
{
    EXPECT_EQ(found({u"one"_s}, u"one two one\none"_s), (QList<qsizetype>{0, 8, 12}));
    EXPECT_EQ(found({u"x"_s}, u"abc"_s), QList<qsizetype>());
    EXPECT_EQ(found({u"abcd"_s}, u"abc"_s), QList<qsizetype>());
}

TEST(TextSearch, AnEmptyQueryIsFoundNowhere)
{
    EXPECT_EQ(found({u""_s}, u"abc"_s), QList<qsizetype>());
    EXPECT_EQ(found({u"a"_s}, u""_s), QList<qsizetype>());
}

TEST(TextSearch, OverlappingCandidatesAreTakenFromTheLeft)
{
    EXPECT_EQ(found({u"aa"_s}, u"aaaaa"_s), (QList<qsizetype>{0, 2}));
    EXPECT_EQ(found({u"aba"_s}, u"ababababa"_s), (QList<qsizetype>{0, 4}));
}

TEST(TextSearch, IgnoresOrMindsTheCase)
{
    const QString text = u"Straße STRASSE straße ÉÇ éç ΣΑΣ σας"_s;

    EXPECT_EQ(found({u"straße"_s}, text), (QList<qsizetype>{0, 15}));
    EXPECT_EQ(found({u"straße"_s, SearchCase::Exact}, text), (QList<qsizetype>{15}));
    EXPECT_EQ(found({u"éç"_s}, text), (QList<qsizetype>{22, 25}));
    EXPECT_EQ(found({u"éç"_s, SearchCase::Exact}, text), (QList<qsizetype>{25}));
}

TEST(TextSearch, WholeWordsStandBetweenOtherCharacters)
{
    const auto words = [](const QString &text) {
        return found({u"cat"_s, SearchCase::Ignored, SearchWords::Whole}, text);
    };

    EXPECT_EQ(words(u"cat concat cats cat's cat_ (cat) cat"_s), (QList<qsizetype>{0, 16, 28, 33}));
    EXPECT_EQ(words(u"écat caté cat\u0301 1cat cat1"_s), QList<qsizetype>());
    EXPECT_EQ(words(u"cat\U0001F600 \U0001F600cat"_s), (QList<qsizetype>{0, 8})) << "an emoji is no part of a word";
    EXPECT_EQ(words(u"cat\U0001D400"_s), QList<qsizetype>()) << "a letter outside the first plane is";
    EXPECT_EQ(found({u"(x"_s, SearchCase::Ignored, SearchWords::Whole}, u"a(x b"_s), (QList<qsizetype>{1}))
        << "a query that begins with a sign does not care for what stands before";
}

TEST(TextSearch, FindsNoPartOfACharacter)
{
    EXPECT_EQ(found({u"e"_s}, u"e\u0301e"_s), (QList<qsizetype>{2}));
    EXPECT_EQ(found({u"\u0301"_s}, u"e\u0301"_s), QList<qsizetype>());
    EXPECT_EQ(found({u"\U0001F469"_s}, u"\U0001F468\u200D\U0001F469 \U0001F469"_s), (QList<qsizetype>{6}));
    EXPECT_EQ(found({u"\n"_s}, u"a\r\nb\nc"_s), (QList<qsizetype>{4}));
    EXPECT_EQ(found({u"\r\n"_s}, u"a\r\nb"_s), (QList<qsizetype>{1}));
}

TEST(TextSearch, FindsBetweenTheCharactersOfEveryScript)
{
    // Each unit in front of and behind the needle: the short way must say the same as the rules.
    for (const QString &needle : {u"x"_s, u"世"_s, u"가"_s, u"ก"_s}) {
        QString text;
        for (char16_t unit = 1; unit < 0xFFFE; ++unit)
            if (!QChar::isSurrogate(unit))
                text.append(QChar(unit)).append(needle);
        const SearchQuery query{needle, SearchCase::Exact};

        EXPECT_EQ(occurrences(query, ChunkedText(text)).ranges, occurrencesThePlainWay(query, ChunkedText(text)))
            << needle.toStdString();
    }
}

TEST(TextSearch, FindsWhatStraddlesChunks)
{
    const qsizetype chunk = ChunkedText::kMaximumChunk;
    QString text(5 * chunk, u'.');
    QList<qsizetype> expected;
    for (qsizetype location = 0; location + 6 < text.size(); location += chunk / 4 - 3) {
        text.replace(location, 6, u"needle"_s);
        expected.append(location);
    }

    EXPECT_EQ(found({u"needle"_s}, text), expected);
}

TEST(TextSearch, AQueryMayBeLongerThanAChunk)
{
    const QString needle = u"ab"_s.repeated(ChunkedText::kMaximumChunk) + u"c"_s;

    EXPECT_EQ(found({needle}, u"x"_s + needle + needle + u"ab"_s), (QList<qsizetype>{1, 1 + needle.size()}));
}

TEST(TextSearch, StopsAtTheGreatestNumberOfRanges)
{
    const QString most(SearchResult::kMostRanges, u'a');

    const SearchResult all = occurrences({u"a"_s}, ChunkedText(most));
    const SearchResult some = occurrences({u"a"_s}, ChunkedText(QString(most + u'a')));

    EXPECT_EQ(all.ranges.size(), SearchResult::kMostRanges);
    EXPECT_TRUE(all.isComplete);
    EXPECT_EQ(some.ranges.size(), SearchResult::kMostRanges);
    EXPECT_FALSE(some.isComplete);
}

TEST(TextSearch, StopsWhenAskedTo)
{
    std::stop_source stop;
    stop.request_stop();

    EXPECT_TRUE(occurrences({u"a"_s}, ChunkedText(QString(100'000, u'a')), 1000, stop.get_token()).ranges.isEmpty());
}

TEST(TextSearch, FindsInGeneratedTextsWhatThePlainWayFinds)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        GeneratedText random(seed);
        ChunkedText text(random.text(60));
        // Edits leave chunks of many sizes.
        while (text.size() < 30'000)
            text.replace(random.below(text.size() + 1), 0, random.oneIn(9) ? random.longLine(3000) : random.text(40));
        for (int i = 0; i < 10; ++i) {
            const qsizetype location = random.below(text.size() - 8);
            const SearchQuery query{random.oneIn(2) ? random.piece() : text.sliced(location, 1 + random.below(8)),
                                    random.oneIn(2) ? SearchCase::Exact : SearchCase::Ignored,
                                    random.oneIn(2) ? SearchWords::Any : SearchWords::Whole};
            SCOPED_TRACE(testing::Message()
                         << "seed " << seed << ", query " << query.text.toUtf8().toHex().toStdString());

            ASSERT_EQ(occurrences(query, text).ranges, occurrencesThePlainWay(query, text));
        }
    }
}

TEST(TextSearch, TheFirstFromAPositionGoesRound)
{
    const QList<TextRange> ranges{{2, 3}, {10, 3}, {20, 3}};

    EXPECT_EQ(firstFrom(ranges, 0), 0);
    EXPECT_EQ(firstFrom(ranges, 2), 0);
    EXPECT_EQ(firstFrom(ranges, 3), 1);
    EXPECT_EQ(firstFrom(ranges, 20), 2);
    EXPECT_EQ(firstFrom(ranges, 21), 0);
    EXPECT_EQ(firstFrom({}, 0), std::nullopt);
}

TEST(TextSearch, TheLastBeforeAPositionGoesRound)
{
    const QList<TextRange> ranges{{2, 3}, {10, 3}, {20, 3}};

    EXPECT_EQ(lastBefore(ranges, 99), 2);
    EXPECT_EQ(lastBefore(ranges, 23), 2);
    EXPECT_EQ(lastBefore(ranges, 22), 1);
    EXPECT_EQ(lastBefore(ranges, 13), 1);
    EXPECT_EQ(lastBefore(ranges, 4), 2);
    EXPECT_EQ(lastBefore({}, 0), std::nullopt);
}

} // namespace Tessaline
