#include "editing/MarkdownRendering.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString rendered(const QString &markdown)
{
    return described(renderMarkdown(markdown));
}

} // namespace

TEST(MarkdownRendering, TheEmptyDocumentIsTheEmptyText)
{
    EXPECT_EQ(rendered(u""_s), u"");
    EXPECT_EQ(rendered(u"\n \n"_s), u"");
}

TEST(MarkdownRendering, ALineBreakBelongsToTheBlockThatItEnds)
{
    EXPECT_EQ(rendered(u"# a\n\n\n> b\nc"_s), u"{heading:1}a⏎{quote}b⏎{paragraph}c");
}

TEST(MarkdownRendering, BlocksOfOneKindAreOneRun)
{
    EXPECT_EQ(rendered(u"a\n\nb"_s), u"{paragraph}a⏎b");
}

TEST(MarkdownRendering, MarkersAreGenerated)
{
    EXPECT_EQ(rendered(u"- a\n12. b\n- [ ] c\n- [x] d"_s),
              u"{bullet,marker}•⇥{bullet}a⏎{numbered:12,marker}12.⇥{numbered:12}b⏎{task:0,marker}☐⇥{task:0}c⏎"
              u"{task:1,marker}☑⇥{task:1}d");
}

TEST(MarkdownRendering, EmptyItemsAreTheirMarkers)
{
    EXPECT_EQ(rendered(u"- \n- "_s), u"{bullet,marker}•⇥{bullet}⏎{bullet,marker}•⇥");
}

TEST(MarkdownRendering, InlineAttributesCarryTheTag)
{
    EXPECT_EQ(rendered(u"> a *b* [c](u) ![d](v)"_s),
              u"{quote}a {quote,italic}b{quote} {quote,link=u}c{quote} {quote,image=v,alt=d}\U0001F5BC d");
}

TEST(MarkdownRendering, CodeAndRulesAreNotParsed)
{
    EXPECT_EQ(rendered(u"```c\n*a*\n```\n***"_s), u"{code:c}*a*⏎{horizontalRule}────────────────");
}

TEST(MarkdownRendering, AnEmptyFenceIsALineInTheMiddleAndNothingAtTheEnd)
{
    EXPECT_EQ(rendered(u"```\n```\na"_s), u"{code:}⏎{paragraph}a");
    EXPECT_EQ(rendered(u"a\n```\n```"_s), u"{paragraph}a⏎");
}

TEST(MarkdownRendering, ATableIsItsRows)
{
    EXPECT_EQ(rendered(u"a | **b**\n--- | ---\n1 | 2"_s),
              u"{tableHeader}a⇥{tableHeader,bold}b{tableHeader}⏎{tableRow}1⇥2");
}

TEST(MarkdownRendering, EmphasisMayReachOverCells)
{
    EXPECT_EQ(rendered(u"*a | b*\n---"_s), u"{tableHeader,italic}a⇥b");
}

TEST(MarkdownRendering, BlocksOneByOneAreTheWhole)
{
    GeneratedMarkdown random(9);
    for (int i = 0; i < 1000; ++i) {
        const QString markdown = random.document(random.below(20));
        AttributedText text;
        SharedText style;
        for (const Block &block : parseBlocks(markdown)) {
            TextAttributes lineBreak;
            lineBreak.blockStyle = style;
            if (style.isPresent())
                text.append(u"\n", lineBreak);
            text.append(renderBlock(block));
            style = block.style;
        }
        ASSERT_EQ(text, renderMarkdown(markdown)) << visible(markdown).toStdString();
    }
}

} // namespace Tessaline
