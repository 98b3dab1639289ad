// Reads bytes as an answer in Markdown that grows, and holds every step against the whole text read at once.

#include "fuzz/Require.h"

#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/GrowingContent.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/NodeWalk.h"
#include "MarkdownUI/Theme.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace MarkdownUI;

namespace {

constexpr size_t kLongest = 2000; // bytes
constexpr int kMostSteps = 12;

void requireMaximalRuns(const AttributedString &string)
{
    qsizetype end = 0;
    for (qsizetype i = 0; i < string.runs().size(); ++i) {
        const AttributedString::Run &run = string.runs().at(i);
        REQUIRE(run.location == end && run.length > 0);
        if (i > 0) {
            const AttributedString::Run &last = string.runs().at(i - 1);
            REQUIRE(run.image || last.image || run.attributes != last.attributes || run.styles != last.styles);
        }
        end = run.location + run.length;
    }
    REQUIRE(end == string.text().size());
}

void render(const BlockNode &block)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties();
    for (const ColorScheme scheme : {ColorScheme::Light, ColorScheme::Dark}) {
        const BlockNode visible = visibleBlock(block, scheme);
        REQUIRE(visibleBlock(visible, scheme) == visible);
        forEachInlineList(visible, [&attributes](const QList<InlineNode> &inlines) {
            const QStringList sources = imageSources(inlines);
            for (const SoftBreak::Mode mode : {SoftBreak::Mode::Space, SoftBreak::Mode::LineBreak}) {
                const InlineTextStyles styles = defaultTheme().inlineTextStyles();
                requireMaximalRuns(renderAttributedString(inlines, {}, styles, mode, attributes));
                requireMaximalRuns(renderText(inlines, {}, styles, {sources.begin(), sources.end()}, mode, attributes));
            }
            paragraphForm(inlines);
        });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, std::min(size, kLongest));
    const int steps = input.ConsumeIntegralInRange(1, kMostSteps);
    std::vector<size_t> cuts;
    for (int i = 1; i < steps; ++i)
        cuts.push_back(input.ConsumeIntegral<uint16_t>());
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    const QString whole = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));

    // 1. Any pieces of the text, shorter or longer than the one before, and at last all of it.
    GrowingContent content;
    for (const size_t cut : cuts) {
        const QString part = whole.first(static_cast<qsizetype>(cut % (static_cast<size_t>(whole.size()) + 1)));
        const QList<BlockNode> before = content.blocks();
        const qsizetype firstChanged = content.update(part);
        REQUIRE(content.blocks() == parseBlocks(part));
        REQUIRE(before.first(std::min(firstChanged, before.size())) == content.blocks().first(firstChanged));
    }
    content.update(whole);
    const QList<BlockNode> blocks = parseBlocks(whole);
    REQUIRE(content.blocks() == blocks);
    REQUIRE(qHash(MarkdownContent{content.blocks()}) == qHash(MarkdownContent{blocks}));

    // 2. What is drawn of it.
    for (const BlockNode &block : blocks)
        render(block);
    return 0;
}
