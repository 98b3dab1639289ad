// A proposed change and a document, both of any text: whatever is found must be the document's own whole characters.

#include "fuzz/Require.h"

#include "foundation/CharacterBreaks.h"
#include "panels/RobustMatch.h"
#include "panels/UniqueSearch.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace Tessaline;

namespace {

QString comparable(QStringView text)
{
    return normalizedForMatching(text).text.normalized(QString::NormalizationForm_D).trimmed();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const QString original = QString::fromStdString(input.ConsumeRandomLengthString(60));
    const QString document = QString::fromStdString(input.ConsumeRemainingBytesAsString());

    const NormalizedText normalized = normalizedForMatching(document);
    const CharacterBreaks normalizedBreaks(normalized.text);
    size_t characters = 0;
    for (qsizetype at = 0; at < normalized.text.size(); ++characters)
        at = normalizedBreaks.following(at);
    REQUIRE(normalized.positions.size() == characters + 1);
    REQUIRE(normalized.positions.back() == document.size());

    const std::optional<TextRange> range = robustMatchRange(original, document);
    if (range) {
        REQUIRE(range->location >= 0 && range->end() <= document.size());
        const CharacterBreaks breaks(document);
        REQUIRE(breaks.isBreak(range->location) && breaks.isBreak(range->end()));
        const QString found = comparable(QStringView(document).sliced(range->location, range->length));
        REQUIRE(uniqueRange(found, comparable(original), Likeness::CaseIgnored).kind == UniqueRange::Kind::Unique ||
                found.isEmpty());
    }
    const UniqueRange exact = uniqueRange(original, document, Likeness::Exact);
    REQUIRE(exact.kind != UniqueRange::Kind::Unique || range == exact.range);
    REQUIRE(exact.kind != UniqueRange::Kind::Ambiguous || !range);
    return 0;
}
