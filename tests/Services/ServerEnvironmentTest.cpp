#include "Services/ServerEnvironment.h"

#include "Services/ServerCandidates.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

TEST(ServerEnvironment, IsTheOwnOneWithFiveVariablesSet)
{
    const Environment own{{"HOME", "/home/a"}, {"OMP_NUM_THREADS", "64"}, {"TESSALINE_OTHER", "x"}};

    EXPECT_EQ(serverEnvironment(own, approvedModels()[1], 10), (Environment{{"HOME", "/home/a"},
                                                                            {"OMP_NUM_THREADS", "4"},
                                                                            {"RAYON_NUM_THREADS", "4"},
                                                                            {"TESSALINE_CONTEXT_TOKENS", "16384"},
                                                                            {"TESSALINE_MODEL_ID", "llama-3.1-8b-q4"},
                                                                            {"TESSALINE_OTHER", "x"},
                                                                            {"TESSALINE_THREADS", "8"}}));
}

TEST(ServerEnvironment, LeavesTwoProcessorsToOthersWithinFourAndEight)
{
    const struct {
        int processors;
        QByteArray threads;
    } cases[]{{1, "4"}, {2, "4"}, {4, "4"}, {6, "4"}, {7, "5"}, {9, "7"}, {10, "8"}, {24, "8"}};

    for (const auto &[processors, threads] : cases)
        EXPECT_EQ(serverEnvironment({}, approvedModels()[0], processors).value("TESSALINE_THREADS"), threads)
            << processors;
}

TEST(ServerCandidates, StandBesideTheExecutableThenInTheResourcesThenInTheSourceTree)
{
    const QList<FileURL> candidates = serverCandidates(FileURL(u"/usr/bin"_s));

    ASSERT_EQ(candidates.size(), 4);
    EXPECT_EQ(candidates[0].path(), u"/usr/bin/tessaline-server"_s);
    EXPECT_EQ(candidates[1].path(), u"/usr/lib/tessaline/tessaline-server"_s);
    EXPECT_EQ(candidates[2].path(), QStringLiteral(TESSALINE_SOURCE_TREE "/target/release/tessaline-server"));
    EXPECT_EQ(candidates[3].path(), QStringLiteral(TESSALINE_SOURCE_TREE "/target/debug/tessaline-server"));
}

TEST(ServerCandidates, ArePrintedAsAListOfQuotedPaths)
{
    EXPECT_EQ(printedCandidates({FileURL(u"/a"_s), FileURL(u"/b c"_s)}), u"[\"/a\", \"/b c\"]"_s);
    EXPECT_EQ(printedCandidates({}), u"[]"_s);
}

} // namespace
} // namespace Tessaline
