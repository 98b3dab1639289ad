#include "MarkdownUI/GrowingContent.h"
#include "MarkdownUI/MarkdownParser.h"

#include "GeneratedAnswer.h"
#include "TreeText.h"

#include <gtest/gtest.h>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

/// The first index at which two lists of blocks differ.
qsizetype firstDifference(const QList<BlockNode> &before, const QList<BlockNode> &after)
{
    qsizetype i = 0;
    while (i < before.size() && i < after.size() && before.at(i) == after.at(i))
        ++i;
    return i;
}

/// Gives the content a text and holds it against the whole text read at once.
testing::AssertionResult takes(GrowingContent &content, const QString &markdown)
{
    const QList<BlockNode> before = content.blocks();
    const qsizetype firstChanged = content.update(markdown);
    const QList<BlockNode> expected = parseBlocks(markdown);
    if (content.blocks() != expected || content.markdown() != markdown) {
        return testing::AssertionFailure()
               << "for \"" << markdown.toStdString() << "\"\n  " << treeText(content.blocks()).toStdString()
               << "\nand not\n  " << treeText(expected).toStdString();
    }
    if (firstChanged != firstDifference(before, expected))
        return testing::AssertionFailure() << firstChanged << " is not the first change of " << markdown.toStdString();
    return testing::AssertionSuccess();
}

TEST(GrowingContent, EqualsTheWholeTextAfterAnyGrowth)
{
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round) {
        const QString whole = generatedAnswer(random, 25);
        GrowingContent content;
        for (qsizetype length = 0; length < whole.size();) {
            length = std::min<qsizetype>(whole.size(), length + 1 + qsizetype(random() % 7));
            ASSERT_TRUE(takes(content, whole.first(length)));
        }
    }
}

TEST(GrowingContent, EqualsTheWholeTextAfterAnyChange)
{
    std::mt19937 random(12);
    for (int round = 0; round < 150; ++round) {
        QString text = generatedAnswer(random, 20);
        GrowingContent content;
        for (int edit = 0; edit < 12; ++edit) {
            const qsizetype location = qsizetype(random() % size_t(text.size() + 1));
            const qsizetype length = qsizetype(random() % size_t(text.size() - location + 1)) / (1 + random() % 9);
            text.replace(location, length, random() % 3 == 0 ? QString() : generatedAnswer(random, 2));
            ASSERT_TRUE(takes(content, text));
        }
    }
}

struct GrowthRow {
    const char *name;
    QStringList texts; // one after the other
};

class GrowingText : public testing::TestWithParam<GrowthRow>
{};

TEST_P(GrowingText, EqualsTheWholeText)
{
    GrowingContent content;
    for (const QString &text : GetParam().texts)
        ASSERT_TRUE(takes(content, text));
}

INSTANTIATE_TEST_SUITE_P(
    , GrowingText,
    testing::Values(
        GrowthRow{"AnUnderlineBelowAParagraph", {u"# t\n\na"_s, u"# t\n\na\n"_s, u"# t\n\na\n-"_s, u"# t\n\na\n- b"_s}},
        GrowthRow{"ATableFromTheLastLineOfAParagraph",
                  {u"x\n\na\nb|c\n"_s, u"x\n\na\nb|c\n-|"_s, u"x\n\na\nb|c\n-|-"_s, u"x\n\na\nb|c\n-|-\n1|2\n\ny"_s,
                   u"x\n\na\nb|c\n-|-\n1|2\n\ny\n\nz"_s}},
        GrowthRow{"ATableFromAParagraphBehindOtherBlocks",
                  {u"x\n\ny\n\nz\n|a|\n|-|\n|b\n|"_s, u"x\n\ny\n\nz\n|a|\n|-|\n|b\n|c"_s}},
        GrowthRow{"AListThatGoesOnAfterABlankLine", {u"- a\n\n"_s, u"- a\n\n- b"_s, u"- a\n\n- b\n\nc"_s}},
        GrowthRow{"AListThatBecomesLoose", {u"p\n\n- a\n- b\n"_s, u"p\n\n- a\n- b\n\n- c"_s}},
        GrowthRow{"AFenceThatOpensAndCloses",
                  {u"a\n\n```\n# b\n"_s, u"a\n\n```\n# b\n```"_s, u"a\n\n```\n# b\n```\n# c"_s}},
        GrowthRow{"AnHtmlBlockThatEnds", {u"<div>\na\n"_s, u"<div>\na\n\n# b"_s, u"<div>\na\n\n# b\n</div>"_s}},
        GrowthRow{"ADefinitionForLinksBeforeIt",
                  {u"[a]\n\nb\n\n"_s, u"[a]\n\nb\n\n[a]: /c"_s, u"[a]\n\nb\n\n[a]: /cd\n\ne"_s}},
        GrowthRow{"ADefinitionForLinksAfterIt", {u"[a]: /c\n\nb\n\n"_s, u"[a]: /c\n\nb\n\n[a]"_s}},
        GrowthRow{"ADefinitionInAQuoteInAList", {u"[a]\n\n"_s, u"[a]\n\n1. > [a]: /b\n\nc\n"_s}},
        GrowthRow{"ADefinitionInATask", {u"[a]\n\n"_s, u"[a]\n\n- [x] [a]: /b\n\nc\n"_s}},
        GrowthRow{"ADefinitionWithALabelOnTwoLines", {u"[a b]\n\nc\n\n[a\n"_s, u"[a b]\n\nc\n\n[a\nb]: /d\n"_s}},
        GrowthRow{"ADefinitionThatGoesAway", {u"[a]\n\n[a]: /b\n"_s, u"[a]\n\n[a] /b\n"_s, u"[a]\n\n[a] /b\n\nc"_s}},
        GrowthRow{"ALabelWithEscapes", {u"[a\\]]\n\n"_s, u"[a\\]]\n\n[a\\]]: /b\n"_s}},
        GrowthRow{"ALineEndInTwoParts",
                  {u"a\r"_s, u"a\r\n"_s, u"a\r\n\r"_s, u"a\r\n\r\n# b"_s, u"a\r\n\r\n# b\r"_s, u"a\r\n\r\n# b\r\nc"_s}},
        GrowthRow{"AByteOrderMarkInTheMiddle", {u"a\n\n\ufeff# b\nc"_s, u"a\n\n\ufeff# b\nc\n\nd"_s}},
        GrowthRow{"HalfASurrogate", {u"a\n\n\xd83d"_s, u"a\n\n\U0001f600"_s}},
        GrowthRow{"AnotherText", {u"# a\n\nb\n\nc"_s, u"# a\n\nx\n\nc"_s, u""_s, u"d"_s}},
        GrowthRow{"AnIndentedLineAfterAList", {u"- a\n\nb\n"_s, u"- a\n\nb\n    c\n"_s}}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(GrowingContent, BlocksThatCannotChangeAreTheSameInMemory)
{
    GrowingContent content;
    content.update(u"# a *b*\n\nc *d*\n\n"_s);
    const InlineNode *first = content.blocks().at(0).as<BlockNode::Heading>()->content.constData();
    content.update(u"# a *b*\n\nc *d*\n\ne"_s);
    EXPECT_EQ(content.blocks().at(0).as<BlockNode::Heading>()->content.constData(), first);

    // A link definition makes everything be read anew; what comes out the same stays.
    EXPECT_EQ(content.update(u"# a *b*\n\nc *d*\n\ne\n\n[x]: /y"_s), 3);
    EXPECT_EQ(content.blocks().at(0).as<BlockNode::Heading>()->content.constData(), first);
}

TEST(GrowingContent, TellsTheFirstBlockThatChanged)
{
    GrowingContent content;
    EXPECT_EQ(content.update(u"# a\n\nb\n"_s), 0);
    EXPECT_EQ(content.update(u"# a\n\nb\n"_s), 2);
    EXPECT_EQ(content.update(u"# a\n\nb\n\n"_s), 2);
    EXPECT_EQ(content.update(u"# a\n\nb\n\n- c"_s), 2);
    EXPECT_EQ(content.update(u"# a\n\nb\n\n- c\n- d"_s), 2);
    EXPECT_EQ(content.update(u"# a\n\nb"_s), 2);
    EXPECT_EQ(content.update(u"# a"_s), 1);
    EXPECT_EQ(content.update(u"# x"_s), 0);
    EXPECT_EQ(content.update(QString()), 0);
    EXPECT_EQ(content.blocks(), QList<BlockNode>());
}

TEST(GrowingContent, AnOrdinaryAnswerChangesAtItsEndOnly)
{
    // The fence in it holds "a[1]: b", which looks like the end of a definition and is none.
    const QString whole = ordinaryAnswer(3000);
    GrowingContent content;
    for (qsizetype length = 1; length <= whole.size(); ++length) {
        const qsizetype before = content.blocks().size();
        const qsizetype firstChanged = content.update(whole.first(length));
        // A line that has only begun can stand for a block until more of it shows that it belongs to the one before.
        ASSERT_GE(firstChanged, before - 2) << length;
    }
    EXPECT_EQ(content.blocks(), parseBlocks(whole));
}

} // namespace
