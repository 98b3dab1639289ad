#include "panels/RobustMatch.h"

#include <benchmark/benchmark.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMegabyte = 1'000'000; // units

QString repeated(const QString &sentence)
{
    QString text;
    text.reserve(kMegabyte + sentence.size() * 2);
    for (int number = 1; text.size() < kMegabyte; ++number)
        text += sentence.arg(number);
    return text;
}

void match(benchmark::State &state, const QString &document, const QString &original, bool isFound)
{
    for (auto _ : state) {
        const std::optional<TextRange> range = robustMatchRange(original, document);
        if (range.has_value() != isFound) {
            state.SkipWithError("The block was found where it is not, or not where it is.");
            return;
        }
    }
}

const QString &prose()
{
    static const QString kText = repeated(
        u"Sentence %1 says “nothing at all” about the matter — and so it goes on, as prose does, déjà vu.\n"_s);
    return kText;
}

const QString &cyrillic()
{
    static const QString kText = repeated(u"Предложение %1 ничего не говорит о «деле», и так далее.\n"_s);
    return kText;
}

const QString &repetitive()
{
    static const QString kText = QString(kMegabyte, u'a') + u"b"_s;
    return kText;
}

} // namespace

BENCHMARK_CAPTURE(match, prose_exact, prose(), u"Sentence 9000 says “nothing"_s, true)
    ->Name("matchEditBlock/prose/exact")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, prose_case, prose(), u"SENTENCE 9000 SAYS “nothing"_s, true)
    ->Name("matchEditBlock/prose/case")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, prose_normalized, prose(), u"Sentence 9000 says \"nothing"_s, true)
    ->Name("matchEditBlock/prose/normalized")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, prose_trimmed, prose(), u"\n\nSentence 9000 says \"nothing\n"_s, true)
    ->Name("matchEditBlock/prose/trimmed")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, prose_nowhere, prose(), u"\n\nSentence zero says \"nothing\n"_s, false)
    ->Name("matchEditBlock/prose/nowhere")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, cyrillic_trimmed, cyrillic(), u"\n\nпредложение 9000 ничего\n"_s, true)
    ->Name("matchEditBlock/cyrillic/trimmed")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(match, repetitive_trimmed, repetitive(), u"\n"_s + QString(5000, u'a') + u"b\n"_s, true)
    ->Name("matchEditBlock/repetitive/trimmed")
    ->Unit(benchmark::kMillisecond);

} // namespace Tessaline
