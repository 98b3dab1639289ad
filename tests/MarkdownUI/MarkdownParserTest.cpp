#include "MarkdownUI/MarkdownParser.h"
#include "TreeText.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

struct ParserRow {
    const char *name;
    const char16_t *markdown;
    const char *tree;
};

class MarkdownParser : public testing::TestWithParam<ParserRow>
{};

TEST_P(MarkdownParser, MakesTheTree)
{
    EXPECT_EQ(parsed(GetParam().markdown), GetParam().tree);
}

// In the trees a tilde stands for a line feed.
constexpr ParserRow kRows[] = {
    {"NothingForAnEmptyText", u"", ""},
    {"NothingForBlankLines", u" \n\n\t\n", ""},
    {"AParagraph", u"a b", R"(p("a b"))"},
    {"ASoftBreak", u"a\nb", R"(p("a" soft "b"))"},
    {"ALineBreakByBlanks", u"a  \nb", R"(p("a" hard "b"))"},
    {"ALineBreakByABackslash", u"a\\\nb", R"(p("a" hard "b"))"},
    {"HeadingsOfAllLevels", u"# 1\n## 2\n### 3\n#### 4\n##### 5\n###### 6\n",
     R"(h1("1") h2("2") h3("3") h4("4") h5("5") h6("6"))"},
    {"SevenSignsAreNoHeading", u"####### 7", R"(p("####### 7"))"},
    {"UnderlinedHeadings", u"a\n=\n\nb\n-\n", R"(h1("a") h2("b"))"},
    {"EmphasisInStrong", u"**a *b***", R"(p(strong("a " em("b"))))"},
    {"EmphasisWithinAWord", u"snake_case_name and a*b*c", R"(p("snake_case_name and a" em("b") "c"))"},
    {"Strikethrough", u"~~a~~ ~b~", R"(p(del("a") " " del("b")))"},
    {"CodeKeepsItsSigns", u"`a *b* <c>`", R"(p(code"a *b* <c>"))"},
    {"InlineHtmlAsWritten", u"a<br/>b <b>c</b>", R"(p("a" html"<br/>" "b " html"<b>" "c" html"</b>"))"},
    {"AnHtmlCommentInText", u"a <!-- b --> c", R"(p("a " html"<!-- b -->" " c"))"},
    {"ALink", u"[a *b*](/c \"title\")", R"(p(link</c>("a " em("b"))))"},
    {"ABareLink", u"see https://a.org/b.", R"(p("see " link<https://a.org/b>("https://a.org/b") "."))"},
    {"ABareLinkWithoutAScheme", u"www.a.org", R"(p(link<http://www.a.org>("www.a.org")))"},
    {"ALinkInAngleBrackets", u"<https://a.org>", R"(p(link<https://a.org>("https://a.org")))"},
    {"ALinkByItsDefinition", u"[a][b]\n\n[b]: /c\n", R"(p(link</c>("a")))"},
    {"AnImage", u"![a *b*](c.png)", R"(p(image<c.png>("a " em("b"))))"},
    {"ALinkedImage", u"[![a](b.png)](/c)", R"(p(link</c>(image<b.png>("a"))))"},
    {"AQuote", u"> a\nb\n>\n> c", R"(quote(p("a" soft "b") p("c")))"},
    {"ATightList", u"- a\n- b", R"(tight-bullets[item(p("a")) item(p("b"))])"},
    {"ALooseList", u"- a\n\n- b", R"(loose-bullets[item(p("a")) item(p("b"))])"},
    {"ANestedList", u"- a\n  - b", R"(tight-bullets[item(p("a") tight-bullets[item(p("b"))])])"},
    {"AnItemWithoutContent", u"-\n- a", R"(tight-bullets[item() item(p("a"))])"},
    {"ANumberedListFromItsFirstNumber", u"7. a\n9. b", R"(tight-numbers7[item(p("a")) item(p("b"))])"},
    {"ANumberedListFromZero", u"0) a", R"(tight-numbers0[item(p("a"))])"},
    {"TheLargestNumber", u"999999999. a", R"(tight-numbers999999999[item(p("a"))])"},
    {"TasksWithoutTheirMarkers", u"- [ ] a\n- [x] b\n- [X] c",
     R"(tight-tasks[open(p("a")) done(p("b")) done(p("c"))])"},
    {"AListWithSomeTasks", u"- [x] a\n- b", R"(tight-tasks[done(p("a")) open(p("b"))])"},
    {"NumberedTasksAreANumberedList", u"1. [x] a", R"(tight-numbers1[item(p("a"))])"},
    {"FencedCode", u"```c++ x=y\n a\n\nb\n```\n", R"(code<c++ x=y>" a~~b~")"},
    {"FencedCodeWithoutAnInfo", u"```\na\n```", R"(code"a~")"},
    {"FencedCodeThatIsNotClosed", u"~~~swift\nlet", R"(code<swift>"let~")"},
    {"IndentedCode", u"    a\n      b\n", R"(code"a~  b~")"},
    {"EmptyCode", u"```\n```", R"(code"")"},
    {"AnHtmlBlock", u"<div>\n*a*\n</div>\n\nb", R"(html"<div>~*a*~</div>~" p("b"))"},
    {"AScriptIsAnHtmlBlock", u"<script>a\n\nb</script>", R"(html"<script>a~~b</script>~")"},
    {"AThematicBreak", u"a\n\n---\n***", R"(p("a") rule rule)"},
    {"ATable", u"|a|b|c|d|\n|-|:-|:-:|-:|\n|1|*2*|3|4|", R"(table<-lcr>["a"|"b"|"c"|"d"]["1"|em("2")|"3"|"4"])"},
    {"RowsThatAreShortOrLong", u"a|b\n-|-\n1\n1|2|3", R"(table<-->["a"|"b"]["1"|]["1"|"2"])"},
    {"ATableWithoutRows", u"a|b\n-|-", R"(table<-->["a"|"b"])"},
    {"ATableTakesItsHeaderFromAParagraph", u"x\na|b\n-|-", R"(p("x") table<-->["a"|"b"])"},
    {"APipeInACell", u"|a\\|b|\n|-|", R"(table<->["a|b"])"},
    {"AnUnfinishedTableIsText", u"|a|b|\n|-", R"(p("|a|b|" soft "|-"))"},
    {"AnUnfinishedLinkIsText", u"[a](b", R"(p("[a](b"))"},
    {"AnUnfinishedEmphasisIsText", u"**a", R"(p("**a"))"},
    {"Entities", u"&amp; &copy; &#65; &nope;", "p(\"& \u00a9 A &nope;\")"},
    {"OldLineEnds", u"a\r\rb\r\nc", R"(p("a") p("b" soft "c"))"},
    {"AByteOrderMarkAtTheStart", u"\ufeff# a", R"(h1("a"))"},
    {"Footnotes", u"a[^1]\n\n[^1]: b", R"(p("a" link<b>("^1")))"},
    {"RightToLeftAndEmoji", u"- \u05d0 \U0001f469\u200d\U0001f680",
     "tight-bullets[item(p(\"\u05d0 \U0001f469\u200d\U0001f680\"))]"},
};

INSTANTIATE_TEST_SUITE_P(, MarkdownParser, testing::ValuesIn(kRows),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(MarkdownParserText, ZeroAndHalfASurrogateBecomeSignsThatStandForThem)
{
    const QString zero = u"a"_s + QChar(0) + u'b';
    EXPECT_EQ(parsed(zero), "p(\"a\ufffdb\")");

    const QList<BlockNode> half = parseBlocks(u"a"_s + QChar(0xd800) + u'b');
    ASSERT_EQ(half.size(), 1);
    EXPECT_EQ(plainText(half.first().as<BlockNode::Paragraph>()->content).size(), 3);
}

TEST(MarkdownParserText, ControlCharactersStay)
{
    EXPECT_EQ(parsed(u"a\u0001b\u001bc\u007f"), "p(\"a\u0001b\u001bc\u007f\")");
}

TEST(MarkdownParserText, TheInfoOfAFenceIsAbsentWithoutOne)
{
    EXPECT_EQ(parseBlocks(u"```\na\n```").first().as<BlockNode::CodeBlock>()->fenceInfo, std::nullopt);
    EXPECT_EQ(parseBlocks(u"    a").first().as<BlockNode::CodeBlock>()->fenceInfo, std::nullopt);
    EXPECT_EQ(parseBlocks(u"```c\na\n```").first().as<BlockNode::CodeBlock>()->fenceInfo, u"c"_s);
}

TEST(MarkdownParserText, BlocksAreFoundAtTheirLines)
{
    const QList<PlacedBlock> blocks = parsePlacedBlocks(u"\n# a\r\n\rb\nc\n\n\U0001f600\n- d");
    QList<qsizetype> locations;
    for (const PlacedBlock &block : blocks)
        locations.append(block.location);
    EXPECT_EQ(locations, (QList<qsizetype>{1, 7, 12, 15}));
}

TEST(MarkdownParserText, AParagraphAndTheTableThatTookItsLastLineHaveOnePlace)
{
    const QList<PlacedBlock> blocks = parsePlacedBlocks(u"a\n\nb\nc|d\n-|-\n");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks.at(1).location, 3);
    EXPECT_EQ(blocks.at(2).location, 3);
}

TEST(MarkdownParserText, SeveralThreadsCanParseAtOnce)
{
    const QString markdown = u"- [x] ~~a~~ https://b.org\n\n|a|\n|-|\n"_s.repeated(50);
    const QList<BlockNode> expected = parseBlocks(markdown);
    std::array<QList<BlockNode>, 4> results;
    {
        std::vector<std::jthread> threads;
        for (QList<BlockNode> &result : results)
            threads.emplace_back([&result, &markdown] {
                for (int i = 0; i < 5; ++i)
                    result = parseBlocks(markdown);
            });
    }
    for (const QList<BlockNode> &result : results)
        EXPECT_EQ(result, expected);
}

} // namespace
