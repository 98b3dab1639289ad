#include "editing/BlockIndex.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

bool isParagraphEnd(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar(QChar::ParagraphSeparator);
}

/// The lengths of the paragraphs, found the plain way; the last one ends with the text.
QList<qsizetype> paragraphLengths(const QString &text)
{
    QList<qsizetype> lengths;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isFirstOfPair = text.at(i) == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n';
        if (!isParagraphEnd(text.at(i)) || isFirstOfPair)
            continue;
        lengths.append(i + 1 - start);
        start = i + 1;
    }
    lengths.append(text.size() - start);
    return lengths;
}

QList<LayoutBlock> blocksOf(const BlockIndex &index, qsizetype size)
{
    QList<LayoutBlock> blocks;
    qsizetype position = 0;
    for (qsizetype i = 0; i < index.count(); ++i) {
        blocks.append(index.blockAt(position));
        position = blocks.constLast().range.end();
        if (position > size)
            break;
    }
    return blocks;
}

QList<qsizetype> paragraphLengths(const QList<LayoutBlock> &blocks)
{
    QList<qsizetype> lengths{0};
    for (const LayoutBlock &block : blocks) {
        lengths.last() += block.range.length;
        if (block.endsParagraph)
            lengths.append(0);
    }
    return lengths;
}

void expectValid(const BlockIndex &index, const ChunkedText &chunked)
{
    const QString text = chunked.toString();
    const QList<LayoutBlock> blocks = blocksOf(index, text.size());
    ASSERT_EQ(blocks.size(), index.count());
    EXPECT_EQ(paragraphLengths(blocks), paragraphLengths(text));

    qsizetype position = 0;
    int top = 0;
    for (const LayoutBlock &block : blocks) {
        ASSERT_EQ(block.range.location, position);
        ASSERT_EQ(block.top, top);
        ASSERT_LE(block.range.length, BlockIndex::kLongestBlock);
        const bool isLast = &block == &blocks.constLast();
        ASSERT_TRUE(!block.range.isEmpty() || isLast);
        ASSERT_EQ(index.blockAt(block.range.location), block);
        if (!block.range.isEmpty()) {
            ASSERT_EQ(index.blockAt(block.range.end() - 1), block);
        }
        if (block.height > 0) {
            ASSERT_EQ(index.blockAtY(block.top), block);
            ASSERT_EQ(index.blockAtY(block.bottom() - 1), block);
        }
        position = block.range.end();
        top = block.bottom();
        if (!isLast && position < text.size()) {
            ASSERT_FALSE(text.at(position - 1).isHighSurrogate() && text.at(position).isLowSurrogate());
            ASSERT_FALSE(text.at(position - 1) == u'\r' && text.at(position) == u'\n');
        }
    }
    EXPECT_EQ(position, text.size());
    EXPECT_EQ(index.height(), top);
    EXPECT_FALSE(blocks.constLast().endsParagraph);
    EXPECT_EQ(index.blockAt(text.size()), blocks.constLast());
    EXPECT_EQ(index.blockAtY(-1), blocks.constFirst());
    EXPECT_EQ(index.blockAtY(top + 1), blocks.constLast());
}

/// An index beside its text, both following the same edits.
struct Indexed {
    ChunkedText text;
    BlockIndex index;

    explicit Indexed(const QString &initial) : text(initial) { index.reset(text); }

    TextRange edit(qsizetype location, qsizetype length, const QString &inserted)
    {
        return index.apply(text, text.replace(location, length, inserted));
    }
    QList<qsizetype> lengths() const
    {
        QList<qsizetype> lengths;
        for (const LayoutBlock &block : blocksOf(index, text.size()))
            lengths.append(block.range.length);
        return lengths;
    }
};

/// Gives every block a height of its own, by which it can be recognised.
void markHeights(BlockIndex &index, qsizetype size)
{
    int height = 1000;
    for (const LayoutBlock &block : blocksOf(index, size))
        index.setHeight(block.range.location, ++height);
}

struct CuttingCase {
    const char *name;
    QString text;
    QList<qsizetype> lengths;
};

class Cutting : public testing::TestWithParam<CuttingCase>
{};

} // namespace

TEST_P(Cutting, EndsBlocksWhereParagraphsEnd)
{
    const Indexed indexed(GetParam().text);

    EXPECT_EQ(indexed.lengths(), GetParam().lengths);
    expectValid(indexed.index, indexed.text);
}

INSTANTIATE_TEST_SUITE_P(BlockIndex, Cutting,
                         testing::Values(CuttingCase{"Empty", u""_s, {0}}, CuttingCase{"NoLineEnd", u"abc"_s, {3}},
                                         CuttingCase{"LineFeed", u"a\nb"_s, {2, 1}},
                                         CuttingCase{"CarriageReturn", u"a\rb"_s, {2, 1}},
                                         CuttingCase{"Both", u"a\r\nb"_s, {3, 1}},
                                         CuttingCase{"BothTheWrongWayRound", u"a\n\rb"_s, {2, 1, 1}},
                                         CuttingCase{"ParagraphSeparator", u"a\u2029b"_s, {2, 1}},
                                         CuttingCase{"LineSeparatorEndsNothing", u"a\u2028b"_s, {3}},
                                         CuttingCase{"FormFeedAndVerticalTabEndNothing", u"a\f\vb"_s, {4}},
                                         CuttingCase{"NextLineEndsNothing", u"a\u0085b"_s, {3}},
                                         CuttingCase{"LineEndAtTheEnd", u"a\n"_s, {2, 0}},
                                         CuttingCase{"OnlyLineEnds", u"\n\r\r\n\n"_s, {1, 1, 2, 1, 0}}),
                         [](const auto &test) { return test.param.name; });

TEST(BlockIndex, CutsALongParagraphBehindSpaces)
{
    QString text;
    while (text.size() < 20'000)
        text.append(u"word "_s);
    const Indexed indexed(text);

    expectValid(indexed.index, indexed.text);
    const QList<LayoutBlock> blocks = blocksOf(indexed.index, text.size());
    ASSERT_GT(blocks.size(), 4);
    for (const LayoutBlock &block : blocks)
        EXPECT_EQ(text.at(block.range.end() - 1), u' ');
}

TEST(BlockIndex, CutsALongParagraphWithoutSpacesBetweenCharacters)
{
    // A letter with a mark is two units, and 4-unit steps would not line up by chance.
    const Indexed marks(u"e\u0301x"_s.repeated(4000));
    const Indexed families(u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s.repeated(2000));

    expectValid(marks.index, marks.text);
    expectValid(families.index, families.text);
    for (const LayoutBlock &block : blocksOf(marks.index, marks.text.size()))
        EXPECT_EQ(block.range.location % 3 == 1, false) << "a mark was cut off its letter";
    for (const LayoutBlock &block : blocksOf(families.index, families.text.size()))
        EXPECT_EQ(block.range.location % 8, 0) << "a joined emoji was cut";
}

TEST(BlockIndex, ACharacterLongerThanABlockIsCutBetweenSurrogatePairs)
{
    const Indexed indexed(u"e"_s + u"\U0001D165"_s.repeated(6000)); // marks outside the first plane

    expectValid(indexed.index, indexed.text);
    EXPECT_GT(indexed.index.count(), 2);
}

TEST(BlockIndex, GuessesHeightsFromTheMetrics)
{
    BlockIndex index;
    index.setMetrics({.rowHeight = 10, .paragraphSpacing = 3, .columns = 5});
    const ChunkedText text(u"12345678901\n\n12345"_s);
    index.reset(text);

    EXPECT_EQ(index.blockAt(0).height, 3 * 10 + 3);
    EXPECT_EQ(index.blockAt(12).height, 10 + 3);
    EXPECT_EQ(index.blockAt(13).height, 10); // no spacing below the end of the text
    EXPECT_EQ(index.height(), 33 + 13 + 10);
}

TEST(BlockIndex, OtherMetricsGuessEveryHeightAnew)
{
    Indexed indexed(u"one\ntwo\nthree"_s);
    markHeights(indexed.index, indexed.text.size());

    indexed.index.setMetrics({.rowHeight = 7, .paragraphSpacing = 1, .columns = 80});

    EXPECT_EQ(indexed.index.height(), 8 + 8 + 7);
    expectValid(indexed.index, indexed.text);
}

TEST(BlockIndex, TheSameMetricsKeepTheHeights)
{
    Indexed indexed(u"one\ntwo"_s);
    markHeights(indexed.index, indexed.text.size());
    const int height = indexed.index.height();

    indexed.index.setMetrics(indexed.index.metrics());

    EXPECT_EQ(indexed.index.height(), height);
}

TEST(BlockIndex, TypingInTheLastParagraphButOneKeepsOneEmptyLastBlock)
{
    Indexed indexed(u"a\n"_s);

    for (int i = 0; i < 3; ++i)
        indexed.edit(0, 0, u"x"_s);

    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{5, 0}));
    expectValid(indexed.index, indexed.text);
}

TEST(BlockIndex, CarriageReturnAndLineFeedMeetAndPart)
{
    Indexed indexed(u"a\rx\nb"_s);

    indexed.edit(2, 1, u""_s); // they meet by a deletion
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{3, 1}));
    indexed.edit(2, 0, u"y"_s); // and part by an insertion
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{2, 2, 1}));
    indexed.edit(2, 1, u""_s);
    indexed.edit(1, 1, u""_s); // the first half goes
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{2, 1}));
    indexed.edit(1, 0, u"\r"_s); // and comes
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{3, 1}));
    indexed.edit(2, 1, u""_s); // the second half goes
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{2, 1}));
    indexed.edit(2, 0, u"\n"_s); // and comes
    EXPECT_EQ(indexed.lengths(), (QList<qsizetype>{3, 1}));
    expectValid(indexed.index, indexed.text);
}

TEST(BlockIndex, DeletingEverythingLeavesOneEmptyBlock)
{
    Indexed indexed(u"a\nb\r\n"_s + u"x"_s.repeated(18000) + u"\nend\n"_s);

    indexed.edit(0, indexed.text.size(), u""_s);

    EXPECT_EQ(indexed.lengths(), QList<qsizetype>{0});
    expectValid(indexed.index, indexed.text);
}

TEST(BlockIndex, AnEditOfOneBlockKeepsItsHeight)
{
    Indexed indexed(u"one\ntwo\nthree"_s);
    markHeights(indexed.index, indexed.text.size());

    const TextRange touched = indexed.edit(5, 0, u"o"_s);

    EXPECT_EQ(touched, (TextRange{4, 5}));
    EXPECT_EQ(indexed.index.blockAt(4).height, 1002);
}

TEST(BlockIndex, ManyParagraphsAndTheirDeletionKeepThePagesInOrder)
{
    Indexed indexed(u"line\n"_s.repeated(5000));
    expectValid(indexed.index, indexed.text);

    indexed.edit(7, 5 * 4000, u""_s);
    expectValid(indexed.index, indexed.text);
    indexed.edit(1001, 0, u"\n"_s.repeated(3000));
    expectValid(indexed.index, indexed.text);
    while (indexed.text.size() > 0) {
        const qsizetype length = std::min<qsizetype>(97, indexed.text.size());
        indexed.edit((indexed.text.size() - length) / 2, length, u""_s);
    }
    expectValid(indexed.index, indexed.text);
}

namespace {

/// One edit anywhere, of any kind; now and then a large one.
struct Edit {
    qsizetype location;
    qsizetype length;
    QString inserted;
};

Edit anEdit(GeneratedText &random, const ChunkedText &text)
{
    Edit edit{random.below(text.size() + 1), 0, {}};
    if (random.oneIn(6))
        edit.location = text.size(); // appending
    switch (random.below(8)) {
    case 0:
    case 1:
        edit.inserted = random.piece();
        break;
    case 2:
        edit.inserted = random.text(random.below(30));
        break;
    case 3:
        edit.inserted = random.longLine(random.below(12000));
        break;
    case 4:
        edit.length = random.below(std::min<qsizetype>(text.size() - edit.location, 4) + 1);
        break;
    case 5:
        edit.length = random.below(text.size() - edit.location + 1);
        break;
    case 6:
        edit.length = random.below(std::min<qsizetype>(text.size() - edit.location, 200) + 1);
        edit.inserted = random.text(random.below(5));
        break;
    case 7:
        if (random.oneIn(8))
            edit = {0, text.size(), {}};
        break;
    }
    // Whoever edits does not cut surrogate pairs.
    const auto cutsPair = [&text](qsizetype at) {
        return at > 0 && at < text.size() && text.at(at - 1).isHighSurrogate() && text.at(at).isLowSurrogate();
    };
    qsizetype end = edit.location + edit.length;
    if (cutsPair(edit.location))
        --edit.location;
    if (cutsPair(end))
        ++end;
    edit.length = end - edit.location;
    return edit;
}

class GeneratedEdits : public testing::TestWithParam<unsigned>
{};

} // namespace

TEST_P(GeneratedEdits, LeaveAValidCuttingWithAllOtherHeights)
{
    GeneratedText random(GetParam());
    Indexed indexed(random.text(random.below(400)));

    for (int step = 0; step < 120; ++step) {
        markHeights(indexed.index, indexed.text.size());
        const QList<LayoutBlock> before = blocksOf(indexed.index, indexed.text.size());
        const Edit edit = anEdit(random, indexed.text);
        const TextChange change = indexed.text.replace(edit.location, edit.length, edit.inserted);
        const TextRange touched = indexed.index.apply(indexed.text, change);
        SCOPED_TRACE(testing::Message() << "step " << step << ": " << testing::PrintToString(change));

        expectValid(indexed.index, indexed.text);
        BlockIndex anew;
        anew.reset(indexed.text);
        const QList<LayoutBlock> after = blocksOf(indexed.index, indexed.text.size());
        EXPECT_EQ(paragraphLengths(after), paragraphLengths(blocksOf(anew, indexed.text.size())));

        // What lies before and behind the touched blocks is as it was, heights included.
        const qsizetype growth = change.inserted - change.removed;
        QList<LayoutBlock> kept;
        for (LayoutBlock block : before) {
            if (block.range.location >= touched.end() - growth && block.range.location >= touched.location &&
                !(block.range.isEmpty() && touched.end() == indexed.text.size()))
                block.range.location += growth;
            else if (block.range.end() > touched.location || block.range.isEmpty())
                continue;
            block.top = 0;
            kept.append(block);
        }
        QList<LayoutBlock> untouched;
        for (LayoutBlock block : after) {
            const bool isBefore = block.range.end() <= touched.location && !block.range.isEmpty();
            const bool isBehind = block.range.location >= touched.end() &&
                                  !(block.range.isEmpty() && touched.end() == indexed.text.size());
            block.top = 0;
            if (isBefore || isBehind)
                untouched.append(block);
        }
        EXPECT_EQ(untouched, kept);
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(BlockIndex, GeneratedEdits, testing::Range(1u, 41u));

} // namespace Tessaline
