#include "server/UrlEngine.h"

#include "server/EngineJson.h"
#include "server/HttpClient.h"

#include <algorithm>
#include <condition_variable>
#include <utility>

namespace Tessaline::Server {

UrlEngine::UrlEngine(const Settings &settings, StateListener listener)
    : m_state(std::move(listener)), m_peer{settings.engine.value_or(LoopbackAddress{}), {}, settings.modelId}
{}

std::string UrlEngine::name() const
{
    const OpenAiPeer peer = this->peer();
    return "the engine at http://" + peer.address.host + ":" + std::to_string(peer.address.port) + peer.address.path;
}

void UrlEngine::awaitAnswer(const std::stop_token &stop)
{
    constexpr std::chrono::milliseconds kInterval{250};
    std::mutex mutex;
    std::condition_variable_any wake;
    m_state.set({EngineState::Phase::Loading, -1, {}});
    while (!stop.stop_requested()) {
        OpenAiPeer peer = this->peer();
        const HttpOutcome models = httpCall(peer.address, {"/v1/models", {}, peer.key, std::chrono::seconds(5)}, stop);
        if (models.status == 200) {
            // A server that has the model by another name is asked for the first that it has.
            const std::vector<std::string> ids = modelIds(models.body);
            if (!ids.empty() && std::find(ids.begin(), ids.end(), peer.model) == ids.end())
                peer.model = ids.front();
            const std::optional<int> contextTokens = openAiContextTokens(peer, stop);
            const bool hasTokenizer = openAiCountTokens(peer, "a", stop).has_value();
            {
                const std::lock_guard guard(m_mutex);
                m_peer = peer;
                m_contextTokens = contextTokens;
                m_hasTokenizer = hasTokenizer;
            }
            m_state.set({EngineState::Phase::Ready, -1, {}});
            return;
        }
        std::unique_lock lock(mutex);
        wake.wait_for(lock, stop, kInterval, [] { return false; });
    }
}

OpenAiPeer UrlEngine::peer() const
{
    const std::lock_guard guard(m_mutex);
    return m_peer;
}

std::optional<int> UrlEngine::contextTokens() const
{
    const std::lock_guard guard(m_mutex);
    return m_contextTokens;
}

std::optional<int> UrlEngine::countTokens(std::string_view text, std::stop_token stop)
{
    {
        const std::lock_guard guard(m_mutex);
        if (!m_hasTokenizer)
            return {};
    }
    return openAiCountTokens(peer(), text, std::move(stop));
}

EngineOutcome UrlEngine::generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token)
{
    return openAiGenerate(peer(), request, std::move(stop), token);
}

void UrlEngine::begin()
{
    m_thread = std::jthread([this](const std::stop_token &stop) { awaitAnswer(stop); });
}

void UrlEngine::end()
{
    m_thread.request_stop();
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace Tessaline::Server
