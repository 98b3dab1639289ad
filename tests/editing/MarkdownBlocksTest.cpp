#include "editing/MarkdownBlocks.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Each block as AttributedTextPrinter.h describes it.
QStringList blocksOf(const QString &markdown)
{
    QStringList blocks;
    for (const Block &block : parseBlocks(markdown))
        blocks.append(described(block));
    return blocks;
}

const QString kRule = u"horizontalRule= ────────────────"_s;

} // namespace

TEST(MarkdownBlocks, BlankTextHasNone)
{
    EXPECT_EQ(blocksOf(u""_s), QStringList());
    EXPECT_EQ(blocksOf(u"\n"_s), QStringList());
    EXPECT_EQ(blocksOf(u" \n\t\r\n\u00A0\r"_s), QStringList());
}

TEST(MarkdownBlocks, OfEachKind)
{
    EXPECT_EQ(blocksOf(u"## h\n\ntext\n\n> q\n- b\n3. n\n- [ ] o\n- [X] d\n***"_s),
              (QStringList{u"heading:2: h"_s, u"paragraph: text"_s, u"quote: q"_s, u"bullet(•⇥): b"_s,
                           u"numbered:3(3.⇥): n"_s, u"task:0(☐⇥): o"_s, u"task:1(☑⇥): d"_s, kRule}));
}

TEST(MarkdownBlocks, AllLineEndsEndLines)
{
    EXPECT_EQ(blocksOf(u"# a\r\n# b\r# c\n# d"_s),
              (QStringList{u"heading:1: a"_s, u"heading:1: b"_s, u"heading:1: c"_s, u"heading:1: d"_s}));
    EXPECT_EQ(blocksOf(u"- a\n\r- b"_s), (QStringList{u"bullet(•⇥): a"_s, u"bullet(•⇥): b"_s}));
}

TEST(MarkdownBlocks, NothingElseEndsALine)
{
    EXPECT_EQ(blocksOf(u"a\u2028# b\u2029# c\u0085# d\v# e\f# f"_s),
              (QStringList{u"paragraph: a↵# b¶# c\u0085# d\v# e\f# f"_s}));
}

TEST(MarkdownBlocks, SoftBreaksBecomeSpaces)
{
    EXPECT_EQ(blocksOf(u"a\n  b \nc "_s), (QStringList{u"paragraph: a b c"_s}));
}

TEST(MarkdownBlocks, TrailingSpacesOfALastLineStay)
{
    EXPECT_EQ(blocksOf(u"a  "_s), (QStringList{u"paragraph: a  "_s}));
    EXPECT_EQ(blocksOf(u"a  \n"_s), (QStringList{u"paragraph: a  "_s}));
}

TEST(MarkdownBlocks, TwoSpacesMakeAHardBreak)
{
    EXPECT_EQ(blocksOf(u"a  \nb"_s), (QStringList{u"paragraph: a↵b"_s}));
    EXPECT_EQ(blocksOf(u"a   \nb"_s), (QStringList{u"paragraph: a ↵b"_s}));
    EXPECT_EQ(blocksOf(u"a  \n  b"_s), (QStringList{u"paragraph: a↵  b"_s}));
}

TEST(MarkdownBlocks, AHardBreakFollowsAHardBreakOnly)
{
    EXPECT_EQ(blocksOf(u"a  \nb  \nc"_s), (QStringList{u"paragraph: a↵b↵c"_s}));
    EXPECT_EQ(blocksOf(u"a\nb  \nc"_s), (QStringList{u"paragraph: a b c"_s}));
}

TEST(MarkdownBlocks, TabsMakeNoHardBreak)
{
    EXPECT_EQ(blocksOf(u"a\t\t\nb"_s), (QStringList{u"paragraph: a⇥⇥ b"_s}));
    EXPECT_EQ(blocksOf(u"a\u0600  \nb"_s), (QStringList{u"paragraph: a\u0600   b"_s})); // one space belongs to the sign
}

TEST(MarkdownBlocks, LeadingSpacesOfAParagraphStay)
{
    EXPECT_EQ(blocksOf(u"  text"_s), (QStringList{u"paragraph:   text"_s}));
}

TEST(MarkdownBlocks, IndentedSignsAreParagraphText)
{
    EXPECT_EQ(blocksOf(u" # a\n\n  - b\n\n 1. c\n\n > d"_s),
              (QStringList{u"paragraph:  # a"_s, u"paragraph:   - b"_s, u"paragraph:  1. c"_s, u"paragraph:  > d"_s}));
}

TEST(MarkdownBlocks, AnIndentedItemContinuesAParagraph)
{
    EXPECT_EQ(blocksOf(u"a\n  - b"_s), (QStringList{u"paragraph: a - b"_s}));
    EXPECT_EQ(blocksOf(u"- a\n  - b"_s), (QStringList{u"bullet(•⇥): a"_s, u"paragraph:   - b"_s}));
}

TEST(MarkdownBlocks, EachConstructEndsAParagraph)
{
    for (const QString &line : {u"```"_s, u"  ```x"_s, u"# h"_s, u"- [ ] t"_s, u"1. n"_s, u"- b"_s, u"* b"_s, u"+ b"_s,
                                u"> q"_s, u"---"_s, u"  ***"_s, u"a|b\n---"_s, u""_s, u" \t"_s})
        EXPECT_EQ(blocksOf(u"text\n"_s + line).value(0), u"paragraph: text"_s) << line.toStdString();
    for (const QString &line : {u"#h"_s, u"-"_s, u">q"_s, u"--"_s, u"a|b"_s, u"a|b\n--"_s, u"1.n"_s})
        EXPECT_NE(blocksOf(u"text\n"_s + line).value(0), u"paragraph: text"_s) << line.toStdString();
}

TEST(MarkdownBlocks, QuotesAndItemsHaveNoLazyLines)
{
    EXPECT_EQ(blocksOf(u"> a\nb"_s), (QStringList{u"quote: a"_s, u"paragraph: b"_s}));
    EXPECT_EQ(blocksOf(u"- a\nb"_s), (QStringList{u"bullet(•⇥): a"_s, u"paragraph: b"_s}));
    EXPECT_EQ(blocksOf(u"# a\nb"_s), (QStringList{u"heading:1: a"_s, u"paragraph: b"_s}));
}

TEST(MarkdownBlocks, ThereAreNoUnderlinedHeadings)
{
    EXPECT_EQ(blocksOf(u"Title\n---"_s), (QStringList{u"paragraph: Title"_s, kRule}));
    EXPECT_EQ(blocksOf(u"Title\n==="_s), (QStringList{u"paragraph: Title ==="_s}));
}

TEST(MarkdownBlocks, RulesMayBeIndented)
{
    EXPECT_EQ(blocksOf(u"  * * *  "_s), (QStringList{kRule}));
    EXPECT_EQ(blocksOf(u"- - -"_s), (QStringList{kRule}));
    EXPECT_EQ(blocksOf(u"***"_s), (QStringList{kRule}));
    EXPECT_EQ(blocksOf(u"- - x"_s), (QStringList{u"bullet(•⇥): - x"_s}));
}

TEST(MarkdownBlocks, NumbersArePrintedAfresh)
{
    EXPECT_EQ(blocksOf(u"007. x\n-5. y\n+2. z\n9. w"_s),
              (QStringList{u"numbered:7(7.⇥): x"_s, u"numbered:-5(-5.⇥): y"_s, u"numbered:2(2.⇥): z"_s,
                           u"numbered:9(9.⇥): w"_s}));
}

TEST(MarkdownBlocks, ABulletMayBeEmpty)
{
    EXPECT_EQ(blocksOf(u"- "_s), (QStringList{u"bullet(•⇥): "_s}));
    EXPECT_EQ(blocksOf(u"-"_s), (QStringList{u"paragraph: -"_s}));
    EXPECT_EQ(blocksOf(u"- [ ]"_s), (QStringList{u"bullet(•⇥): [ ]"_s}));
}

TEST(MarkdownBlocks, EachLineOfCodeIsABlock)
{
    EXPECT_EQ(blocksOf(u"```js\n  a \n\n# b\n```\nc"_s),
              (QStringList{u"code:js=   a "_s, u"code:js= "_s, u"code:js= # b"_s, u"paragraph: c"_s}));
}

TEST(MarkdownBlocks, AFenceMayBeIndentedAndCloseWithText)
{
    EXPECT_EQ(blocksOf(u"  ```js title\na\n\t```` and more\nb"_s),
              (QStringList{u"code:js title= a"_s, u"paragraph: b"_s}));
    EXPECT_EQ(blocksOf(u"````\na\n```"_s), (QStringList{u"code:`= a"_s}));
}

TEST(MarkdownBlocks, AFenceWithAMarkOnItIsNone)
{
    EXPECT_EQ(blocksOf(u"```\u0301\na"_s), (QStringList{u"paragraph: ```\u0301 a"_s}));
    EXPECT_EQ(blocksOf(u"```\na\n```\u0301"_s), (QStringList{u"code:= a"_s, u"code:= ```\u0301"_s}));
}

TEST(MarkdownBlocks, AnUnclosedFenceTakesTheRest)
{
    EXPECT_EQ(blocksOf(u"```\na\n\n# b"_s), (QStringList{u"code:= a"_s, u"code:= "_s, u"code:= # b"_s}));
    EXPECT_EQ(blocksOf(u"```\na\n"_s), (QStringList{u"code:= a"_s, u"code:= "_s})); // the empty last line too
}

TEST(MarkdownBlocks, AnEmptyFenceIsOneEmptyLine)
{
    EXPECT_EQ(blocksOf(u"```\n```"_s), (QStringList{u"code:= "_s}));
    EXPECT_EQ(blocksOf(u"a\n```"_s), (QStringList{u"paragraph: a"_s, u"code:= "_s}));
}

TEST(MarkdownBlocks, ATableIsItsLinesWithTabs)
{
    EXPECT_EQ(blocksOf(u"| a | b |\n| --- | :---: |\n| 1 | 2 |\n|3|4|5|\nx"_s),
              (QStringList{u"tableHeader: a⇥b"_s, u"tableRow: 1⇥2"_s, u"tableRow: 3⇥4⇥5"_s, u"paragraph: x"_s}));
}

TEST(MarkdownBlocks, ATableNeedsNoOuterPipesAndOneDelimiter)
{
    EXPECT_EQ(blocksOf(u"a | b\n---"_s), (QStringList{u"tableHeader: a⇥b"_s}));
    EXPECT_EQ(blocksOf(u"- a | b\n---"_s), (QStringList{u"tableHeader: - a⇥b"_s})); // before it is an item
    EXPECT_EQ(blocksOf(u"# a | b\n---"_s), (QStringList{u"tableHeader: # a⇥b"_s}));
}

TEST(MarkdownBlocks, ATableNeedsANextLine)
{
    EXPECT_EQ(blocksOf(u"a|b"_s), (QStringList{u"paragraph: a|b"_s}));
    EXPECT_EQ(blocksOf(u"a|b\n"_s), (QStringList{u"paragraph: a|b"_s}));
}

TEST(MarkdownBlocks, AHeaderOfOneCellOpensNoTable)
{
    EXPECT_EQ(blocksOf(u"| a |\n| --- |"_s), (QStringList{u"paragraph: | a | | --- |"_s}));
}

TEST(MarkdownBlocks, AShortDelimiterOpensNoTable)
{
    EXPECT_EQ(blocksOf(u"| a | b |\n| -- | --- |"_s), (QStringList{u"paragraph: | a | b | | -- | --- |"_s}));
}

TEST(MarkdownBlocks, ARowOfOneCellEndsATable)
{
    EXPECT_EQ(blocksOf(u"a|b\n---\n1|2\n| 3 |\n4|5"_s),
              (QStringList{u"tableHeader: a⇥b"_s, u"tableRow: 1⇥2"_s, u"paragraph: | 3 | 4|5"_s}));
}

TEST(MarkdownBlocks, ARowMayLookLikeAnything)
{
    EXPECT_EQ(blocksOf(u"a|b\n---\n# 1 | 2\n---|---"_s),
              (QStringList{u"tableHeader: a⇥b"_s, u"tableRow: # 1⇥2"_s, u"tableRow: ---⇥---"_s}));
}

TEST(MarkdownBlocks, ABackslashProtectsNoPipe)
{
    EXPECT_EQ(blocksOf(u"a\\|b | c\n---"_s), (QStringList{u"tableHeader: a\\⇥b⇥c"_s}));
}

TEST(MarkdownBlocks, APipeWithAMarkPartsNothing)
{
    EXPECT_EQ(blocksOf(u"a|\u0301b\n---"_s), (QStringList{u"paragraph: a|\u0301b"_s, kRule}));
}

TEST(MarkdownBlocks, ReadingCanBeginWhereverAnEarlierReadingStood)
{
    GeneratedMarkdown random(7);
    for (int i = 0; i < 500; ++i) {
        const QString markdown = random.oneIn(2) ? random.noise(random.below(60)) : random.document(random.below(20));
        const QList<Block> all = parseBlocks(markdown);
        QList<Block> before;
        for (MarkdownBlockReader reader(markdown); !reader.atEnd(); reader.readNext(before)) {
            QList<Block> blocks = before;
            for (MarkdownBlockReader rest(markdown, reader.position()); !rest.atEnd();)
                rest.readNext(blocks);
            ASSERT_EQ(blocks, all) << visible(markdown).toStdString() << " from " << reader.position();
        }
    }
}

TEST(MarkdownBlocks, AConstructDependsOnTwoLinesBehindItAtMost)
{
    GeneratedMarkdown random(8);
    for (int i = 0; i < 500; ++i) {
        const QString markdown = random.document(2 + random.below(20));
        for (MarkdownBlockReader reader(markdown); !reader.atEnd();) {
            const qsizetype start = reader.position();
            QList<Block> blocks;
            reader.readNext(blocks);
            // Two lines further the text is another one.
            qsizetype cut = std::min(reader.position(), markdown.size());
            for (int line = 0; line < 2 && cut < markdown.size(); ++line) {
                while (cut < markdown.size() && markdown.at(cut) != u'\n' && markdown.at(cut) != u'\r')
                    ++cut;
                cut += markdown.mid(cut, 2) == u"\r\n"_s ? 2 : 1;
            }
            if (cut >= markdown.size())
                continue;
            const QString other = markdown.first(cut) + random.document(3);
            QList<Block> again;
            MarkdownBlockReader otherReader(other, start);
            otherReader.readNext(again);
            ASSERT_EQ(again, blocks) << visible(markdown).toStdString() << " at " << start;
            ASSERT_EQ(otherReader.position(), reader.position());
        }
    }
}

} // namespace Tessaline
