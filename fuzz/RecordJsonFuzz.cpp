// Reads bytes as JSON and as every record, and holds the reader and the writer against a library for JSON.

#include "fuzz/Require.h"

#include "Services/RecordJson.h"
#include "Services/ReplyBodies.h"
#include "Services/SessionCodec.h"

#include <nlohmann/json.hpp>

#include <algorithm>

using namespace Tessaline;

namespace {

using Json = nlohmann::ordered_json;

/// What the library does not take and is JSON all the same: a number beyond all doubles.
bool mayHaveHugeNumber(QByteArrayView bytes)
{
    constexpr qsizetype kDigits = 300;
    return bytes.size() > kDigits || std::ranges::any_of(bytes, [](char byte) { return byte == 'e' || byte == 'E'; });
}

void requireSameJudgement(QByteArrayView bytes)
{
    if (bytes.contains('\0'))
        return; // the library stops reading there
    JsonReader reader(bytes);
    reader.skip();
    const bool isWellFormed = reader.finish();
    const bool isAccepted = Json::accept(bytes.begin(), bytes.end());
    if (isAccepted && !isWellFormed) { // too deep
        const auto depth = std::ranges::count_if(bytes, [](char byte) { return byte == '[' || byte == '{'; });
        REQUIRE(depth > JsonReader::kDeepest);
    }
    if (isWellFormed && !isAccepted)
        REQUIRE(mayHaveHugeNumber(bytes));
}

/// Any text is written as JSON that reads back the same, but for halves of surrogate pairs.
void requireTextIsCarried(QString text)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.text(text);
    const QByteArray json = writer.take();

    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = i + 1 < text.size() && text.at(i).isHighSurrogate() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    const Json read = Json::parse(json.begin(), json.end(), nullptr, false);
    REQUIRE(read.is_string());
    REQUIRE(QByteArray::fromStdString(read.get<std::string>()) == text.toUtf8());
    JsonReader reader(json);
    REQUIRE(reader.text() == text);
    REQUIRE(reader.finish());
}

/// What was read is written so that it reads back the same.
template <class Records>
void requireRoundTrip(QByteArrayView bytes, std::optional<Records> (*decode)(QByteArrayView),
                      QByteArray (*encode)(const Records &))
{
    const std::optional<Records> records = decode(bytes);
    if (!records)
        return;
    const QByteArray written = encode(*records);
    REQUIRE(Json::accept(written.begin(), written.end()));
    REQUIRE(decode(written) == records);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));

    requireSameJudgement(bytes);
    requireRoundTrip(bytes, decodeChatHistory, encodeChatHistory);
    requireRoundTrip(bytes, decodeContexts, encodeContexts);
    if (const auto suggestion = decodeJson<EditSuggestion>(bytes))
        REQUIRE(decodeJson<EditSuggestion>(encodeJson(*suggestion, JsonLayout::Compact)) == suggestion);
    const bool isObject = bytes.trimmed().startsWith('{') || bytes.startsWith("\xEF\xBB\xBF");
    REQUIRE(!decodeConceptResponse(bytes) || isObject);
    REQUIRE(!decodeSuggestionsResponse(bytes) || isObject);
    REQUIRE(!decodeDigestResponse(bytes) || isObject);

    QString text(static_cast<qsizetype>(size / 2), Qt::Uninitialized);
    std::copy_n(data, size / 2 * 2, reinterpret_cast<uint8_t *>(text.data()));
    requireTextIsCarried(text);
    return 0;
}
