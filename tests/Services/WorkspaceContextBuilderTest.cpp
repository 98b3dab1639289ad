#include "Services/WorkspaceContextBuilder.h"

#include "Services/TokenSearch.h"
#include "tests/Services/PlainExcerpts.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <random>

using namespace Tessaline;
using namespace Tessaline::WorkspaceContextBuilder;
using namespace Qt::StringLiterals;

namespace {

QStringList chunks(const QString &text, qint64 size, qint64 overlap)
{
    QStringList chunks;
    for (const QStringView chunk : splitIntoChunks(text, size, overlap))
        chunks.append(chunk.toString());
    return chunks;
}

QString numberedWords(int first, int last)
{
    QString text;
    for (int i = first; i <= last; ++i)
        text += u"word%1 "_s.arg(i);
    return text;
}

} // namespace

// --- lowered --------------------------------------------------------------------------------------------------------

TEST(Lowered, IsTheLowerCaseOfEveryLetter)
{
    for (char32_t first = 0; first < 0x10000; first += 16) { // of the first plane
        QString text;
        for (char32_t codePoint = first; codePoint < first + 16; ++codePoint)
            text.append(QChar(codePoint));
        ASSERT_EQ(lowered(text), text.toLower()) << std::hex << uint32_t(first);
    }
    EXPECT_EQ(lowered(u"A\U00010400İB"_s), u"a\U00010428i\u0307b"_s);
    EXPECT_EQ(lowered(QString()), QString());
}

// --- queryTokens ---------------------------------------------------------------------------------------------------

TEST(QueryTokens, AreTheWordsInLowerCaseSortedEachOnce)
{
    EXPECT_EQ(queryTokens(u"Harbour TIDES, harbour-master; snake_case x2y!"_s),
              (QStringList{u"harbour"_s, u"master"_s, u"snake_case"_s, u"tides"_s, u"x2y"_s}));
}

TEST(QueryTokens, LeaveOutShortWordsAndStopWords)
{
    EXPECT_TRUE(queryTokens(u"What is it that we would make of THIS, or at"_s).isEmpty());
    const QString stopWords =
        u"about after again also could from have into just make more should that their there these "
        u"this what when where which with would your"_s;
    for (const QString &word : stopWords.split(u' '))
        EXPECT_TRUE(queryTokens(word).isEmpty()) << word.toStdString();
    EXPECT_EQ(queryTokens(u"ab abc the yours"_s), (QStringList{u"abc"_s, u"the"_s, u"yours"_s}));
}

TEST(QueryTokens, AreAtMostFortyEightAndRepeatsUseThemUp)
{
    EXPECT_EQ(queryTokens(numberedWords(10, 59)).size(), 48);
    EXPECT_FALSE(queryTokens(numberedWords(10, 59)).contains(u"word58"_s));

    const QStringList tokens = queryTokens(u"tide tide tide with "_s + numberedWords(10, 59));
    EXPECT_EQ(tokens.size(), 46);
    EXPECT_TRUE(tokens.contains(u"word54"_s));
    EXPECT_FALSE(tokens.contains(u"word55"_s));
}

TEST(QueryTokens, CountCharactersAsAPersonDoes)
{
    EXPECT_TRUE(queryTokens(u"e\u0301te"_s).contains(u"e\u0301te"_s)); // three characters of four units
    EXPECT_TRUE(queryTokens(u"e\u0301t"_s).isEmpty());                 // two of three
    EXPECT_EQ(queryTokens(u"ÉTÉ Straße"_s), (QStringList{u"straße"_s, u"été"_s}));
    EXPECT_EQ(queryTokens(u"\U00020000\U00020001\U00020002"_s).size(), 1);             // letters beyond the first plane
    EXPECT_TRUE(queryTokens(u"\U0001F600\U0001F600\U0001F600 ___\u0301"_s).isEmpty()); // a marked _ is no _
    EXPECT_EQ(queryTokens(u"1½Ⅷ"_s).size(), 1);                                        // numbers of all kinds
    EXPECT_EQ(queryTokens(u"ab\u200Dcd e\r\nfgh"_s), (QStringList{u"ab\u200Dcd"_s, u"fgh"_s}));
}

TEST(QueryTokens, OfNothingAreNone)
{
    EXPECT_TRUE(queryTokens(QString()).isEmpty());
    EXPECT_TRUE(queryTokens(u" \n\t--- "_s).isEmpty());
}

TEST(QueryTokens, AreSortedByCodePoint)
{
    EXPECT_EQ(queryTokens(u"\U00020000aa \uFA0Eaa zaa"_s), (QStringList{u"zaa"_s, u"\uFA0Eaa"_s, u"\U00020000aa"_s}));
}

// --- tokenHits -----------------------------------------------------------------------------------------------------

TEST(TokenHits, CountEveryOccurrenceOfEveryToken)
{
    EXPECT_EQ(tokenHits({u"art"_s, u"tide"_s}, u"start of the art, tides and tide"), 4);
    EXPECT_EQ(tokenHits({u"art"_s}, u"ART"), 0); // the caller lower-cases
    EXPECT_EQ(tokenHits({u"end"_s}, u"at the end"), 1);
    EXPECT_EQ(tokenHits({u"longer than the text"_s}, u"text"), 0);
}

TEST(TokenHits, OfOneTokenDoNotOverlapButThoseOfTwoMay)
{
    EXPECT_EQ(tokenHits({u"aaa"_s}, u"aaaaaaa"), 2);
    EXPECT_EQ(tokenHits({u"abab"_s}, u"abababab"), 2);
    EXPECT_EQ(tokenHits({u"harbour"_s, u"arb"_s}, u"harbour"), 2);
    EXPECT_EQ(tokenHits({u"abcd"_s, u"abce"_s}, u"abceabcd"), 2);
}

TEST(TokenHits, OfShortEmptyAndRepeatedTokens)
{
    EXPECT_EQ(tokenHits({u"a"_s, u"bb"_s}, u"abbba"), 3);
    EXPECT_EQ(tokenHits({QString()}, u"text"), 0);
    EXPECT_EQ(tokenHits({u"tide"_s, u"tide"_s}, u"tide"), 1);
    EXPECT_EQ(tokenHits({}, u"text"), 0);
    EXPECT_EQ(tokenHits({u"tide"_s}, QStringView()), 0);
}

TEST(TokenHits, AreThoseOfCuttingTheTextAtEachToken)
{
    std::mt19937 random(11);
    const auto generated = [&random](int longest) {
        QString text;
        for (int length = 1 + int(random() % unsigned(longest)); length > 0; --length)
            text += u"abä\u4E2D"[random() % 4];
        return text;
    };
    for (int round = 0; round < 2000; ++round) {
        QStringList tokens;
        for (int count = int(random() % 6); count > 0; --count)
            tokens.append(generated(6));
        tokens.removeDuplicates();
        const QString text = generated(60);
        ASSERT_EQ(tokenHits(tokens, text), PlainExcerpts::tokenHits(tokens, text))
            << text.toStdString() << " " << tokens.join(u' ').toStdString();
    }
}

// --- splitIntoChunks -----------------------------------------------------------------------------------------------

TEST(SplitIntoChunks, GivesATextThatIsNoLongerAsItsOnlyChunk)
{
    EXPECT_EQ(chunks(u"abc"_s, 3, 1), QStringList{u"abc"_s});
    EXPECT_EQ(chunks(QString(), 3, 1), QStringList{QString()});
    EXPECT_EQ(chunks(u"e\u0301e\u0301e\u0301"_s, 3, 1), QStringList{u"e\u0301e\u0301e\u0301"_s});
    EXPECT_EQ(chunks(u"abc"_s, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()),
              QStringList{u"abc"_s});
}

TEST(SplitIntoChunks, GivesNothingWithoutASize)
{
    EXPECT_TRUE(chunks(u"abc"_s, 0, 0).isEmpty());
    EXPECT_TRUE(chunks(u"abc"_s, -1, -5).isEmpty());
    EXPECT_TRUE(chunks(QString(), 0, 0).isEmpty());
}

TEST(SplitIntoChunks, RepeatsTheOverlapAndStopsAtTheFirstChunkThatReachesTheEnd)
{
    EXPECT_EQ(chunks(u"abcdefgh"_s, 4, 1), (QStringList{u"abcd"_s, u"defg"_s, u"gh"_s}));
    EXPECT_EQ(chunks(u"abcdefg"_s, 4, 1), (QStringList{u"abcd"_s, u"defg"_s}));
    EXPECT_EQ(chunks(u"abcd"_s, 3, 9), (QStringList{u"abc"_s, u"bcd"_s})); // at most all but one are repeated
    EXPECT_EQ(chunks(u"abcdefgh"_s, 2, -2), (QStringList{u"ab"_s, u"ef"_s}));
    EXPECT_EQ(chunks(u"abcdefgh"_s, 2, std::numeric_limits<qint64>::min()), QStringList{u"ab"_s});
}

TEST(SplitIntoChunks, BeginsTheNextWindowWhereTheOverlapDoes)
{
    const QString text = u"0123456789"_s.repeated(300);
    EXPECT_EQ(chunks(text.first(2999), kWindowSize, kWindowOverlap).size(), 1);
    EXPECT_EQ(chunks(text, kWindowSize, kWindowOverlap).size(), 1);

    const QStringList two = chunks(text + u'x', kWindowSize, kWindowOverlap);
    ASSERT_EQ(two.size(), 2);
    EXPECT_EQ(two.at(0), text);
    EXPECT_EQ(two.at(1), text.sliced(2760) + u'x');
}

TEST(SplitIntoChunks, NeverCutsACharacter)
{
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
    EXPECT_EQ(chunks(family + u"\r\n"_s + family, 2, 1), (QStringList{family + u"\r\n"_s, u"\r\n"_s + family}));
}

TEST(SplitIntoChunks, GivesWhatThePlainRuleGives)
{
    const QString pieces[] = {u"a"_s, u"\r"_s, u"\n"_s, u"\u0301"_s, u"\U0001F469"_s, u"\u200D"_s, u"ж"_s};
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        QString text;
        for (int count = int(random() % 30); count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        const qint64 size = qint64(random() % 8);
        const qint64 overlap = qint64(random() % 12) - 3;
        ASSERT_EQ(chunks(text, size, overlap), PlainExcerpts::splitIntoChunks(text, size, overlap))
            << text.toStdString() << " " << size << " " << overlap;
    }
}

// --- bestExcerpt ---------------------------------------------------------------------------------------------------

TEST(BestExcerpt, OfAShortTextIsTheText)
{
    EXPECT_EQ(bestExcerpt(u"A short text."_s, u"harbour"_s), u"A short text."_s);
    EXPECT_EQ(bestExcerpt(QString(), u"harbour"_s), QString());
}

TEST(BestExcerpt, IsTheWindowWithTheMostHits)
{
    QString text(9000, u'.');
    text.replace(100, 7, u"harbour"_s);
    text.replace(6000, 15, u"HARBOUR Harbour"_s);
    EXPECT_EQ(bestExcerpt(text, u"the harbour"_s), text.sliced(5520, 3000));
}

TEST(BestExcerpt, IsTheFirstWindowOnATieAndWithoutTokens)
{
    QString text(9000, u'.');
    text.replace(4000, 7, u"harbour"_s);
    text.replace(8000, 7, u"harbour"_s);
    EXPECT_EQ(bestExcerpt(text, u"harbour"_s), text.sliced(2760, 3000));
    EXPECT_EQ(bestExcerpt(text, u"what is this"_s), text.first(3000));
    EXPECT_EQ(bestExcerpt(text, u"lighthouse"_s), text.first(3000));
}
