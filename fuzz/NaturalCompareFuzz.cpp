// Holds the keys made for ASCII names against ICU's, and the order of a list against that of its pairs.

#include "fuzz/Require.h"

#include "foundation/NaturalCompare.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>

using namespace Tessaline;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The root, a locale whose ASCII letters are plain, one that joins them, one that moves them.
    static const std::array collators = {NaturalCollator(""), NaturalCollator("de"), NaturalCollator("da"),
                                         NaturalCollator("lt")};
    FuzzedDataProvider input(data, size);
    const NaturalCollator &collator = collators[input.ConsumeIntegralInRange<size_t>(0, collators.size() - 1)];
    QStringList names;
    while (input.remaining_bytes() > 0 && names.size() < 8)
        names.append(QString::fromStdString(input.ConsumeRandomLengthString(400)));

    for (const QString &left : names) {
        for (const QString &right : names) {
            const int order = collator.compare(left, right);
            REQUIRE(order == collator.compareByCollator(left, right));
            REQUIRE(order == -collator.compare(right, left));
            REQUIRE((order == 0) == (left == right));
        }
    }
    const std::vector<qsizetype> order = collator.order(QList<QStringView>(names.begin(), names.end()));
    REQUIRE(static_cast<qsizetype>(order.size()) == names.size());
    for (size_t i = 1; i < order.size(); ++i) {
        const int pair = collator.compare(names.at(order[i - 1]), names.at(order[i]));
        REQUIRE(pair < 0 || (pair == 0 && order[i - 1] < order[i]));
    }
    return 0;
}
