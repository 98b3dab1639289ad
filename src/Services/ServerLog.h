#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// `server.log`: what the server wrote since its latest start, one entry for each time it wrote something. Best effort:
/// no failure is reported. Safe from any thread, one at a time.
class ServerLog
{
public:
    /// `dataFolder` is made by the first entry, for the user alone; without one nothing is kept.
    explicit ServerLog(const std::optional<FileURL> &dataFolder);

    void reset() const; // deletes the file

    /// Adds "[yyyy-MM-dd HH:mm:ss] ", in the user's time and digits, the text and a line feed.
    void append(const QString &text) const;

private:
    std::optional<FileURL> m_dataFolder;
};

/// The text that one piece of the server's output stands for, without white space at both ends. Absent if the piece is
/// empty or no whole UTF-8, which is so when it ends within a character: pieces are not joined.
std::optional<QString> serverOutputText(const QByteArray &bytes);

} // namespace Tessaline
