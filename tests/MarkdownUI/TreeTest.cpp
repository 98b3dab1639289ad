#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/ImageFlow.h"
#include "MarkdownUI/MarkdownContent.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/NodeConversion.h"
#include "MarkdownUI/NodeType.h"
#include "MarkdownUI/NodeWalk.h"
#include "MarkdownUI/Theme.h"

#include "GeneratedAnswer.h"
#include "TreeText.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm-extension_api.h>
#include <cmark-gfm.h>
#include <gtest/gtest.h>

#include <memory>
#include <QtCore/QSet>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

// --- comparing and hashing ---

/// Two trees from one text share no memory.
QList<BlockNode> blocksOf(const QString &markdown)
{
    return parseBlocks(markdown);
}

TEST(Tree, EqualTextsGiveEqualTreesAndHashes)
{
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        const QString markdown = generatedAnswer(random, 12);
        const MarkdownContent one{blocksOf(markdown)};
        const MarkdownContent other{blocksOf(markdown)};
        ASSERT_EQ(one, other);
        ASSERT_EQ(qHash(one), qHash(other));
    }
}

TEST(Tree, EveryDifferenceCounts)
{
    const QString texts[] = {u"a"_s,
                             u"b"_s,
                             u"a\nb"_s,
                             u"a  \nb"_s,
                             u"a b"_s,
                             u"`a`"_s,
                             u"<a>"_s,
                             u"*a*"_s,
                             u"**a**"_s,
                             u"~~a~~"_s,
                             u"*b*"_s,
                             u"[a](b)"_s,
                             u"[a](c)"_s,
                             u"[b](b)"_s,
                             u"![a](b)"_s,
                             u"![a](c)"_s,
                             u"# a"_s,
                             u"## a"_s,
                             u"# b"_s,
                             u"> a"_s,
                             u"> b"_s,
                             u"> > a"_s,
                             u"- a"_s,
                             u"- b"_s,
                             u"- a\n- b"_s,
                             u"- a\n\n- b"_s,
                             u"1. a"_s,
                             u"2. a"_s,
                             u"1. b"_s,
                             u"- [ ] a"_s,
                             u"- [x] a"_s,
                             u"- [ ] b"_s,
                             u"    a"_s,
                             u"```\na\n```"_s,
                             u"```c\na\n```"_s,
                             u"<p>"_s,
                             u"<p>\n\n<p>"_s,
                             u"---"_s,
                             u"|a|\n|-|"_s,
                             u"|a|\n|:-|"_s,
                             u"|b|\n|-|"_s,
                             u"|a|\n|-|\n|b|"_s,
                             u""_s,
                             u"a\n\nb"_s,
                             u"> a\n>\n> b"_s,
                             u"- > a"_s,
                             u"> - a"_s,
                             u"-"_s,
                             u"|a|b|\n|-|-|"_s,
                             u"*a* b"_s,
                             u"*a*\n\nb"_s,
                             u"- a\n  - b"_s};
    QSet<size_t> hashes;
    for (const QString &one : texts) {
        for (const QString &other : texts) {
            // Fences and indents give the same code.
            const bool isSame = one == other || (one.contains(u"    a") && other == u"```\na\n```") ||
                                (other.contains(u"    a") && one == u"```\na\n```");
            EXPECT_EQ(blocksOf(one) == blocksOf(other), isSame) << one.toStdString() << " / " << other.toStdString();
        }
        hashes.insert(qHash(MarkdownContent{blocksOf(one)}));
    }
    EXPECT_GE(hashes.size(), qsizetype(std::size(texts)) - 1);
}

TEST(Tree, TheRecordsCompareAndHashByValue)
{
    const BlockNode block = blocksOf(u"*a*"_s).first();
    const BlockNode same = blocksOf(u"*a*"_s).first();
    const BlockNode other = blocksOf(u"*b*"_s).first();

    EXPECT_EQ((RawListItem{{block}}), (RawListItem{{same}}));
    EXPECT_NE((RawListItem{{block}}), (RawListItem{{other}}));
    EXPECT_EQ(qHash(RawListItem{{block}}), qHash(RawListItem{{same}}));
    EXPECT_EQ((RawTaskListItem{true, {block}}), (RawTaskListItem{true, {same}}));
    EXPECT_NE((RawTaskListItem{true, {block}}), (RawTaskListItem{false, {same}}));
    EXPECT_NE((RawTaskListItem{true, {block}}), (RawTaskListItem{true, {other}}));
    EXPECT_EQ(qHash(RawTaskListItem{true, {block}}), qHash(RawTaskListItem{true, {same}}));
    EXPECT_NE(qHash(RawTaskListItem{true, {block}}), qHash(RawTaskListItem{false, {same}}));

    const RawTableCell cell{block.as<BlockNode::Paragraph>()->content};
    const RawTableCell sameCell{same.as<BlockNode::Paragraph>()->content};
    EXPECT_EQ((RawTableRow{{cell, cell}}), (RawTableRow{{sameCell, sameCell}}));
    EXPECT_EQ(qHash(RawTableRow{{cell}}), qHash(RawTableRow{{sameCell}}));

    const Markdown view{{{block}}, QUrl(u"a:b"_s), QUrl()};
    EXPECT_EQ(view, (Markdown{{{same}}, QUrl(u"a:b"_s), QUrl()}));
    EXPECT_NE(view, (Markdown{{{same}}, QUrl(), QUrl(u"a:b"_s)}));
    EXPECT_EQ(qHash(view), qHash(Markdown{{{same}}, QUrl(u"a:b"_s), QUrl()}));
}

TEST(Tree, ACopyStaysAsItWasWhenTheOtherChanges)
{
    InlineNode node = InlineNode::Emphasis{{InlineNode::Text{u"a"_s}}};
    const InlineNode copy = node;
    node.children()->append(InlineNode::Text{u"b"_s});

    EXPECT_EQ(copy.children()->size(), 1);
    EXPECT_NE(copy, node);
}

TEST(Tree, ANodeCanBecomeOneThatItHolds)
{
    const InlineNode inner = InlineNode::Strong{{InlineNode::Text{u"a"_s}}};
    InlineNode node = InlineNode::Emphasis{{InlineNode::Emphasis{{inner}}}};
    node = *std::as_const(node).children()->cbegin();
    EXPECT_EQ(node, InlineNode(InlineNode::Emphasis{{inner}}));
    node = std::move(*node.children()->begin());
    EXPECT_EQ(node, inner);

    BlockNode block = blocksOf(u"> > - a"_s).first();
    block = block.as<BlockNode::Blockquote>()->children.first();
    EXPECT_EQ(block, blocksOf(u"> - a"_s).first());
    block = std::move(std::get<BlockNode::Blockquote>(block.value()).children.first());
    EXPECT_EQ(block, blocksOf(u"- a"_s).first());
}

// --- nothing is lost ---

/// Every literal of the parser's tree, in order.
QStringList literalsIn(const QString &markdown)
{
    const QByteArray bytes = markdown.toUtf8();
    cmark_gfm_core_extensions_ensure_registered();
    cmark_parser *parser = cmark_parser_new(CMARK_OPT_DEFAULT);
    for (const char *name : {"autolink", "strikethrough", "tagfilter", "tasklist", "table"})
        cmark_parser_attach_syntax_extension(parser, cmark_find_syntax_extension(name));
    cmark_parser_feed(parser, bytes.constData(), size_t(bytes.size()));
    cmark_node *document = cmark_parser_finish(parser);
    QStringList literals;
    cmark_iter *walk = cmark_iter_new(document);
    while (cmark_iter_next(walk) != CMARK_EVENT_DONE) {
        const char *literal = cmark_node_get_literal(cmark_iter_get_node(walk));
        if (cmark_iter_get_event_type(walk) == CMARK_EVENT_ENTER && literal)
            literals.append(QString::fromUtf8(literal));
    }
    cmark_iter_free(walk);
    cmark_node_free(document);
    cmark_parser_free(parser);
    literals.sort();
    return literals;
}

QStringList literalsOf(const QList<BlockNode> &blocks)
{
    QStringList literals;
    const BlockNode all = BlockNode::Blockquote{blocks};
    forEachInlineList(all, [&literals](const QList<InlineNode> &inlines) {
        forEachInline(inlines, [&literals](const InlineNode &node) {
            if (const auto *text = node.as<InlineNode::Text>())
                literals.append(text->text);
            else if (const auto *code = node.as<InlineNode::Code>())
                literals.append(code->text);
            else if (const auto *html = node.as<InlineNode::Html>())
                literals.append(html->text);
        });
    });
    QList<const BlockNode *> pending{&all};
    while (!pending.isEmpty()) {
        const BlockNode &block = *pending.takeLast();
        if (const auto *code = block.as<BlockNode::CodeBlock>())
            literals.append(code->content);
        else if (const auto *html = block.as<BlockNode::HtmlBlock>())
            literals.append(html->content);
        forEachChildList(block, [&pending](const QList<BlockNode> &children) {
            for (const BlockNode &child : children)
                pending.append(&child);
        });
    }
    literals.sort();
    return literals;
}

TEST(Tree, HasEveryTextOfTheParse)
{
    std::mt19937 random(5);
    for (int i = 0; i < 300; ++i) {
        const QString markdown = generatedAnswer(random, 15);
        ASSERT_EQ(literalsOf(parseBlocks(markdown)), literalsIn(markdown)) << markdown.toStdString();
    }
    EXPECT_EQ(literalsOf(parseBlocks(ordinaryAnswer(20000))), literalsIn(ordinaryAnswer(20000)));
}

// --- depth and size ---

struct HostileRow {
    const char *name;
    QString markdown;
    qsizetype blocks; // at the top
};

class HostileText : public testing::TestWithParam<HostileRow>
{};

TEST_P(HostileText, IsReadComparedHashedRenderedAndForgotten)
{
    const QList<BlockNode> blocks = parseBlocks(GetParam().markdown);
    const QList<BlockNode> other = parseBlocks(GetParam().markdown);
    EXPECT_EQ(blocks.size(), GetParam().blocks);
    EXPECT_TRUE(blocks == other); // printed, they would need a stack
    EXPECT_EQ(qHash(MarkdownContent{blocks}), qHash(MarkdownContent{other}));

    qsizetype length = 0;
    for (const BlockNode &block : blocks) {
        const BlockNode visible = visibleBlock(block, ColorScheme::Light);
        EXPECT_TRUE(visible == block);
        forEachInlineList(visible, [&length](const QList<InlineNode> &inlines) {
            length += plainText(inlines).size();
            renderAttributedString(inlines, {}, defaultTheme().inlineTextStyles(), SoftBreak::Mode::Space, {});
            imageSources(inlines);
            paragraphForm(inlines);
        });
    }
    EXPECT_GT(length, 0);
}

QString nestedLines(QStringView prefix, int depth)
{
    QString text;
    for (int i = 0; i < depth; ++i)
        text += prefix.toString().repeated(i) + u"- a\n"_s;
    return text;
}

QString bigTable(int columns, int rows)
{
    const QString header = u"|a"_s.repeated(columns) + u"|\n"_s + u"|-"_s.repeated(columns) + u"|\n"_s;
    return header + (u"|x"_s.repeated(columns) + u"|\n"_s).repeated(rows);
}

INSTANTIATE_TEST_SUITE_P(
    , HostileText,
    testing::Values(HostileRow{"TenThousandQuotes", u">"_s.repeated(10000) + u"a"_s, 1},
                    HostileRow{"AHundredThousandQuotes", u">"_s.repeated(100000) + u"a"_s, 1},
                    HostileRow{"TenThousandLists", u"- "_s.repeated(10000) + u"a"_s, 1},
                    HostileRow{"TenThousandNumberedLists", u"1. "_s.repeated(10000) + u"a"_s, 1},
                    HostileRow{"ListsByIndent", nestedLines(u"  ", 300), 1},
                    HostileRow{"AMegabyteOfAsterisks", u"a"_s + u"*"_s.repeated(1000000), 1},
                    HostileRow{"AsterisksOnBothSides", u"*"_s.repeated(20000) + u"a"_s + u"*"_s.repeated(20000), 1},
                    HostileRow{"OpenEmphasis", u"*a **b "_s.repeated(10000), 1},
                    HostileRow{"NestedEmphasis", u"*a _b "_s.repeated(5000) + u"c_ d* "_s.repeated(5000), 1},
                    HostileRow{"OpenBrackets", u"["_s.repeated(50000), 1},
                    HostileRow{"NestedImages", u"!["_s.repeated(2000) + u"a"_s + u"](b)"_s.repeated(2000), 1},
                    HostileRow{"ALineOfAMegabyte", u"word "_s.repeated(200000), 1},
                    HostileRow{"ALargeTable", bigTable(200, 200), 1},
                    HostileRow{"Backticks", u"`a``b"_s.repeated(20000), 1},
                    HostileRow{"ControlCharacters", u"\u0001\u0002\u001b[31m\u007f"_s.repeated(1000), 1},
                    HostileRow{"RightToLeftAndEmoji",
                               u"\u05e9\u05dc\u05d5\u05dd abc \U0001f468\u200d\U0001f469 "_s.repeated(1000), 1}),
    [](const auto &row) { return std::string(row.param.name); });

// --- the parser's nodes ---

TEST(NodeType, GoesByTheParsersNames)
{
    const std::pair<const char *, NodeType> rows[] = {{"document", NodeType::Document},
                                                      {"block_quote", NodeType::Blockquote},
                                                      {"list", NodeType::List},
                                                      {"item", NodeType::Item},
                                                      {"code_block", NodeType::CodeBlock},
                                                      {"html_block", NodeType::HtmlBlock},
                                                      {"custom_block", NodeType::CustomBlock},
                                                      {"paragraph", NodeType::Paragraph},
                                                      {"heading", NodeType::Heading},
                                                      {"thematic_break", NodeType::ThematicBreak},
                                                      {"text", NodeType::Text},
                                                      {"softbreak", NodeType::SoftBreak},
                                                      {"linebreak", NodeType::LineBreak},
                                                      {"code", NodeType::Code},
                                                      {"html_inline", NodeType::Html},
                                                      {"custom_inline", NodeType::CustomInline},
                                                      {"emph", NodeType::Emphasis},
                                                      {"strong", NodeType::Strong},
                                                      {"link", NodeType::Link},
                                                      {"image", NodeType::Image},
                                                      {"attribute", NodeType::InlineAttributes},
                                                      {"NONE", NodeType::None},
                                                      {"<unknown>", NodeType::Unknown},
                                                      {"strikethrough", NodeType::Strikethrough},
                                                      {"table", NodeType::Table},
                                                      {"table_header", NodeType::TableHead},
                                                      {"table_row", NodeType::TableRow},
                                                      {"table_cell", NodeType::TableCell},
                                                      {"tasklist", NodeType::TaskListItem},
                                                      {"anything", NodeType::Unknown}};
    for (const auto &[name, type] : rows)
        EXPECT_EQ(nodeType(name), type) << name;
}

struct FreeNode {
    void operator()(cmark_node *node) const { cmark_node_free(node); }
};
using Node = std::unique_ptr<cmark_node, FreeNode>;

TEST(NodeConversion, LeavesOutWhatIsNotShown)
{
    const Node quote(cmark_node_new(CMARK_NODE_BLOCK_QUOTE));
    cmark_node_append_child(quote.get(), cmark_node_new(CMARK_NODE_CUSTOM_BLOCK));
    cmark_node *paragraph = cmark_node_new(CMARK_NODE_PARAGRAPH);
    cmark_node_append_child(quote.get(), paragraph);
    cmark_node *custom = cmark_node_new(CMARK_NODE_CUSTOM_INLINE);
    cmark_node_append_child(custom, cmark_node_new(CMARK_NODE_TEXT));
    cmark_node_append_child(paragraph, custom);
    cmark_node_append_child(paragraph, cmark_node_new(CMARK_NODE_SOFTBREAK));

    EXPECT_EQ(treeText(QList<BlockNode>{*blockOf(quote.get())}), u"quote(p(soft))"_s);
    const Node block(cmark_node_new(CMARK_NODE_CUSTOM_BLOCK));
    EXPECT_EQ(blockOf(block.get()), std::nullopt);
}

TEST(NodeConversionDeathTest, AListThatNoParserMakesEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // A quote becomes a list in the library's own way, which asks what is around it and not what is in it.
    const Node document(cmark_node_new(CMARK_NODE_DOCUMENT));
    cmark_node *list = cmark_node_new(CMARK_NODE_BLOCK_QUOTE);
    cmark_node_append_child(document.get(), list);
    ASSERT_TRUE(cmark_node_set_type(list, CMARK_NODE_LIST));
    EXPECT_DEATH(blockOf(list),
                 "Fatal error.*MarkdownUI/MarkdownParser.*cmark reported a list node without a list type\\.");

    cmark_node *other = cmark_node_new(CMARK_NODE_BLOCK_QUOTE);
    cmark_node_append_child(document.get(), other);
    cmark_node_append_child(other, cmark_node_new(CMARK_NODE_PARAGRAPH));
    ASSERT_TRUE(cmark_node_set_type(other, CMARK_NODE_LIST));
    EXPECT_DEATH(blockOf(other), "Expected a list item but got a 'paragraph' instead\\.");
}

} // namespace
