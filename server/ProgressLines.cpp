#include "server/ProgressLines.h"

#include <utility>

namespace Tessaline::Server {

namespace {

std::string lineFor(const EngineState &state, const std::string &model)
{
    const std::string percent = state.percent < 0 ? std::string() : ": " + std::to_string(state.percent) + " %";
    switch (state.phase) {
    case EngineState::Phase::Loading:
        if (!state.explanation.empty())
            return state.explanation;
        return "Loading " + model + percent;
    case EngineState::Phase::Downloading:
        return "Downloading " + model + percent;
    case EngineState::Phase::Ready:
        return "Ready with " + model;
    case EngineState::Phase::Explained:
        break;
    }
    return state.explanation;
}

} // namespace

ProgressLines::ProgressLines(std::string model, std::function<void(const std::string &)> print, Clock now)
    : m_model(std::move(model)), m_print(std::move(print)), m_now(std::move(now))
{}

void ProgressLines::note(const EngineState &state)
{
    constexpr std::chrono::seconds kInterval{1};
    const std::lock_guard guard(m_mutex);
    const std::chrono::steady_clock::time_point now = m_now();
    if (m_hasPrinted && state.phase == m_last.phase &&
        (state.percent <= m_last.percent || now - m_lastTime < kInterval))
        return;
    m_hasPrinted = true;
    m_last = state;
    m_lastTime = now;
    m_print(lineFor(state, m_model));
}

} // namespace Tessaline::Server
