#include "foundation/Delay.h"

#include "tests/support/Waiting.h"

#include <QCoro/QCoroTask>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace std::chrono_literals;

TEST(Delay, EndsInTheEventLoopWhenTheTimeHasPassed)
{
    bool hasEnded = false;
    const auto start = std::chrono::steady_clock::now();
    auto waiting = delay(20ms, {}).then([&] { hasEnded = true; });

    EXPECT_FALSE(hasEnded);
    EXPECT_TRUE(eventually([&] { return hasEnded; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
}

TEST(Delay, EndsAtOnceWhenItIsStopped)
{
    bool hasEnded = false;
    std::stop_source stop;
    auto waiting = delay(24h, stop.get_token()).then([&] { hasEnded = true; });

    stop.request_stop();

    EXPECT_TRUE(hasEnded);
}

TEST(Delay, DoesNotBeginWhenItIsStoppedAlready)
{
    bool hasEnded = false;
    std::stop_source stop;
    stop.request_stop();
    auto waiting = delay(24h, stop.get_token()).then([&] { hasEnded = true; });

    EXPECT_TRUE(hasEnded);
}

} // namespace
} // namespace Tessaline
