#pragma once

#include "server/Engine.h"
#include "server/OpenAiTalk.h"
#include "server/Settings.h"
#include "server/StateKeeper.h"

#include <mutex>
#include <optional>
#include <thread>

namespace Tessaline::Server {

/// An OpenAI-compatible server that somebody else runs on this machine. It is waited for until it answers.
class UrlEngine final : public Engine
{
public:
    UrlEngine(const Settings &settings, StateListener listener);

    std::string name() const override;
    EngineState state() const override { return m_state.state(); }
    std::optional<int> contextTokens() const override;
    std::optional<int> countTokens(std::string_view text, std::stop_token stop) override;
    EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) override;
    void begin() override;
    void end() override;

private:
    void awaitAnswer(const std::stop_token &stop);
    OpenAiPeer peer() const;

    StateKeeper m_state;
    mutable std::mutex m_mutex; // guards what follows
    OpenAiPeer m_peer;
    std::optional<int> m_contextTokens;
    bool m_hasTokenizer = false;
    std::jthread m_thread; // last: it ends first
};

} // namespace Tessaline::Server
