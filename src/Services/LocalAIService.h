#pragma once

#include "Services/ChatGeneration.h"
#include "Services/ConceptExpansion.h"
#include "Services/ContextSuggestions.h"
#include "Services/OneShotGeneration.h"
#include "Services/ServerSupervisor.h"
#include "Services/Session.h"
#include "Services/WireClient.h"

#include <QCoro/QCoroTask>
#include <QtCore/QHash>
#include <QtCore/QObject>

#include <optional>

namespace Tessaline {

class DocumentStore;

/// What the service needs from outside.
struct LocalAIServiceParts {
    ServerSupervisorParts
        server;               // with the folder of the sessions; its `checkHealth` and `cancelRequests` are replaced
    DocumentStore &documents; // outlives the service
    WireOptions wire;
    ChatGeneration::Clock now = std::chrono::steady_clock::now; // paces what is shown of a growing answer
};

/// The assistant, as the rest of the application sees it: one object for the whole process, with the state that views
/// observe and every operation. It holds no rules of its own but brings together the classes that do:
///
/// - ServerSupervisor: the server's process
/// - WireClient: what is said to it
/// - ChatGeneration: answers in the chat; OneShotGeneration: answers beside it
/// - Session: the active document, its conversation and its attached context, in memory and on the disk
/// - ContextSuggestions: topics that the server proposes
/// - ConceptExpansion.h, FileDigest.h: cards and digests for what is being attached
///
/// Each signal is sent after its state has its new value. Main thread only; nothing blocks but `stopServer` and, for as
/// long as a small file takes, what saves or loads a session.
class LocalAIService final : public QObject
{
    Q_OBJECT
public:
    explicit LocalAIService(LocalAIServiceParts parts, QObject *parent = nullptr);
    ~LocalAIService() override; // ends the server and every request; nothing is saved

    // The server
    bool isServerRunning() const { return m_server.isServerRunning(); }
    const QString &serverStatus() const { return m_server.serverStatus(); }
    const AIModelOption &activeModel() const { return m_server.activeModel(); }
    const ServerSupervisor &server() const { return m_server; }
    quint16 serverPort() const { return m_serverPort; }
    void startServer() { m_server.startServer(); }
    /// Ends the suggestions' request and the generation, then the server's process; blocks until that has gone.
    void stopServer() { m_server.stopServer(); }

    // The chat
    bool isGenerating() const { return m_generation.isGenerating(); }
    const QString &contextStatus() const { return m_generation.contextStatus(); }
    void setContextStatus(const QString &status) { m_generation.setContextStatus(status); }
    /// See ChatGeneration. Does nothing while the server is not running either.
    QCoro::Task<> sendMessage(QString prompt, std::optional<QString> fileContent, QList<ContextItem> contexts,
                              QList<ContextItem> workspaceItems);
    void cancelGeneration() { m_generation.cancel(); }
    /// See OneShotGeneration. Works whatever else runs, and fails like any request while the server does not.
    QFuture<OneShotGeneration::Outcome> generateOneShot(QString prompt, QString fileContent,
                                                        std::shared_ptr<TokenAccumulator> accumulator);

    // The session. The setters do not save; `saveSession` does.
    const std::optional<FileURL> &activeFileURL() const { return m_session.activeFileURL(); }
    const QList<ChatMessage> &chatMessages() const { return m_session.chatMessages(); }
    void setChatMessages(QList<ChatMessage> messages) { m_session.setChatMessages(std::move(messages)); }
    void replaceMessageContent(const QUuid &id, const QString &content)
    {
        m_session.replaceMessageContent(id, content);
    }
    const QList<ContextItem> &attachedContexts() const { return m_session.attachedContexts(); }
    void setAttachedContexts(QList<ContextItem> contexts) { m_session.setAttachedContexts(std::move(contexts)); }
    std::optional<FileURL> sessionDirectory(const FileURL &document) const { return m_session.directory(document); }
    void saveSession(const FileURL &document) const { m_session.save(document); }
    void loadSession(const FileURL &document) { m_session.load(document); }
    /// Saves the session of the document that is left, loads the one of `document`, and asks for suggestions about it;
    /// the old suggestions stay until those come. Without a document everything becomes empty. A running generation
    /// goes on, but finds its message no more.
    void switchActiveFile(const std::optional<FileURL> &document);

    // What goes with the conversation
    const QStringList &suggestedContexts() const { return m_suggestions.suggestedContexts(); }
    void setSuggestedContexts(const QStringList &contexts) { m_suggestions.setSuggestedContexts(contexts); }
    /// See ContextSuggestions.
    QCoro::Task<> fetchSuggestions(QString text, std::optional<FileURL> document);
    /// See FileDigest.h.
    QCoro::Task<std::optional<QString>> fetchDigest(QString filename, QString content);
    /// See ConceptExpansion.h, also for what becomes of the answer.
    QCoro::Task<std::optional<ConceptExpansionResponse>> expandConcept(QString topic);

    /// What the person decided about each proposed edit, by the edit's id: "accepted" or "rejected"; "pending" has no
    /// entry. Kept for as long as the process runs, over all documents.
    const QHash<QString, QString> &suggestionStates() const { return m_suggestionStates; }
    void setSuggestionState(const QString &id, const QString &state);

Q_SIGNALS:
    void isServerRunningChanged();
    void isGeneratingChanged();
    void serverStatusChanged();
    void chatMessagesChanged();
    void attachedContextsChanged();
    void suggestedContextsChanged();
    void suggestionStatesChanged();
    void contextStatusChanged();
    void activeModelChanged();

private:
    ServerSupervisorParts withRequests(ServerSupervisorParts parts);

    quint16 m_serverPort;
    WireClient m_wire;
    OneShotGeneration m_oneShot;
    Session m_session;
    ChatGeneration m_generation;
    ContextSuggestions m_suggestions;
    ServerSupervisor m_server; // uses those above, so it goes first
    QHash<QString, QString> m_suggestionStates;
};

} // namespace Tessaline
