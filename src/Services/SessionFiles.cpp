#include "Services/SessionFiles.h"

#include "foundation/FileAccess.h"
#include "foundation/PrivateFiles.h"
#include "Services/SessionCodec.h"
#include "Services/SessionKey.h"

#include <QtCore/QFile>

#include <charconv>
#include <filesystem>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr QStringView kChatHistory = u"chat_history.json";
constexpr QStringView kContexts = u"contexts.json";
constexpr QStringView kMetadata = u"metadata.json";

QString pathWithoutLinks(const FileURL &url)
{
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(QFile::encodeName(url.path()).toStdString(), error);
    // Links in a circle, or folders that may not be entered.
    return error ? url.standardized().path() : QFile::decodeName(QByteArray::fromStdString(resolved.native()));
}

/// What `decode` makes of the file; an empty list if it makes nothing of it.
template <class List>
List listIn(const FileURL &file, std::optional<List> (*decode)(QByteArrayView))
{
    const Result<QByteArray> bytes = readBytes(file);
    return bytes ? decode(bytes.value()).value_or(List()) : List();
}

} // namespace

SessionFiles::SessionFiles(std::optional<FileURL> dataFolder) : m_dataFolder(std::move(dataFolder)) {}

std::optional<FileURL> SessionFiles::directory(const FileURL &document) const
{
    if (!m_dataFolder)
        return std::nullopt;
    const FileURL folder = m_dataFolder->appending(u"sessions").appending(sessionKey(pathWithoutLinks(document)));
    makePrivateFolder(folder);
    return folder;
}

void SessionFiles::save(const FileURL &document, const SessionContents &contents,
                        std::chrono::system_clock::time_point now) const
{
    const std::optional<FileURL> folder = directory(document);
    if (!folder)
        return;
    writePrivateFile(folder->appending(kChatHistory), encodeChatHistory(contents.chatMessages));
    writePrivateFile(folder->appending(kContexts), encodeContexts(contents.attachedContexts));
    writePrivateFile(folder->appending(kMetadata), encodeSessionMetadata(document.path(), secondsSince1970(now)));
}

SessionContents SessionFiles::load(const FileURL &document) const
{
    const std::optional<FileURL> folder = directory(document);
    if (!folder)
        return {};
    return {listIn(folder->appending(kChatHistory), decodeChatHistory),
            listIn(folder->appending(kContexts), decodeContexts)};
}

QString secondsSince1970(std::chrono::system_clock::time_point time)
{
    const std::chrono::duration<double> seconds = time.time_since_epoch();
    char digits[400]; // a double has at most 309 before its point
    const auto end = std::to_chars(std::begin(digits), std::end(digits), seconds.count(), std::chars_format::fixed);
    const QString text = QString::fromLatin1(digits, end.ptr - digits);
    return text.contains(u'.') ? text : text + u".0"_s;
}

} // namespace Tessaline
