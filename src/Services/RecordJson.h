#pragma once

#include "Services/ChatMessage.h"
#include "Services/ChatRequestPayload.h"
#include "Services/ConceptCard.h"
#include "Services/ContextItem.h"
#include "Services/ContextStats.h"
#include "Services/EditSuggestion.h"
#include "Services/JsonReader.h"
#include "Services/JsonWriter.h"

#include <QtCore/QList>

#include <optional>
#include <string_view>
#include <utility>

namespace Tessaline {

/// The JSON forms of the records, once for the wire and the disk.
///
/// `readValue` takes one value and answers whether it had the right type; `writeValue` writes one. A record's keys
/// are listed in one place for each direction, in the order of its fields.

bool readValue(JsonReader &reader, QString &text);
bool readValue(JsonReader &reader, qint64 &integer);
bool readValue(JsonReader &reader, QUuid &id); // 36 characters, in either case
bool readValue(JsonReader &reader, ContextItem &item);
bool readValue(JsonReader &reader, ChatMessage &message);
bool readValue(JsonReader &reader, EditSuggestion &suggestion);
bool readValue(JsonReader &reader, ConceptCard &card);
bool readValue(JsonReader &reader, ConceptExpansionResponse &response);
bool readValue(JsonReader &reader, ContextStats &stats);

void writeValue(JsonWriter &writer, QStringView text);
void writeValue(JsonWriter &writer, double number);
void writeValue(JsonWriter &writer, const QUuid &id); // in upper case
void writeValue(JsonWriter &writer, const ContextItem &item);
void writeValue(JsonWriter &writer, const ChatMessage &message);
void writeValue(JsonWriter &writer, const EditSuggestion &suggestion);
void writeValue(JsonWriter &writer, const ChatMessageHistoryItem &item);
void writeValue(JsonWriter &writer, const ChatRequestPayload &payload);

/// Absent for `null` too.
template <class Value>
bool readValue(JsonReader &reader, std::optional<Value> &value)
{
    value.reset();
    return reader.null() || readValue(reader, value.emplace());
}

template <class Value>
bool readValue(JsonReader &reader, QList<Value> &list)
{
    bool areSound = true;
    const bool isList = reader.list([&] {
        Value value;
        areSound = readValue(reader, value) && areSound;
        if (areSound)
            list.append(std::move(value));
    });
    return isList && areSound;
}

template <class Value>
void writeValue(JsonWriter &writer, const QList<Value> &list)
{
    writer.beginList();
    for (const Value &value : list)
        writeValue(writer, value);
    writer.endList();
}

/// A value that stays absent if there is another type under its key, for objects that may be one of several records.
template <class Value>
struct IfItFits {
    std::optional<Value> value;
};

template <class Value>
bool readValue(JsonReader &reader, IfItFits<Value> &field)
{
    Value value;
    if (readValue(reader, value))
        field.value = std::move(value);
    return true;
}

template <class Value>
inline constexpr bool kMayBeMissing = false;
template <class Value>
inline constexpr bool kMayBeMissing<std::optional<Value>> = true;
template <class Value>
inline constexpr bool kMayBeMissing<IfItFits<Value>> = true;

/// A field of a record under its key.
template <class Value>
struct RecordField {
    RecordField(std::string_view fieldKey, Value &fieldValue) : key(fieldKey), value(fieldValue) {}

    std::string_view key;
    Value &value;
    bool isThere = false;
    bool isSound = kMayBeMissing<Value>;

    /// Reads the value if it is this field's; of several members with one key the first counts.
    bool readIfNamed(JsonReader &reader, QByteArrayView name)
    {
        if (isThere || std::string_view(name.data(), static_cast<size_t>(name.size())) != key)
            return false;
        isThere = true;
        isSound = readValue(reader, value);
        return true;
    }
};

/// Reads an object that has these fields, and perhaps others, which are passed over.
template <class... Fields>
bool readRecord(JsonReader &reader, Fields... fields)
{
    const bool isObject = reader.object([&](QByteArrayView name) {
        if (!(fields.readIfNamed(reader, name) || ...))
            reader.skip();
    });
    return isObject && (fields.isSound && ...);
}

template <class Value>
void writeField(JsonWriter &writer, std::string_view key, const Value &value)
{
    writer.key(key);
    writeValue(writer, value);
}

/// Writes nothing if there is no value.
template <class Value>
void writeField(JsonWriter &writer, std::string_view key, const std::optional<Value> &value)
{
    if (value)
        writeField(writer, key, *value);
}

/// The one value that the bytes hold, or absent.
template <class Value>
std::optional<Value> decodeJson(QByteArrayView utf8)
{
    JsonReader reader(utf8);
    std::optional<Value> value(std::in_place);
    if (!readValue(reader, *value) || !reader.finish())
        value.reset();
    return value;
}

template <class Value>
QByteArray encodeJson(const Value &value, JsonLayout layout)
{
    JsonWriter writer(layout);
    writeValue(writer, value);
    return writer.take();
}

} // namespace Tessaline
