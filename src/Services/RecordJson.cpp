#include "Services/RecordJson.h"

#include <utility>

namespace Tessaline {

// --- single values ---

bool readValue(JsonReader &reader, QString &text)
{
    std::optional<QString> read = reader.text();
    if (read)
        text = *std::move(read);
    return read.has_value();
}

bool readValue(JsonReader &reader, qint64 &integer)
{
    const std::optional<qint64> read = reader.integer();
    integer = read.value_or(0);
    return read.has_value();
}

bool readValue(JsonReader &reader, QUuid &id)
{
    // NOTE: QUuid reads forms with braces and with something behind them too.
    constexpr qsizetype kLength = 36;
    const std::optional<QString> text = reader.text();
    if (!text || text->size() != kLength || text->startsWith(u'{'))
        return false;
    id = QUuid::fromString(*text);
    return id.toString(QUuid::WithoutBraces).compare(*text, Qt::CaseInsensitive) == 0;
}

void writeValue(JsonWriter &writer, QStringView text)
{
    writer.text(text);
}

void writeValue(JsonWriter &writer, double number)
{
    writer.number(number);
}

void writeValue(JsonWriter &writer, const QUuid &id)
{
    writer.text(id.toString(QUuid::WithoutBraces).toUpper());
}

// --- records ---

bool readValue(JsonReader &reader, ContextItem &item)
{
    return readRecord(reader, RecordField("name", item.name), RecordField("subtitle", item.subtitle),
                      RecordField("content", item.content), RecordField("digest", item.digest));
}

void writeValue(JsonWriter &writer, const ContextItem &item)
{
    writer.beginObject();
    writeField(writer, "name", item.name);
    writeField(writer, "subtitle", item.subtitle);
    writeField(writer, "content", item.content);
    writeField(writer, "digest", item.digest);
    writer.endObject();
}

bool readValue(JsonReader &reader, ChatMessage &message)
{
    return readRecord(reader, RecordField("id", message.id), RecordField("role", message.role),
                      RecordField("content", message.content));
}

void writeValue(JsonWriter &writer, const ChatMessage &message)
{
    writer.beginObject();
    writeField(writer, "id", message.id);
    writeField(writer, "role", message.role);
    writeField(writer, "content", message.content);
    writer.endObject();
}

bool readValue(JsonReader &reader, EditSuggestion &suggestion)
{
    return readRecord(reader, RecordField("id", suggestion.id), RecordField("originalText", suggestion.originalText),
                      RecordField("replacementText", suggestion.replacementText));
}

void writeValue(JsonWriter &writer, const EditSuggestion &suggestion)
{
    writer.beginObject();
    writeField(writer, "id", suggestion.id);
    writeField(writer, "originalText", suggestion.originalText);
    writeField(writer, "replacementText", suggestion.replacementText);
    writer.endObject();
}

bool readValue(JsonReader &reader, ConceptCard &card)
{
    return readRecord(reader, RecordField("title", card.title), RecordField("subtitle", card.subtitle),
                      RecordField("content", card.content));
}

bool readValue(JsonReader &reader, ConceptExpansionResponse &response)
{
    return readRecord(reader, RecordField("status", response.status), RecordField("card", response.card),
                      RecordField("options", response.options));
}

bool readValue(JsonReader &reader, ContextStats &stats)
{
    return readRecord(reader, RecordField("context_window_tokens", stats.contextWindowTokens),
                      RecordField("estimated_input_tokens", stats.estimatedInputTokens),
                      RecordField("active_document_chars", stats.activeDocumentChars),
                      RecordField("attached_context_count", stats.attachedContextCount),
                      RecordField("workspace_context_count", stats.workspaceContextCount),
                      RecordField("history_message_count", stats.historyMessageCount));
}

void writeValue(JsonWriter &writer, const ChatMessageHistoryItem &item)
{
    writer.beginObject();
    writeField(writer, "role", item.role);
    writeField(writer, "content", item.content);
    writer.endObject();
}

void writeValue(JsonWriter &writer, const ChatRequestPayload &payload)
{
    const auto writeUnlessEmpty = [&writer](std::string_view key, const auto &list) {
        if (!list.isEmpty())
            writeField(writer, key, list);
    };
    writer.beginObject();
    writeField(writer, "prompt", payload.prompt);
    writeField(writer, "file_content", payload.fileContent);
    writeUnlessEmpty("context_items", payload.contextItems);
    writeUnlessEmpty("workspace_context_items", payload.workspaceContextItems);
    writeUnlessEmpty("history", payload.history);
    writeField(writer, "temperature", payload.temperature);
    writeField(writer, "top_p", payload.topP);
    writer.endObject();
}

} // namespace Tessaline
