#include "MarkdownUI/CostlyText.h"
#include "GeneratedAnswer.h"
#include "MarkdownUI/GrowingContent.h"
#include "TreeText.h"

#include <gtest/gtest.h>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

struct Shape {
    const char *name;
    const char16_t *beginning;
    const char16_t *unit; // repeated
};

QString filled(const Shape &shape, qsizetype size)
{
    const QString unit = QString::fromUtf16(shape.unit);
    return QString::fromUtf16(shape.beginning) + unit.repeated(size / unit.size());
}

void PrintTo(const Shape &shape, std::ostream *out)
{
    *out << shape.name;
}

class CostlyShape : public testing::TestWithParam<Shape>
{};

TEST_P(CostlyShape, IsCostlyAndShownAsPlainText)
{
    const QString markdown = filled(GetParam(), 200'000);
    EXPECT_TRUE(isCostlyToParse(markdown));
    for (const BlockNode &block : parseBlocks(markdown))
        EXPECT_NE(block.as<BlockNode::Paragraph>(), nullptr);
}

TEST_P(CostlyShape, IsReadAsMarkdownWhileItIsShort)
{
    EXPECT_FALSE(isCostlyToParse(filled(GetParam(), 500)));
}

INSTANTIATE_TEST_SUITE_P(
    CostlyText, CostlyShape,
    testing::Values(
        Shape{"HeadersThatAreNone", u"", u"|a|b|\n|-|\n"}, Shape{"DelimiterRowsUnderText", u"", u"a\n|-|-|\n"},
        Shape{"AddressOfClosingBrackets", u"www.a", u")"}, Shape{"AddressesWithoutASpace", u"", u"www.a_"},
        Shape{"InstructionsWithoutAnEnd", u"", u"a <?"}, Shape{"InstructionsThatOtherSignsEnd", u"", u"a <?b>"},
        Shape{"SectionsWithoutAnEnd", u"", u"a <![CDATA["}, Shape{"DeclarationsOnLinesOfTheirOwn", u"", u"a <!A\n"},
        Shape{"ARowOfManyCells", u"|a|\n|-|\n", u"|"}, Shape{"ParagraphsThatEndInATable", u"", u"a\n\v-:\n"},
        Shape{"TildesBehindOpenSigns", u"", u"<~*a_"}, Shape{"LinksBehindOpenSigns", u"", u"a* [b](c) "},
        Shape{"ShortLinksBehindOpenSigns", u"[b]: c\n\n", u"a* [b] "}, Shape{"MailSigns", u"", u"a@b"},
        Shape{"UsesOfALongDefinition",
              u"[a]: wordwordwordwordwordwordwordwordwordwordwordwordwordwordwordword"
              u"wordwordwordwordwordwordwordwordwordwordwordwordwordwordwordwordword "
              u"'\n[b]:\n",
              u"[a]\n"},
        Shape{"BlankLinesInManyLists",
              u"- - - - - - - - - - - - - - - - - - - - - - - - - - - - - - - - - - - "
              u"- - - - - - - - - - - - - - - - - a\n",
              u"\n"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(CostlyText, ManyLinesOrSignsInDeepContainersAre)
{
    for (const QString &marker : {u"> "_s, u"- "_s, u"1) "_s}) {
        const QString deep = marker.repeated(20'000);
        EXPECT_TRUE(isCostlyToParse(deep + u"a\n"_s.repeated(20'000))) << marker.toStdString();
        EXPECT_TRUE(isCostlyToParse(deep + u"a*b "_s.repeated(20'000))) << marker.toStdString();
        EXPECT_TRUE(isCostlyToParse(deep + u"-.\"b"_s.repeated(20'000))) << marker.toStdString();
        EXPECT_FALSE(isCostlyToParse(deep + u"a\n\n"_s + u"a*b\n"_s.repeated(20'000))) << marker.toStdString();
    }
}

TEST(CostlyText, RowsThatHaveToBeFilledUpAre)
{
    const auto table = [](qsizetype columns, qsizetype rows, const QString &row) {
        return u"|a"_s.repeated(columns) + u'\n' + u"|-"_s.repeated(columns) + u'\n' + row.repeated(rows);
    };
    EXPECT_TRUE(isCostlyToParse(table(1000, 5000, u"|\n"_s)));
    EXPECT_FALSE(isCostlyToParse(table(10, 5000, u"|\n"_s)));
    EXPECT_FALSE(isCostlyToParse(table(200, 2000, u"|1,2"_s.repeated(200) + u'\n')));
}

TEST(CostlyText, OrdinaryTextsAreNot)
{
    const QString table = u"|a|b|c|\n|-|:-:|-|\n"_s + u"|some text|www.example.org/a_b_(c)|x|\n"_s.repeated(5000);
    const QString code = u"```php\n"_s + u"        <?php echo \"<!-- a -->\"; ?>\n"_s.repeated(5000) + u"```\n"_s;
    const QString rules = u"title: a\n---\ntext with http://example.org/a_b_c (and more)\n"_s.repeated(5000);
    const QString quotes = u"> > quoted words\n> >\n"_s.repeated(20000);
    const QString python =
        u"    if rows[0]: # it's [a] \"row\"\n        call(*rows[1:], at='a@b.org') | other\n"_s.repeated(5000);
    const QString list = u"- *see* [a_b](c_d) and x_y, z[i]\n"_s.repeated(5000);
    const QString json = u"```json\n[[0, 1],\n"_s + u"  [1, 2], {\"a_b*\": [3, [4]]},\n"_s.repeated(5000) +
                         u"]\n```\n"_s + u"[[1,2],[3,4],["_s + u"[5,6],[7],"_s.repeated(5000) + u"\n"_s;
    QString notes;
    for (int i = 0; i < 2000; ++i)
        notes.append(u"[%1]: https://example.org/a-page/%1 \"It's a title (%1)\"\n"_s.arg(i));
    for (const QString &text :
         {ordinaryAnswer(1'000'000), table, code, rules, quotes, python, list, json,
          u"see [1] and [2] "_s.repeated(2000) + notes, u"- "_s.repeated(100'000), u">"_s.repeated(500'000) + u"\n\n"_s,
          QString(500'000, u'\n'), u"*"_s.repeated(1'000'000), u"~"_s.repeated(1'000'000),
          u"- about ~5 *or* ~6, ~~not~~ x_y\n"_s.repeated(5000)})
        EXPECT_FALSE(isCostlyToParse(text)) << text.first(40).toStdString();
}

TEST(CostlyText, PlainParagraphsEndAtBlankLines)
{
    QList<BlockNode> blocks;
    QList<qsizetype> locations;
    for (const PlacedBlock &placed : plainParagraphs(u"\r\n# a  \r\n  |b|\r\n \t\n\nc <?\rd\n")) {
        blocks.append(placed.block);
        locations.append(placed.location);
    }
    EXPECT_EQ(treeText(blocks), u"p(\"# a\" soft \"|b|\") p(\"c <?\" soft \"d\")"_s);
    EXPECT_EQ(locations, (QList<qsizetype>{2, 20}));
    EXPECT_TRUE(plainParagraphs(u" \n\n").isEmpty());
}

TEST(CostlyText, WhatStoodBeforeItGrewStaysAsItWas)
{
    GrowingContent content;
    const QString beginning = u"# A heading\n\nwords\n\n"_s;
    content.update(beginning + u"a <?"_s);
    content.update(beginning + u"a <?"_s.repeated(50'000));
    ASSERT_EQ(content.blocks().size(), 3);
    EXPECT_EQ(treeText(content.blocks().first(2)), u"h1(\"A heading\") p(\"words\")"_s);
}

} // namespace
