#pragma once

#include "foundation/FileURL.h"
#include "Services/SessionFiles.h"

#include <QtCore/QObject>
#include <QtCore/QUuid>

#include <chrono>
#include <functional>
#include <optional>

namespace Tessaline {

/// The conversation and the attached context of the active document. They are in memory for one document at a time and
/// always belong to `activeFileURL`; without an active document they are kept nowhere. Main thread only; saving and
/// loading block for as long as the disk takes.
class Session final : public QObject
{
    Q_OBJECT
public:
    using WallClock = std::function<std::chrono::system_clock::time_point()>;

    explicit Session(SessionFiles files, WallClock now = std::chrono::system_clock::now, QObject *parent = nullptr);

    const std::optional<FileURL> &activeFileURL() const { return m_activeFileURL; }
    const QList<ChatMessage> &chatMessages() const { return m_contents.chatMessages; }
    const QList<ContextItem> &attachedContexts() const { return m_contents.attachedContexts; }

    // None of these saves by itself.
    void setChatMessages(QList<ChatMessage> messages);
    void setAttachedContexts(QList<ContextItem> contexts);
    void appendMessage(ChatMessage message);
    /// Sets the text of the first message with this id. Without one nothing happens.
    void replaceMessageContent(const QUuid &id, const QString &content);

    /// The folder of the document's session; see SessionFiles.
    std::optional<FileURL> directory(const FileURL &document) const { return m_files.directory(document); }
    /// Writes what is in memory as the session of `document`.
    void save(const FileURL &document) const;
    /// The same for the active document, if there is one.
    void saveActive() const;
    /// Replaces what is in memory by the session of `document`.
    void load(const FileURL &document);

    /// Saves the session of the active document, then makes `document` the active one and loads its session. Without a
    /// document both lists become empty. The same document again is saved and loaded too.
    void switchTo(const std::optional<FileURL> &document);

Q_SIGNALS:
    void chatMessagesChanged();
    void attachedContextsChanged();

private:
    void setContents(SessionContents contents);

    SessionFiles m_files;
    WallClock m_now;
    std::optional<FileURL> m_activeFileURL;
    SessionContents m_contents;
};

} // namespace Tessaline
