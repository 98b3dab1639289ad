#pragma once

#include "Services/ContextItem.h"
#include "Services/GrowingAnswer.h"
#include "Services/StreamLine.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QUuid>

#include <functional>
#include <optional>
#include <stop_token>

namespace Tessaline {

class Session;
class WireClient;

/// The assistant's answers in the chat: takes a question, streams the answer into the session and keeps both on the
/// disk. One answer at a time. Main thread only.
///
/// | what happens                        | the answer                              | `contextStatus`              |
/// |-------------------------------------|-----------------------------------------|------------------------------|
/// | statistics arrive                   | goes on                                 | `statusLine` of them         |
/// | an error event before any token     | its text; goes on                       | "AI error: " and its text    |
/// | an error event after a token        | goes on                                 | "AI error: " and its text    |
/// | stopped before the first token      | "Generation stopped."                   | "Generation stopped"         |
/// | stopped after some                  | what has come                           | "Generation stopped"         |
/// | a status other than 200             | "Server error: Status code " and it     | as it was                    |
/// | the connection fails, also half-way | "Connection failed: ", why, and advice  | as it was                    |
/// | the stream ends without a word      | empty                                   | as it was                    |
///
/// While an answer arrives, the conversation can be cleared and the document switched. The answer is then lost: it
/// finds no message of its id. Nothing stops the stream for that.
class ChatGeneration final : public QObject
{
    Q_OBJECT
public:
    using Clock = std::function<GrowingAnswer::TimePoint()>;

    /// `session` and `wire` outlive this object. `now` paces what is shown of a growing answer.
    ChatGeneration(Session &session, WireClient &wire, Clock now = std::chrono::steady_clock::now,
                   QObject *parent = nullptr);
    ~ChatGeneration() override; // ends a running generation, which then leaves everything as it is

    bool isGenerating() const { return m_isGenerating; }

    /// One line about the context in use. It keeps its last value after an answer; the chat panel sets it before one.
    const QString &contextStatus() const { return m_contextStatus; }
    void setContextStatus(const QString &status);

    /// Adds the question to the session, saves it, and adds an empty answer, which grows until the stream ends. Ends
    /// with the generation, whatever the way; then the session that is active by that time is saved. All earlier
    /// messages go to the server as they are, uncut. Does nothing while an answer is being generated.
    QCoro::Task<> sendMessage(QString prompt, std::optional<QString> fileContent, QList<ContextItem> contexts,
                              QList<ContextItem> workspaceItems);

    /// Stops the running generation. It has ended when this returns, unless this is called in answer to a change that
    /// it just made: then it ends right after that. Without a generation nothing happens.
    void cancel();

Q_SIGNALS:
    void isGeneratingChanged();
    void contextStatusChanged();

private:
    void takeEvent(const StreamEvent &event, const QUuid &answerId, GrowingAnswer &answer);
    void setGenerating(bool isGenerating);

    Session &m_session;
    WireClient &m_wire;
    Clock m_now;
    bool m_isGenerating = false;
    QString m_contextStatus;
    std::optional<std::stop_source> m_generationTask; // present while a generation runs
    std::stop_source m_life;                          // stopped by the destructor
};

} // namespace Tessaline
