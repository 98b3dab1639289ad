#include "editing/MarkdownWriting.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextAttributes tagged(const QString &tag)
{
    TextAttributes attributes;
    attributes.blockStyle = SharedText(tag);
    return attributes;
}

struct Line {
    QString tag;
    QString text;
};

/// Paragraphs of plain text, with a line break behind each but the last.
AttributedText paragraphs(const QList<Line> &lines)
{
    AttributedText text;
    for (qsizetype i = 0; i < lines.size(); ++i)
        text.append(i + 1 < lines.size() ? QString(lines.at(i).text + u'\n') : lines.at(i).text,
                    tagged(lines.at(i).tag));
    return text;
}

QString written(const QList<Line> &lines)
{
    return serializeMarkdown(paragraphs(lines));
}

} // namespace

TEST(MarkdownWriting, TheEmptyTextIsEmpty)
{
    EXPECT_EQ(serializeMarkdown({}), u"");
}

TEST(MarkdownWriting, OneLineBreakIsOneEmptyParagraph)
{
    EXPECT_EQ(serializeMarkdown(AttributedText(u"\n")), u"");
    EXPECT_EQ(serializeMarkdown(AttributedText(u"\n\n")), u"\n\n");
}

TEST(MarkdownWriting, OfEachTag)
{
    const std::pair<QString, QString> rows[] = {
        {u"paragraph"_s, u"a"_s},
        {u"heading:1"_s, u"# a"_s},
        {u"heading:6"_s, u"###### a"_s},
        {u"heading:9"_s, u"###### a"_s},
        {u"heading:0"_s, u"# a"_s},
        {u"heading:-3"_s, u"# a"_s},
        {u"heading:"_s, u"# a"_s},
        {u"heading:x"_s, u"# a"_s},
        {u"heading:99999999999999999999"_s, u"# a"_s},
        {u"quote"_s, u"> a"_s},
        {u"bullet"_s, u"- a"_s},
        {u"numbered:7"_s, u"7. a"_s},
        {u"numbered:-7"_s, u"-7. a"_s},
        {u"numbered:x"_s, u"x. a"_s},
        {u"task:0"_s, u"- [ ] a"_s},
        {u"task:1"_s, u"- [x] a"_s},
        {u"task:2"_s, u"a"_s},
        {u"horizontalRule"_s, u"---"_s},
        {u"code:"_s, u"```\na\n```"_s},
        {u"code:js x"_s, u"```js x\na\n```"_s},
        {u"tableHeader"_s, u"| a |\n| --- |"_s},
        {u"tableRow"_s, u"a"_s},
        {u"unknown"_s, u"a"_s},
        {u""_s, u"a"_s},
    };
    for (const auto &[tag, markdown] : rows)
        EXPECT_EQ(written({{tag, u"a"_s}}), markdown) << tag.toStdString();
}

TEST(MarkdownWriting, TextWithoutATagIsAParagraph)
{
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a\nb")), u"a\n\nb");
}

TEST(MarkdownWriting, TheFirstCharacterDecidesTheTag)
{
    AttributedText text(u"a", tagged(u"quote"_s));
    text.append(u"b\n", tagged(u"heading:1"_s));
    text.append(u"\n", tagged(u"bullet"_s));
    text.append(u"c", tagged(u"quote"_s));
    EXPECT_EQ(serializeMarkdown(text), u"> ab\n\n- \n\n> c");
}

TEST(MarkdownWriting, AllLineBreaksEndParagraphs)
{
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a\rb\r\nc\u2029d")), u"a\n\nb\n\nc\u2029\n\nd");
}

TEST(MarkdownWriting, LineSeparatorsAndOtherControlsEndNone)
{
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a\u2028b\u0085c\vd")), u"a  \nb\u0085c\vd");
}

TEST(MarkdownWriting, ALastLineBreakIsDropped)
{
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a\n")), u"a");
}

TEST(MarkdownWriting, ListItemsOfAllKindsAreTight)
{
    EXPECT_EQ(written({{u"bullet"_s, u"a"_s}, {u"numbered:2"_s, u"b"_s}, {u"task:0"_s, u"c"_s}, {u"task:1"_s, u"d"_s}}),
              u"- a\n2. b\n- [ ] c\n- [x] d");
    EXPECT_EQ(written({{u"task:x"_s, u"a"_s}, {u"bullet"_s, u"b"_s}}), u"a\n- b");
}

TEST(MarkdownWriting, QuoteLinesAreTightAmongThemselves)
{
    EXPECT_EQ(written({{u"quote"_s, u"a"_s}, {u"quote"_s, u"b"_s}, {u"bullet"_s, u"c"_s}, {u"quote"_s, u"d"_s}}),
              u"> a\n> b\n\n- c\n\n> d");
}

TEST(MarkdownWriting, EverythingElseHasABlankLineBetween)
{
    EXPECT_EQ(written({{u"paragraph"_s, u"a"_s},
                       {u"paragraph"_s, u"b"_s},
                       {u"heading:1"_s, u"c"_s},
                       {u"bullet"_s, u"d"_s},
                       {u"paragraph"_s, u"e"_s}}),
              u"a\n\nb\n\n# c\n\n- d\n\ne");
}

TEST(MarkdownWriting, EmptyParagraphsAreKept)
{
    EXPECT_EQ(written({{u"paragraph"_s, u"a"_s}, {u"paragraph"_s, u""_s}, {u"paragraph"_s, u"b"_s}}), u"a\n\n\n\nb");
}

TEST(MarkdownWriting, LinesOfCodeWithTheSameTagAreOneBlock)
{
    EXPECT_EQ(written({{u"code:js"_s, u"a*"_s}, {u"code:js"_s, u""_s}, {u"code:js"_s, u"`b`"_s}}),
              u"```js\na*\n\n`b`\n```");
    EXPECT_EQ(written({{u"code:js"_s, u"a"_s}, {u"code:"_s, u"b"_s}, {u"paragraph"_s, u"c"_s}}),
              u"```js\na\n```\n\n```\nb\n```\n\nc");
}

TEST(MarkdownWriting, CodeIgnoresInlineAttributes)
{
    TextAttributes attributes = tagged(u"code:"_s);
    attributes.bold = attributes.inlineCode = true;
    attributes.linkDestination = SharedText(u"u"_s);
    attributes.imageSource = SharedText(u"s"_s);
    EXPECT_EQ(serializeMarkdown(AttributedText(u"a\u2028b", attributes)), u"```\na\u2028b\n```");
}

TEST(MarkdownWriting, AMarkerInCodeIsLeftOut)
{
    TextAttributes marker = tagged(u"code:"_s);
    marker.generatedMarker = true;
    EXPECT_EQ(serializeMarkdown(AttributedText(u"•\t", marker)), u"```\n\n```");
}

TEST(MarkdownWriting, TheCharactersOfARuleAreIgnored)
{
    EXPECT_EQ(written({{u"horizontalRule"_s, u"typed"_s}, {u"horizontalRule"_s, u""_s}, {u"paragraph"_s, u"a"_s}}),
              u"---\n\n---\n\na");
}

TEST(MarkdownWriting, ATableIsItsHeaderAndItsRows)
{
    EXPECT_EQ(written({{u"tableHeader"_s, u"a\tb"_s}, {u"tableRow"_s, u"1\t2"_s}, {u"tableRow"_s, u"\t3|4\t"_s}}),
              u"| a | b |\n| --- | --- |\n| 1 | 2 |\n|  | 3\\|4 |  |");
}

TEST(MarkdownWriting, AHeaderWithoutRowsIsATable)
{
    EXPECT_EQ(written({{u"tableHeader"_s, u"a\tb"_s}, {u"tableHeader"_s, u"c\td"_s}}),
              u"| a | b |\n| --- | --- |\n\n| c | d |\n| --- | --- |");
    EXPECT_EQ(written({{u"tableHeader"_s, u""_s}, {u"tableRow"_s, u"1"_s}}), u"|  |\n| --- |\n| 1 |");
}

TEST(MarkdownWriting, RowsWithoutAHeaderAreParagraphs)
{
    EXPECT_EQ(written({{u"paragraph"_s, u"a"_s}, {u"tableRow"_s, u"1\t2"_s}, {u"tableRow"_s, u"3|"_s}}),
              u"a\n\n1\t2\n\n3|");
}

TEST(MarkdownWriting, TablesAreNeverTight)
{
    EXPECT_EQ(written({{u"bullet"_s, u"a"_s}, {u"tableHeader"_s, u"b"_s}, {u"bullet"_s, u"c"_s}}),
              u"- a\n\n| b |\n| --- |\n\n- c");
}

TEST(MarkdownWriting, TableRowsAreFormatted)
{
    EXPECT_EQ(formatTableRow({u"a", u"", u"b|c", u"|\u0301"}), u"| a |  | b\\|c | |\u0301 |");
}

TEST(MarkdownWriting, RecordsOfParagraphs)
{
    AttributedText text = renderMarkdown(u"- a *b*\n\n```c\n*d*\n```\n\nlast");
    const QList<TextRange> ranges = Paragraphs::in(text.text(), {0, text.size()});
    ASSERT_EQ(ranges.size(), 3);
    EXPECT_EQ(paragraphRecord(text, ranges.at(0)), (ParagraphRecord{SharedText(u"bullet"_s), u"a *b*"_s}));
    EXPECT_EQ(paragraphRecord(text, ranges.at(1)), (ParagraphRecord{SharedText(u"code:c"_s), u"*d*"_s}));
    EXPECT_EQ(paragraphRecord(text, ranges.at(2)), (ParagraphRecord{SharedText(u"paragraph"_s), u"last"_s}));
    EXPECT_EQ(paragraphRecord(AttributedText(u"\n"), {0, 1}), (ParagraphRecord{SharedText(u"paragraph"_s), u""_s}));
}

TEST(MarkdownWriting, AParagraphAloneHasTheRecordThatItHasInItsText)
{
    GeneratedMarkdown random(13);
    for (int i = 0; i < 2000; ++i) {
        const AttributedText text = random.attributedText(random.below(20));
        for (const TextRange &paragraph : Paragraphs::in(text.text(), {0, text.size()}))
            ASSERT_EQ(paragraphRecord(text, paragraph), paragraphRecord(text.sliced(paragraph), {0, paragraph.length}));
    }
}

} // namespace Tessaline
