#include "MarkdownUI/GrowingContent.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/NodeWalk.h"
#include "MarkdownUI/Theme.h"

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kMegabyte = 1'000'000; // of ASCII, so units and bytes are the same

/// Answers as an assistant writes them, one after the other.
QString answers(qsizetype size)
{
    QString text;
    text.reserve(size + 2000);
    for (int i = 1; text.size() < size; ++i) {
        text += u"## Answer %1\n\nThere are *two* ways to do this, and which of them is better depends on what you "
                "have. The first one is **simple**: call `open` with a [path](https://example.org/%1), read the lines "
                "one by one, and stop at the first one that is empty, as you would do by hand.\n\n- Read the file\n"
                "- Split it into lines, without the `\\n` at the end\n  - also when it ends with two of them\n"
                "- Close it\n\n```python\ndef read(path):\n    with open(path) as file:\n        lines = [line for "
                "line in file]\n        if lines[-1]:\n            return lines\n    return None\n```\n\n> Note that "
                "the file can be gone by then.\n\n| Way | Lines | Speed |\n|-----|------:|-------|\n| first | 10 | "
                "good |\n| second | 100 | better |\n\n1. Try the first one.\n2. Measure it, and only then go on to the "
                "second, for it takes more of your time than of the machine's.\n\nA paragraph without any marks, on a "
                "single line of some two hundred characters, stands at the end of the answer, because that is how most "
                "of what is said in a conversation looks like.\n\n"_s.arg(i);
    }
    text.truncate(size);
    return text;
}

void setRate(benchmark::State &state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

void parseContent(benchmark::State &state)
{
    const QString markdown = answers(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(parseBlocks(markdown));
    setRate(state);
}

BENCHMARK(parseContent)->Arg(10'000)->Arg(kMegabyte)->Unit(benchmark::kMillisecond);

void renderInlines(benchmark::State &state)
{
    const QList<BlockNode> blocks = parseBlocks(answers(state.range(0)));
    const InlineTextStyles styles = defaultTheme().inlineTextStyles();
    for (auto _ : state) {
        for (const BlockNode &block : blocks) {
            forEachInlineList(block, [&styles](const QList<InlineNode> &inlines) {
                benchmark::DoNotOptimize(renderAttributedString(inlines, {}, styles, SoftBreak::Mode::Space, {}));
            });
        }
    }
    setRate(state);
}

BENCHMARK(renderInlines)->Arg(kMegabyte)->Unit(benchmark::kMillisecond);

/// One token more at the end of an answer of this size.
void growContent(benchmark::State &state)
{
    const QString before = answers(state.range(0));
    const QString after = before + u" token"_s;
    GrowingContent content;
    content.update(before);
    bool isLonger = false;
    for (auto _ : state) {
        isLonger = !isLonger;
        benchmark::DoNotOptimize(content.update(isLonger ? after : before));
    }
}

BENCHMARK(growContent)->Arg(10'000)->Arg(100'000)->Arg(kMegabyte)->Unit(benchmark::kMicrosecond);

/// The same in an answer with link definitions, which is read as a whole each time.
void growContentWithDefinitions(benchmark::State &state)
{
    const QString before = u"[a]: https://example.org\n\n"_s + answers(state.range(0));
    const QString after = before + u" token"_s;
    GrowingContent content;
    content.update(before);
    bool isLonger = false;
    for (auto _ : state) {
        isLonger = !isLonger;
        benchmark::DoNotOptimize(content.update(isLonger ? after : before));
    }
}

BENCHMARK(growContentWithDefinitions)->Arg(100'000)->Unit(benchmark::kMillisecond);

// --- texts made to be slow ---

struct Shape {
    const char *name;
    QString unit; // repeated
};

const Shape kShapes[] = {
    {"quotes", u">"_s},         {"lists", u"- "_s},
    {"asterisks", u"*"_s},      {"one_line", u"word "_s},
    {"emphasis", u"*a **b "_s}, {"brackets", u"["_s},
    {"pipes", u"|a|\n"_s},      {"tasks", u"- [ ] a\n"_s},
    {"table_cells", u"|x"_s},   {"headers", u"|a|b|\n|-|\n"_s},
    {"addresses", u"www.a_"_s}, {"instructions", u"a <?"_s},
};

void parseShape(benchmark::State &state, const Shape &shape)
{
    QString markdown = shape.unit.repeated(state.range(0) / shape.unit.size()) + u'a';
    if (shape.name == std::string_view("table_cells")) {
        const QString row = u"|x"_s.repeated(200) + u"|\n"_s;
        markdown = row + u"|-"_s.repeated(200) + u"|\n"_s + row.repeated(2000);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(parseBlocks(markdown));
    setRate(state);
}

const bool kShapesAreRegistered = [] {
    for (const Shape &shape : kShapes) {
        benchmark::RegisterBenchmark((std::string("parseHostile/") + shape.name).c_str(), parseShape, shape)
            ->Arg(kMegabyte)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace

} // namespace MarkdownUI
