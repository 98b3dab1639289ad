#include "server/Assistant.h"

#include "server/EditGuard.h"
#include "server/Prompt.h"
#include "server/Records.h"
#include "server/SideRequests.h"

#include <algorithm>
#include <utility>

namespace Tessaline::Server {

namespace {

using Phase = EngineState::Phase;
using End = EngineOutcome::End;

std::string sentenceFor(const EngineState &state)
{
    const std::string percent = state.percent < 0 ? std::string() : " (" + std::to_string(state.percent) + " %)";
    switch (state.phase) {
    case Phase::Loading:
        if (!state.explanation.empty())
            return state.explanation;
        return "The model is being loaded" + percent + ". Ask again in a moment.";
    case Phase::Downloading:
        return "The model is being downloaded" + percent + ". Ask again when it is there.";
    case Phase::Explained:
        return state.explanation;
    case Phase::Ready:
        break;
    }
    return {};
}

/// Answers a sound body, and 400 to any other.
template <class Value, class Answer>
auto answeringSound(std::variant<Value, Malformed> (*parse)(std::string_view), Answer answer)
{
    return [parse, answer](const std::string &body, std::stop_token stop) -> std::variant<Reply, EventStream> {
        const std::variant<Value, Malformed> parsed = parse(body);
        if (const Malformed *const malformed = std::get_if<Malformed>(&parsed))
            return Reply{400, errorBody(malformed->sentence)};
        return answer(std::get<Value>(parsed), std::move(stop));
    };
}

} // namespace

class Assistant::RunningChat
{
public:
    explicit RunningChat(Assistant &assistant) : m_assistant(assistant)
    {
        std::stop_source aside(std::nostopstate);
        {
            const std::lock_guard guard(m_assistant.m_mutex);
            ++m_assistant.m_chats;
            aside = m_assistant.m_aside;
        }
        aside.request_stop(); // the person waits for the chat; the other begins anew behind it
    }
    ~RunningChat()
    {
        const std::lock_guard guard(m_assistant.m_mutex);
        --m_assistant.m_chats;
        m_assistant.m_changed.notify_all();
    }
    RunningChat(const RunningChat &) = delete;
    RunningChat &operator=(const RunningChat &) = delete;

private:
    Assistant &m_assistant;
};

class Assistant::RunningAside
{
public:
    /// Waits until no chat runs and nothing else is asked aside, or `client` goes. `stop` is what a chat stops it by.
    RunningAside(Assistant &assistant, const std::stop_source &stop, std::stop_token client) : m_assistant(assistant)
    {
        std::unique_lock lock(m_assistant.m_mutex);
        m_hasTurn = m_assistant.m_changed.wait(
            lock, std::move(client), [&assistant] { return assistant.m_chats == 0 && !assistant.m_isAsking; });
        if (!m_hasTurn)
            return;
        m_assistant.m_isAsking = true;
        m_assistant.m_aside = stop;
    }
    ~RunningAside()
    {
        if (!m_hasTurn)
            return;
        const std::lock_guard guard(m_assistant.m_mutex);
        m_assistant.m_isAsking = false;
        m_assistant.m_aside = std::stop_source(std::nostopstate);
        m_assistant.m_changed.notify_all();
    }
    RunningAside(const RunningAside &) = delete;
    RunningAside &operator=(const RunningAside &) = delete;

    bool hasTurn() const { return m_hasTurn; }

private:
    Assistant &m_assistant;
    bool m_hasTurn = false;
};

Routes Assistant::routes()
{
    Routes routes;
    routes.health = [this] { return health(); };
    routes.posts["/v1/chat/completions"] = [this](const std::string &body, std::stop_token stop) {
        return chat(body, std::move(stop));
    };
    routes.posts["/v1/suggest-context"] =
        answeringSound<std::string>(parseSuggestionsRequest, [this](const std::string &content, std::stop_token stop) {
            return suggestions(content, stop);
        });
    routes.posts["/v1/digest-file"] =
        answeringSound<DigestRequest>(parseDigestRequest, [this](const DigestRequest &request, std::stop_token stop) {
            return digest(request, stop);
        });
    routes.posts["/v1/expand-concept"] =
        answeringSound<std::string>(parseConceptRequest, [this](const std::string &topic, std::stop_token stop) {
            return conceptCards(topic, stop);
        });
    return routes;
}

Reply Assistant::health() const
{
    const EngineState state = m_engine.state();
    switch (state.phase) {
    case Phase::Loading:
        return {503, healthBody("loading", state.percent, {})};
    case Phase::Downloading:
        return {503, healthBody("downloading", state.percent, {})};
    case Phase::Explained:
        return {200, healthBody("no engine", -1, state.explanation)};
    case Phase::Ready:
        break;
    }
    return {200, healthBody("ready", -1, {})};
}

std::variant<Reply, EventStream> Assistant::chat(const std::string &body, std::stop_token stop)
{
    std::variant<ChatRequest, Malformed> parsed = parseChatRequest(body);
    if (const Malformed *const malformed = std::get_if<Malformed>(&parsed))
        return Reply{400, errorBody(malformed->sentence)};
    return EventStream(
        [this, request = std::get<ChatRequest>(std::move(parsed)), stop = std::move(stop)](const EventWriter &write) {
            const RunningChat running(*this);
            streamAnswer(request, stop, write);
            write(kDoneEvent);
        });
}

void Assistant::streamAnswer(const ChatRequest &request, std::stop_token stop, const EventWriter &write)
{
    constexpr int kTries = 3; // with less each time, if the engine counts otherwise than was estimated
    constexpr double kLess = 0.6;
    const EngineState state = m_engine.state();
    if (state.phase != Phase::Ready) {
        write(contextEvent({windowTokens(), 0, 0, 0, 0, 0})); // nothing is used
        write(errorEvent(sentenceFor(state)));
        return;
    }

    const TokenCounter count = [&](std::string_view text) {
        return m_engine.countTokens(text, stop).value_or(estimatedTokens(text));
    };
    int window = windowTokens();
    EngineOutcome outcome;
    for (int tries = 0; tries < kTries; ++tries) {
        // 1. What the model is given.
        Prompt prompt = fitPrompt(request, window, count);
        prompt.counts.windowTokens = windowTokens();
        if (stop.stop_requested() || !write(contextEvent(prompt.counts)))
            return;

        // 2. Its answer, as it comes.
        EngineRequest question;
        question.turns = std::move(prompt.turns);
        question.temperature = request.temperature;
        question.topP = request.topP;
        question.mostTokens = std::max(windowTokens() / 4, windowTokens() - prompt.counts.inputTokens);
        EditGuard guard(request.document ? std::string_view(*request.document) : std::string_view());
        outcome = m_engine.generate(question, stop, [&](std::string_view token) {
            const std::string passed = guard.append(token);
            return passed.empty() || write(tokenEvent(passed));
        });
        if (outcome.end == End::Stopped)
            return;
        if (const std::string rest = guard.finish(); !rest.empty())
            write(tokenEvent(rest));
        if (outcome.end != End::TooLong)
            break;
        window = static_cast<int>(kLess * window);
    }
    if (outcome.end != End::Complete)
        write(errorEvent(outcome.sentence));
}

Reply Assistant::suggestions(const std::string &content, std::stop_token stop)
{
    if (m_engine.state().phase == Phase::Explained)
        return {200, suggestionsBody({})};
    const std::optional<std::string> answer = askAside(topicsRequest(content), std::move(stop));
    if (!answer)
        return {503, errorBody("The engine gave no answer.")};
    return {200, suggestionsBody(topicsIn(*answer))};
}

Reply Assistant::digest(const DigestRequest &request, std::stop_token stop)
{
    const std::optional<std::string> answer = askAside(digestRequest(request), std::move(stop));
    const std::optional<std::string> digest = answer ? digestIn(*answer) : std::nullopt;
    if (!digest)
        return {503, errorBody("The engine gave no digest.")};
    return {200, digestBody(*digest)};
}

Reply Assistant::conceptCards(const std::string &topic, std::stop_token stop)
{
    const std::optional<std::string> answer = askAside(cardsRequest(topic), std::move(stop));
    const std::vector<ConceptCard> cards = answer ? cardsIn(*answer) : std::vector<ConceptCard>{};
    if (cards.empty())
        return {503, errorBody("The engine gave no card.")};
    return {200, conceptBody(cards)};
}

std::optional<std::string> Assistant::askAside(const EngineRequest &request, std::stop_token client)
{
    constexpr size_t kLongest = 64 * 1024; // bytes; a model that writes on and on is stopped
    while (m_engine.state().phase == Phase::Ready) {
        std::stop_source stop;
        std::string answer;
        EngineOutcome outcome;
        {
            // 1. Its turn.
            const RunningAside running(*this, stop, client);
            if (!running.hasTurn())
                return {};

            // 2. The answer, unless the client goes or a chat comes.
            const std::stop_callback gone(client, [&stop] { stop.request_stop(); });
            outcome = m_engine.generate(request, stop.get_token(), [&answer](std::string_view token) {
                answer += token;
                return answer.size() <= kLongest;
            });
        }
        if (outcome.end == End::Complete)
            return answer;
        if (client.stop_requested() || !stop.stop_requested())
            return {};
    }
    return {};
}

int Assistant::windowTokens() const
{
    return m_engine.contextTokens().value_or(m_settings.contextTokens);
}

} // namespace Tessaline::Server
