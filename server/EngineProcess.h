#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace Tessaline::Server {

/// What to start.
struct EngineCommand {
    std::string program;                  // with its whole path
    std::vector<std::string> arguments;   // behind the program's name
    std::vector<std::string> environment; // NAME=value
    /// Takes each line that it writes, on a thread of the process's own; a carriage return ends one too.
    std::function<void(std::string_view line)> line;
};

/// A program that this one started, with what it starts itself: that is ended with it. The program is killed when this
/// process ends, however that comes about; for that the thread that starts it must live as long as it. What a script
/// started is not when this process is killed itself.
class EngineProcess
{
public:
    /// Starts it. `error` says why not, if it could not.
    EngineProcess(const EngineCommand &command, std::string &error);
    /// Ends it: asked to first, and killed if it does not listen.
    ~EngineProcess();
    EngineProcess(const EngineProcess &) = delete;
    EngineProcess &operator=(const EngineProcess &) = delete;

    pid_t processId() const { return m_child; } // -1 if it could not be started
    void terminate();                           // asks it to end
    void kill();                                // does not ask
    /// Whether it ended within this time.
    bool waitForEnd(std::chrono::milliseconds wait);
    /// Waits until it has ended or the stop comes.
    void waitForEnd(const std::stop_token &stop);
    /// Waits until it has ended and `line` has been given all that it wrote. On the thread that started it.
    void waitForLastLine();
    /// The exit status, or 128 and the number of the signal that ended it; absent while it runs.
    std::optional<int> status();

private:
    static constexpr std::chrono::milliseconds kGrace{2000}; // between the request to end and the kill

    void signal(int number);
    void readOutput(const std::function<void(std::string_view)> &line);

    pid_t m_child = -1;
    int m_output = -1;
    int m_over = -1;    // readable when it has ended
    std::mutex m_mutex; // guards what follows
    std::condition_variable_any m_ended;
    std::optional<int> m_status;
    std::thread m_reader;
    std::thread m_waiter;
};

/// A port of this machine that nobody listens at right now.
int freePort();

} // namespace Tessaline::Server
