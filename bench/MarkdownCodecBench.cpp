#include "editing/InlineMarkdown.h"
#include "editing/MarkdownPieces.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "editing/TextPresentation.h"

#include <benchmark/benchmark.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMegabyte = 1'000'000; // of ASCII, so units and bytes are the same

/// A manuscript: mostly prose, with some of everything else.
QString manuscript(qsizetype size)
{
    QString text;
    text.reserve(size + 2000);
    for (int section = 1; text.size() < size; ++section) {
        text +=
            u"## Section %1\n\n"
            "The quick brown fox jumps over the lazy dog, and then it *runs* away from the **big** bear; nobody "
            "knows [why](https://example.org/a/%1) it did so.\nA second line of the same paragraph follows here "
            "with some `code` in it, and it goes on for a while without any signs at all, as prose does.\n\n"
            "- an item of a list\n- another item, a bit longer than the first\n- [x] done\n\n1. first\n2. second\n\n"
            "> a quote that says something wise\n\n```cpp\nint main() { return 0; }\n\n// comment\n```\n\n"
            "| a | b |\n| --- | --- |\n| cell | another cell |\n\n"
            "A paragraph without any marks that runs on a single line of some three hundred characters, because "
            "that is how many people write: one line for one paragraph, and the editor wraps it for them as they go "
            "along with their stories and reports, and nobody thinks about it any more than that.\n\n"_s.arg(section);
    }
    text.truncate(size);
    return text;
}

void setRate(benchmark::State &state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// --- whole documents ---

void parseMarkdown(benchmark::State &state)
{
    const QString markdown = manuscript(state.range(0));
    for (auto _ : state) {
        const QList<Block> blocks = parseBlocks(markdown);
        for (const Block &block : blocks) {
            if (block.parsesInlineMarkdown)
                benchmark::DoNotOptimize(parseInlineMarkdown(block.content));
        }
    }
    setRate(state);
}

void renderMarkdownText(benchmark::State &state)
{
    const QString markdown = manuscript(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(renderMarkdown(markdown));
    setRate(state);
}

void writeMarkdown(benchmark::State &state)
{
    const AttributedText text = renderMarkdown(manuscript(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(serializeMarkdown(text));
    setRate(state);
}

void presentDocument(benchmark::State &state)
{
    const AttributedText text = renderMarkdown(manuscript(state.range(0)));
    for (auto _ : state) {
        for (const AttributeRun &run : text.runs())
            benchmark::DoNotOptimize(presentation(run.attributes, 16));
    }
    setRate(state);
}

// The arguments are the sizes in bytes.
BENCHMARK(parseMarkdown)->Arg(kMegabyte)->Arg(10 * kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(renderMarkdownText)
    ->Name("renderMarkdown")
    ->Arg(kMegabyte)
    ->Arg(10 * kMegabyte)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(writeMarkdown)->Arg(kMegabyte)->Arg(10 * kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(presentDocument)->Arg(kMegabyte)->Unit(benchmark::kMillisecond);

// --- one edit ---

/// A key in the middle: the paragraph's record and the change of the Markdown.
void writeEdit(benchmark::State &state)
{
    const AttributedText text = renderMarkdown(manuscript(state.range(0)));
    QList<ParagraphRecord> records;
    const QList<TextRange> paragraphs = Paragraphs::in(text.text(), {0, text.size()});
    for (const TextRange &paragraph : paragraphs)
        records.append(paragraphRecord(text, paragraph));
    MarkdownPieces pieces;
    const auto recordAt = [&records](qsizetype paragraph) { return records.at(paragraph); };
    benchmark::DoNotOptimize(pieces.reset(records.size(), recordAt));
    const qsizetype middle = paragraphs.size() / 2;
    const AttributedText paragraph = text.sliced(paragraphs.at(middle));
    for (auto _ : state) {
        const ParagraphRecord record = paragraphRecord(paragraph, {0, paragraph.size()});
        benchmark::DoNotOptimize(pieces.replace(middle, 1, {record}, recordAt));
    }
}

BENCHMARK(writeEdit)->Arg(10'000)->Arg(kMegabyte)->Arg(10 * kMegabyte)->Unit(benchmark::kMicrosecond);

// --- texts made to be slow ---

struct Shape {
    const char *name;
    const char16_t *unit;        // repeated
    const char16_t *start = u""; // once before
};

/// What tempts a reader to look to the end of the text again and again. The time must grow with the size and no more.
constexpr Shape kShapes[] = {
    {"open_brackets", u"["},
    {"asterisks", u"*"},
    {"backticks", u"`"},
    {"open_images", u"!["},
    {"middles", u"]("},
    {"unclosed_links", u"[a](b"},
    {"brackets_in_emphasis", u"**["},
    {"images_in_links", u"[![]("},
    {"exclamation_marks", u"!"},
    {"backslashes", u"\\"},
    {"mixed_asterisks", u"** *** a "},
    {"unclosed_asterisks", u"* a ** b *** c "},
    {"nested_emphasis", u"***a **b *c "},
    {"asterisks_with_marks", u"*\u0301"},
    {"one_line", u"word "},
    {"hard_breaks", u"a  \n"},
    {"pipes", u"|"},
    {"lines_with_pipes", u"a|b\n"},
    {"tables", u"a|b\n---\n"},
    {"dashes", u"- "},
    {"empty_items", u"- \n"},
    {"fences", u"```a\n"},
    {"unclosed_fence", u"a``\n", u"```\n"},
    {"carriage_returns", u"a\r"},
    {"digits", u"1"},
    {"spaces", u" "},
};

void readShape(benchmark::State &state, const Shape &shape)
{
    const QString unit = QString::fromUtf16(shape.unit);
    const QString markdown = QString::fromUtf16(shape.start) + unit.repeated(state.range(0) / unit.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(serializeMarkdown(renderMarkdown(markdown)));
    setRate(state);
}

const bool kShapesAreRegistered = [] {
    for (const Shape &shape : kShapes) {
        benchmark::RegisterBenchmark((std::string("readHostile/") + shape.name).c_str(), readShape, shape)
            ->Arg(kMegabyte)
            ->Arg(4 * kMegabyte)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace

} // namespace Tessaline
