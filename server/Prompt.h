#pragma once

#include "server/Records.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

/// What the model is given: the system's turn with everything that the person has in view, the history, the question.
struct Prompt {
    std::vector<Turn> turns;
    ContextCounts counts; // of what is in it; the tokens are 0 until somebody counts them
    size_t bytes = 0;     // of all turns
};

/// Builds a prompt of at most so many bytes, as far as the rules alone allow. What does not fit goes in this order, and
/// the text says what is missing:
///
/// 1. the history, oldest first;
/// 2. the excerpts, from the last;
/// 3. the contents of the cards, from the last: their digests stay, or the first lines where there is none;
/// 4. the document, around the part that the question is about;
/// 5. the cards, from the last;
/// 6. the end of the question.
///
/// Each text is fenced by lines with a word that occurs in none of them.
Prompt assemblePrompt(const ChatRequest &request, size_t mostBytes);

/// How many tokens a text has.
using TokenCounter = std::function<int(std::string_view text)>;

/// The estimate where an engine has no tokenizer: one token for three bytes, rounded up. English has four bytes to a
/// token, most other languages fewer.
int estimatedTokens(std::string_view text);

/// The prompt for a context of `windowTokens`, of which the answer has at least a quarter. Its counts are complete.
Prompt fitPrompt(const ChatRequest &request, int windowTokens, const TokenCounter &count);

/// A stretch of a text, in bytes.
struct Stretch {
    size_t begin = 0;
    size_t end = 0;
    friend bool operator==(const Stretch &, const Stretch &) = default;
};

/// At most `mostBytes` of the document, in whole lines where that is possible and in whole characters always, around
/// the line that has the rarest words of the question; its beginning if it has none of them.
Stretch stretchAbout(std::string_view document, std::string_view question, size_t mostBytes);

/// A word that occurs in none of the texts.
std::string fenceFor(const std::vector<std::string_view> &texts);

} // namespace Tessaline::Server
