#pragma once

#include <QCoro/QCoroTask>

#include <chrono>
#include <functional>
#include <stop_token>

namespace Tessaline {

/// Lets time pass; a test hands in its own.
using Delay = std::function<QCoro::Task<>(std::chrono::milliseconds duration, std::stop_token stop)>;

/// Waits in the event loop, for at least `duration`. A stop ends the wait at once, from inside `request_stop`, on the
/// thread that waits.
QCoro::Task<> delay(std::chrono::milliseconds duration, std::stop_token stop);

} // namespace Tessaline
