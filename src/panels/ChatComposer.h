#pragma once

#include "documents/ProjectReference.h"
#include "foundation/FileURL.h"
#include "panels/ChatInputState.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>

#include <optional>
#include <stop_token>

namespace Tessaline {

class DocumentStore;
class LocalAIService;

/// The question that is being typed, and its way to the assistant: the document is saved and read, the project is
/// searched, then the service takes over. Main thread only; the service and the store outlive this object.
class ChatComposer final : public QObject
{
    Q_OBJECT
public:
    ChatComposer(LocalAIService &ai, DocumentStore &documents, QObject *parent = nullptr);
    ~ChatComposer() override; // a question that is still being prepared is not sent

    const QString &chatInput() const { return m_chatInput; }
    void setChatInput(const QString &text);

    /// True from a question until its answer has ended.
    bool isPreparingContext() const { return m_isPreparingContext; }

    ChatInputState state() const;

    /// Sends what is typed, about this document and this project, and empties the field. Does nothing if there is only
    /// white space, or while a question is under way. A document that cannot be read is left out.
    void send(const std::optional<FileURL> &document, const std::optional<ProjectReference> &project);

    void stop(); // the answer that is being generated, if any
    void retry();
    /// Empties the conversation, on the disk too. Decisions about edits and attached items stay.
    void clearChat();

Q_SIGNALS:
    /// Something that `state` or `chatInput` tells has changed.
    void stateChanged();

private:
    QCoro::Task<> ask(QString prompt, std::optional<FileURL> document, std::optional<ProjectReference> project);
    void setPreparingContext(bool isPreparing);

    LocalAIService &m_ai;
    DocumentStore &m_documents;
    QString m_chatInput;
    bool m_isPreparingContext = false;
    std::stop_source m_life;
};

} // namespace Tessaline
