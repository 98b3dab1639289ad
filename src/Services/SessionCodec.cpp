#include "Services/SessionCodec.h"

#include "Services/RecordJson.h"

namespace Tessaline {

QByteArray encodeChatHistory(const QList<ChatMessage> &messages)
{
    return encodeJson(messages, JsonLayout::Indented);
}

std::optional<QList<ChatMessage>> decodeChatHistory(QByteArrayView file)
{
    return decodeJson<QList<ChatMessage>>(file);
}

QByteArray encodeContexts(const QList<ContextItem> &items)
{
    return encodeJson(items, JsonLayout::Indented);
}

std::optional<QList<ContextItem>> decodeContexts(QByteArrayView file)
{
    return decodeJson<QList<ContextItem>>(file);
}

QByteArray encodeSessionMetadata(const QString &filePath, const QString &lastModified)
{
    JsonWriter writer(JsonLayout::Indented);
    writer.beginObject();
    writeField(writer, "filePath", filePath);
    writeField(writer, "lastModified", lastModified);
    writer.endObject();
    return writer.take();
}

} // namespace Tessaline
