#include "foundation/ChunkedText.h"

#include "tests/support/Printers.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QRandomGenerator>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMaximum = ChunkedText::kMaximumChunk;

/// What holds for the chunks of every text.
void expectSoundChunks(const ChunkedText &text)
{
    qsizetype size = 0;
    QChar last;
    for (const QString &chunk : text.chunks()) {
        ASSERT_FALSE(chunk.isEmpty());
        ASSERT_LE(chunk.size(), kMaximum);
        ASSERT_FALSE(last.isHighSurrogate() && chunk.at(0).isLowSurrogate()) << "a pair straddles two chunks";
        ASSERT_FALSE(last == u'\r' && chunk.at(0) == u'\n') << "a CR LF straddles two chunks";
        last = chunk.back();
        size += chunk.size();
    }
    ASSERT_EQ(text.size(), size);
}

/// Text whose units make it likely that an edit meets a pair or a CR LF.
QString trickyText(QRandomGenerator &random, qsizetype length)
{
    static const QStringList kPieces{u"a"_s, u"\r\n"_s, u"\n"_s, u"\r"_s, u"😀"_s, u"é"_s, u"\u2028"_s, u"字"_s};
    QString text;
    while (text.size() < length)
        text.append(kPieces.at(random.bounded(kPieces.size())));
    return text;
}

/// Moves a position out of the middle of a surrogate pair.
qsizetype outsideOfPairs(const QString &text, qsizetype position)
{
    if (position > 0 && position < text.size() && text.at(position).isLowSurrogate())
        return position - 1;
    return position;
}

} // namespace

TEST(ChunkedText, IsEmptyAtFirst)
{
    const ChunkedText text;

    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.size(), 0);
    EXPECT_TRUE(text.chunks().isEmpty());
    EXPECT_EQ(text.toString(), QString());
    EXPECT_EQ(text, ChunkedText(u""));
}

TEST(ChunkedText, HoldsWhatItIsGiven)
{
    for (const qsizetype size : {qsizetype(1), kMaximum - 1, kMaximum, kMaximum + 1, 3 * kMaximum, 10 * kMaximum + 7}) {
        const QString string(size, u'x');
        const ChunkedText text(string);
        expectSoundChunks(text);
        EXPECT_EQ(text.toString(), string);
    }
}

TEST(ChunkedText, NeverCutsAPairOrACrLf)
{
    for (const QString &piece : {u"😀"_s, u"\r\n"_s})
        for (const QString &before : {QString(), u"x"_s}) {
            const QString string = before + piece.repeated(4 * kMaximum);
            const ChunkedText text(string);
            expectSoundChunks(text);
            EXPECT_EQ(text.toString(), string);
            expectSoundChunks(ChunkedText::fromUtf8(string.toUtf8()).value());
        }
}

TEST(ChunkedText, EqualsAQStringUnderRandomEdits)
{
    for (const quint32 seed : {1u, 2u, 3u, 4u}) {
        SCOPED_TRACE(seed);
        QRandomGenerator random(seed);
        QString model = trickyText(random, 3 * kMaximum);
        ChunkedText text(model);
        for (int edit = 0; edit < 1500; ++edit) {
            const qsizetype size = model.size();
            const qsizetype location = outsideOfPairs(model, random.bounded(size + 1));
            // Mostly typing and short deletions, sometimes a stretch over several chunks.
            const qsizetype reach = edit % 10 == 0 ? 2 * kMaximum : 3;
            const qsizetype end = outsideOfPairs(model, std::min(size, location + random.bounded(reach)));
            const qsizetype length = std::max<qsizetype>(0, end - location);
            const QString inserted = trickyText(random, random.bounded(edit % 10 == 5 ? 2 * kMaximum : 4));

            const TextChange change = text.replace(location, length, inserted);
            model.replace(location, length, inserted);

            ASSERT_EQ(change, (TextChange{location, length, inserted.size()}));
            expectSoundChunks(text);
            if (::testing::Test::HasFatalFailure())
                return;
            ASSERT_EQ(text.size(), model.size());
            if (edit % 25 == 0) {
                ASSERT_EQ(text.toString(), model);
            }
            const qsizetype from = random.bounded(model.size() + 1);
            const qsizetype count = std::min<qsizetype>(model.size() - from, 50);
            ASSERT_EQ(text.sliced(from, count), model.sliced(from, count));
        }
        EXPECT_EQ(text, ChunkedText(model));
    }
}

TEST(ChunkedText, StaysSoundWhenEditsBreakPairsAndLineEnds)
{
    QRandomGenerator random(11);
    ChunkedText text(u"😀\r\n"_s.repeated(2 * kMaximum));
    QString model = text.toString();
    for (int edit = 0; edit < 2000; ++edit) {
        const qsizetype location = random.bounded(model.size());
        text.replace(location, 1, QStringView());
        model.remove(location, 1);
        expectSoundChunks(text);
        if (::testing::Test::HasFatalFailure())
            return;
    }
    EXPECT_EQ(text.toString(), model);
}

TEST(ChunkedText, EditsAtTheEdgesOfChunksKeepPairsTogether)
{
    const ChunkedText whole(QString(4 * kMaximum, u'x'));
    const qsizetype edge = whole.chunks().at(0).size();

    ChunkedText lineEnds = whole;
    lineEnds.replace(edge - 1, 1, u"\r");
    lineEnds.replace(edge, 1, u"\n");
    expectSoundChunks(lineEnds);
    EXPECT_EQ(lineEnds.sliced(edge - 1, 2), u"\r\n"_s);

    ChunkedText reversed = whole;
    reversed.replace(edge, 1, u"\n");
    reversed.replace(edge - 1, 1, u"\r");
    expectSoundChunks(reversed);
    EXPECT_EQ(reversed, lineEnds);
}

TEST(ChunkedText, EmptiesAndFillsAgain)
{
    ChunkedText text(QString(5 * kMaximum, u'x'));

    text.replace(0, text.size(), QStringView());
    EXPECT_TRUE(text.isEmpty());
    EXPECT_TRUE(text.chunks().isEmpty());

    text.replace(0, 0, u"again");
    EXPECT_EQ(text.toString(), u"again"_s);
}

TEST(ChunkedText, AReplacementOfNothingByNothingChangesNothing)
{
    ChunkedText text(u"abc");

    EXPECT_EQ(text.replace(1, 0, QStringView()), (TextChange{1, 0, 0}));

    EXPECT_EQ(text, ChunkedText(u"abc"));
}

TEST(ChunkedText, LonelySurrogatesBecomeReplacementCharacters)
{
    QString text = u"a?b?😀?"_s;
    text[1] = QChar(0xD83D);
    text[3] = QChar(0xDE00);
    text[6] = QChar(0xD83D);

    ChunkedText chunked;
    const TextChange change = chunked.replace(0, 0, text);

    EXPECT_EQ(chunked.toString(), u"a\uFFFDb\uFFFD😀\uFFFD"_s);
    EXPECT_EQ(change.inserted, text.size());
}

TEST(ChunkedText, CopiesAreIndependent)
{
    ChunkedText original(QString(3 * kMaximum, u'x'));
    const ChunkedText snapshot = original;

    original.replace(kMaximum, 10, u"changed");

    EXPECT_EQ(snapshot.toString(), QString(3 * kMaximum, u'x'));
    EXPECT_NE(original, snapshot);
}

TEST(ChunkedText, EqualityDoesNotDependOnTheCuts)
{
    const QString string = QString(3 * kMaximum, u'x') + u"é字"_s.repeated(kMaximum);
    const ChunkedText whole(string);
    ChunkedText typed(QStringView(string).sliced(5000)); // cut at other places than the whole
    typed.replace(0, 0, QStringView(string).first(5000));
    const ChunkedText decoded = ChunkedText::fromUtf8(string.toUtf8()).value();

    ASSERT_FALSE(typed.chunks() == whole.chunks());
    ASSERT_FALSE(decoded.chunks() == whole.chunks());
    EXPECT_EQ(typed, whole);
    EXPECT_EQ(decoded, whole);

    typed.replace(string.size() - 1, 1, u"!");
    EXPECT_NE(typed, whole);
    EXPECT_NE(whole, ChunkedText(string + u'x'));
    EXPECT_NE(whole, ChunkedText());
}

TEST(ChunkedText, WalksForwardsAndBackwards)
{
    QRandomGenerator random(5);
    const QString string = trickyText(random, 5 * kMaximum);
    const ChunkedText text(string);

    QString forwards;
    while (forwards.size() < text.size()) {
        const QStringView part = text.chunkFrom(forwards.size());
        ASSERT_FALSE(part.isEmpty());
        forwards.append(part);
    }
    EXPECT_EQ(forwards, string);
    EXPECT_TRUE(text.chunkFrom(text.size()).isEmpty());

    QString backwards;
    while (backwards.size() < text.size()) {
        const QStringView part = text.chunkUpTo(text.size() - backwards.size());
        ASSERT_FALSE(part.isEmpty());
        backwards.prepend(part);
    }
    EXPECT_EQ(backwards, string);
    EXPECT_TRUE(text.chunkUpTo(0).isEmpty());
}

TEST(ChunkedText, ReadsSingleUnits)
{
    QRandomGenerator random(6);
    const QString string = trickyText(random, 3 * kMaximum);
    const ChunkedText text(string);

    for (qsizetype i = 0; i < string.size(); i += 97)
        ASSERT_EQ(text.at(i), string.at(i));
}

TEST(ChunkedText, TypingDoesNotMultiplyTheChunks)
{
    ChunkedText text(QString(10 * kMaximum, u'x'));
    const qsizetype middle = text.size() / 2;

    for (int i = 0; i < 40000; ++i)
        text.replace(middle + i, 0, u"y");
    EXPECT_LE(text.chunks().size(), 30);

    for (int i = 0; i < 40000; ++i)
        text.replace(middle, 1, QStringView());
    EXPECT_LE(text.chunks().size(), 25);
    EXPECT_EQ(text, ChunkedText(QString(10 * kMaximum, u'x')));
}

} // namespace Tessaline
