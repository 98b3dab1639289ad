#pragma once

#include "Services/ChatMessage.h"
#include "Services/ContextItem.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// The three files of a session: JSON in UTF-8, indented by two blanks, keys in the order of the records, slashes
/// escaped, absent fields left out. Reading is all or nothing: absent if the bytes are no JSON or if one entry lacks a
/// required key, has a value of another type or an `id` that is no UUID. Unknown keys are passed over. Safe from any
/// thread; a file of 50 MB takes about as long to decode as to read.

/// chat_history.json: the messages in their order, their ids in upper case.
QByteArray encodeChatHistory(const QList<ChatMessage> &messages);
std::optional<QList<ChatMessage>> decodeChatHistory(QByteArrayView file);

/// contexts.json: the attached items in their order.
QByteArray encodeContexts(const QList<ContextItem> &items);
std::optional<QList<ContextItem>> decodeContexts(QByteArrayView file);

/// metadata.json, which is there for people and never read: the document's path, and the moment of saving as the text
/// of a number of seconds since 1970.
QByteArray encodeSessionMetadata(const QString &filePath, const QString &lastModified);

} // namespace Tessaline
