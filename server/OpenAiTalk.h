#pragma once

#include "server/Engine.h"
#include "server/Settings.h"

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// An OpenAI-compatible server of this machine, as it is talked to.
struct OpenAiPeer {
    LoopbackAddress address;
    std::string key; // may be empty
    std::string model;
};

/// Asks for an answer and streams it. As Engine::generate.
EngineOutcome openAiGenerate(const OpenAiPeer &peer, const EngineRequest &request, std::stop_token stop,
                             const TokenReceiver &token);

/// By llama-server's /tokenize; absent if the peer has none.
std::optional<int> openAiCountTokens(const OpenAiPeer &peer, std::string_view text, std::stop_token stop);

/// By llama-server's /props.
std::optional<int> openAiContextTokens(const OpenAiPeer &peer, std::stop_token stop);

} // namespace Tessaline::Server
