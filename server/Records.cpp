#include "server/Records.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Tessaline::Server {

namespace {

using Json = nlohmann::json;

std::string dumped(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string event(const Json &json)
{
    return "data: " + dumped(json) + "\n\n";
}

/// Takes what a body says, as deep and in as many parts as a sound body can be, and refuses the rest where it begins: a
/// body of brackets would otherwise take many times its own size.
class BodyReader final : public Json::json_sax_t
{
public:
    static constexpr size_t kDeepest = 16;        // nothing that is asked for has more than three levels
    static constexpr size_t kMostParts = 100'000; // keys and values: a conversation of nearly twenty thousand turns

    Json &value() { return m_value; }
    const std::string &problem() const { return m_problem; } // when reading failed

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t &) override { return add(value); }
    bool string(string_t &value) override { return add(std::move(value)); }
    bool binary(binary_t &) override { return false; }
    bool key(string_t &key) override
    {
        m_key = std::move(key);
        return count();
    }
    bool start_object(size_t) override { return open(Json::object()); }
    bool start_array(size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(size_t, const std::string &, const Json::exception &) override { return false; }

private:
    bool count()
    {
        if (++m_parts > kMostParts)
            m_problem = "The body has too many parts.";
        return m_parts <= kMostParts;
    }

    bool add(Json value)
    {
        if (m_open.empty())
            m_value = std::move(value);
        else if (m_open.back()->is_array())
            m_open.back()->push_back(std::move(value));
        else
            (*m_open.back())[m_key] = std::move(value);
        return count();
    }

    bool open(Json container)
    {
        if (m_open.size() == kDeepest) {
            m_problem = "The body is nested too deeply.";
            return false;
        }
        Json *const parent = m_open.empty() ? nullptr : m_open.back();
        if (!add(std::move(container)))
            return false;
        m_open.push_back(!parent ? &m_value : parent->is_array() ? &parent->back() : &(*parent)[m_key]);
        return true;
    }

    bool close()
    {
        m_open.pop_back();
        return true;
    }

    Json m_value;
    std::vector<Json *> m_open; // what is being filled, the innermost last; only that grows, so the others stay put
    std::string m_key;          // the last one
    size_t m_parts = 0;
    std::string m_problem = "The body is not JSON.";
};

/// Reads the fields of one object, and remembers the first that is not as it should be.
class Fields
{
public:
    /// The texts are moved out of `object`: they are the most of it, and long.
    explicit Fields(Json &object) : m_object(object)
    {
        if (!object.is_object())
            m_problem = "The body is not a JSON object.";
    }

    void text(const char *key, std::string &value)
    {
        if (Json *const field = find(key, "a text", &Json::is_string))
            value = std::move(field->get_ref<std::string &>());
        else if (m_problem.empty())
            m_problem = "The text “" + std::string(key) + "” is missing.";
    }

    void text(const char *key, std::optional<std::string> &value)
    {
        if (Json *const field = find(key, "a text", &Json::is_string))
            value = std::move(field->get_ref<std::string &>());
    }

    void textIfThere(const char *key, std::string &value)
    {
        if (Json *const field = find(key, "a text", &Json::is_string))
            value = std::move(field->get_ref<std::string &>());
    }

    void number(const char *key, double &value, double lowest, double highest)
    {
        if (const Json *const field = find(key, "a number", &Json::is_number))
            value = std::clamp(field->get<double>(), lowest, highest);
    }

    template <class Value, class Read>
    void list(const char *key, std::vector<Value> &values, Read read)
    {
        Json *const field = find(key, "a list", &Json::is_array);
        if (!field)
            return;
        for (Json &element : *field) {
            Fields fields(element);
            read(fields, values.emplace_back());
            if (!fields.m_problem.empty()) {
                m_problem = "In “" + std::string(key) + "”: " + fields.m_problem;
                return;
            }
        }
    }

    const std::string &problem() const { return m_problem; }

private:
    Json *find(const char *key, const char *kind, bool (Json::*isKind)() const noexcept)
    {
        if (!m_problem.empty())
            return nullptr;
        const auto field = m_object.find(key);
        if (field == m_object.end() || field->is_null())
            return nullptr;
        if (!((*field).*isKind)()) {
            m_problem = "“" + std::string(key) + "” is not " + kind + ".";
            return nullptr;
        }
        return &*field;
    }

    Json &m_object;
    std::string m_problem;
};

template <class Value, class Read>
std::variant<Value, Malformed> parsed(std::string_view body, Read read)
{
    BodyReader reader;
    if (!Json::sax_parse(body, &reader))
        return Malformed{reader.problem()};
    Fields fields(reader.value());
    Value value;
    read(fields, value);
    if (!fields.problem().empty())
        return Malformed{fields.problem()};
    return value;
}

void readCard(Fields &fields, Card &card)
{
    fields.text("name", card.name);
    fields.textIfThere("subtitle", card.subtitle);
    fields.text("content", card.content);
    fields.textIfThere("digest", card.digest);
}

/// The first object in `answer` that holds `key`; discarded if there is none.
Json objectWith(std::string_view answer, const char *key)
{
    constexpr int kTries = 64; // an answer with more braces than that is not worth the time
    size_t begin = answer.find('{');
    for (int tries = 0; begin != std::string_view::npos && tries < kTries; ++tries) {
        // The brace that closes it, with regard to texts.
        int depth = 0;
        bool isInText = false;
        size_t end = begin;
        for (; end < answer.size(); ++end) {
            const char sign = answer[end];
            if (isInText) {
                if (sign == '\\')
                    ++end;
                else if (sign == '"')
                    isInText = false;
            } else if (sign == '"')
                isInText = true;
            else if (sign == '{')
                ++depth;
            else if (sign == '}' && --depth == 0)
                break;
        }
        if (end < answer.size()) {
            Json object = Json::parse(answer.substr(begin, end - begin + 1), nullptr, false);
            if (object.is_object() && object.contains(key))
                return object;
        }
        begin = answer.find('{', begin + 1);
    }
    return Json(Json::value_t::discarded);
}

std::string trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1));
}

bool isOneLine(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char sign) { return static_cast<unsigned char>(sign) < 0x20; });
}

int wordCount(std::string_view text)
{
    int words = 0;
    bool isInWord = false;
    for (const char sign : text) {
        const bool isBlank = sign == ' ' || sign == '\n' || sign == '\t' || sign == '\r';
        words += !isBlank && !isInWord;
        isInWord = !isBlank;
    }
    return words;
}

} // namespace

std::variant<ChatRequest, Malformed> parseChatRequest(std::string_view body)
{
    return parsed<ChatRequest>(body, [](Fields &fields, ChatRequest &request) {
        fields.text("prompt", request.prompt);
        fields.text("file_content", request.document);
        fields.list("context_items", request.cards, readCard);
        fields.list("workspace_context_items", request.excerpts, readCard);
        fields.list("history", request.history, [](Fields &turn, Turn &value) {
            turn.text("role", value.role);
            turn.text("content", value.content);
            // A conversation has two sides; nobody but the server speaks as the system.
            value.role = value.role == "user" ? "user" : "assistant";
        });
        fields.number("temperature", request.temperature, 0, 2);
        fields.number("top_p", request.topP, 0, 1);
    });
}

std::variant<std::string, Malformed> parseSuggestionsRequest(std::string_view body)
{
    return parsed<std::string>(body, [](Fields &fields, std::string &content) { fields.text("content", content); });
}

std::variant<std::string, Malformed> parseConceptRequest(std::string_view body)
{
    return parsed<std::string>(body, [](Fields &fields, std::string &topic) { fields.text("concept", topic); });
}

std::variant<DigestRequest, Malformed> parseDigestRequest(std::string_view body)
{
    return parsed<DigestRequest>(body, [](Fields &fields, DigestRequest &request) {
        fields.text("filename", request.filename);
        fields.text("content", request.content);
    });
}

std::string contextEvent(const ContextCounts &counts)
{
    return event({{"context",
                   {{"context_window_tokens", counts.windowTokens},
                    {"estimated_input_tokens", counts.inputTokens},
                    {"active_document_chars", counts.documentCharacters},
                    {"attached_context_count", counts.cards},
                    {"workspace_context_count", counts.excerpts},
                    {"history_message_count", counts.turns}}}});
}

std::string tokenEvent(std::string_view token)
{
    return event({{"token", token}});
}

std::string errorEvent(std::string_view sentence)
{
    return event({{"error", sentence}});
}

std::string suggestionsBody(const std::vector<std::string> &topics)
{
    return dumped({{"suggestions", topics}});
}

std::string digestBody(std::string_view digest)
{
    return dumped({{"digest", digest}});
}

std::string conceptBody(const std::vector<ConceptCard> &cards)
{
    Json list = Json::array();
    for (const ConceptCard &card : cards)
        list.push_back({{"title", card.title}, {"subtitle", card.subtitle}, {"content", card.content}});
    if (cards.size() == 1)
        return dumped({{"status", "success"}, {"card", list[0]}});
    return dumped({{"status", "ambiguous"}, {"options", list}});
}

std::string errorBody(std::string_view sentence)
{
    return dumped({{"error", sentence}});
}

std::string healthBody(std::string_view status, int percent, std::string_view sentence)
{
    Json json{{"status", status}};
    if (percent >= 0)
        json["percent"] = percent;
    if (!sentence.empty())
        json["message"] = sentence;
    return dumped(json);
}

std::vector<std::string> topicsIn(std::string_view answer)
{
    constexpr size_t kMostTopics = 6;
    constexpr size_t kLongestTopic = 60; // bytes; a chip in the panel
    std::vector<std::string> topics;
    const Json object = objectWith(answer, "topics");
    if (object.is_discarded() || !object["topics"].is_array())
        return topics;
    for (const Json &element : object["topics"]) {
        if (!element.is_string() || topics.size() == kMostTopics)
            continue;
        const std::string topic = trimmed(element.get_ref<const std::string &>());
        if (!topic.empty() && topic.size() <= kLongestTopic && isOneLine(topic) &&
            std::find(topics.begin(), topics.end(), topic) == topics.end())
            topics.push_back(topic);
    }
    return topics;
}

std::optional<std::string> digestIn(std::string_view answer)
{
    constexpr int kMostWords = 120;
    const Json object = objectWith(answer, "digest");
    if (object.is_discarded() || !object["digest"].is_string())
        return {};
    std::string digest = trimmed(object["digest"].get_ref<const std::string &>());
    if (digest.empty() || wordCount(digest) > kMostWords)
        return {};
    return digest;
}

std::vector<ConceptCard> cardsIn(std::string_view answer)
{
    constexpr size_t kMostCards = 5;
    std::vector<ConceptCard> cards;
    Json object = objectWith(answer, "cards");
    if (object.is_discarded() || !object["cards"].is_array())
        return cards;
    for (Json &element : object["cards"]) {
        Fields fields(element);
        ConceptCard card;
        fields.text("title", card.title);
        fields.text("subtitle", card.subtitle);
        fields.text("content", card.content);
        card = {trimmed(card.title), trimmed(card.subtitle), trimmed(card.content)};
        if (!fields.problem().empty() || card.title.empty() || card.content.empty())
            return {};
        cards.push_back(std::move(card));
    }
    if (cards.size() > kMostCards)
        cards.clear();
    return cards;
}

} // namespace Tessaline::Server
