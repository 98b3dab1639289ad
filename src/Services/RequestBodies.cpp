#include "Services/RequestBodies.h"

#include "Services/RecordJson.h"

namespace Tessaline {

namespace {

/// Room for the escapes of ordinary prose, a few in a hundred.
qsizetype roomFor(qsizetype units)
{
    constexpr qsizetype kKeys = 256;
    return units + units / 16 + kKeys;
}

} // namespace

QByteArray encodeChatRequest(const ChatRequestPayload &payload)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.reserve(roomFor(payload.prompt.size() + (payload.fileContent ? payload.fileContent->size() : 0)));
    writeValue(writer, payload);
    return writer.take();
}

QByteArray encodeSuggestionsRequest(QStringView content)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.reserve(roomFor(content.size()));
    writer.beginObject();
    writeField(writer, "content", content);
    writer.endObject();
    return writer.take();
}

QByteArray encodeConceptRequest(QStringView topic)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.beginObject();
    writeField(writer, "concept", topic);
    writer.endObject();
    return writer.take();
}

QByteArray encodeDigestRequest(QStringView filename, QStringView content)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.reserve(roomFor(filename.size() + content.size()));
    writer.beginObject();
    writeField(writer, "filename", filename);
    writeField(writer, "content", content);
    writer.endObject();
    return writer.take();
}

} // namespace Tessaline
