#include "foundation/Delay.h"

#include <QtCore/QTimer>

#include <coroutine>
#include <optional>
#include <utility>

namespace Tessaline {

namespace {

/// Resumes its coroutine when the timer has run out or the stop is requested, whichever comes first.
struct TimeOrStop {
    struct Resume {
        std::coroutine_handle<> frame;
        void operator()() const { frame.resume(); }
    };
    using OnStop = std::optional<std::stop_callback<Resume>>;

    // In the frame, as they can be neither copied nor moved.
    QTimer &timer;
    OnStop &onStop;
    const std::stop_token &stop;

    bool await_ready() const { return stop.stop_requested(); }
    void await_suspend(std::coroutine_handle<> frame) const
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [frame] { frame.resume(); });
        timer.start();
        onStop.emplace(stop, Resume{frame});
    }
    void await_resume() const {}
};

} // namespace

QCoro::Task<> delay(std::chrono::milliseconds duration, std::stop_token stop)
{
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer); // never early
    timer.setInterval(duration);
    TimeOrStop::OnStop onStop;
    co_await TimeOrStop{timer, onStop, stop};
}

} // namespace Tessaline
