#include "foundation/FileAccess.h"

#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>

#include <cstdlib>

/// The part of opening, editing and saving a document that has nothing to do with drawing it.
namespace Tessaline {

namespace {

constexpr int kTenKilobytes = 10'000;
constexpr int kOneMegabyte = 1'000'000;
constexpr int kTenMegabytes = 10'000'000;

QByteArray document(qint64 size)
{
    const QByteArray paragraph =
        "## A heading\n\nA paragraph of *ordinary* prose with a [link](https://example.org), an ümlaut, "
        "and enough words to be a few lines long on the screen.\n\n- [ ] a task\n\n";
    return paragraph.repeated(size / paragraph.size() + 1).first(size);
}

void readDocument(benchmark::State &state)
{
    const QTemporaryDir folder;
    const FileURL url(folder.filePath(QStringLiteral("document.md")));
    if (!writeBytesAtomically(url, document(state.range(0))))
        return state.SkipWithError("The document cannot be written.");
    for (auto _ : state)
        benchmark::DoNotOptimize(readText(url).value().size());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(readDocument)
    ->Name("ReadDocument")
    ->Arg(kTenKilobytes)
    ->Arg(kOneMegabyte)
    ->Arg(kTenMegabytes)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void writeDocument(benchmark::State &state)
{
    const QTemporaryDir folder;
    const FileURL url(folder.filePath(QStringLiteral("document.md")));
    const ChunkedText text = ChunkedText::fromUtf8(document(state.range(0))).value();
    for (auto _ : state)
        if (!writeTextAtomically(url, text))
            return state.SkipWithError("The document cannot be written.");
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(writeDocument)
    ->Name("WriteDocument")
    ->Arg(kTenKilobytes)
    ->Arg(kOneMegabyte)
    ->Arg(kTenMegabytes)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// One key in the middle of the text while a snapshot of it waits to be written, as it always does.
void typeIntoDocument(benchmark::State &state)
{
    ChunkedText text = ChunkedText::fromUtf8(document(state.range(0))).value();
    qsizetype caret = text.size() / 2;
    for (auto _ : state) {
        const ChunkedText snapshot = text;
        text.replace(caret++, 0, u"x");
        benchmark::DoNotOptimize(snapshot.size());
    }
}
BENCHMARK(typeIntoDocument)
    ->Name("TypeIntoText")
    ->Arg(kTenKilobytes)
    ->Arg(kOneMegabyte)
    ->Arg(kTenMegabytes)
    ->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace Tessaline
