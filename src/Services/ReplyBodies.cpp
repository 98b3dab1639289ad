#include "Services/ReplyBodies.h"

#include "Services/RecordJson.h"

namespace Tessaline {

namespace {

/// The value under the one required key of an object.
template <class Value>
std::optional<Value> decodeMember(QByteArrayView body, std::string_view key)
{
    JsonReader reader(body);
    std::optional<Value> value(std::in_place);
    if (!readRecord(reader, RecordField(key, *value)) || !reader.finish())
        value.reset();
    return value;
}

} // namespace

std::optional<QStringList> decodeSuggestionsResponse(QByteArrayView body)
{
    return decodeMember<QStringList>(body, "suggestions");
}

std::optional<ConceptExpansionResponse> decodeConceptResponse(QByteArrayView body)
{
    return decodeJson<ConceptExpansionResponse>(body);
}

std::optional<QString> decodeDigestResponse(QByteArrayView body)
{
    return decodeMember<QString>(body, "digest");
}

} // namespace Tessaline
