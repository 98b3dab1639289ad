#pragma once

#include <QtTest/QTest>

#include <chrono>

namespace Tessaline {

/// How long to wait for what is sure to come. Only a failing test sees the end of it: with a sanitizer, on a machine
/// that does many other things, a moment may take seconds.
constexpr std::chrono::milliseconds kPatience = std::chrono::seconds(60);

/// Runs the event loop until `condition()` holds, at most for `limit`; answers whether it came to hold.
template <class Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = kPatience)
{
    return QTest::qWaitFor(condition, static_cast<int>(limit.count()));
}

/// Runs the event loop until `future` has finished.
template <class Future>
bool finishes(const Future &future, std::chrono::milliseconds limit = kPatience)
{
    return eventually([&future] { return future.isFinished(); }, limit);
}

} // namespace Tessaline
