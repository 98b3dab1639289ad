#include "editing/SourceFormat.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

void PrintTo(const SourceFormat &format, std::ostream *out)
{
    *out << '"' << format.replacement.toStdString() << "\" with the caret at " << format.caretOffset;
}

namespace {

using namespace Qt::StringLiterals;

struct FormatCase {
    const char *type;
    QString empty; // what replaces an empty selection
    qsizetype caretInEmpty;
    QString filled; // what replaces "some text"; the caret goes behind it
};

class Format : public testing::TestWithParam<FormatCase>
{};

const QString kSelection = u"some text"_s;
const QString kTable = u"| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |"_s;

} // namespace

TEST_P(Format, OfNothingPutsTheCaretWhereOneTypesOn)
{
    const auto format = sourceFormat(QString::fromLatin1(GetParam().type), QString());

    ASSERT_TRUE(format);
    EXPECT_EQ(*format, (SourceFormat{GetParam().empty, GetParam().caretInEmpty}));
}

TEST_P(Format, OfASelectionPutsTheCaretBehind)
{
    const auto format = sourceFormat(QString::fromLatin1(GetParam().type), kSelection);

    ASSERT_TRUE(format);
    EXPECT_EQ(*format, (SourceFormat{GetParam().filled, GetParam().filled.size()}));
}

TEST_P(Format, CountsTheCaretInUtf16Units)
{
    const QString emoji = u"\U0001F600"_s;

    const auto format = sourceFormat(QString::fromLatin1(GetParam().type), emoji);

    ASSERT_TRUE(format);
    const QString expected = QString(GetParam().filled).replace(kSelection, emoji);
    EXPECT_EQ(*format, (SourceFormat{expected, expected.size()}));
}

INSTANTIATE_TEST_SUITE_P(SourceFormat, Format,
                         testing::Values(FormatCase{"bold", u"****"_s, 2, u"**some text**"_s}, //
                                         FormatCase{"italic", u"**"_s, 1, u"*some text*"_s},   //
                                         FormatCase{"h1", u"# "_s, 2, u"# some text"_s},       //
                                         FormatCase{"h2", u"## "_s, 3, u"## some text"_s},     //
                                         FormatCase{"h3", u"### "_s, 4, u"### some text"_s},   //
                                         FormatCase{"quote", u"> "_s, 2, u"> some text"_s},    //
                                         FormatCase{"codeInline", u"``"_s, 1, u"`some text`"_s},
                                         FormatCase{"codeBlock", u"```\n\n```"_s, 4, u"```\nsome text\n```"_s},
                                         FormatCase{"link", u"[](url)"_s, 1, u"[some text](url)"_s},
                                         FormatCase{"image", u"![](url)"_s, 2, u"![some text](url)"_s},
                                         FormatCase{"bullet", u"- "_s, 2, u"- some text"_s},       //
                                         FormatCase{"numbered", u"1. "_s, 3, u"1. some text"_s},   //
                                         FormatCase{"task", u"- [ ] "_s, 6, u"- [ ] some text"_s}, //
                                         FormatCase{"hr", u"---"_s, 3, u"---"_s},
                                         FormatCase{"table", kTable, 57, kTable}),
                         [](const auto &test) { return test.param.type; });

TEST(SourceFormat, OnlyTheStartOfSeveralLinesGetsThePrefix)
{
    const auto format = sourceFormat(u"bullet"_s, u"one\ntwo"_s);

    ASSERT_TRUE(format);
    EXPECT_EQ(format->replacement, u"- one\ntwo"_s);
}

TEST(SourceFormat, UnknownTypesGiveNothing)
{
    for (const QString &type : {u""_s, u"h4"_s, u"Bold"_s, u"bold "_s, u"strike"_s})
        EXPECT_FALSE(sourceFormat(type, kSelection)) << type.toStdString();
}

} // namespace Tessaline
