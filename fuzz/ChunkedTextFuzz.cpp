// Reads bytes as a document, edits it, and holds it against a plain QString after every step.

#include "fuzz/Require.h"

#include "foundation/ChunkedText.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

using namespace Tessaline;

namespace {

constexpr qsizetype kLargest = 200'000; // UTF-16 units; enough for a dozen chunks

void requireChunksAreSound(const ChunkedText &text)
{
    qsizetype size = 0;
    QChar last;
    for (const QString &chunk : text.chunks()) {
        REQUIRE(!chunk.isEmpty());
        REQUIRE(chunk.size() <= ChunkedText::kMaximumChunk);
        REQUIRE(!(last.isHighSurrogate() && chunk.front().isLowSurrogate()));
        REQUIRE(!(last == u'\r' && chunk.front() == u'\n'));
        size += chunk.size();
        last = chunk.back();
    }
    REQUIRE(size == text.size());
}

void requireEqual(const ChunkedText &text, const QString &model)
{
    requireChunksAreSound(text);
    REQUIRE(text.size() == model.size());
    REQUIRE(text.toString() == model);
}

void requireReadersAgree(const ChunkedText &text, const QString &model, qsizetype from, qsizetype length)
{
    REQUIRE(text.sliced(from, length) == QStringView(model).sliced(from, length));
    if (from < model.size())
        REQUIRE(text.at(from) == model.at(from));
    REQUIRE(QStringView(model).sliced(from).startsWith(text.chunkFrom(from)));
    REQUIRE(text.chunkFrom(from).isEmpty() == (from == model.size()));
    REQUIRE(QStringView(model).first(from).endsWith(text.chunkUpTo(from)));
    REQUIRE(text.chunkUpTo(from).isEmpty() == (from == 0));
}

/// What a text is worth in UTF-8: half a surrogate pair has no place there.
QString carriedByUtf8(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = i + 1 < text.size() && text.at(i).isHighSurrogate() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);

    const std::string bytes = input.ConsumeRandomLengthString();
    const qsizetype repeats = input.ConsumeIntegralInRange<qsizetype>(1, 3000);
    const QByteArray document = QByteArray::fromStdString(bytes).repeated(
        std::clamp<qsizetype>(repeats, 1, kLargest / (static_cast<qsizetype>(bytes.size()) + 1) + 1));
    const Result<ChunkedText> read = ChunkedText::fromUtf8(document);
    REQUIRE(static_cast<bool>(read) == document.isValidUtf8());
    if (!read)
        return 0;

    ChunkedText text = read.value();
    REQUIRE(text.toString().toUtf8() == document);
    QString model = text.toString();
    requireEqual(text, model);

    while (input.remaining_bytes() > 0) {
        const ChunkedText before = text;
        const QString modelBefore = model;
        const auto location = input.ConsumeIntegralInRange<qsizetype>(0, model.size());
        auto length = input.ConsumeIntegralInRange<qsizetype>(0, model.size() - location);
        if (input.ConsumeBool())
            length = std::min<qsizetype>(length, 3); // most edits are small
        QString inserted;
        for (size_t i = input.ConsumeIntegralInRange<size_t>(0, 12); i > 0; --i)
            inserted.append(QChar(input.ConsumeIntegral<char16_t>()));
        if (input.ConsumeBool() && model.size() < kLargest)
            inserted = inserted.repeated(input.ConsumeIntegralInRange<qsizetype>(0, 3000));

        const TextChange change = text.replace(location, length, inserted);

        const QString carried = carriedByUtf8(inserted);
        REQUIRE((change == TextChange{location, length, carried.size()}));
        model.replace(location, length, carried);
        requireEqual(text, model);
        requireReadersAgree(text, model, location, std::min(length, model.size() - location));
        REQUIRE(text == ChunkedText(model) || carriedByUtf8(model) != model); // an edit may have cut a pair in two
        requireEqual(before, modelBefore);                                    // a snapshot stays as it was
    }
    return 0;
}
