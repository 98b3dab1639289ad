#pragma once

#include "server/Engine.h"

#include <mutex>
#include <utility>

namespace Tessaline::Server {

/// The state of an engine, which its own thread changes and others read. A percentage of one phase never goes back.
class StateKeeper
{
public:
    explicit StateKeeper(StateListener listener) : m_listener(std::move(listener)) {}

    EngineState state() const
    {
        const std::lock_guard guard(m_mutex);
        return m_state;
    }

    void set(const EngineState &state) { set(state, Change::Any); }
    /// The same for what only counts on the way there; a line of output may come late.
    void setUnlessReady(const EngineState &state) { set(state, Change::OnTheWay); }

private:
    enum class Change { Any, OnTheWay };

    void set(const EngineState &state, Change change)
    {
        {
            const std::lock_guard guard(m_mutex);
            if (change == Change::OnTheWay && m_state.phase == EngineState::Phase::Ready)
                return;
            const bool goesBack = state.phase == m_state.phase && state.percent < m_state.percent;
            if (goesBack || (m_isTold && state == m_state))
                return;
            m_isTold = true;
            m_state = state;
        }
        if (m_listener)
            m_listener(state);
    }

    const StateListener m_listener;
    mutable std::mutex m_mutex;
    EngineState m_state;
    bool m_isTold = false; // the first state is news, too
};

} // namespace Tessaline::Server
