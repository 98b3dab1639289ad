#include "Services/LocalAIService.h"

#include "Services/FileDigest.h"

namespace Tessaline {

LocalAIService::LocalAIService(LocalAIServiceParts parts, QObject *parent)
    : QObject(parent), m_serverPort(parts.wire.address.port), m_wire(parts.wire), m_oneShot(parts.wire),
      m_session(SessionFiles(parts.server.dataFolder), parts.server.now), m_generation(m_session, m_wire, parts.now),
      m_suggestions(m_session, parts.documents, m_wire), m_server(withRequests(parts.server))
{
    connect(&m_server, &ServerSupervisor::isServerRunningChanged, this, &LocalAIService::isServerRunningChanged);
    connect(&m_server, &ServerSupervisor::serverStatusChanged, this, &LocalAIService::serverStatusChanged);
    connect(&m_server, &ServerSupervisor::activeModelChanged, this, &LocalAIService::activeModelChanged);
    connect(&m_generation, &ChatGeneration::isGeneratingChanged, this, &LocalAIService::isGeneratingChanged);
    connect(&m_generation, &ChatGeneration::contextStatusChanged, this, &LocalAIService::contextStatusChanged);
    connect(&m_session, &Session::chatMessagesChanged, this, &LocalAIService::chatMessagesChanged);
    connect(&m_session, &Session::attachedContextsChanged, this, &LocalAIService::attachedContextsChanged);
    connect(&m_suggestions, &ContextSuggestions::suggestedContextsChanged, this,
            &LocalAIService::suggestedContextsChanged);

    connect(&m_server, &ServerSupervisor::becameHealthy, this, [this] {
        if (activeFileURL())
            m_suggestions.readAndFetch(*activeFileURL());
    });
}

LocalAIService::~LocalAIService() = default;

/// The two ends of the supervisor that lead to the requests.
ServerSupervisorParts LocalAIService::withRequests(ServerSupervisorParts parts)
{
    parts.checkHealth = [this](std::stop_token stop) { return m_wire.checkHealth(std::move(stop)); };
    parts.cancelRequests = [this] {
        m_suggestions.cancel();
        m_generation.cancel();
    };
    return parts;
}

QCoro::Task<> LocalAIService::sendMessage(QString prompt, std::optional<QString> fileContent,
                                          QList<ContextItem> contexts, QList<ContextItem> workspaceItems)
{
    if (!isServerRunning())
        co_return; // the views ask for nothing then
    co_await m_generation.sendMessage(std::move(prompt), std::move(fileContent), std::move(contexts),
                                      std::move(workspaceItems));
}

QFuture<OneShotGeneration::Outcome> LocalAIService::generateOneShot(QString prompt, QString fileContent,
                                                                    std::shared_ptr<TokenAccumulator> accumulator)
{
    return m_oneShot.generate(std::move(prompt), std::move(fileContent), std::move(accumulator));
}

void LocalAIService::switchActiveFile(const std::optional<FileURL> &document)
{
    m_suggestions.cancel();
    setContextStatus(QString());
    m_session.switchTo(document);
    if (document)
        m_suggestions.begin(*document);
    else
        setSuggestedContexts({});
}

QCoro::Task<> LocalAIService::fetchSuggestions(QString text, std::optional<FileURL> document)
{
    return m_suggestions.fetchSuggestions(std::move(text), std::move(document));
}

QCoro::Task<std::optional<QString>> LocalAIService::fetchDigest(QString filename, QString content)
{
    return Tessaline::fetchDigest(m_wire, std::move(filename), std::move(content), std::stop_token());
}

QCoro::Task<std::optional<ConceptExpansionResponse>> LocalAIService::expandConcept(QString topic)
{
    return Tessaline::expandConcept(m_wire, std::move(topic), std::stop_token());
}

void LocalAIService::setSuggestionState(const QString &id, const QString &state)
{
    if (m_suggestionStates.value(id) == state)
        return;
    m_suggestionStates.insert(id, state);
    Q_EMIT suggestionStatesChanged();
}

} // namespace Tessaline
