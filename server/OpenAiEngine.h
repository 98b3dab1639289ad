#pragma once

#include "server/Engine.h"
#include "server/OpenAiTalk.h"
#include "server/StateKeeper.h"

#include <mutex>
#include <optional>
#include <stop_token>
#include <string_view>
#include <utility>

namespace Tessaline::Server {

/// Any engine that speaks the OpenAI protocol. How it comes about that there is one, is what its kinds differ in: each
/// finds its peer on a thread of its own.
class OpenAiEngine : public Engine
{
public:
    EngineState state() const final { return m_state.state(); }
    std::optional<int> contextTokens() const final;
    std::optional<int> countTokens(std::string_view text, std::stop_token stop) final;
    EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) final;

protected:
    explicit OpenAiEngine(StateListener listener) : m_state(std::move(listener)) {}

    /// This is who is asked from now on. It answers already, and is asked here for its context and its tokenizer.
    void adopt(const OpenAiPeer &peer, const std::stop_token &stop);
    /// The peer did not answer a question at all. On the thread that asked.
    virtual void noteSilence() {}

    StateKeeper m_state;

private:
    OpenAiPeer peer() const;

    mutable std::mutex m_mutex; // guards what follows
    OpenAiPeer m_peer;
    std::optional<int> m_contextTokens;
    bool m_hasTokenizer = false;
};

} // namespace Tessaline::Server
