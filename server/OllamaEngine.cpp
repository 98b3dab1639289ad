#include "server/OllamaEngine.h"

#include "server/EngineTalk.h"
#include "server/Lines.h"
#include "server/ModelNames.h"

#include <algorithm>
#include <map>
#include <stop_token>
#include <utility>

namespace Tessaline::Server {

namespace {

using Phase = EngineState::Phase;

std::string ollamaName(const std::string &modelId)
{
    const std::optional<ModelNames> names = modelNames(modelId);
    return names ? std::string(names->ollama) : modelId;
}

} // namespace

bool isOllama(const LoopbackAddress &address, std::chrono::milliseconds patience)
{
    // Whatever it is that listens there, it may also write on and on.
    std::stop_source end;
    Worker alarm;
    alarm.begin([&](const std::stop_token &stop) {
        alarm.sleep(stop, patience);
        end.request_stop();
    });
    const HttpOutcome tags = httpCall(address, {"/api/tags", {}, {}, std::chrono::seconds(2)}, end.get_token());
    return tags.status == 200 && ollamaModels(tags.body).has_value();
}

OllamaEngine::OllamaEngine(const Settings &settings, StateListener listener)
    : m_settings(settings), m_model(ollamaName(settings.modelId)), m_state(std::move(listener))
{}

std::string OllamaEngine::name() const
{
    return "Ollama at http://" + m_settings.ollama.host + ":" + std::to_string(m_settings.ollama.port);
}

void OllamaEngine::prepare(const std::stop_token &stop)
{
    constexpr std::chrono::milliseconds kInterval{250};
    bool hasPulled = false;
    while (!stop.stop_requested()) {
        switch (look(stop)) {
        case Found::Nobody:
            if (m_state.state().phase == Phase::Ready)
                m_state.set({Phase::Loading, -1, "There is no answer from " + name() + "."});
            m_worker.sleep(stop, kInterval);
            continue;
        case Found::RemoteModel:
            return m_state.set({Phase::Explained, -1, remoteSentence("Ollama")});
        case Found::OnlyOthers:
            // NOTE: what has come may be listed by another name; a question tells.
            if (hasPulled)
                break;
            if (!pull(stop))
                return;
            hasPulled = true;
            continue; // what has come may be of another machine
        case Found::Model:
            break;
        }
        m_state.set({Phase::Ready, -1, {}});
        m_worker.sleep(stop); // until somebody misses it
    }
}

OllamaEngine::Found OllamaEngine::look(const std::stop_token &stop) const
{
    const HttpOutcome tags = httpCall(m_settings.ollama, {"/api/tags", {}, {}, std::chrono::seconds(10)}, stop);
    const auto models = ollamaModels(tags.body);
    if (tags.status != 200 || !models)
        return Found::Nobody;
    const auto found = std::find_if(models->begin(), models->end(), [this](const OllamaModel &model) {
        return model.name == m_model || model.name == m_model + ":latest";
    });
    if (found == models->end())
        return Found::OnlyOthers;
    return found->isRemote ? Found::RemoteModel : Found::Model;
}

bool OllamaEngine::pull(const std::stop_token &stop)
{
    // The parts of a model are told one after the other; the largest comes first, so that the sum hardly ever goes
    // back.
    constexpr size_t kMostParts = 1000;                           // no model has more
    std::map<std::string, std::pair<long long, long long>> parts; // how much has come, of how much
    std::string error;
    bool isDone = false;
    Lines lines;
    m_state.set({Phase::Downloading, 0, {}});
    const HttpOutcome outcome =
        httpCall(m_settings.ollama, {"/api/pull", ollamaPullBody(m_model), {}}, stop, [&](std::string_view bytes) {
            return lines.append(bytes, [&](std::string_view line) {
                const EngineLine meaning = ollamaLine(line);
                error = meaning.isRemote ? remoteSentence("Ollama") : meaning.error;
                isDone = meaning.isDone;
                if (meaning.total > 0 && (parts.size() < kMostParts || parts.contains(meaning.part)))
                    parts[meaning.part] = {meaning.completed, meaning.total};
                double completed = 0;
                double total = 0;
                for (const auto &[part, progress] : parts) {
                    completed += static_cast<double>(progress.first);
                    total += static_cast<double>(progress.second);
                }
                if (total > 0)
                    m_state.set({Phase::Downloading, static_cast<int>(100 * completed / total), {}});
                return error.empty() && !isDone;
            });
        });
    if (stop.stop_requested())
        return false;
    if (isDone && error.empty())
        return true;
    if (error.empty())
        error =
            outcome.status == 0 || outcome.status == 200 ? "the connection broke" : engineError(outcome.body).message;
    m_state.set({Phase::Explained, -1,
                 "Ollama could not fetch the model " + m_model + ": " + error + ". Try “ollama pull " + m_model +
                     "” in a terminal, and start Tessaline again."});
    return false;
}

EngineOutcome OllamaEngine::generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token)
{
    const HttpCall call{"/api/chat", ollamaChatBody(request, m_model, m_settings.contextTokens), {}};
    EngineOutcome outcome = ask({m_settings.ollama, "Ollama", ollamaLine}, call, stop, token);
    if (outcome.end == EngineOutcome::End::Silent)
        m_worker.wake();
    return outcome;
}

void OllamaEngine::begin()
{
    m_worker.begin([this](const std::stop_token &stop) { prepare(stop); });
}

} // namespace Tessaline::Server
