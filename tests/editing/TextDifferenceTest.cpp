#include "editing/TextDifference.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Case {
    const char *name;
    QString old;
    QString fresh;
    TextChange change;
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

class TextDifference : public testing::TestWithParam<Case>
{};

} // namespace

TEST_P(TextDifference, IsTheStretchBetweenWhatBothShare)
{
    const Case &row = GetParam();

    EXPECT_EQ(differenceBetween(ChunkedText(row.old), ChunkedText(row.fresh)), row.change);
    EXPECT_EQ(differenceBetween(AttributedText(row.old), AttributedText(row.fresh)), row.change);
}

INSTANTIATE_TEST_SUITE_P(Between, TextDifference,
                         testing::Values(Case{"EmptyTexts", u""_s, u""_s, {0, 0, 0}},
                                         Case{"EqualTexts", u"abc"_s, u"abc"_s, {3, 0, 0}},
                                         Case{"NothingAndSomething", u""_s, u"abc"_s, {0, 0, 3}},
                                         Case{"SomethingAndNothing", u"abc"_s, u""_s, {0, 3, 0}},
                                         Case{"AnInsertion", u"ac"_s, u"abc"_s, {1, 0, 1}},
                                         Case{"ADeletion", u"abc"_s, u"ac"_s, {1, 1, 0}},
                                         Case{"AReplacement", u"abcd"_s, u"axyd"_s, {1, 2, 2}},
                                         Case{"ARepeatedLetter", u"aa"_s, u"aaa"_s, {2, 0, 1}},
                                         Case{"AShorterOverlap", u"aba"_s, u"a"_s, {1, 2, 0}},
                                         Case{"PairsWithOneFirstHalf", u"\U0001F5BC"_s, u"\U0001F5BD"_s, {0, 2, 2}},
                                         Case{"PairsWithOneSecondHalf", u"\U0001F43C"_s, u"\U0001F83C"_s, {0, 2, 2}},
                                         Case{"ALineFeedBehindAReturn", u"a\rb"_s, u"a\r\nb"_s, {1, 1, 2}},
                                         Case{"AReturnBeforeALineFeed", u"a\nb"_s, u"a\r\nb"_s, {1, 1, 2}},
                                         Case{"LinesOfTwoKinds", u"a\r\nb"_s, u"a\rb"_s, {1, 2, 1}}),
                         [](const testing::TestParamInfo<Case> &row) { return std::string(row.param.name); });

TEST(TextDifferenceOfAttributes, AreDifferencesWhereTheTextIsTheSame)
{
    const AttributedText plain(u"abcdef");
    AttributedText marked = plain;
    marked.set({2, 3}, &TextAttributes::bold, true);

    EXPECT_EQ(differenceBetween(plain, marked), (TextChange{2, 3, 3}));
    EXPECT_EQ(differenceBetween(marked, plain), (TextChange{2, 3, 3}));
    EXPECT_EQ(differenceBetween(marked, marked), (TextChange{6, 0, 0}));
}

TEST(TextDifferenceOfAttributes, NeverCutAPairOrALineEnd)
{
    AttributedText old(u"\U0001F5BC\r\n");
    AttributedText fresh = old;
    fresh.set({1, 2}, &TextAttributes::bold, true); // from the middle of the one to the middle of the other

    EXPECT_EQ(differenceBetween(old, fresh), (TextChange{0, 4, 4}));
}

class GeneratedDifferences : public testing::TestWithParam<unsigned>
{};

TEST_P(GeneratedDifferences, MakeTheOneTextIntoTheOther)
{
    GeneratedMarkdown random(GetParam());
    AttributedText old = random.attributedText(random.below(8));
    for (int i = 0; i < 100; ++i) {
        AttributedText fresh = old;
        const qsizetype location = random.below(old.size() + 1);
        const TextRange range{location, random.below(old.size() - location + 1)};
        fresh.replace(range, random.attributedText(random.below(4)));

        const TextChange change = differenceBetween(old, fresh);

        AttributedText made = old;
        made.replace({change.location, change.removed}, fresh.sliced({change.location, change.inserted}));
        ASSERT_EQ(made, fresh);
        const TextChange ofText = differenceBetween(ChunkedText(old.text()), ChunkedText(fresh.text()));
        ChunkedText text(old.text());
        text.replace(ofText.location, ofText.removed,
                     ChunkedText(fresh.text()).sliced(ofText.location, ofText.inserted));
        ASSERT_EQ(text, ChunkedText(fresh.text()));
        old = fresh.sliced({0, std::min<qsizetype>(fresh.size(), 200)});
    }
}

INSTANTIATE_TEST_SUITE_P(TextDifference, GeneratedDifferences, testing::Range(1u, 20u));

namespace {

struct LineCase {
    const char *name;
    QString old;
    QString fresh;
    QList<TextChange> changes;
};

void PrintTo(const LineCase &row, std::ostream *out)
{
    *out << row.name;
}

class DifferencesByLine : public testing::TestWithParam<LineCase>
{};

/// What the changes make of the old text, applied back to front as a follower does.
AttributedText changed(AttributedText text, const QList<TextChange> &changes, const AttributedText &fresh)
{
    qsizetype growth = fresh.size() - text.size();
    for (auto change = changes.crbegin(); change != changes.crend(); ++change) {
        growth -= change->inserted - change->removed;
        text.replace({change->location, change->removed}, fresh.sliced({change->location + growth, change->inserted}));
    }
    return text;
}

} // namespace

TEST_P(DifferencesByLine, LeaveAloneWhatStandsBetween)
{
    const LineCase &row = GetParam();

    EXPECT_EQ(differencesByLine(AttributedText(row.old), AttributedText(row.fresh)), row.changes);
}

INSTANTIATE_TEST_SUITE_P(
    Of, DifferencesByLine,
    testing::Values(LineCase{"EqualTexts", u"a\nb"_s, u"a\nb"_s, {}}, LineCase{"EmptyTexts", u""_s, u""_s, {}},
                    LineCase{"NothingAndSomething", u""_s, u"a\nb"_s, {{0, 0, 3}}},
                    LineCase{"SomethingAndNothing", u"a\nb"_s, u""_s, {{0, 3, 0}}},
                    LineCase{"TwoLinesFarApart", u"one\nx\ny\ntwo"_s, u"on\nx\ny\ntwos"_s, {{2, 1, 0}, {11, 0, 1}}},
                    LineCase{"EveryLine", u"* a\n* b\n* c"_s, u"- a\n- b\n- c"_s, {{0, 1, 1}, {4, 1, 1}, {8, 1, 1}}},
                    LineCase{"LineEnds", u"a\r\nb\r\nc"_s, u"a\nb\nc"_s, {{1, 2, 1}, {4, 2, 1}}},
                    LineCase{"BlankLines", u"a\n\n\n\nb\nc\n"_s, u"a\n\nb\nc"_s, {{3, 2, 0}, {8, 1, 0}}},
                    LineCase{"JoinedLines", u"a\nb\nc\n\nend\nx"_s, u"a b c\n\nend\ny"_s, {{1, 3, 3}, {11, 1, 1}}},
                    LineCase{"AnInsertedLine", u"a\nb"_s, u"a\nnew\nb"_s, {{2, 0, 4}}}),
    [](const testing::TestParamInfo<LineCase> &row) { return std::string(row.param.name); });

TEST_P(GeneratedDifferences, ByLineMakeTheOneTextIntoTheOther)
{
    GeneratedMarkdown random(GetParam());
    for (int i = 0; i < 40; ++i) {
        const AttributedText old(random.document(random.below(30)));
        AttributedText fresh = old;
        for (qsizetype edit = random.below(5); edit > 0; --edit) {
            const qsizetype location = random.below(fresh.size() + 1);
            const TextRange range{location, std::min(random.below(20), fresh.size() - location)};
            fresh.replace(range, random.attributedText(random.below(4)));
        }

        const QList<TextChange> changes = differencesByLine(old, fresh);

        ASSERT_EQ(changed(old, changes, fresh), fresh);
        for (qsizetype n = 1; n < changes.size(); ++n)
            ASSERT_GE(changes.at(n).location, changes.at(n - 1).location + changes.at(n - 1).removed);
    }
}

TEST(DifferencesByLineOf, TextsThatDifferEverywhereAreNotMoreThanViewsCanFollow)
{
    QString old;
    QString fresh;
    for (int i = 0; i < 20000; ++i) {
        old += u"* line %1\n"_s.arg(i);
        fresh += u"- line %1\n"_s.arg(i);
    }
    const AttributedText from(old);
    const AttributedText to(fresh);

    const QList<TextChange> changes = differencesByLine(from, to);

    EXPECT_LE(changes.size(), kMostDifferences);
    EXPECT_GE(changes.size(), kMostDifferences / 2);
    EXPECT_EQ(changed(from, changes, to), to);
}

} // namespace Tessaline
