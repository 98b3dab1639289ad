#include "probe/Operations.h"

#include "Services/AIModelOption.h"
#include "Services/LineSplitter.h"
#include "Services/ReplyBodies.h"
#include "Services/RequestBodies.h"
#include "Services/ServerEnvironment.h"
#include "Services/SessionCodec.h"
#include "Services/SessionKey.h"
#include "Services/StreamLine.h"
#include "Services/WorkspaceContextBuilder.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Tessaline::Probe {

namespace {

// --- from JSON ---

/// The records of a list, each made from the object that an element must be.
template <class Record>
QList<Record> records(const Arguments &arguments, const char *name, Record (*make)(const Arguments &fields))
{
    QList<Record> list;
    for (const Json &element : arguments.list(name)) {
        if (!element.is_object())
            throw BadArgument("An element of \"" + std::string(name) + "\" is not an object.");
        list.append(make(Arguments(element)));
    }
    return list;
}

ContextItem contextItem(const Arguments &fields)
{
    return {fields.text("name"), fields.textIfThere("subtitle"), fields.text("content"), fields.textIfThere("digest")};
}

ChatMessageHistoryItem historyItem(const Arguments &fields)
{
    return {fields.text("role"), fields.text("content")};
}

ChatMessage chatMessage(const Arguments &fields)
{
    const QString text = fields.text("id");
    const QUuid id = QUuid::fromString(text);
    if (id.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) != 0)
        throw BadArgument("The id of a message is not a UUID.");
    return {id, fields.text("role"), fields.text("content")};
}

StreamPath streamPath(const Arguments &arguments)
{
    const QString path = arguments.text("path");
    if (path == QLatin1String("chat"))
        return StreamPath::Chat;
    if (path == QLatin1String("oneShot"))
        return StreamPath::OneShot;
    throw BadArgument("\"path\" is neither \"chat\" nor \"oneShot\".");
}

struct Count {
    const char *key;
    qint64 ContextStats::*member;
};

constexpr Count kCounts[] = {
    {"context_window_tokens", &ContextStats::contextWindowTokens},
    {"estimated_input_tokens", &ContextStats::estimatedInputTokens},
    {"active_document_chars", &ContextStats::activeDocumentChars},
    {"attached_context_count", &ContextStats::attachedContextCount},
    {"workspace_context_count", &ContextStats::workspaceContextCount},
    {"history_message_count", &ContextStats::historyMessageCount},
};

ContextStats contextStats(const Arguments &fields)
{
    ContextStats stats;
    for (const Count &count : kCounts)
        stats.*count.member = fields.integer(count.key);
    return stats;
}

// --- to JSON ---

Json jsonFromUtf8(QByteArrayView text)
{
    return jsonFrom(QString::fromUtf8(text));
}

Json jsonOf(const std::optional<QString> &text)
{
    return text ? jsonFrom(*text) : Json();
}

Json jsonOf(const ChatMessage &message)
{
    return {{"id", jsonFrom(message.id.toString(QUuid::WithoutBraces).toUpper())},
            {"role", jsonFrom(message.role)},
            {"content", jsonFrom(message.content)}};
}

Json jsonOf(const ContextItem &item)
{
    return {{"name", jsonFrom(item.name)},
            {"subtitle", jsonOf(item.subtitle)},
            {"content", jsonFrom(item.content)},
            {"digest", jsonOf(item.digest)}};
}

Json jsonOf(const ConceptCard &card)
{
    return {
        {"title", jsonFrom(card.title)}, {"subtitle", jsonFrom(card.subtitle)}, {"content", jsonFrom(card.content)}};
}

Json jsonOf(const ContextStats &stats)
{
    Json object = Json::object();
    for (const Count &count : kCounts)
        object[count.key] = stats.*count.member;
    return object;
}

Json jsonOf(QStringView text)
{
    return jsonFrom(text.toString());
}

template <class Record>
Json jsonOf(const QList<Record> &records)
{
    Json list = Json::array();
    for (const Record &record : records)
        list.push_back(jsonOf(record));
    return list;
}

/// Of what may not be there; null then.
template <class Value>
Json jsonIfThere(const std::optional<Value> &value)
{
    return value ? jsonOf(*value) : Json();
}

struct LineAsJson {
    Json operator()(const IgnoredLine &) const { return {{"kind", "ignored"}}; }
    Json operator()(const DoneLine &) const { return {{"kind", "done"}}; }
    Json operator()(const TokenEvent &event) const { return {{"kind", "token"}, {"token", jsonFrom(event.token)}}; }
    Json operator()(const ContextStatsEvent &event) const
    {
        return {{"kind", "context"}, {"stats", jsonOf(event.context)}};
    }
    Json operator()(const ErrorEvent &event) const { return {{"kind", "error"}, {"error", jsonFrom(event.error)}}; }
};

// --- operations: the wire ---

Json encodedChatRequest(const Arguments &arguments)
{
    ChatRequestPayload payload;
    payload.prompt = arguments.text("prompt");
    payload.fileContent = arguments.textIfThere("fileContent");
    payload.contextItems = records(arguments, "contexts", contextItem);
    payload.workspaceContextItems = records(arguments, "workspaceItems", contextItem);
    payload.history = records(arguments, "history", historyItem);
    payload.temperature = arguments.number("temperature");
    payload.topP = arguments.number("topP");
    return jsonFromUtf8(encodeChatRequest(payload));
}

Json decodedConceptResponse(const Arguments &arguments)
{
    const std::optional<ConceptExpansionResponse> response = decodeConceptResponse(arguments.text("text").toUtf8());
    if (!response)
        return Json();
    return {{"status", jsonFrom(response->status)},
            {"card", jsonIfThere(response->card)},
            {"options", jsonIfThere(response->options)}};
}

Json linesOfStream(const Arguments &arguments)
{
    LineSplitter splitter;
    Json lines = Json::array();
    const auto takeLines = [&] {
        while (const std::optional<QByteArrayView> line = splitter.next())
            lines.push_back(jsonFromUtf8(*line));
    };
    for (const QString &piece : arguments.texts("chunks")) {
        splitter.append(piece.toUtf8());
        takeLines();
    }
    splitter.finish();
    takeLines();
    return lines;
}

// --- the server ---

quint64 physicalMemory(const Arguments &arguments)
{
    const qint64 bytes = arguments.integer("physicalMemoryBytes");
    if (bytes < 0)
        throw BadArgument("\"physicalMemoryBytes\" is negative.");
    return static_cast<quint64>(bytes);
}

Json environmentOfServer(const Arguments &arguments)
{
    const QString id = arguments.text("modelId");
    const AIModelOption &model = resolveActiveModel(id, 0);
    if (model.id != id)
        throw BadArgument("There is no model of this \"modelId\".");
    const qint64 processors = std::clamp<qint64>(arguments.integer("activeProcessorCount"), 0, 1'000'000);

    const Environment environment = serverEnvironment({}, model, static_cast<int>(processors));
    Json result = Json::object();
    for (auto variable = environment.begin(); variable != environment.end(); ++variable)
        result[variable.key().toStdString()] = variable.value().toStdString();
    return result;
}

// --- the context of a prompt ---

Json rankedFiles(const Arguments &arguments)
{
    const std::optional<QString> activeFile = arguments.textIfThere("activeFile");
    return jsonOf(WorkspaceContextBuilder::rankFiles(arguments.text("query"), FileURL(arguments.text("root")),
                                                     activeFile ? std::optional(FileURL(*activeFile)) : std::nullopt,
                                                     arguments.integer("limit")));
}

constexpr Operation kOperations[] = {
    // The server
    {"recommendedModel",
     [](const Arguments &arguments) { return jsonFrom(recommendedModel(physicalMemory(arguments)).id); }},
    {"resolveActiveModel",
     [](const Arguments &arguments) {
         return jsonFrom(resolveActiveModel(arguments.textIfThere("selection"), physicalMemory(arguments)).id);
     }},
    {"serverEnvironment", environmentOfServer},
    // The wire
    {"encodeChatRequest", encodedChatRequest},
    {"decodeConceptResponse", decodedConceptResponse},
    {"streamLine",
     [](const Arguments &arguments) {
         return std::visit(LineAsJson(), streamLine(arguments.text("line").toUtf8(), streamPath(arguments)));
     }},
    {"splitStream", linesOfStream},
    {"statusLine",
     [](const Arguments &arguments) {
         return jsonFrom(statusLine(contextStats(Arguments(arguments.object("stats")))));
     }},
    // Sessions
    {"sessionKey", [](const Arguments &arguments) { return jsonFrom(sessionKey(arguments.text("path"))); }},
    {"encodeChatHistory",
     [](const Arguments &arguments) {
         return jsonFromUtf8(encodeChatHistory(records(arguments, "messages", chatMessage)));
     }},
    {"decodeChatHistory",
     [](const Arguments &arguments) { return jsonIfThere(decodeChatHistory(arguments.text("text").toUtf8())); }},
    {"encodeContexts",
     [](const Arguments &arguments) { return jsonFromUtf8(encodeContexts(records(arguments, "items", contextItem))); }},
    {"decodeContexts",
     [](const Arguments &arguments) { return jsonIfThere(decodeContexts(arguments.text("text").toUtf8())); }},
    // The context of a prompt
    {"queryTokens",
     [](const Arguments &arguments) {
         const QStringList tokens = WorkspaceContextBuilder::queryTokens(arguments.text("query"));
         return jsonOf(QList<QStringView>(tokens.begin(), tokens.end()));
     }},
    {"tokenHits",
     [](const Arguments &arguments) {
         return Json(WorkspaceContextBuilder::tokenHits(arguments.texts("tokens"), arguments.text("text")));
     }},
    {"splitIntoChunks",
     [](const Arguments &arguments) {
         const QString text = arguments.text("text");
         return jsonOf(
             WorkspaceContextBuilder::splitIntoChunks(text, arguments.integer("size"), arguments.integer("overlap")));
     }},
    {"bestExcerpt",
     [](const Arguments &arguments) {
         return jsonFrom(WorkspaceContextBuilder::bestExcerpt(arguments.text("content"), arguments.text("query")));
     }},
    {"rankFiles", rankedFiles},
};

} // namespace

std::span<const Operation> servicesOperations()
{
    return kOperations;
}

} // namespace Tessaline::Probe
