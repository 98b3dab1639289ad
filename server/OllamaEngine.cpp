#include "server/OllamaEngine.h"

#include "server/EngineJson.h"
#include "server/HttpClient.h"
#include "server/Lines.h"
#include "server/ModelNames.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Tessaline::Server {

namespace {

using End = EngineOutcome::End;
using Phase = EngineState::Phase;

constexpr std::string_view kRemote =
    "Ollama would send what you write to another machine; Tessaline does not allow that.";

std::string ollamaName(const std::string &modelId)
{
    const std::optional<ModelNames> names = modelNames(modelId);
    return names ? std::string(names->ollama) : modelId;
}

} // namespace

bool isOllama(const LoopbackAddress &address)
{
    const HttpOutcome tags = httpCall(address, {"/api/tags", {}, {}, std::chrono::seconds(2)}, {});
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
    const HttpOutcome tags = httpCall(m_settings.ollama, {"/api/tags", {}, {}, std::chrono::seconds(10)}, stop);
    const auto models = ollamaModels(tags.body).value_or(std::vector<OllamaModel>{});
    const auto found = std::find_if(models.begin(), models.end(), [this](const OllamaModel &model) {
        return model.name == m_model || model.name == m_model + ":latest";
    });
    if (found == models.end())
        return pull(stop);
    if (found->isRemote)
        return m_state.set({Phase::Explained, -1, std::string(kRemote)});
    m_state.set({Phase::Ready, -1, {}});
}

void OllamaEngine::pull(const std::stop_token &stop)
{
    // The parts of a model are told one after the other; the largest comes first, so that the sum hardly ever goes
    // back.
    std::map<std::string, std::pair<long long, long long>> parts; // how much has come, of how much
    std::string error;
    bool isDone = false;
    Lines lines;
    m_state.set({Phase::Downloading, 0, {}});
    const HttpOutcome outcome =
        httpCall(m_settings.ollama, {"/api/pull", ollamaPullBody(m_model), {}}, stop, [&](std::string_view bytes) {
            return lines.append(bytes, [&](std::string_view line) {
                const EngineLine meaning = ollamaLine(line);
                error = meaning.isRemote ? std::string(kRemote) : meaning.error;
                isDone = meaning.isDone;
                if (meaning.total > 0)
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
        return;
    if (isDone && error.empty())
        return m_state.set({Phase::Ready, -1, {}});
    if (error.empty())
        error =
            outcome.status == 0 || outcome.status == 200 ? "the connection broke" : engineError(outcome.body).message;
    m_state.set({Phase::Explained, -1,
                 "Ollama could not fetch the model " + m_model + ": " + error + ". Try “ollama pull " + m_model +
                     "” in a terminal, and start Tessaline again."});
}

EngineOutcome OllamaEngine::generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token)
{
    Lines lines;
    std::string error;
    bool isDone = false;
    bool isRemote = false;
    bool isUnwanted = false;
    const std::string body = ollamaChatBody(request, m_model, m_settings.contextTokens);
    const HttpOutcome outcome = httpCall(m_settings.ollama, {"/api/chat", body, {}}, stop, [&](std::string_view bytes) {
        return lines.append(bytes, [&](std::string_view line) {
            const EngineLine meaning = ollamaLine(line);
            error = meaning.error;
            isRemote = meaning.isRemote;
            isDone = meaning.isDone;
            if (!isRemote && !meaning.token.empty() && !token(meaning.token))
                isUnwanted = true;
            return error.empty() && !isRemote && !isDone && !isUnwanted;
        });
    });
    if (stop.stop_requested() || isUnwanted)
        return {End::Stopped, {}};
    if (isRemote)
        return {End::Failed, std::string(kRemote)};
    if (!error.empty())
        return {End::Failed, "Ollama reports a failure: " + error + "."};
    if (isDone)
        return {End::Complete, {}};
    if (outcome.status == 0)
        return {End::Failed, "Ollama does not answer."};
    if (outcome.status == 200)
        return {End::Failed, "Ollama ended in the middle of its answer."};
    return {End::Failed, "Ollama refused the question: " + engineError(outcome.body).message + "."};
}

void OllamaEngine::begin()
{
    m_thread = std::jthread([this](const std::stop_token &stop) { prepare(stop); });
}

void OllamaEngine::end()
{
    m_thread.request_stop();
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace Tessaline::Server
