#pragma once

#include "foundation/FileURL.h"
#include "Services/ChatMessage.h"
#include "Services/ContextItem.h"

#include <QtCore/QList>

#include <chrono>
#include <optional>

namespace Tessaline {

/// What a document's session holds.
struct SessionContents {
    QList<ChatMessage> chatMessages;
    QList<ContextItem> attachedContexts;
    friend bool operator==(const SessionContents &, const SessionContents &) = default;
};

/// The sessions on the disk: for each document a folder `sessions/<key>/` in the application's data folder, with
/// `chat_history.json`, `contexts.json` and, for people and tools only, `metadata.json`. Folders and files are private
/// to the user. Nothing is ever deleted: a document that moves begins with an empty session.
///
/// Best effort: no failure is reported. All of it blocks and is safe from any thread.
class SessionFiles
{
public:
    /// Without a data folder there are no sessions: a save does nothing and a load finds nothing.
    explicit SessionFiles(std::optional<FileURL> dataFolder);

    /// The folder of the document's session, which is made if it is missing. Absent if there is no data folder; present
    /// also if it could not be made. The key is that of the path without symbolic links, so that two links to one file
    /// share a session; of a path that leads nowhere, the part that exists is resolved.
    std::optional<FileURL> directory(const FileURL &document) const;

    /// Writes the three files in place, each on its own: a file that cannot be written stays as it was and the others
    /// are written all the same. `now` is kept in the metadata, with the document's path as it is given here.
    void save(const FileURL &document, const SessionContents &contents,
              std::chrono::system_clock::time_point now) const;

    /// Reads the session, each file on its own: one that is missing or does not decode gives an empty list.
    SessionContents load(const FileURL &document) const;

private:
    std::optional<FileURL> m_dataFolder;
};

/// Seconds since 1970 as the shortest decimal that gives the same double again, always with a fraction:
/// "1763225401.23917", "1763225401.0".
QString secondsSince1970(std::chrono::system_clock::time_point time);

} // namespace Tessaline
