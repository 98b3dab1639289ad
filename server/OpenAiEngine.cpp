#include "server/OpenAiEngine.h"

#include <utility>

namespace Tessaline::Server {

void OpenAiEngine::adopt(const OpenAiPeer &peer, const std::stop_token &stop)
{
    const std::optional<int> contextTokens = openAiContextTokens(peer, stop);
    const bool hasTokenizer = openAiCountTokens(peer, "a", stop).has_value();
    const std::lock_guard guard(m_mutex);
    m_peer = peer;
    m_contextTokens = contextTokens;
    m_hasTokenizer = hasTokenizer;
}

OpenAiPeer OpenAiEngine::peer() const
{
    const std::lock_guard guard(m_mutex);
    return m_peer;
}

std::optional<int> OpenAiEngine::contextTokens() const
{
    const std::lock_guard guard(m_mutex);
    return m_contextTokens;
}

std::optional<int> OpenAiEngine::countTokens(std::string_view text, std::stop_token stop)
{
    {
        const std::lock_guard guard(m_mutex);
        if (!m_hasTokenizer)
            return {};
    }
    return openAiCountTokens(peer(), text, std::move(stop));
}

EngineOutcome OpenAiEngine::generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token)
{
    EngineOutcome outcome = openAiGenerate(peer(), request, stop, token);
    if (outcome.end == EngineOutcome::End::Refused && !request.jsonSchema.empty()) {
        // NOTE: not every such server knows schemas. The question says, too, what JSON is wanted.
        EngineRequest plain = request;
        plain.jsonSchema.clear();
        outcome = openAiGenerate(peer(), plain, std::move(stop), token);
    }
    if (outcome.end == EngineOutcome::End::Silent)
        noteSilence();
    return outcome;
}

} // namespace Tessaline::Server
