#include "editing/TextLayout.h"
#include "editing/EditableText.h"
#include "editing/SourceTextLook.h"
#include "editing/TextBoundaries.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A text with its geometry, which follows its edits.
struct LaidOut {
    EditableText text;
    SourceTextLook look{text.text()};
    std::unique_ptr<TextLayout> layout;
    TextLayout::Damage damage; // of the last edit

    explicit LaidOut(const QString &initial, int width = 400)
    {
        look.setFontSize(14);
        text.reset(ChunkedText(initial));
        layout = std::make_unique<TextLayout>(text.text(), look);
        layout->setWidth(width);
        QObject::connect(&text, &EditableText::changed,
                         [this](const TextChange &change) { damage = layout->apply(change); });
    }

    /// Lays out every block; heights are the real ones from then on.
    void layOutAll() const
    {
        for (std::optional<TextLayout::Block> block = layout->blockAt(0); block;)
            block = layout->blockAfter(*block);
    }
};

struct Row {
    qsizetype start = 0;
    int top = 0;
    friend bool operator==(const Row &, const Row &) = default;
};

void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.start << " at " << row.top;
}

/// Every row, from top to bottom.
QList<Row> rowsOf(TextLayout &layout)
{
    QList<Row> rows;
    for (std::optional<TextLayout::Block> block = layout.blockAt(0); block; block = layout.blockAfter(*block))
        for (int i = 0; i < block->layout->lineCount(); ++i)
            rows.append({block->place.range.location + block->layout->lineAt(i).textStart(),
                         block->place.top + static_cast<int>(block->layout->lineAt(i).y())});
    return rows;
}

} // namespace

TEST(TextLayout, AnEmptyTextHasOneRow)
{
    LaidOut laid(u""_s);

    EXPECT_EQ(laid.layout->caretRect(0).topLeft(), QPointF(0, 0));
    EXPECT_GT(laid.layout->caretRect(0).height(), 8);
    EXPECT_EQ(laid.layout->positionAt({100, 100}), 0);
    EXPECT_EQ(laid.layout->positionRowsAway(0, 1, 0), 0);
    EXPECT_EQ(laid.layout->positionRowsAway(0, -1, 0), 0);
}

TEST(TextLayout, RowsAreSpacedByFourAndParagraphsBySixMore)
{
    LaidOut laid(u"one\ntwo\n"_s + u"word "_s.repeated(100));
    const qreal height = laid.layout->caretRect(0).height();

    EXPECT_EQ(laid.layout->caretRect(4).top(), height + 4 + 6);
    EXPECT_EQ(laid.layout->caretRect(8).top(), 2 * (height + 4 + 6));
    const qsizetype secondRow = laid.layout->positionRowsAway(8, 1, 0);
    EXPECT_EQ(laid.layout->caretRect(secondRow).top(), 2 * (height + 4 + 6) + height + 4);
}

TEST(TextLayout, TextFromRightToLeftBeginsOnTheRight)
{
    LaidOut laid(u"שלום\nleft\n"_s);

    EXPECT_NEAR(laid.layout->caretRect(0).x(), 400, 1);
    EXPECT_LT(laid.layout->caretRect(4).x(), 399);
    EXPECT_GT(laid.layout->caretRect(4).x(), 300);
    EXPECT_EQ(laid.layout->caretRect(5).x(), 0);
    EXPECT_EQ(laid.layout->positionAt({399, 5}), 0);
    EXPECT_EQ(laid.layout->positionAt({1, 5}), 4);
}

TEST(TextLayout, PointsOutsideTheTextCountAsInside)
{
    LaidOut laid(u"one\ntwo"_s);

    EXPECT_EQ(laid.layout->positionAt({-50, -50}), 0);
    EXPECT_EQ(laid.layout->positionAt({5000, -50}), 3);
    EXPECT_EQ(laid.layout->positionAt({-50, 5000}), 4);
    EXPECT_EQ(laid.layout->positionAt({5000, 5000}), 7);
}

TEST(TextLayout, EveryGapBetweenTrailingSpacesCanBeHit)
{
    LaidOut laid(u"one   \ntwo"_s);

    for (qsizetype position = 3; position <= 6; ++position)
        EXPECT_EQ(laid.layout->positionAt(laid.layout->caretRect(position).center()), position);
}

TEST(TextLayout, AnObjectReplacementCharacterIsSeen)
{
    LaidOut laid(u"a\uFFFCb"_s);

    EXPECT_GT(laid.layout->caretRect(2).x(), laid.layout->caretRect(1).x() + 4);
}

TEST(TextLayout, ALineSeparatorBeginsARowButNoParagraph)
{
    LaidOut laid(u"one\u2028two"_s);

    EXPECT_EQ(laid.layout->caretRect(4).top() - laid.layout->caretRect(0).top(), laid.layout->rowHeight());
    EXPECT_EQ(laid.layout->rowEnd(0), 3);
    EXPECT_EQ(laid.layout->rowStart(5), 4);
}

TEST(TextLayout, ComposedTextTakesRoomButNoPositions)
{
    LaidOut laid(u"ab\ncd"_s);
    const qreal column = laid.layout->caretRect(1).x();

    laid.layout->setPreedit({.position = 1, .text = u"xyz"_s, .caret = 2, .formats = {}});

    EXPECT_NEAR(laid.layout->caretRect(0).x(), 0, 0.1);
    EXPECT_NEAR(laid.layout->caretRect(1).x(), 3 * column, 0.1) << "the caret in what is composed";
    EXPECT_NEAR(laid.layout->caretRect(2).x(), 5 * column, 0.1);
    EXPECT_NEAR(laid.layout->caretRect(4).x(), column, 0.1) << "other paragraphs stay";
    EXPECT_EQ(laid.layout->positionAt({5 * column, 5}), 2);
    EXPECT_EQ(laid.layout->positionAt({4 * column, 5}), 1);
    EXPECT_EQ(laid.layout->positionAt({2 * column, 5}), 1);
    EXPECT_EQ(laid.layout->positionAt({0, 5}), 0);
    EXPECT_EQ(laid.layout->rowEnd(0), 2);
    laid.layout->setPreedit({});
    EXPECT_NEAR(laid.layout->caretRect(2).x(), 2 * column, 0.1);
}

TEST(TextLayout, ComposedTextMovesAlongWithEditsBeforeIt)
{
    LaidOut laid(u"one\ntwo"_s);
    laid.layout->setPreedit({.position = 7, .text = u"x"_s, .caret = 1, .formats = {}});
    const qreal width = laid.layout->caretRect(7).x();

    ChunkedText fresh = laid.text.text();
    laid.text.followEdit(fresh, fresh.replace(0, 4, u""));

    EXPECT_EQ(laid.layout->preedit().position, 3);
    EXPECT_NEAR(laid.layout->caretRect(3).x(), width, 0.1);
}

TEST(TextLayout, ComposedTextThatWrapsMakesItsBlockHigher)
{
    LaidOut laid(u"ab\ncd"_s);
    const int height = laid.layout->blockAt(0).place.height;

    laid.layout->setPreedit({.position = 1, .text = u"long "_s.repeated(40), .caret = 0, .formats = {}});
    EXPECT_GT(laid.layout->blockAt(0).place.height, 2 * height);
    laid.layout->setPreedit({});

    EXPECT_EQ(laid.layout->blockAt(0).place.height, height);
}

TEST(TextLayout, FreedBlocksAreLaidOutAgainWithTheSameHeights)
{
    LaidOut laid((u"word "_s.repeated(50) + u'\n').repeated(20));
    laid.layOutAll();
    const int height = laid.layout->height();
    const QRectF caret = laid.layout->caretRect(1234);

    laid.layout->keepOnly({0, 10}, {20, 10});

    EXPECT_EQ(laid.layout->height(), height);
    EXPECT_EQ(laid.layout->caretRect(1234), caret);
}

TEST(TextLayout, TypingInOneParagraphDamagesItsRowsOnly)
{
    LaidOut laid(u"one\n"_s + u"word "_s.repeated(100) + u"\nlast"_s);
    laid.layOutAll();
    const int top = laid.layout->placeAt(4).top;

    laid.text.replace({400, 0}, u"x", EditKind::Typing);

    EXPECT_FALSE(laid.damage.movesRest);
    EXPECT_GT(laid.damage.top, top) << "the rows before stay";
    EXPECT_EQ(laid.damage.bottom, laid.layout->placeAt(400).bottom());
}

// Generated texts

namespace {

class GeneratedLayouts : public testing::TestWithParam<unsigned>
{
protected:
    GeneratedText m_random{GetParam()};

    /// Mostly words, so that paragraphs wrap; right-to-left words would have two carets at one place.
    QString someText(qsizetype pieces)
    {
        QString text;
        for (qsizetype i = 0; i < pieces; ++i) {
            const QString piece = m_random.oneIn(3) ? m_random.piece() : u"words to wrap "_s;
            if (!piece.isRightToLeft())
                text.append(piece);
        }
        return text;
    }
};

} // namespace

TEST_P(GeneratedLayouts, ThePositionAtTheCaretIsItsPosition)
{
    LaidOut laid(someText(80));

    for (qsizetype position = 0; position <= laid.text.text().size(); ++position) {
        if (!TextBoundaries::isCharacterBoundary(laid.text.text(), position))
            continue;
        const QRectF caret = laid.layout->caretRect(position);
        const qsizetype hit = laid.layout->positionAt(caret.center());

        // Characters without width share their place with the next.
        if (hit != position) {
            EXPECT_NEAR(laid.layout->caretRect(hit).x(), caret.x(), 0.6) << position << " became " << hit;
            EXPECT_EQ(laid.layout->caretRect(hit).top(), caret.top()) << position << " became " << hit;
        }
    }
}

TEST_P(GeneratedLayouts, RowsFollowOneAnotherFromTheFirstToTheLast)
{
    LaidOut laid(someText(80));
    const QList<Row> rows = rowsOf(*laid.layout);

    qsizetype position = 0;
    for (qsizetype i = 0; i + 1 < rows.size(); ++i) {
        EXPECT_EQ(laid.layout->rowStart(position), rows.at(i).start);
        EXPECT_LE(laid.layout->rowEnd(position), rows.at(i + 1).start);
        position = laid.layout->positionRowsAway(position, 1, 0);
        EXPECT_EQ(static_cast<int>(laid.layout->caretRect(position).top()), rows.at(i + 1).top) << "row " << i + 1;
    }
    EXPECT_EQ(laid.layout->positionRowsAway(position, 1, 0), laid.text.text().size());
    EXPECT_EQ(laid.layout->positionRowsAway(position, -static_cast<int>(rows.size()), 0), 0);
}

TEST_P(GeneratedLayouts, FollowingEditsGivesWhatALayoutFromTheStartGives)
{
    LaidOut laid(someText(60));
    laid.layOutAll();

    for (int step = 0; step < 60; ++step) {
        const qsizetype size = laid.text.text().size();
        const qsizetype location = m_random.below(size + 1);
        const qsizetype length = m_random.oneIn(3) ? m_random.below(std::min<qsizetype>(size - location, 40) + 1) : 0;
        const QList<Row> before = rowsOf(*laid.layout);
        laid.damage = {};
        if (m_random.oneIn(8))
            laid.text.undo();
        else
            laid.text.replace({location, length}, m_random.oneIn(2) ? m_random.piece() : someText(4), EditKind::Other);

        LaidOut anew(laid.text.text().toString());
        anew.layOutAll();
        const QList<Row> after = rowsOf(*laid.layout);
        ASSERT_EQ(after, rowsOf(*anew.layout)) << "step " << step;
        ASSERT_EQ(laid.layout->height(), anew.layout->height()) << "step " << step;

        // What is not damaged is where it was.
        if (laid.text.text().size() == size)
            continue;
        const int top = laid.damage.top;
        for (qsizetype i = 0; i < before.size() && before.at(i).top < top; ++i)
            ASSERT_EQ(after.at(i), before.at(i)) << "step " << step << ", above the damage";
        if (laid.damage.movesRest)
            continue;
        ASSERT_EQ(after.size(), before.size()) << "step " << step;
        for (qsizetype i = 0; i < before.size(); ++i)
            ASSERT_EQ(after.at(i).top, before.at(i).top) << "step " << step << ", nothing moves";
    }
}

INSTANTIATE_TEST_SUITE_P(TextLayout, GeneratedLayouts, testing::Range(1u, 13u));

} // namespace Tessaline
