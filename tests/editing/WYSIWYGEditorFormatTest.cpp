#include "editing/WYSIWYGEditor.h"

#include "foundation/AppEvents.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QLineEdit>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A command and the Markdown that it gives.
struct Case {
    const char *name;
    QString markdown;
    QString place; // the caret stands at the bar; between two bars all is selected
    QString type;
    QString expected;
    QString shown; // with the bars as the command leaves them
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

class WYSIWYGEditorFormat : public testing::TestWithParam<Case>
{};

const QString kTable = u"| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |"_s;
const QString kTableShown = u"Header 1\tHeader 2\nCell 1\tCell 2"_s;
const QString kRule = u"────────────────"_s;

const Case kCases[] = {
    {"BoldOverASelection", u"a b c"_s, u"a |b| c"_s, u"bold"_s, u"a **b** c"_s, u"a |b| c"_s},
    {"BoldOverWhatIsBold", u"a **b** c"_s, u"a |b| c"_s, u"bold"_s, u"a b c"_s, u"a |b| c"_s},
    {"BoldOverWhatIsPartlyBold", u"a **b** c"_s, u"|a b c|"_s, u"bold"_s, u"**a b c**"_s, u"|a b c|"_s},
    {"BoldOverSeveralParagraphs", u"a\n\n> b"_s, u"|a\nb|"_s, u"bold"_s, u"**a**\n\n> **b**"_s, u"|a\nb|"_s},
    {"ItalicOverBold", u"**b**"_s, u"|b|"_s, u"italic"_s, u"***b***"_s, u"|b|"_s},
    {"CodeOverASelection", u"a b"_s, u"a |b|"_s, u"codeInline"_s, u"a `b`"_s, u"a |b|"_s},
    {"H1OnAParagraph", u"one\n\ntwo"_s, u"one\nt|wo"_s, u"h1"_s, u"one\n\n# two"_s, u"one\nt|wo"_s},
    {"H1OnAHeadingOfItsLevel", u"# one\n\ntwo"_s, u"o|ne\ntwo"_s, u"h1"_s, u"one\n\ntwo"_s, u"o|ne\ntwo"_s},
    {"H2OnAHeadingOfAnotherLevel", u"# one"_s, u"o|ne"_s, u"h2"_s, u"## one"_s, u"o|ne"_s},
    {"H3OnAListItem", u"- one\n- two"_s, u"•\to|ne\n•\ttwo"_s, u"h3"_s, u"### one\n\n- two"_s, u"o|ne\n•\ttwo"_s},
    {"QuoteOnSeveralParagraphs", u"a\n\nb\n\nc"_s, u"a\n|b\nc|"_s, u"quote"_s, u"a\n\n> b\n> c"_s, u"a\n|b\nc|"_s},
    {"CodeBlockOnSeveralParagraphs", u"a *b*\n\nc"_s, u"|a b\nc|"_s, u"codeBlock"_s, u"```\na b\nc\n```"_s,
     u"|a b\nc|"_s},
    {"CodeBlockOnCodeWithAnInfoText", u"```js\na\n```"_s, u"a|"_s, u"codeBlock"_s, u"```\na\n```"_s, u"a|"_s},
    {"CodeBlockOnCode", u"```\na\n```"_s, u"a|"_s, u"codeBlock"_s, u"a"_s, u"a|"_s},
    {"BulletOnAParagraph", u"one"_s, u"o|ne"_s, u"bullet"_s, u"- one"_s, u"•\to|ne"_s},
    {"BulletOnATask", u"- [x] one"_s, u"☑\to|ne"_s, u"bullet"_s, u"- one"_s, u"•\to|ne"_s},
    {"BulletOnABullet", u"- one\n- two"_s, u"•\to|ne\n•\ttwo"_s, u"bullet"_s, u"one\n\n- two"_s, u"o|ne\n•\ttwo"_s},
    {"NumberedCountsOnTheScreenOnly", u"a\n\nb\n\nc"_s, u"|a\nb\nc|"_s, u"numbered"_s, u"1. a\n1. b\n1. c"_s,
     u"1.\t|a\n2.\tb\n3.\tc|"_s},
    {"NumberedOnAnotherNumber", u"2. a"_s, u"2.\ta|"_s, u"numbered"_s, u"1. a"_s, u"1.\ta|"_s},
    {"NumberedInAnEmptyDocument", u""_s, u"|"_s, u"numbered"_s, u"1. "_s, u"1.\t|"_s},
    {"TaskWhereTheFirstIsDone", u"- [x] a\n- [ ] b\n\nc"_s, u"☑\t|a\n☐\tb\nc|"_s, u"task"_s,
     u"- [ ] a\n- [ ] b\n- [ ] c"_s, u"☐\t|a\n☐\tb\n☐\tc|"_s},
    {"TaskWhereTheFirstIsOpen", u"- [ ] a\n- [x] b"_s, u"☐\t|a\n☑\tb|"_s, u"task"_s, u"a\n\nb"_s, u"|a\nb|"_s},
    {"BulletOnTheEmptyLineBehindTheText", u"a"_s, u"a|"_s, u"bullet"_s, u"- a"_s, u"•\ta|"_s},
    {"LinkOverASelection", u"see here"_s, u"see |here|"_s, u"link"_s, u"see [here](url)"_s, u"see |here|"_s},
    {"LinkWithoutASelection", u"see now"_s, u"see |now"_s, u"link"_s, u"see [link](url)now"_s, u"see |link|now"_s},
    {"ImageOfASelection", u"a b"_s, u"a |b|"_s, u"image"_s, u"a ![b](url)"_s, u"a 🖼 b|"_s},
    {"ImageWithoutASelection", u"a"_s, u"a|"_s, u"image"_s, u"a![Image](url)"_s, u"a🖼 Image|"_s},
    {"RuleInAnEmptyDocument", u""_s, u"|"_s, u"hr"_s, u"---"_s, kRule + u'|'},
    {"RuleOverASelection", u"a\n\nb"_s, u"a\n|b|"_s, u"hr"_s, u"a\n\n---"_s, u"a\n"_s + kRule + u'|'},
    {"RuleInAParagraphJoinsIt", u"ab"_s, u"a|b"_s, u"hr"_s, u"a"_s + kRule + u'b', u"a"_s + kRule + u"|b"_s},
    {"RuleAtTheStartOfAParagraphTakesIt", u"ab"_s, u"|ab"_s, u"hr"_s, u"---"_s, kRule + u"|ab"_s},
    {"TableInAnEmptyDocument", u""_s, u"|"_s, u"table"_s, kTable, kTableShown + u'|'},
    {"TableInAParagraphJoinsIt", u"ab"_s, u"a|b"_s, u"table"_s, u"aHeader 1\tHeader 2\n\nCell 1\tCell 2b"_s,
     u"a"_s + kTableShown + u"|b"_s},
};

} // namespace

TEST_P(WYSIWYGEditorFormat, GivesThisMarkdown)
{
    const Case &row = GetParam();
    OpenFormattedEditor open(row.markdown);
    const QStringList parts = row.place.split(u'|');
    ASSERT_EQ(parts.join(QString()), open.shown()) << "the place is not one in what is shown";
    open.select(parts.at(0).size(), parts.at(0).size() + (parts.size() > 2 ? parts.at(1).size() : 0));

    open.format(row.type);

    EXPECT_EQ(open.markdown(), row.expected) << described(open.attributed()).toStdString();
    QString shown = open.shown();
    const TextRange selection = open.selection().range();
    shown.insert(selection.end(), u'|');
    if (!selection.isEmpty())
        shown.insert(selection.location, u'|');
    EXPECT_EQ(shown, row.shown);
    EXPECT_EQ(open.editCount(), 1);
}

INSTANTIATE_TEST_SUITE_P(Commands, WYSIWYGEditorFormat, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case> &row) { return std::string(row.param.name); });

TEST(WYSIWYGEditorCommands, ARuleOnAnEmptyParagraphAtTheEndBringsNoParagraphBehindIt)
{
    OpenFormattedEditor open(u"a"_s);
    open.putCaretAtEnd();
    open.press(Qt::Key_Return);

    open.format(u"hr"_s);

    EXPECT_EQ(open.shown(), u"a\n"_s + kRule);
    EXPECT_EQ(open.attributed().attributesAt(2).blockStyle, u"horizontalRule");
    EXPECT_EQ(open.markdown(), u"a\n\n---"_s);
}

TEST(WYSIWYGEditorCommands, AListBegunInAnEmptyDocumentIsTypedInto)
{
    OpenFormattedEditor open;

    open.format(u"task"_s);
    open.type(u"a"_s);
    open.press(Qt::Key_Return);
    open.type(u"b"_s);

    EXPECT_EQ(open.markdown(), u"- [ ] a\n- [ ] b"_s);
}

TEST(WYSIWYGEditorCommands, AListIsEndedByItsCommandOnTheEmptyItem)
{
    OpenFormattedEditor open(u"- a\n\nbelow"_s);
    open.putCaretBehind(u"a"_s);
    open.press(Qt::Key_Return);

    open.format(u"bullet"_s);
    open.type(u"text"_s);

    EXPECT_EQ(open.markdown(), u"- a\n\ntext\n\nbelow"_s);
}

TEST(WYSIWYGEditorCommands, AtTheEndOfTheTextAListIsEndedByItsCommandOnTheTypedItem)
{
    OpenFormattedEditor open(u"- a"_s);
    open.putCaretAtEnd();
    open.press(Qt::Key_Return);

    open.format(u"bullet"_s); // the line is empty then, and the line break above it is an item's
    open.type(u"text"_s);
    EXPECT_EQ(open.markdown(), u"- a\n- text"_s);
    open.format(u"bullet"_s);

    EXPECT_EQ(open.markdown(), u"- a\n\ntext"_s);
}

TEST(WYSIWYGEditorCommands, ABulletOnTheEmptyLastLineLeavesTheParagraphAboveAlone)
{
    OpenFormattedEditor open(u"a"_s);
    open.putCaretAtEnd();
    open.press(Qt::Key_Return);

    open.format(u"bullet"_s);

    EXPECT_EQ(open.markdown(), u"a\n\n- "_s);
}

TEST(WYSIWYGEditorCommands, AnInlineToggleWithoutASelectionHasNoLastingEffect)
{
    OpenFormattedEditor open(u"* a b"_s);
    open.putCaretBehind(u"a"_s);

    open.format(u"bold"_s);
    open.type(u"x"_s);

    EXPECT_EQ(open.markdown(), u"- ax b"_s);
}

TEST(WYSIWYGEditorCommands, TypingReplacesTheTextOfANewLink)
{
    OpenFormattedEditor open(u"see "_s);
    open.putCaretAtEnd();

    open.press(Qt::Key_K, Qt::ControlModifier);
    open.type(u"docs"_s);

    EXPECT_EQ(open.markdown(), u"see [docs](url)"_s);
}

TEST(WYSIWYGEditorCommands, TextTypedBehindANewImageIsNoPartOfIt)
{
    OpenFormattedEditor open;

    open.format(u"image"_s);
    open.type(u" x"_s);

    EXPECT_EQ(open.markdown(), u"![Image](url) x"_s);
}

TEST(WYSIWYGEditorCommands, TheWritersKeysPostTheEventsOfTheButtons)
{
    OpenFormattedEditor open(u"a b c"_s);
    QStringList posted;
    open.events.observe(AppEvents::kInsertMarkdownFormat, &open.editor, [&posted](const QVariantMap &userInfo) {
        posted.append(userInfo.value(AppEvents::kType).toString());
    });
    open.select(u"b"_s);

    open.press(Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(open.markdown(), u"a **b** c"_s);
    open.press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(open.markdown(), u"a ***b*** c"_s);
    open.press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(open.markdown(), u"a ***[b](url)*** c"_s);

    EXPECT_EQ(posted, (QStringList{u"bold"_s, u"italic"_s, u"link"_s}));
}

TEST(WYSIWYGEditorCommands, ACommandWithTheFocusElsewhereDoesNothing)
{
    OpenFormattedEditor open(u"* text"_s);
    open.select(2, 6);
    QLineEdit other(&open.editor);
    other.show();
    other.setFocus();

    open.format(u"bold"_s);
    open.format(u"table"_s);

    EXPECT_EQ(open.editCount(), 0);
    EXPECT_EQ(open.shown(), u"•\ttext"_s);
}

TEST(WYSIWYGEditorCommands, TheEditorIsStillTheOneToTakeCommandsWhileItsWindowIsNotTheActiveOne)
{
    OpenFormattedEditor open(u"text"_s);
    open.select(u"text"_s);
    QLineEdit other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    ASSERT_FALSE(open.view().hasFocus());

    open.format(u"bold"_s);

    EXPECT_EQ(open.markdown(), u"**text**"_s);
}

TEST(WYSIWYGEditorCommands, AnUnknownTypeOrAWrongPayloadDoesNothing)
{
    OpenFormattedEditor open(u"* text"_s);
    open.select(2, 6);

    open.format(u"strike"_s);
    open.format(u""_s);
    open.format(u"Bold"_s);
    open.format(3);
    open.format(QByteArray("bold"));
    open.format(QStringList{u"bold"_s});
    open.events.post(AppEvents::kInsertMarkdownFormat);
    open.events.post(AppEvents::kInsertMarkdownFormat, {{u"kind"_s, u"bold"_s}});

    EXPECT_EQ(open.editCount(), 0);
    EXPECT_EQ(open.selection(), (TextSelection{2, 6}));
}

TEST(WYSIWYGEditorCommands, TheResultOfACommandIsBroughtIntoView)
{
    OpenFormattedEditor open(u"line\n\n"_s.repeated(200));
    open.putCaretAtEnd(); // out of view
    open.settle();

    open.format(u"table"_s);
    open.settle();

    EXPECT_TRUE(open.view().viewport()->rect().contains(open.view().caretRectInViewport(open.selection().caret)));
}

TEST(WYSIWYGEditorCommands, ACommandOnOneParagraphLeavesTheOthersAttributesAlone)
{
    OpenFormattedEditor open(u"**a**\n\n[b](u) `c`\n\n![d](e)"_s);
    open.putCaretBefore(u"b"_s);

    open.format(u"quote"_s);
    EXPECT_EQ(open.markdown(), u"**a**\n\n> [b](u) `c`\n\n![d](e)"_s);
    open.format(u"codeBlock"_s);
    EXPECT_EQ(open.markdown(), u"**a**\n\n```\nb c\n```\n\n![d](e)"_s);
    open.format(u"codeBlock"_s);
    EXPECT_EQ(open.markdown(), u"**a**\n\n[b](u) `c`\n\n![d](e)"_s) << "code hides the attributes and keeps them";
}

} // namespace Tessaline
