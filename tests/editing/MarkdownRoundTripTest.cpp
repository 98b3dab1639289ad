#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"

#include <gtest/gtest.h>

/// What reading Markdown and writing it again keeps, what it brings into the normal form, and what it loses by design.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString passed(const QString &markdown)
{
    return serializeMarkdown(renderMarkdown(markdown));
}

struct Row {
    QString markdown;
    QString written;
};

/// Each text becomes `written`, and stays that.
void expectNormalForms(const QList<Row> &rows)
{
    for (const Row &row : rows) {
        EXPECT_EQ(passed(row.markdown), row.written) << row.markdown.toStdString();
        EXPECT_EQ(passed(row.written), row.written) << row.markdown.toStdString();
    }
}

void expectKept(const QStringList &texts)
{
    for (const QString &text : texts)
        EXPECT_EQ(passed(text), text);
}

/// Two passes that differ.
void expectPasses(const QString &markdown, const QString &first, const QString &second)
{
    EXPECT_EQ(passed(markdown), first);
    EXPECT_EQ(passed(first), second);
}

TextAttributes tagged(const QString &tag)
{
    TextAttributes attributes;
    attributes.blockStyle = SharedText(tag);
    return attributes;
}

} // namespace

// --- kept exactly ---

TEST(MarkdownRoundTrip, KeepsLinesOfCodeAndTheInfoText)
{
    expectKept({u"```js title\n  a  \n\n\t*b* \\ ` [c](d)\n# e\n```"_s, u"```\n\n```\n\na"_s});
}

TEST(MarkdownRoundTrip, KeepsDestinationsAndSources)
{
    expectKept({u"[a](b c \"d\" \\e*f_g)"_s, u"![a](b c \"d\" \\e*f_g)"_s, u"[a]()"_s, u"![]()"_s});
}

TEST(MarkdownRoundTrip, KeepsNumbers)
{
    expectKept({u"3. a\n1. b\n-5. c\n0. d\n9223372036854775807. e"_s});
}

TEST(MarkdownRoundTrip, KeepsLevelsOfHeadings)
{
    expectKept({u"# a\n\n## b\n\n### c\n\n#### d\n\n##### e\n\n###### f"_s});
}

TEST(MarkdownRoundTrip, KeepsLeadingSpacesOfAParagraph)
{
    expectKept({u"  a"_s, u"\ta"_s, u"#  a"_s, u"-  a"_s, u"a  "_s});
}

TEST(MarkdownRoundTrip, KeepsTheOrderOfBlocks)
{
    expectKept({u"# a\n\nb\n\n- c\n1. d\n- [ ] e\n- [x] f\n\n> g\n> h\n\n---\n\n```\ni\n```\n\n| j | k |\n| --- | --- "
                u"|\n| l | m |\n\nn"_s});
}

TEST(MarkdownRoundTrip, KeepsHardBreaksOfParagraphs)
{
    expectKept({u"a  \nb  \n c"_s, u"a   \nb"_s});
}

TEST(MarkdownRoundTrip, KeepsTheAttributesOfAllInlineRuns)
{
    const QString markdown = u"a *b* **c** ***d*** `e` [f](g) ![h](i) **[j](k)** *`l`* [`m`](n) ** o **"_s;
    const AttributedText text = renderMarkdown(markdown);
    EXPECT_EQ(renderMarkdown(serializeMarkdown(text)), text);
    expectKept({markdown});
}

TEST(MarkdownRoundTrip, KeepsEscapedSigns)
{
    expectKept({u"\\*a\\* \\`b\\` \\[c\\](d) \\\\"_s});
}

TEST(MarkdownRoundTrip, KeepsAnEmptyItem)
{
    expectKept({u"- "_s, u"- a\n- "_s, u"1. "_s, u"- [ ] "_s, u"- [x] "_s});
}

TEST(MarkdownRoundTrip, KeepsAnEmptyHeadingInTheMiddle)
{
    expectKept({u"# \n\na"_s, u"a\n\n### \n\nb"_s, u"> \n> a"_s});
}

TEST(MarkdownRoundTrip, KeepsAnEmptyFenceInTheMiddle)
{
    expectNormalForms({{u"```\n```\n\na"_s, u"```\n\n```\n\na"_s}});
}

// --- brought into the normal form ---

TEST(MarkdownRoundTrip, LineEndsBecomeLineFeedsAndTheLastOneIsDropped)
{
    expectNormalForms({{u"# a\r\n# b\r# c\n"_s, u"# a\n\n# b\n\n# c"_s}});
}

TEST(MarkdownRoundTrip, BlankLinesBecomeOne)
{
    expectNormalForms({{u"\n\na\n \n\t\n\nb\n\n\n"_s, u"a\n\nb"_s},
                       {u"- a\n\n\n- b\n\n1. c"_s, u"- a\n- b\n1. c"_s},
                       {u"> a\n\n> b"_s, u"> a\n> b"_s},
                       {u"- a\nb"_s, u"- a\n\nb"_s},
                       {u"# a\nb"_s, u"# a\n\nb"_s}});
}

TEST(MarkdownRoundTrip, ListMarkersBoxesAndRulesGetOneSpelling)
{
    expectNormalForms({{u"* a\n+ b\n* [X] c\n+ [ ] d"_s, u"- a\n- b\n- [x] c\n- [ ] d"_s},
                       {u"***\n\n_ _ _\n\n - - -"_s, u"---\n\n---\n\n---"_s}});
}

TEST(MarkdownRoundTrip, NumbersLoseZerosAndAPlus)
{
    expectNormalForms({{u"007. a\n+3. b\n-0. c"_s, u"7. a\n3. b\n0. c"_s}});
}

TEST(MarkdownRoundTrip, SoftWrappedLinesBecomeOne)
{
    expectNormalForms({{u"a\n  b \nc"_s, u"a b c"_s}});
}

TEST(MarkdownRoundTrip, TablesLosePaddingAndAlignment)
{
    expectNormalForms({{u"a|b\n:---|:---:\n1|2"_s, u"| a | b |\n| --- | --- |\n| 1 | 2 |"_s},
                       {u"|  a  |  b  |\n|-----|----:|\n|1|2|3|"_s, u"| a | b |\n| --- | --- |\n| 1 | 2 | 3 |"_s}});
}

TEST(MarkdownRoundTrip, FencesBecomePlain)
{
    expectNormalForms({{u"  ```js\na\n\t``` end"_s, u"```js\na\n```"_s}, {u"```\na"_s, u"```\na\n```"_s}});
    expectNormalForms({{u"````\na\n````"_s, u"````\na\n```"_s}}); // the fourth backtick is the info text
}

TEST(MarkdownRoundTrip, NeedlessEscapesVanish)
{
    expectNormalForms({{u"a\\b \\_c\\_"_s, u"ab _c_"_s}});
}

TEST(MarkdownRoundTrip, NestedEmphasisIsWrittenRunByRun)
{
    const QString markdown = u"**a *b* c**"_s;
    expectNormalForms({{markdown, u"**a *****b***** c**"_s}});
    EXPECT_EQ(renderMarkdown(passed(markdown)), renderMarkdown(markdown));
}

TEST(MarkdownRoundTrip, EmphasisInALinkMovesOutsideIt)
{
    expectNormalForms({{u"[**a**](u)"_s, u"**[a](u)**"_s}});
}

TEST(MarkdownRoundTrip, EmptySpansVanish)
{
    expectNormalForms({{u"a**b"_s, u"ab"_s}, {u"``"_s, u""_s}, {u"[](u)a"_s, u"a"_s}});
}

// --- lost by design ---

TEST(MarkdownRoundTrip, TextThatLooksLikeABlockBecomesOne)
{
    expectPasses(u"\\# x"_s, u"# x"_s, u"# x"_s);
    EXPECT_EQ(described(renderMarkdown(u"\\# x")), u"{paragraph}# x");
    EXPECT_EQ(described(renderMarkdown(u"# x")), u"{heading:1}x");
    for (const QString &text : {u"- a"_s, u"1. a"_s, u"> a"_s, u"---"_s, u"# a"_s}) {
        EXPECT_EQ(serializeMarkdown(AttributedText(text, tagged(u"paragraph"_s))), text);
        EXPECT_NE(renderMarkdown(text).attributesAt(0).blockStyle, u"paragraph");
    }
}

TEST(MarkdownRoundTrip, AnExclamationMarkBeforeALinkMakesAnImage)
{
    expectPasses(u"\\![a](b)"_s, u"![a](b)"_s, u"![a](b)"_s);
    EXPECT_EQ(described(renderMarkdown(u"\\![a](b)")), u"{paragraph}!{paragraph,link=b}a");
    EXPECT_EQ(described(renderMarkdown(u"![a](b)")), u"{paragraph,image=b,alt=a}\U0001F5BC a");
}

TEST(MarkdownRoundTrip, APipeInACellPartsIt)
{
    AttributedText text(u"a|b\tc", tagged(u"tableHeader"_s));
    const QString markdown = serializeMarkdown(text);
    EXPECT_EQ(markdown, u"| a\\|b | c |\n| --- | --- |");
    // The cell ends in a backslash. It escapes the tab, which stays, and is gone itself.
    EXPECT_EQ(parseBlocks(markdown).constFirst().content, u"a\\\tb\tc");
}

TEST(MarkdownRoundTrip, ABacktickInCodeEndsIt)
{
    TextAttributes code = tagged(u"paragraph"_s);
    code.inlineCode = true;
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a`b", code)), u"`a\\`b`");
    EXPECT_EQ(described(renderMarkdown(u"`a\\`b`")), u"{paragraph,code}a\\{paragraph}b`");
}

TEST(MarkdownRoundTrip, ABracketInADescriptionGathersBackslashes)
{
    expectPasses(u"![a]b](c)"_s, u"![a\\]b](c)"_s, u"![a\\\\]b](c)"_s);
}

TEST(MarkdownRoundTrip, AParenthesisEndsADestination)
{
    TextAttributes link = tagged(u"paragraph"_s);
    link.linkDestination = SharedText(u"u(1)"_s);
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a", link)), u"[a](u(1))");
    EXPECT_EQ(described(renderMarkdown(u"[a](u(1))")), u"{paragraph,link=u(1}a{paragraph})");
}

TEST(MarkdownRoundTrip, ALinkOfSeveralRunsBecomesSeveral)
{
    expectNormalForms({{u"[a **b** c](u)"_s, u"[a ](u)**[b](u)**[ c](u)"_s}});
}

TEST(MarkdownRoundTrip, AFenceInCodeClosesIt)
{
    AttributedText text(u"a\n```\nb", tagged(u"code:"_s));
    const QString markdown = serializeMarkdown(text);
    EXPECT_EQ(markdown, u"```\na\n```\nb\n```");
    EXPECT_EQ(described(renderMarkdown(markdown)), u"{code:}a⏎{paragraph}b⏎"); // and an empty block at the end
}

TEST(MarkdownRoundTrip, AdjacentBlocksOfCodeMerge)
{
    expectNormalForms({{u"```\na\n```\n\n```\nb\n```"_s, u"```\na\nb\n```"_s},
                       {u"```a\nb\n```\n```c\nd\n```"_s, u"```a\nb\n```\n\n```c\nd\n```"_s}});
}

TEST(MarkdownRoundTrip, EmptyParagraphsDisappear)
{
    EXPECT_EQ(passed(u"a\n\n\n\nb"_s), u"a\n\nb");
}

TEST(MarkdownRoundTrip, AnEmptyLastBlockDisappears)
{
    EXPECT_EQ(passed(u"a\n\n# "_s), u"a");
    EXPECT_EQ(passed(u"a\n\n```\n```"_s), u"a");
    EXPECT_EQ(passed(u"# "_s), u"");
}

TEST(MarkdownRoundTrip, AHardBreakOutsideAParagraphEndsItsBlock)
{
    for (const QString &tag : {u"heading:1"_s, u"bullet"_s, u"quote"_s}) {
        const QString markdown = serializeMarkdown(AttributedText(u"a\u2028b", tagged(tag)));
        EXPECT_TRUE(markdown.endsWith(u"a  \nb"_s));
        EXPECT_EQ(parseBlocks(markdown).size(), 2);
        EXPECT_EQ(parseBlocks(markdown).constLast().style, u"paragraph");
    }
}

TEST(MarkdownRoundTrip, ARowOfOneCellEndsItsTable)
{
    AttributedText text(u"a\tb\n", tagged(u"tableHeader"_s));
    text.append(u"x\n", tagged(u"tableRow"_s));
    text.append(u"1\t2", tagged(u"tableRow"_s));
    const QString markdown = serializeMarkdown(text);
    EXPECT_EQ(markdown, u"| a | b |\n| --- | --- |\n| x |\n| 1 | 2 |");
    EXPECT_EQ(described(renderMarkdown(markdown)), u"{tableHeader}a⇥b⏎{paragraph}| x | | 1 | 2 |");
}

TEST(MarkdownRoundTrip, AdjacentImagesOfOneSourceBecomeOne)
{
    EXPECT_EQ(passed(u"![a](s)![b](s)![c](t)"_s), u"![a](s)![c](t)");
}

// --- everything ---

TEST(MarkdownRoundTrip, WhatWasWrittenOnceIsStableOutsideOfWhatIsLost)
{
    // Documents of whole constructs, without what the tests above lose.
    GeneratedMarkdown random(14);
    for (int i = 0; i < 3000; ++i) {
        const QString markdown = random.soundDocument(random.below(16));
        const QString once = passed(markdown);
        ASSERT_EQ(passed(once), once) << visible(markdown).toStdString();
        ASSERT_EQ(renderMarkdown(once), renderMarkdown(markdown)) << visible(markdown).toStdString();
    }
}

} // namespace Tessaline
