#pragma once

#include "server/Engine.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

namespace Tessaline::Server {

/// Turns the states of an engine into lines for the standard output, which the application shows and logs: at most one
/// a second but for a change of phase, and never backwards. From any thread.
class ProgressLines
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    ProgressLines(std::string model, std::function<void(const std::string &line)> print,
                  Clock now = std::chrono::steady_clock::now);

    void note(const EngineState &state);

private:
    const std::string m_model;
    const std::function<void(const std::string &)> m_print;
    const Clock m_now;
    std::mutex m_mutex; // guards what follows, and keeps the lines in order
    EngineState m_last;
    bool m_hasPrinted = false;
    std::chrono::steady_clock::time_point m_lastTime;
};

} // namespace Tessaline::Server
