#include "Services/ChatGeneration.h"

#include "Services/Session.h"
#include "Services/WireClient.h"

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// All messages but the newest two, which are the question and the answer that is to come.
QList<ChatMessageHistoryItem> earlierTurns(const QList<ChatMessage> &messages)
{
    QList<ChatMessageHistoryItem> history;
    for (qsizetype index = 0; index < messages.size() - 2; ++index)
        history.append({messages.at(index).role, messages.at(index).content});
    return history;
}

} // namespace

ChatGeneration::ChatGeneration(Session &session, WireClient &wire, Clock now, QObject *parent)
    : QObject(parent), m_session(session), m_wire(wire), m_now(std::move(now))
{}

ChatGeneration::~ChatGeneration()
{
    m_life.request_stop(); // first, so that the generation knows why it ends
    cancel();
}

void ChatGeneration::setContextStatus(const QString &status)
{
    if (status == m_contextStatus)
        return;
    m_contextStatus = status;
    Q_EMIT contextStatusChanged();
}

void ChatGeneration::cancel()
{
    if (!m_generationTask)
        return;
    const std::stop_source task = *m_generationTask; // the generation ends inside request_stop and drops its own
    task.request_stop();
}

QCoro::Task<> ChatGeneration::sendMessage(QString prompt, std::optional<QString> fileContent,
                                          QList<ContextItem> contexts, QList<ContextItem> workspaceItems)
{
    if (m_isGenerating)
        co_return;
    const std::stop_token life = m_life.get_token();
    const std::stop_source task;
    m_generationTask = task;
    setGenerating(true);

    // 1. The question is on the disk before the answer begins.
    m_session.appendMessage({QUuid::createUuid(), kUserRole.toString(), prompt});
    m_session.saveActive();
    const QUuid answerId = QUuid::createUuid();
    m_session.appendMessage({answerId, kAssistantRole.toString(), QString()});

    // 2. The request, and the answer as it comes. What is shown of it may lag behind `answer`.
    ChatRequestPayload payload;
    payload.prompt = std::move(prompt);
    payload.fileContent = std::move(fileContent);
    payload.contextItems = std::move(contexts);
    payload.workspaceContextItems = std::move(workspaceItems);
    payload.history = earlierTurns(m_session.chatMessages());
    GrowingAnswer answer;
    const WireClient::EventSink onEvent = [this, &answer, answerId](const StreamEvent &event) {
        takeEvent(event, answerId, answer);
    };
    const auto end = co_await m_wire.chat(std::move(payload), StreamPath::Chat, onEvent, task.get_token());
    if (life.stop_requested())
        co_return;

    // 3. How it ended.
    if (!end) {
        const WireFailure &failure = end.failure();
        if (failure.kind == WireFailure::Kind::Status) {
            answer.setText(u"Server error: Status code %1"_s.arg(failure.status));
        } else if (failure.kind == WireFailure::Kind::Stopped || task.stop_requested()) {
            setContextStatus(u"Generation stopped"_s);
            if (answer.isEmpty())
                answer.setText(u"Generation stopped."_s);
        } else {
            answer.setText(
                u"Connection failed: %1\nMake sure the local server is built and running."_s.arg(failure.description));
        }
    }

    // 4. With the last tokens, which had to wait for their turn.
    if (!answer.isEmpty())
        m_session.replaceMessageContent(answerId, answer.text());
    m_generationTask.reset();
    setGenerating(false);
    m_session.saveActive();
}

void ChatGeneration::takeEvent(const StreamEvent &event, const QUuid &answerId, GrowingAnswer &answer)
{
    if (const auto *token = std::get_if<TokenEvent>(&event)) {
        answer.append(token->token);
        if (answer.isUpdateDue(m_now())) {
            m_session.replaceMessageContent(answerId, answer.text());
            answer.noteUpdate(m_now()); // not the moment of the question: the views have drawn it meanwhile
        }
    } else if (const auto *stats = std::get_if<ContextStatsEvent>(&event)) {
        setContextStatus(statusLine(stats->context));
    } else if (const auto *error = std::get_if<ErrorEvent>(&event)) {
        if (answer.isEmpty())
            answer.setText(error->error);
        setContextStatus(u"AI error: "_s + error->error);
    }
}

void ChatGeneration::setGenerating(bool isGenerating)
{
    m_isGenerating = isGenerating;
    Q_EMIT isGeneratingChanged();
}

} // namespace Tessaline
