#include "Services/Session.h"

#include <algorithm>

namespace Tessaline {

Session::Session(SessionFiles files, WallClock now, QObject *parent)
    : QObject(parent), m_files(std::move(files)), m_now(std::move(now))
{}

void Session::setChatMessages(QList<ChatMessage> messages)
{
    if (messages == m_contents.chatMessages)
        return;
    m_contents.chatMessages = std::move(messages);
    Q_EMIT chatMessagesChanged();
}

void Session::setAttachedContexts(QList<ContextItem> contexts)
{
    if (contexts == m_contents.attachedContexts)
        return;
    m_contents.attachedContexts = std::move(contexts);
    Q_EMIT attachedContextsChanged();
}

void Session::appendMessage(ChatMessage message)
{
    m_contents.chatMessages.append(std::move(message));
    Q_EMIT chatMessagesChanged();
}

void Session::replaceMessageContent(const QUuid &id, const QString &content)
{
    const auto message = std::find_if(m_contents.chatMessages.cbegin(), m_contents.chatMessages.cend(),
                                      [&id](const ChatMessage &candidate) { return candidate.id == id; });
    if (message == m_contents.chatMessages.cend() || message->content == content)
        return;
    m_contents.chatMessages[message - m_contents.chatMessages.cbegin()].content = content;
    Q_EMIT chatMessagesChanged();
}

void Session::save(const FileURL &document) const
{
    m_files.save(document, m_contents, m_now());
}

void Session::saveActive() const
{
    if (m_activeFileURL)
        save(*m_activeFileURL);
}

void Session::load(const FileURL &document)
{
    setContents(m_files.load(document));
}

void Session::switchTo(const std::optional<FileURL> &document)
{
    saveActive();
    m_activeFileURL = document;
    if (document)
        load(*document);
    else
        setContents({});
}

/// Both lists are the new document's before anybody hears of either.
void Session::setContents(SessionContents contents)
{
    std::swap(m_contents, contents);
    if (contents.chatMessages != m_contents.chatMessages)
        Q_EMIT chatMessagesChanged();
    if (contents.attachedContexts != m_contents.attachedContexts)
        Q_EMIT attachedContextsChanged();
}

} // namespace Tessaline
