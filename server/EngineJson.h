#pragma once

#include "server/Engine.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

/// The JSON that engines take and give. Whatever they send, nothing here fails: what has another shape means nothing.

/// For an OpenAI-compatible server's /v1/chat/completions, as a stream.
std::string openAiChatBody(const EngineRequest &request, std::string_view model);
/// For Ollama's /api/chat, as a stream.
std::string ollamaChatBody(const EngineRequest &request, std::string_view model, int contextTokens);
std::string ollamaPullBody(std::string_view model);
/// For llama-server's /tokenize.
std::string tokenizeBody(std::string_view text);

/// What a line of an engine's stream means.
struct EngineLine {
    std::string token;
    std::string error;       // a failure that is told in the stream
    bool isDone = false;     // nothing comes behind it
    bool isRemote = false;   // Ollama: another machine answers
    long long total = 0;     // Ollama’s pull: the bytes of the part that is fetched
    long long completed = 0; // and how many of them are here
    std::string part;        // and which part that is
    friend bool operator==(const EngineLine &, const EngineLine &) = default;
};

/// `data: {…}` or `data: [DONE]`; comments and other lines mean nothing.
EngineLine openAiLine(std::string_view line);
/// One JSON object.
EngineLine ollamaLine(std::string_view line);

/// Why an engine refused, from the body of its answer.
struct EngineError {
    std::string type;
    std::string message; // a part of one sentence, never empty
};
EngineError engineError(std::string_view body);

std::optional<int> tokenCount(std::string_view tokenizeAnswer);
inline constexpr int kSmallestContext = 512;                      // tokens; with less no question can be answered
std::optional<int> contextSize(std::string_view propsAnswer);     // absent also if it is smaller
std::vector<std::string> modelIds(std::string_view modelsAnswer); // of /v1/models

/// A model that Ollama has.
struct OllamaModel {
    std::string name;
    bool isRemote = false;
};
std::optional<std::vector<OllamaModel>>
ollamaModels(std::string_view tagsAnswer); // absent if Ollama did not write that

} // namespace Tessaline::Server
