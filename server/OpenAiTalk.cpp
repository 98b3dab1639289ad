#include "server/OpenAiTalk.h"

#include "server/EngineTalk.h"

#include <chrono>

namespace Tessaline::Server {

EngineOutcome openAiGenerate(const OpenAiPeer &peer, const EngineRequest &request, std::stop_token stop,
                             const TokenReceiver &token)
{
    const HttpCall call{"/v1/chat/completions", openAiChatBody(request, peer.model), peer.key};
    return ask({peer.address, "The engine", openAiLine}, call, stop, token);
}

std::optional<int> openAiCountTokens(const OpenAiPeer &peer, std::string_view text, std::stop_token stop)
{
    const HttpOutcome outcome =
        httpCall(peer.address, {"/tokenize", tokenizeBody(text), peer.key, std::chrono::seconds(10)}, stop);
    return outcome.status == 200 ? tokenCount(outcome.body) : std::nullopt;
}

std::optional<int> openAiContextTokens(const OpenAiPeer &peer, std::stop_token stop)
{
    const HttpOutcome outcome = httpCall(peer.address, {"/props", {}, peer.key, std::chrono::seconds(5)}, stop);
    return outcome.status == 200 ? contextSize(outcome.body) : std::nullopt;
}

} // namespace Tessaline::Server
