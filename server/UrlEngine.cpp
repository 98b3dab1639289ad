#include "server/UrlEngine.h"

#include "server/EngineJson.h"
#include "server/HttpClient.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Tessaline::Server {

using Phase = EngineState::Phase;

UrlEngine::UrlEngine(const Settings &settings, StateListener listener)
    : OpenAiEngine(std::move(listener)), m_wanted{settings.engine.value_or(LoopbackAddress{}), {}, settings.modelId}
{}

std::string UrlEngine::name() const
{
    const LoopbackAddress &address = m_wanted.address;
    return "the engine at http://" + address.host + ":" + std::to_string(address.port) + address.path;
}

void UrlEngine::waitForAnswers(const std::stop_token &stop)
{
    constexpr std::chrono::milliseconds kInterval{250};
    m_state.set({Phase::Loading, -1, {}});
    while (!stop.stop_requested()) {
        if (answers(stop)) {
            m_state.set({Phase::Ready, -1, {}});
            m_worker.sleep(stop); // until somebody misses it
        } else {
            if (m_state.state().phase == Phase::Ready)
                m_state.set({Phase::Loading, -1, "There is no answer from " + name() + "."});
            m_worker.sleep(stop, kInterval);
        }
    }
}

bool UrlEngine::answers(const std::stop_token &stop)
{
    const HttpOutcome models = httpCall(m_wanted.address, {"/v1/models", {}, {}, std::chrono::seconds(5)}, stop);
    if (models.status != 200)
        return false;
    // A server that has the model by another name is asked for the first that it has.
    OpenAiPeer peer = m_wanted;
    const std::vector<std::string> ids = modelIds(models.body);
    if (!ids.empty() && std::find(ids.begin(), ids.end(), peer.model) == ids.end())
        peer.model = ids.front();
    adopt(peer, stop);
    return true;
}

void UrlEngine::begin()
{
    m_worker.begin([this](const std::stop_token &stop) { waitForAnswers(stop); });
}

} // namespace Tessaline::Server
