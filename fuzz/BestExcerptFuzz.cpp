// Cuts a text into windows, counts the words of a query in them and chooses one, against the plainest form of each.

#include "fuzz/Require.h"

#include "Services/TokenSearch.h"
#include "Services/WorkspaceContextBuilder.h"
#include "tests/Services/PlainExcerpts.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

using namespace Tessaline;
using namespace Tessaline::WorkspaceContextBuilder;

namespace {

constexpr size_t kLongest = 1500;           // bytes
constexpr qsizetype kLongestContent = 7000; // units; the plain form is slow

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The numbers are taken from the end, so that an input is a readable text with its query before it.
    FuzzedDataProvider input(data, std::min(size, kLongest));
    const auto chunkSize = input.ConsumeIntegralInRange<int64_t>(-2, 40);
    const auto overlap = input.ConsumeIntegralInRange<int64_t>(-40, 50);
    const auto repetitions = input.ConsumeIntegralInRange<qsizetype>(1, 4000);
    const QString query = QString::fromStdString(input.ConsumeRandomLengthString(300));
    const QString piece = QString::fromStdString(input.ConsumeRemainingBytesAsString());

    REQUIRE(lowered(piece) == piece.toLower());

    const QStringList tokens = queryTokens(query);
    REQUIRE(tokens.size() <= kTokenLimit);
    REQUIRE(std::ranges::all_of(tokens, [](const QString &token) { return token.size() >= kMinimumTokenLength; }));
    REQUIRE(queryTokens(tokens.join(u' ')) == tokens);
    REQUIRE(tokenHits(tokens, piece) == PlainExcerpts::tokenHits(tokens, piece));
    REQUIRE(tokenHits(tokens, query.toLower()) >= tokens.size());

    QStringList chunks;
    for (const QStringView chunk : splitIntoChunks(piece, chunkSize, overlap))
        chunks.append(chunk.toString());
    REQUIRE(chunks == PlainExcerpts::splitIntoChunks(piece, chunkSize, overlap));

    const QString content =
        piece.repeated(std::min(repetitions, kLongestContent / std::max<qsizetype>(piece.size(), 1)));
    REQUIRE(bestExcerpt(content, query) == PlainExcerpts::bestExcerpt(content, tokens));
    return 0;
}
