#pragma once

#include <QtTest/QTest>

#include <chrono>

namespace Tessaline {

/// Runs the event loop until `condition()` holds, at most for `limit`; answers whether it came to hold.
template <class Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10))
{
    return QTest::qWaitFor(condition, static_cast<int>(limit.count()));
}

/// Runs the event loop until `future` has finished.
template <class Future>
bool finishes(const Future &future, std::chrono::milliseconds limit = std::chrono::seconds(10))
{
    return eventually([&future] { return future.isFinished(); }, limit);
}

} // namespace Tessaline
