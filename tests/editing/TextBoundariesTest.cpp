#include "editing/TextBoundaries.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace TextBoundaries;

/// All stops of `next` from the start to the end.
template <class Next>
QList<qsizetype> stops(const ChunkedText &text, Next next)
{
    QList<qsizetype> stops{0};
    while (stops.constLast() < text.size() && stops.size() <= text.size())
        stops.append(next(text, stops.constLast()));
    return stops;
}

template <class Previous>
QList<qsizetype> stopsBackwards(const ChunkedText &text, Previous previous)
{
    QList<qsizetype> stops{text.size()};
    while (stops.constLast() > 0 && stops.size() <= text.size())
        stops.append(previous(text, stops.constLast()));
    std::reverse(stops.begin(), stops.end());
    return stops;
}

struct StopsCase {
    const char *name;
    QString text;
    QList<qsizetype> stops;
};

class Characters : public testing::TestWithParam<StopsCase>
{};
class WordStarts : public testing::TestWithParam<StopsCase>
{};
class WordStartsBackwards : public testing::TestWithParam<StopsCase>
{};
class WordEnds : public testing::TestWithParam<StopsCase>
{};

const auto kName = [](const auto &test) { return test.param.name; };

} // namespace

TEST_P(Characters, AreWholeInBothDirections)
{
    const ChunkedText text(GetParam().text);

    EXPECT_EQ(stops(text, nextCharacter), GetParam().stops);
    EXPECT_EQ(stopsBackwards(text, previousCharacter), GetParam().stops);
}

INSTANTIATE_TEST_SUITE_P(
    TextBoundaries, Characters,
    testing::Values(StopsCase{"Empty", u""_s, {0}}, StopsCase{"Letters", u"abc"_s, {0, 1, 2, 3}},
                    StopsCase{"CarriageReturnAndLineFeedAreOne", u"a\r\nb"_s, {0, 1, 3, 4}},
                    StopsCase{"LineFeedAndCarriageReturnAreTwo", u"\n\r"_s, {0, 1, 2}},
                    StopsCase{"SurrogatePair", u"a\U0001D11Eb"_s, {0, 1, 3, 4}},
                    StopsCase{"CombiningMarks", u"e\u0301a\u0300\u0323"_s, {0, 2, 5}},
                    StopsCase{"AMarkAtTheStart", u"\u0301a"_s, {0, 1, 2}},
                    StopsCase{"AMarkBehindALineEndStandsAlone", u"a\n\u0301"_s, {0, 1, 2, 3}},
                    StopsCase{"SkinTone", u"\U0001F44D\U0001F3FDx"_s, {0, 4, 5}},
                    StopsCase{"Family", u"\U0001F468\u200D\U0001F469\u200D\U0001F467\U0001F600"_s, {0, 8, 10}},
                    StopsCase{"RainbowFlag", u"\U0001F3F3\uFE0F\u200D\U0001F308"_s, {0, 6}},
                    StopsCase{"Flags", u"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA"_s, {0, 4, 8}},
                    StopsCase{"FlagOfScotland",
                              u"\U0001F3F4\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F"_s,
                              {0, 14}},
                    StopsCase{"Keycap", u"1\uFE0F\u20E3"_s, {0, 3}},
                    StopsCase{"HangulJamo", u"\u1112\u1161\u11AB\u1100\u1173"_s, {0, 3, 5}},
                    StopsCase{"DevanagariBesideAnEmoji", u"\u0924\u0947\U0001F468"_s, {0, 2, 4}},
                    StopsCase{"ThaiBesideAnEmoji", u"\u0E01\u0E33\U0001F468"_s, {0, 2, 4}},
                    StopsCase{"NoBreakSpaceAndByteOrderMark", u"\uFEFF\u00A0x"_s, {0, 1, 2, 3}},
                    StopsCase{"NulObjectAndNonCharacter", QString(QChar(0)) + u"\uFFFC\uFDD0"_s, {0, 1, 2, 3}}),
    kName);

TEST_P(WordStarts, AreTheStopsForwards)
{
    EXPECT_EQ(stops(ChunkedText(GetParam().text), nextWordStart), GetParam().stops);
}

INSTANTIATE_TEST_SUITE_P(
    TextBoundaries, WordStarts,
    testing::Values(StopsCase{"Spaces", u"one  two"_s, {0, 5, 8}}, StopsCase{"Signs", u"a, b."_s, {0, 1, 3, 4, 5}},
                    StopsCase{"Apostrophe", u"can't do"_s, {0, 6, 8}},
                    StopsCase{"Underscore", u"snake_case x"_s, {0, 11, 12}}, StopsCase{"Tabs", u"a\t \tb"_s, {0, 4, 5}},
                    StopsCase{"NoBreakSpace", u"a\u00A0b"_s, {0, 2, 3}},
                    StopsCase{"EveryLineEndIsAStop", u"one \r\n\n two"_s, {0, 4, 6, 7, 8, 11}},
                    StopsCase{"Greek", u"καλημέρα κόσμε"_s, {0, 9, 14}}, StopsCase{"Hebrew", u"שלום עולם"_s, {0, 5, 9}},
                    StopsCase{"Arabic", u"مرحبا بك"_s, {0, 6, 8}}, StopsCase{"Hindi", u"नमस्ते दुनिया"_s, {0, 7, 13}},
                    StopsCase{"ThaiWithoutSpaces", u"สวัสดีชาวโลก"_s, {0, 6, 9, 12}},
                    StopsCase{"Emoji", u"\U0001F600 x"_s, {0, 3, 4}}),
    kName);

TEST_P(WordStartsBackwards, AreTheStops)
{
    EXPECT_EQ(stopsBackwards(ChunkedText(GetParam().text), previousWordStart), GetParam().stops);
}

INSTANTIATE_TEST_SUITE_P(TextBoundaries, WordStartsBackwards,
                         testing::Values(StopsCase{"Spaces", u"one  two  "_s, {0, 5, 10}},
                                         StopsCase{"LineEnds", u"one \r\n two\n"_s, {0, 4, 6, 7, 10, 11}},
                                         StopsCase{"Signs", u"a, b."_s, {0, 1, 3, 4, 5}},
                                         StopsCase{"Tabs", u"a\t \tb"_s, {0, 4, 5}}),
                         kName);

TEST_P(WordEnds, AreTheStopsForwards)
{
    EXPECT_EQ(stops(ChunkedText(GetParam().text), nextWordEnd), GetParam().stops);
}

INSTANTIATE_TEST_SUITE_P(TextBoundaries, WordEnds,
                         testing::Values(StopsCase{"SpacesBelongToTheWordBehind", u"one  two "_s, {0, 3, 8, 9}},
                                         StopsCase{"TheLineEndIsPassedOnItsOwn", u"one  \r\n two"_s, {0, 3, 5, 7, 11}},
                                         StopsCase{"Signs", u"a, b."_s, {0, 1, 2, 4, 5}},
                                         StopsCase{"Tabs", u"a\t \tb"_s, {0, 1, 5}}),
                         kName);

namespace {

struct WordCase {
    const char *name;
    QString text;
    qsizetype position;
    QString word;
};

class WordAt : public testing::TestWithParam<WordCase>
{};

} // namespace

TEST_P(WordAt, IsWhatADoubleClickMeans)
{
    const ChunkedText text(GetParam().text);

    const TextRange word = wordAt(text, GetParam().position);

    EXPECT_EQ(text.sliced(word.location, word.length), GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(
    TextBoundaries, WordAt,
    testing::Values(WordCase{"AtItsStart", u"one two"_s, 4, u"two"_s}, WordCase{"Inside", u"one two"_s, 5, u"two"_s},
                    WordCase{"BehindItAtTheEndOfTheText", u"one two"_s, 7, u"two"_s},
                    WordCase{"BehindItAtTheEndOfAParagraph", u"one\r\ntwo"_s, 3, u"one"_s},
                    WordCase{"BetweenCarriageReturnAndLineFeed", u"one\r\ntwo"_s, 4, u"one"_s},
                    WordCase{"AGap", u"one \t  two"_s, 5, u" \t  "_s},
                    WordCase{"AGapAtTheEndOfAParagraph", u"one  \n  two"_s, 4, u"  "_s},
                    WordCase{"AGapAtTheStartOfAParagraph", u"one  \n  two"_s, 7, u"  "_s},
                    WordCase{"ASign", u"one, two"_s, 3, u","_s}, WordCase{"AnEmptyParagraph", u"a\n\nb"_s, 2, u""_s},
                    WordCase{"AnEmptyText", u""_s, 0, u""_s},
                    WordCase{"AnEmoji", u"a\U0001F600b"_s, 1, u"\U0001F600"_s},
                    WordCase{"AJoinedEmoji", u"\U0001F468\u200D\U0001F469 x"_s, 3, u"\U0001F468\u200D\U0001F469"_s},
                    WordCase{"WithMarks", u"cafe\u0301s x"_s, 2, u"cafe\u0301s"_s},
                    WordCase{"Thai", u"สวัสดีชาวโลก"_s, 7, u"ชาว"_s}),
    kName);

namespace {

struct ParagraphCase {
    const char *name;
    QString text;
    qsizetype position;
    TextRange paragraph;
    qsizetype contentLength;
    QString lineEnd; // that a new line takes there
};

class Paragraph : public testing::TestWithParam<ParagraphCase>
{};

} // namespace

TEST_P(Paragraph, IsFoundWithAndWithoutItsLineEnd)
{
    const ChunkedText text(GetParam().text);

    EXPECT_EQ(paragraphAt(text, GetParam().position), GetParam().paragraph);
    EXPECT_EQ(paragraphContentAt(text, GetParam().position),
              (TextRange{GetParam().paragraph.location, GetParam().contentLength}));
}

TEST_P(Paragraph, GivesNewLinesItsLineEnd)
{
    EXPECT_EQ(lineEndFor(ChunkedText(GetParam().text), GetParam().position), GetParam().lineEnd);
}

INSTANTIATE_TEST_SUITE_P(
    TextBoundaries, Paragraph,
    testing::Values(ParagraphCase{"EmptyText", u""_s, 0, {0, 0}, 0, u"\n"_s},
                    ParagraphCase{"OneParagraph", u"abc"_s, 3, {0, 3}, 3, u"\n"_s},
                    ParagraphCase{"LineFeed", u"a\nbc\nd"_s, 3, {2, 3}, 2, u"\n"_s},
                    ParagraphCase{"LineFeedAtItsEnd", u"a\nbc\nd"_s, 4, {2, 3}, 2, u"\n"_s},
                    ParagraphCase{"CarriageReturn", u"a\rbc\rd"_s, 2, {2, 3}, 2, u"\r"_s},
                    ParagraphCase{"Both", u"a\r\nbc\r\nd"_s, 3, {3, 4}, 2, u"\r\n"_s},
                    ParagraphCase{"BetweenTheHalvesOfALineEnd", u"a\r\nbc"_s, 2, {0, 3}, 1, u"\r\n"_s},
                    ParagraphCase{"ParagraphSeparator", u"a\u2029b"_s, 0, {0, 2}, 1, u"\u2029"_s},
                    ParagraphCase{"LineSeparatorIsContent", u"a\u2028b"_s, 0, {0, 3}, 3, u"\n"_s},
                    ParagraphCase{"TheLastTakesTheLineEndOfTheOneBefore", u"a\r\nb"_s, 4, {3, 1}, 1, u"\r\n"_s},
                    ParagraphCase{"TheEmptyLastToo", u"a\r"_s, 2, {2, 0}, 0, u"\r"_s},
                    ParagraphCase{"MixedLineEnds", u"a\r\nb\nc"_s, 3, {3, 2}, 1, u"\n"_s},
                    ParagraphCase{"EmptyBetween", u"a\n\nb"_s, 2, {2, 1}, 0, u"\n"_s},
                    ParagraphCase{"WrongWayRound", u"a\n\rb"_s, 2, {2, 1}, 0, u"\r"_s}),
    kName);

TEST(TextBoundaries, ParagraphsReachOverManyChunks)
{
    const QString line = u"x"_s.repeated(3 * ChunkedText::kMaximumChunk);
    const ChunkedText text(u"a\r\n"_s + line + u"\r\nb"_s);
    const TextRange expected{3, line.size() + 2};

    EXPECT_EQ(paragraphAt(text, 3), expected);
    EXPECT_EQ(paragraphAt(text, 3 + line.size() / 2), expected);
    EXPECT_EQ(paragraphAt(text, 3 + line.size()), expected);
    EXPECT_EQ(paragraphContentAt(text, 3 + line.size()).length, line.size());
}

TEST(TextBoundaries, AWordWithoutEndIsTakenInPieces)
{
    const ChunkedText text(u"x"_s.repeated(100'000));

    const qsizetype next = nextWordStart(text, 50'000);
    const qsizetype previous = previousWordStart(text, 50'000);

    EXPECT_GT(next, 50'000);
    EXPECT_LT(previous, 50'000);
}

TEST(TextBoundaries, GoForwardsAndBackwardsThroughTheSameCharactersOfGeneratedTexts)
{
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        GeneratedText random(seed);
        const ChunkedText text(random.text(60));

        const QList<qsizetype> forwards = stops(text, nextCharacter);

        ASSERT_EQ(stopsBackwards(text, previousCharacter), forwards);
        for (qsizetype position = 0; position <= text.size(); ++position)
            ASSERT_EQ(isCharacterBoundary(text, position), forwards.contains(position)) << position;
        for (const auto step : {nextWordStart, nextWordEnd})
            for (const qsizetype stop : stops(text, step))
                ASSERT_TRUE(forwards.contains(stop)) << stop;
        for (const qsizetype stop : stopsBackwards(text, previousWordStart))
            ASSERT_TRUE(forwards.contains(stop)) << stop;
        for (const qsizetype position : forwards) {
            const TextRange word = wordAt(text, position);
            const TextRange paragraph = paragraphContentAt(text, position);
            ASSERT_TRUE(forwards.contains(word.location)) << position;
            ASSERT_TRUE(forwards.contains(word.end())) << position;
            ASSERT_EQ(word.isEmpty(), paragraph.isEmpty()) << position;
            ASSERT_LE(paragraph.location, word.location);
            ASSERT_GE(paragraph.end(), word.end());
        }
    }
}

} // namespace Tessaline
