#include "editing/WYSIWYGEditor.h"

#include "editing/MarkdownRendering.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct OddText {
    const char *name;
    QString markdown;
};

void PrintTo(const OddText &odd, std::ostream *out)
{
    *out << odd.name;
}

QString deepList()
{
    QString list;
    for (int depth = 0; depth < 100; ++depth)
        list += QString(2 * depth, u' ') + u"- item %1\n\n"_s.arg(depth);
    return list;
}

class WYSIWYGEditorOddText : public testing::TestWithParam<OddText>
{};

} // namespace

TEST_P(WYSIWYGEditorOddText, KeepsEveryParagraphThroughEditsAndUndo)
{
    OpenFormattedEditor open(GetParam().markdown);
    const AttributedText shown = open.attributed();
    ASSERT_EQ(shown, renderMarkdown(GetParam().markdown));

    // In every paragraph, from the last to the first, a letter and a Return come and go.
    qsizetype position = shown.size();
    for (int i = 0; i < 12 && position >= 0; ++i) {
        open.putCaret(position);
        open.type(u"x"_s);
        open.press(Qt::Key_Return);
        position = position == 0 ? -1 : shown.text().lastIndexOf(u'\n', position - 1);
    }
    while (open.view().document().canUndo())
        open.undo();

    EXPECT_EQ(open.attributed(), shown);
    EXPECT_EQ(renderMarkdown(open.markdown()), shown) << open.markdown().toStdString();
}

namespace {

const OddText kOddTexts[] = {
    {"AListOfDepthOneHundred", deepList()},
    {"LineEndsOfAnotherSystem", u"# a\r\n\r\n* b\r\n* c\r\n\r\nd  \r\ne\r\n"_s},
    {"LineEndsOfAllKinds", u"# a\r- b\n\r- c\r\r\nd\n\n\re"_s},
    {"MarkersOnly", u"- \n* \n1. \n2. \n- [ ] \n- [x] "_s},
    {"MarkersThatAreNone", u"#\n\n-\n\n1.\n\n>\n\n- [ ]x\n\n*x\n\n|"_s},
    {"EmptyHeadingsBetweenText", u"# \n## \na\n### \nb"_s},
    {"AFenceThatIsNotClosed", u"a\n\n```js\nb\n\n# c\n- d"_s},
    {"FencesOnly", u"```\n```\n```a\n```\n```b\n\nx"_s},
    {"ATableOfOneRow", u"a | b\n---\n"_s},
    {"ATableWithRaggedRows", u"|a|b|\n|---|\n|1|2|3|4|5|6|7|\n||\n|x|y\n"_s},
    {"DecomposedLetters", u"# e\u0301\n\n- a\u0308o\u0308\n\n*\u0301 [\u0301 `\u0301"_s},
    {"TextFromRightToLeft", u"# שלום\n\n- עולם **מודגש**\n\n- [ ] abc שלום"_s},
    {"AByteOrderMark", u"\uFEFF# a\n\n- b"_s},
    {"SeparatorsOfOtherKinds", u"a\u0085b\n\nc\u000Bd\n\n- e\u000Cf"_s},
    {"AVeryLongLine", u"words **and** `code` "_s.repeated(5000)},
    {"AVeryLongWord", QString(100'000, u'x')},
    {"SignsOfEveryKind", u"\\\\ \\* \\` \\[ \\] * ` [ ] ![ ]( ) _ ~ < > &"_s},
    {"ALinkWithoutATextOrATarget", u"a [](u) b [c]() d ![](s) e"_s},
    {"RulesOnly", u"---\n***\n___"_s},
    {"QuotesAndListsInTurns", u"> a\n- b\n> c\n1. d\n> e"_s},
};

std::string nameOf(const testing::TestParamInfo<OddText> &row)
{
    return row.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Texts, WYSIWYGEditorOddText, testing::ValuesIn(kOddTexts), nameOf);

TEST(WYSIWYGEditorComposing, ANewVersionFromOutsideKeepsTheComposition)
{
    OpenFormattedEditor open(u"one\n\ntwo"_s);
    open.putCaretAtEnd();
    open.compose(u"に"_s);

    open.setMarkdown(u"zero\n\none\n\ntwo"_s);

    EXPECT_EQ(open.shown(), u"zero\none\ntwo"_s);
    open.commit(u"日"_s);
    EXPECT_EQ(open.markdown(), u"zero\n\non日e\n\ntwo"_s) << "the caret keeps its number";
}

TEST(WYSIWYGEditorComposing, AVersionFromOutsideThatEndsBeforeTheCompositionKeepsIt)
{
    OpenFormattedEditor open(u"one\n\ntwo"_s);
    open.putCaretAtEnd();
    open.compose(u"に"_s);

    open.setMarkdown(u"a"_s);
    open.settle();
    open.compose(u"にほ"_s);
    open.settle();
    open.commit(u"日本"_s);

    EXPECT_EQ(open.markdown(), u"a日本"_s);
}

TEST(WYSIWYGEditorComposing, AFormatCommandWhileComposingLosesNothing)
{
    OpenFormattedEditor open(u"one\n\ntwo"_s);
    open.putCaretAtEnd();
    open.compose(u"に"_s);

    open.format(u"bullet"_s);
    open.commit(u"日"_s);

    EXPECT_EQ(open.markdown(), u"one\n\n- two日"_s);
}

TEST(WYSIWYGEditorComposing, AnEditorThatGoesWhileComposingWritesNothing)
{
    auto open = std::make_unique<OpenFormattedEditor>(u"* one"_s);
    open->putCaretAtEnd();
    open->compose(u"に"_s);

    EXPECT_EQ(open->markdown(), u"* one"_s);
    open.reset();
}

} // namespace Tessaline
