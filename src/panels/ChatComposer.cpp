#include "panels/ChatComposer.h"

#include "documents/DocumentStore.h"
#include "Services/LocalAIService.h"
#include "Services/WorkspaceContextBuilder.h"

#include <QCoro/QCoroFuture>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMostExcerpts = 6; // of the project, with one question

} // namespace

ChatComposer::ChatComposer(LocalAIService &ai, DocumentStore &documents, QObject *parent)
    : QObject(parent), m_ai(ai), m_documents(documents)
{
    connect(&ai, &LocalAIService::serverStatusChanged, this, &ChatComposer::stateChanged);
    connect(&ai, &LocalAIService::isServerRunningChanged, this, &ChatComposer::stateChanged);
    connect(&ai, &LocalAIService::isGeneratingChanged, this, &ChatComposer::stateChanged);
}

ChatComposer::~ChatComposer()
{
    m_life.request_stop();
}

void ChatComposer::setChatInput(const QString &text)
{
    if (text == m_chatInput)
        return;
    m_chatInput = text;
    Q_EMIT stateChanged();
}

ChatInputState ChatComposer::state() const
{
    return chatInputState({.serverStatus = m_ai.serverStatus(),
                           .isServerRunning = m_ai.isServerRunning(),
                           .isGenerating = m_ai.isGenerating(),
                           .isPreparingContext = m_isPreparingContext,
                           .text = m_chatInput});
}

void ChatComposer::send(const std::optional<FileURL> &document, const std::optional<ProjectReference> &project)
{
    const QString prompt = m_chatInput.trimmed();
    if (prompt.isEmpty() || m_isPreparingContext || m_ai.isGenerating())
        return;
    setChatInput(QString());
    setPreparingContext(true);
    m_ai.setContextStatus(project ? u"Finding relevant project context…"_s : u"Preparing context…"_s);
    ask(prompt, document, project);
}

QCoro::Task<> ChatComposer::ask(QString prompt, std::optional<FileURL> document,
                                std::optional<ProjectReference> project)
{
    const std::stop_token stop = m_life.get_token();
    std::optional<QString> content;
    if (document) {
        co_await m_documents.saveNow(*document);
        if (stop.stop_requested())
            co_return;
        const Result<ChunkedText> text = co_await m_documents.readDocument(*document);
        if (stop.stop_requested())
            co_return;
        if (text)
            content = text.value().toString();
    }
    const QList<ContextItem> excerpts =
        co_await WorkspaceContextBuilder::buildContext(prompt, project, document, kMostExcerpts, stop);
    if (stop.stop_requested())
        co_return;
    co_await m_ai.sendMessage(prompt, content, m_ai.attachedContexts(), excerpts);
    if (!stop.stop_requested())
        setPreparingContext(false);
}

void ChatComposer::stop()
{
    m_ai.cancelGeneration();
}

void ChatComposer::retry()
{
    m_ai.startServer();
}

void ChatComposer::clearChat()
{
    m_ai.setChatMessages({});
    if (m_ai.activeFileURL())
        m_ai.saveSession(*m_ai.activeFileURL());
}

void ChatComposer::setPreparingContext(bool isPreparing)
{
    if (isPreparing == m_isPreparingContext)
        return;
    m_isPreparingContext = isPreparing;
    Q_EMIT stateChanged();
}

} // namespace Tessaline
