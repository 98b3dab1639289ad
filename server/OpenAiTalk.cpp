#include "server/OpenAiTalk.h"

#include "server/EngineJson.h"
#include "server/HttpClient.h"
#include "server/Lines.h"

namespace Tessaline::Server {

using End = EngineOutcome::End;

EngineOutcome openAiGenerate(const OpenAiPeer &peer, const EngineRequest &request, std::stop_token stop,
                             const TokenReceiver &token)
{
    Lines lines;
    bool isDone = false;
    bool isUnwanted = false;
    std::string error;
    const HttpOutcome outcome =
        httpCall(peer.address, {"/v1/chat/completions", openAiChatBody(request, peer.model), peer.key}, stop,
                 [&](std::string_view bytes) {
                     return lines.append(bytes, [&](std::string_view line) {
                         const EngineLine meaning = openAiLine(line);
                         error = meaning.error;
                         isDone = meaning.isDone;
                         if (!meaning.token.empty() && !token(meaning.token))
                             isUnwanted = true;
                         return !isDone && !isUnwanted && error.empty();
                     });
                 });
    if (stop.stop_requested() || isUnwanted)
        return {End::Stopped, {}};
    if (!error.empty())
        return {End::Failed, "The engine reports a failure: " + error + "."};
    if (isDone)
        return {End::Complete, {}};
    if (outcome.status == 0)
        return {End::Failed, "The engine does not answer."};
    if (outcome.status == 200)
        return {End::Failed, "The engine ended in the middle of its answer."};
    const EngineError refusal = engineError(outcome.body);
    if (refusal.type == "exceed_context_size_error")
        return {End::TooLong, "The question, with what comes with it, is too long for the model."};
    return {End::Failed, "The engine refused the question: " + refusal.message + "."};
}

std::optional<int> openAiCountTokens(const OpenAiPeer &peer, std::string_view text, std::stop_token stop)
{
    const HttpOutcome outcome =
        httpCall(peer.address, {"/tokenize", tokenizeBody(text), peer.key, std::chrono::seconds(60)}, stop);
    return outcome.status == 200 ? tokenCount(outcome.body) : std::nullopt;
}

std::optional<int> openAiContextTokens(const OpenAiPeer &peer, std::stop_token stop)
{
    const HttpOutcome outcome = httpCall(peer.address, {"/props", {}, peer.key, std::chrono::seconds(5)}, stop);
    return outcome.status == 200 ? contextSize(outcome.body) : std::nullopt;
}

} // namespace Tessaline::Server
