#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace Tessaline::Server {

/// The thread on which an engine becomes ready and stays so. It ends with this object, which therefore stands last
/// among the members of its owner.
class Worker
{
public:
    using Work = std::function<void(const std::stop_token &stop)>;

    ~Worker() { end(); }

    /// Once.
    void begin(Work work) { m_thread = std::jthread(std::move(work)); }

    /// Asks the work to stop, and returns when it has.
    void end()
    {
        m_thread.request_stop();
        if (m_thread.joinable())
            m_thread.join();
    }

    /// For the work: nothing to do until `wake` or the stop.
    void sleep(const std::stop_token &stop)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, stop, [this] { return m_isWoken; });
        m_isWoken = false;
    }

    /// For the work: the same, and no longer than this.
    void sleep(const std::stop_token &stop, std::chrono::milliseconds longest)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, stop, longest, [this] { return m_isWoken; });
        m_isWoken = false;
    }

    /// From any thread. A work that does not sleep right now does not fall asleep the next time.
    void wake()
    {
        const std::lock_guard guard(m_mutex);
        m_isWoken = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex; // guards m_isWoken
    std::condition_variable_any m_changed;
    bool m_isWoken = false;
    std::jthread m_thread; // last: it ends first
};

} // namespace Tessaline::Server
