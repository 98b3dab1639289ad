#include "shell/ColumnWidths.h"

#include <ostream>

#include <gtest/gtest.h>

namespace Tessaline {

void PrintTo(const ColumnWidths &widths, std::ostream *out)
{
    *out << widths.sidebar << " + " << widths.content << " + " << widths.detail;
}

namespace {

struct Row {
    const char *name;
    int total;
    int sidebar; // wanted
    int detail;  // wanted
    ColumnWidths expected;
};

class ColumnWidthsOf : public ::testing::TestWithParam<Row>
{};

TEST_P(ColumnWidthsOf, AreShared)
{
    const Row &row = GetParam();
    EXPECT_EQ(columnWidths(row.total, row.sidebar, row.detail), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    ColumnWidths, ColumnWidthsOf,
    ::testing::Values(Row{"TheIdealWidthsWhereTheyFit", 1360, 260, 380, {260, 720, 380}},
                      Row{"AllMoreGoesToTheContent", 1920, 260, 380, {260, 1280, 380}},
                      Row{"TheContentShrinksFirst", 1160, 260, 380, {260, 520, 380}},
                      Row{"ThenTheSidesInProportion", 1098, 260, 380, {229, 520, 349}},
                      Row{"DownToTheirMinimums", 1040, 260, 380, {200, 520, 320}},
                      Row{"AndNoFurther", 900, 260, 380, {200, 520, 320}},
                      Row{"WishesAreHeldWithinTheMaximums", 1600, 900, 900, {350, 770, 480}},
                      Row{"WishesAreHeldWithinTheMinimums", 1600, 10, 10, {200, 1080, 320}},
                      Row{"OneSideWithoutSpareWidthGivesNothing", 1080, 200, 380, {200, 520, 360}}),
    [](const ::testing::TestParamInfo<Row> &row) { return row.param.name; });

TEST(ColumnWidths, NeverLeaveTheirBoundsAndFillTheTotalWhereThereIsRoom)
{
    for (int total = 1040; total < 2000; total += 7)
        for (int sidebar = 150; sidebar < 400; sidebar += 13)
            for (int detail = 300; detail < 500; detail += 17) {
                const ColumnWidths widths = columnWidths(total, sidebar, detail);
                ASSERT_EQ(widths.sidebar + widths.content + widths.detail, total);
                ASSERT_GE(widths.sidebar, 200);
                ASSERT_LE(widths.sidebar, 350);
                ASSERT_GE(widths.content, 520);
                ASSERT_GE(widths.detail, 320);
                ASSERT_LE(widths.detail, 480);
            }
}

} // namespace
} // namespace Tessaline
