#include "shell/TerminationSignals.h"

#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

struct sigaction actionOf(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action;
}

class EachSignal : public ::testing::TestWithParam<int>
{};

TEST_P(EachSignal, BecomesARequestOnTheEventLoop)
{
    TerminationSignals watched;
    QSignalSpy requests(&watched, &TerminationSignals::terminationRequested);

    raise(GetParam());

    EXPECT_EQ(requests.count(), 0); // the handler itself does nothing
    EXPECT_TRUE(eventually([&] { return requests.count() == 1; }));
}

INSTANTIATE_TEST_SUITE_P(TerminationSignals, EachSignal, ::testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const ::testing::TestParamInfo<int> &row) {
                             return row.param == SIGTERM ? "Sigterm" : row.param == SIGINT ? "Sigint" : "Sighup";
                         });

TEST(TerminationSignals, OneThatCameBeforeTheEventLoopRanIsNotLost)
{
    TerminationSignals watched;
    raise(SIGTERM);
    QSignalSpy requests(&watched, &TerminationSignals::terminationRequested);

    EXPECT_TRUE(eventually([&] { return requests.count() > 0; }));
}

TEST(TerminationSignals, AFloodNeitherEndsTheProcessNorBlocksIt)
{
    TerminationSignals watched;
    QSignalSpy requests(&watched, &TerminationSignals::terminationRequested);

    for (int turn = 0; turn < 100000; ++turn) // more than the pipe holds
        raise(SIGTERM);

    EXPECT_TRUE(eventually([&] { return requests.count() > 0; }));
}

TEST(TerminationSignals, TheNextRequestAfterOneComesThroughToo)
{
    TerminationSignals watched;
    QSignalSpy requests(&watched, &TerminationSignals::terminationRequested);
    raise(SIGTERM);
    ASSERT_TRUE(eventually([&] { return requests.count() == 1; }));

    raise(SIGINT);

    EXPECT_TRUE(eventually([&] { return requests.count() == 2; }));
}

TEST(TerminationSignals, WhatWasInForceBeforeIsPutBack)
{
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    struct sigaction original = {};
    sigaction(SIGHUP, &ignored, &original);

    {
        TerminationSignals watched;
        EXPECT_NE(actionOf(SIGHUP).sa_handler, SIG_IGN);
        EXPECT_NE(actionOf(SIGTERM).sa_handler, SIG_DFL);
    }

    EXPECT_EQ(actionOf(SIGHUP).sa_handler, SIG_IGN);
    EXPECT_EQ(actionOf(SIGTERM).sa_handler, SIG_DFL);
    sigaction(SIGHUP, &original, nullptr);
}

} // namespace
} // namespace Tessaline
