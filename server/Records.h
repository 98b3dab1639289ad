#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Tessaline::Server {

/// The records of the wire protocol as the server has them: in UTF-8, as they come and go, so that a document of many
/// megabytes is not turned into UTF-16 and back. The application's own are Qt's and stay there: this program starts in
/// a few milliseconds and rests in a few megabytes because it has nothing of Qt. A test holds the two together.

/// Something that the person attached, or an excerpt of the project.
struct Card {
    std::string name;
    std::string subtitle; // empty if there is none
    std::string content;
    std::string digest; // empty if there is none
    friend bool operator==(const Card &, const Card &) = default;
};

/// One turn of a conversation.
struct Turn {
    std::string role; // "user", "assistant" or "system"
    std::string content;
    friend bool operator==(const Turn &, const Turn &) = default;
};

/// A question with all that comes with it.
struct ChatRequest {
    std::string prompt;
    std::optional<std::string> document;
    std::vector<Card> cards;
    std::vector<Card> excerpts;
    std::vector<Turn> history; // oldest first
    double temperature = 0.7;
    double topP = 0.9;
    friend bool operator==(const ChatRequest &, const ChatRequest &) = default;
};

/// What was used of a request.
struct ContextCounts {
    int windowTokens = 0;
    int inputTokens = 0;
    long long documentCharacters = 0;
    int cards = 0;
    int excerpts = 0;
    int turns = 0;
    friend bool operator==(const ContextCounts &, const ContextCounts &) = default;
};

/// A body that is not as it should be, told in one sentence.
struct Malformed {
    std::string sentence;
};

struct DigestRequest {
    std::string filename;
    std::string content;
};

std::variant<ChatRequest, Malformed> parseChatRequest(std::string_view body);
std::variant<std::string, Malformed> parseSuggestionsRequest(std::string_view body); // the content
std::variant<std::string, Malformed> parseConceptRequest(std::string_view body);     // the concept
std::variant<DigestRequest, Malformed> parseDigestRequest(std::string_view body);

/// The lines of the event stream, each with its line end and the empty line behind it.
std::string contextEvent(const ContextCounts &counts);
std::string tokenEvent(std::string_view token);
std::string errorEvent(std::string_view sentence);
inline constexpr std::string_view kDoneEvent = "data: [DONE]\n\n";

/// A reference card made of a word.
struct ConceptCard {
    std::string title;
    std::string subtitle;
    std::string content;
    friend bool operator==(const ConceptCard &, const ConceptCard &) = default;
};

/// Bodies of answers.
std::string suggestionsBody(const std::vector<std::string> &topics);
std::string digestBody(std::string_view digest);
std::string conceptBody(const std::vector<ConceptCard> &cards); // one: "success"; more: "ambiguous"
std::string errorBody(std::string_view sentence);
std::string healthBody(std::string_view status, int percent, std::string_view sentence); // below 0: no percentage

/// What an engine made of a request for JSON. Fences and chatter around it are passed over; what does not fit is
/// dropped. At most six topics, each one line of at most 60 bytes, none twice; in the engine's order.
std::vector<std::string> topicsIn(std::string_view answer);
/// At most 120 words.
std::optional<std::string> digestIn(std::string_view answer);
/// One card, or two to five; otherwise none.
std::vector<ConceptCard> cardsIn(std::string_view answer);

} // namespace Tessaline::Server
