#include "Services/StreamLine.h"

#include "Services/RecordJson.h"

namespace Tessaline {

namespace {

constexpr QByteArrayView prefixOf(StreamPath path)
{
    return path == StreamPath::Chat ? QByteArrayView("data:") : QByteArrayView("data: ");
}

/// Without the blanks and tabs at both ends, and only these.
QByteArrayView trimmed(QByteArrayView bytes)
{
    const auto isBlank = [](char byte) { return byte == ' ' || byte == '\t'; };
    while (!bytes.isEmpty() && isBlank(bytes.front()))
        bytes = bytes.sliced(1);
    while (!bytes.isEmpty() && isBlank(bytes.back()))
        bytes.chop(1);
    return bytes;
}

StreamLine eventOf(QByteArrayView json, StreamPath path)
{
    IfItFits<QString> token;
    IfItFits<ContextStats> context;
    IfItFits<QString> error;
    JsonReader reader(json);
    const bool isObject =
        readRecord(reader, RecordField("token", token), RecordField("context", context), RecordField("error", error));
    if (!isObject || !reader.finish())
        return IgnoredLine();
    if (token.value)
        return TokenEvent{*std::move(token.value)};
    if (path == StreamPath::OneShot)
        return IgnoredLine();
    if (context.value)
        return ContextStatsEvent{*context.value};
    if (error.value)
        return ErrorEvent{*std::move(error.value)};
    return IgnoredLine();
}

} // namespace

StreamLine streamLine(QByteArrayView line, StreamPath path)
{
    const QByteArrayView prefix = prefixOf(path);
    if (!line.startsWith(prefix))
        return IgnoredLine();
    const QByteArrayView rest = trimmed(line.sliced(prefix.size()));
    if (rest == "[DONE]")
        return DoneLine();
    if (rest.isValidUtf8())
        return eventOf(rest, path);
    return eventOf(QString::fromUtf8(rest).toUtf8(), path);
}

} // namespace Tessaline
