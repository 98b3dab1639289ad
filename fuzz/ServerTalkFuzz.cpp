// Reads bytes as everything that the assistant's server is sent: bodies of requests, streams and answers of engines,
// and tokens with edits in them, in one piece and in many.

#include "fuzz/Require.h"

#include "server/EditGuard.h"
#include "server/EngineJson.h"
#include "server/Lines.h"
#include "server/Prompt.h"
#include "server/Records.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace Tessaline::Server;

namespace {

std::string guarded(std::string_view document, std::string_view answer, size_t piece)
{
    EditGuard guard(document);
    std::string passed;
    for (size_t at = 0; at < answer.size(); at += piece)
        passed += guard.append(answer.substr(at, piece));
    return passed + guard.finish();
}

std::vector<std::string> linesOf(std::string_view bytes, size_t piece)
{
    std::vector<std::string> lines;
    Lines splitter;
    for (size_t at = 0; at < bytes.size(); at += piece)
        REQUIRE(splitter.append(bytes.substr(at, piece), [&lines](std::string_view line) {
            lines.emplace_back(line);
            return true;
        }));
    return lines;
}

void readAsEngine(std::string_view bytes, size_t piece)
{
    const std::vector<std::string> lines = linesOf(bytes, piece);
    REQUIRE(lines == linesOf(bytes, std::max<size_t>(1, bytes.size())));
    for (const std::string &line : lines) {
        openAiLine(line);
        const EngineLine pull = ollamaLine(line);
        REQUIRE(pull.completed >= 0 && pull.completed <= pull.total);
    }
    engineError(bytes);
    tokenCount(bytes);
    modelIds(bytes);
    ollamaModels(bytes);
    REQUIRE(contextSize(bytes).value_or(1) > 0);
    REQUIRE(topicsIn(bytes).size() <= 6);
    REQUIRE(cardsIn(bytes).size() <= 5);
    digestIn(bytes);
}

void readAsRequest(std::string_view bytes, size_t budget)
{
    parseSuggestionsRequest(bytes);
    parseConceptRequest(bytes);
    parseDigestRequest(bytes);
    const auto parsed = parseChatRequest(bytes);
    const ChatRequest *const request = std::get_if<ChatRequest>(&parsed);
    if (!request)
        return;
    const Prompt prompt = assemblePrompt(*request, budget);
    REQUIRE(prompt.turns.size() == static_cast<size_t>(prompt.counts.turns) + 2);
    REQUIRE(prompt.turns.front().role == "system" && prompt.turns.back().role == "user");
    REQUIRE(prompt.counts.cards <= static_cast<int>(request->cards.size()));
    REQUIRE(prompt.counts.excerpts <= static_cast<int>(request->excerpts.size()));
    if (request->document)
        REQUIRE(request->document->find(fenceFor({*request->document})) == std::string::npos);
    const Prompt fitted = fitPrompt(*request, 8192, estimatedTokens);
    REQUIRE(fitted.counts.inputTokens <= 8192 - 8192 / 4);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The numbers are taken from the end, so that an input is readable.
    FuzzedDataProvider input(data, size);
    const size_t piece = input.ConsumeIntegralInRange<size_t>(1, 32);
    const size_t budget = input.ConsumeIntegral<uint16_t>();
    const std::string bytes = input.ConsumeRemainingBytesAsString();

    readAsEngine(bytes, piece);
    readAsRequest(bytes, budget);
    const size_t middle = bytes.size() / 2;
    const std::string_view answer = std::string_view(bytes).substr(middle);
    const std::string_view document = std::string_view(bytes).substr(0, middle);
    REQUIRE(guarded(document, answer, piece) == guarded(document, answer, std::max<size_t>(1, answer.size())));
    REQUIRE(guarded({}, bytes, piece).size() >= bytes.size());
    const Stretch stretch = stretchAbout(bytes, answer, budget);
    REQUIRE(stretch.begin <= stretch.end && stretch.end <= bytes.size() && stretch.end - stretch.begin <= budget);
    return 0;
}
