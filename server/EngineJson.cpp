#include "server/EngineJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace Tessaline::Server {

namespace {

using Json = nlohmann::json;

std::string dumped(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json parsed(std::string_view text)
{
    return Json::parse(text, nullptr, false);
}

/// The value behind keys and indices, or null.
template <class... Steps>
const Json &at(const Json &json, const Steps &...steps)
{
    static const Json kNothing;
    const Json *value = &json;
    const auto step = [&value](const auto &name) {
        if constexpr (std::is_integral_v<std::decay_t<decltype(name)>>)
            value = value->is_array() && value->size() > name ? &(*value)[name] : &kNothing;
        else {
            const auto found = value->find(name);
            value = value->is_object() && found != value->end() ? &*found : &kNothing;
        }
    };
    (step(steps), ...);
    return *value;
}

std::string textOf(const Json &value)
{
    return value.is_string() ? value.get<std::string>() : std::string();
}

std::optional<long long> wholeNumber(const Json &value)
{
    if (!value.is_number_integer() || (value.is_number_unsigned() && value.get<unsigned long long>() > (1ULL << 62)))
        return {};
    return value.get<long long>();
}

std::optional<int> positiveInt(const Json &value)
{
    const std::optional<long long> number = wholeNumber(value);
    if (!number || *number <= 0 || *number > std::numeric_limits<int>::max())
        return {};
    return static_cast<int>(*number);
}

/// What an engine says, as a part of one sentence of ours: in one line, without its own full stop, and not for ever.
std::string asPartOfSentence(std::string_view text)
{
    constexpr size_t kLongest = 300; // bytes
    std::string part;
    for (const char sign : text) {
        const bool isBlank = static_cast<unsigned char>(sign) <= ' ' || sign == '\x7f';
        if (!isBlank)
            part += sign;
        else if (!part.empty() && part.back() != ' ')
            part += ' ';
    }
    if (part.size() > kLongest) {
        size_t end = kLongest;
        while (end > 0 && (static_cast<unsigned char>(part[end]) & 0xC0) == 0x80)
            --end;
        part.resize(end);
        part += "…";
    }
    while (part.ends_with(' ') || part.ends_with('.'))
        part.pop_back();
    return part;
}

Json messages(const EngineRequest &request)
{
    Json list = Json::array();
    for (const Turn &turn : request.turns)
        list.push_back({{"role", turn.role}, {"content", turn.content}});
    return list;
}

} // namespace

std::string openAiChatBody(const EngineRequest &request, std::string_view model)
{
    Json body{{"model", model},
              {"messages", messages(request)},
              {"stream", true},
              {"temperature", request.temperature},
              {"top_p", request.topP}};
    if (request.mostTokens > 0)
        body["max_tokens"] = request.mostTokens;
    if (!request.jsonSchema.empty())
        body["response_format"] = {
            {"type", "json_schema"},
            {"json_schema", {{"name", "answer"}, {"strict", true}, {"schema", parsed(request.jsonSchema)}}}};
    return dumped(body);
}

std::string ollamaChatBody(const EngineRequest &request, std::string_view model, int contextTokens)
{
    Json body{{"model", model},
              {"messages", messages(request)},
              {"stream", true},
              {"options", {{"num_ctx", contextTokens}, {"temperature", request.temperature}, {"top_p", request.topP}}}};
    if (request.mostTokens > 0)
        body["options"]["num_predict"] = request.mostTokens;
    if (!request.jsonSchema.empty())
        body["format"] = parsed(request.jsonSchema);
    return dumped(body);
}

std::string ollamaPullBody(std::string_view model)
{
    return dumped({{"model", model}, {"stream", true}});
}

std::string tokenizeBody(std::string_view text)
{
    return dumped({{"content", text}});
}

EngineLine openAiLine(std::string_view line)
{
    EngineLine meaning;
    constexpr std::string_view kPrefix = "data:";
    if (!line.starts_with(kPrefix))
        return meaning;
    line.remove_prefix(kPrefix.size());
    while (line.starts_with(' '))
        line.remove_prefix(1);
    if (line == "[DONE]") {
        meaning.isDone = true;
        return meaning;
    }
    const Json json = parsed(line);
    if (json.contains("error"))
        meaning.error = engineError(line).message;
    meaning.token = textOf(at(json, "choices", size_t{0}, "delta", "content"));
    return meaning;
}

EngineLine ollamaLine(std::string_view line)
{
    EngineLine meaning;
    const Json json = parsed(line);
    meaning.isRemote = !at(json, "remote_host").is_null() || !at(json, "remote_model").is_null();
    if (json.contains("error"))
        meaning.error = engineError(line).message;
    meaning.token = textOf(at(json, "message", "content"));
    meaning.isDone = at(json, "done") == true || textOf(at(json, "status")) == "success";
    meaning.part = textOf(at(json, "digest"));
    meaning.total = std::max(0LL, wholeNumber(at(json, "total")).value_or(0));
    meaning.completed = std::clamp(wholeNumber(at(json, "completed")).value_or(0), 0LL, meaning.total);
    return meaning;
}

EngineError engineError(std::string_view body)
{
    const Json json = parsed(body);
    const Json &error = at(json, "error");
    EngineError found{textOf(at(error, "type")), textOf(at(error, "message"))};
    if (error.is_string())
        found.message = error.get<std::string>();
    found.message = asPartOfSentence(found.message);
    if (found.message.empty())
        found.message = found.type.empty() ? "it did not say why" : found.type;
    return found;
}

std::optional<int> tokenCount(std::string_view tokenizeAnswer)
{
    const Json json = parsed(tokenizeAnswer);
    const Json &tokens = at(json, "tokens");
    if (!tokens.is_array() || tokens.size() > static_cast<size_t>(std::numeric_limits<int>::max()))
        return {};
    return static_cast<int>(tokens.size());
}

std::optional<int> contextSize(std::string_view propsAnswer)
{
    const Json json = parsed(propsAnswer);
    std::optional<int> size = positiveInt(at(json, "default_generation_settings", "n_ctx"));
    if (!size)
        size = positiveInt(at(json, "n_ctx"));
    return size.value_or(0) < kSmallestContext ? std::nullopt : size;
}

std::vector<std::string> modelIds(std::string_view modelsAnswer)
{
    std::vector<std::string> ids;
    const Json json = parsed(modelsAnswer);
    for (const Json &model : at(json, "data"))
        if (const std::string id = textOf(at(model, "id")); !id.empty())
            ids.push_back(id);
    return ids;
}

std::optional<std::vector<OllamaModel>> ollamaModels(std::string_view tagsAnswer)
{
    const Json json = parsed(tagsAnswer);
    const Json &list = at(json, "models");
    if (!list.is_array())
        return {};
    std::vector<OllamaModel> models;
    for (const Json &model : list)
        models.push_back(
            {textOf(at(model, "name")), !at(model, "remote_host").is_null() || !at(model, "remote_model").is_null()});
    return models;
}

} // namespace Tessaline::Server
