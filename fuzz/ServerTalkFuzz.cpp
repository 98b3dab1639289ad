// Reads bytes as everything that the assistant's server is sent: heads and bodies of requests, streams and answers of
// engines, and tokens with edits in them, in one piece and in many.

#include "fuzz/Require.h"

#include "server/EditGuard.h"
#include "server/EngineJson.h"
#include "server/Lines.h"
#include "server/Prompt.h"
#include "server/Records.h"
#include "server/RequestGate.h"
#include "server/Settings.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <optional>
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

/// A head that is taken has one meaning only: written anew from what was read of it, it is read the same again.
void readAsHead(std::string_view bytes)
{
    constexpr int kPort = 23949;
    constexpr size_t kLargestBody = 1000;
    const std::optional<RequestHead> head = parseHead(bytes);
    if (!head)
        return;
    std::string again = std::string(head->method) + " " + std::string(head->target) + " HTTP/1.1\r\n";
    bool isForeign = true;
    for (const auto &[name, value] : head->headers) {
        again += std::string(name) + ": " + std::string(value) + "\r\n";
        isForeign = isForeign && value != "localhost:23949" && value != "127.0.0.1:23949";
    }
    again += "\r\n";
    const std::optional<RequestHead> same = parseHead(again);
    REQUIRE(same && same->method == head->method && same->target == head->target && same->headers == head->headers);
    const std::optional<Refusal> refused = refusal(*head, kPort, kLargestBody);
    REQUIRE(refused ? refused->status >= 400 && !refused->sentence.empty() : !isForeign);
}

void readAsAddress(std::string_view bytes)
{
    const std::optional<LoopbackAddress> address = loopbackAddress(bytes, 80);
    REQUIRE(!address || address->host == "127.0.0.1" || address->host == "localhost" || address->host == "::1");
    REQUIRE(!address || (address->port > 0 && address->port <= 65535));
    REQUIRE(!address || address->path.find_first_of(" \r\n") == std::string::npos);
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
    readAsHead(bytes);
    readAsAddress(bytes);
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
