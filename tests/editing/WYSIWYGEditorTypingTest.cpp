#include "editing/WYSIWYGEditor.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

/// Where somebody types or presses a key, and the Markdown that comes of it.
struct Case {
    const char *name;
    QString markdown;
    QString place; // the caret stands at the bar; between two bars all is selected
    QString keys;  // ⏎ Return, ⌫ Backspace, ⌦ Delete, ⇥ Tab, everything else as it is
    QString expected;
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

class WYSIWYGEditorKeys : public testing::TestWithParam<Case>
{};

} // namespace

TEST_P(WYSIWYGEditorKeys, GiveThisMarkdown)
{
    const Case &row = GetParam();
    OpenFormattedEditor open(row.markdown);
    const QStringList parts = row.place.split(u'|');
    ASSERT_EQ(parts.join(QString()), open.shown()) << "the place is not one in what is shown";
    open.select(parts.at(0).size(), parts.at(0).size() + (parts.size() > 2 ? parts.at(1).size() : 0));

    for (const QChar key : row.keys) {
        if (key == u'⏎')
            open.press(Qt::Key_Return);
        else if (key == u'⌫')
            open.press(Qt::Key_Backspace);
        else if (key == u'⌦')
            open.press(Qt::Key_Delete);
        else if (key == u'⇥')
            open.press(Qt::Key_Tab);
        else
            open.type(key);
    }

    EXPECT_EQ(open.markdown(), row.expected) << described(open.attributed()).toStdString();
}

namespace {

const QString kTable = u"|a|b|\n|---|---|\n|1|2|"_s;
const QString kRule = u"────────────────"_s;

const Case kTyping[] = {
    {"InAParagraph", u"ab\n\ncd"_s, u"a|b\ncd"_s, u"x*y"_s, u"ax\\*yb\n\ncd"_s},
    {"AtTheEndOfAHeading", u"# One\n\ntwo"_s, u"One|\ntwo"_s, u"!"_s, u"# One!\n\ntwo"_s},
    {"AtTheStartOfAHeading", u"### One"_s, u"|One"_s, u"x"_s, u"### xOne"_s},
    {"InAQuote", u"> a\n> b"_s, u"a\nb|"_s, u"c"_s, u"> a\n> bc"_s},
    {"InABullet", u"* a"_s, u"•\ta|"_s, u"b"_s, u"- ab"_s},
    {"RightBehindAMarker", u"- a"_s, u"•\t|a"_s, u"b"_s, u"- ba"_s},
    {"BehindTheMarkerOfAnEmptyItem", u"- "_s, u"•\t|"_s, u"b"_s, u"- b"_s},
    {"BeforeAMarker", u"- a"_s, u"|•\ta"_s, u"b"_s, u"- ba"_s},
    {"InsideAMarker", u"3. a"_s, u"3|.\ta"_s, u"b"_s, u"3. ba"_s},
    {"InAnOpenTask", u"- [ ] a"_s, u"☐\ta|"_s, u"b"_s, u"- [ ] ab"_s},
    {"InADoneTask", u"- [x] a"_s, u"☑\ta|"_s, u"b"_s, u"- [x] ab"_s},
    {"InALineOfCode", u"```c\na*\n```"_s, u"a*|"_s, u"*b\\"_s, u"```c\na**b\\\n```"_s},
    {"InAnEmptyLineOfCode", u"```c\na\n\nb\n```"_s, u"a\n|\nb"_s, u"x"_s, u"```c\na\nx\nb\n```"_s},
    {"ATabInALineOfCode", u"```\na\n```"_s, u"|a"_s, u"⇥"_s, u"```\n\ta\n```"_s},
    {"InARule", u"a\n\n---\n\nb"_s, u"a\n────|────────────\nb"_s, u"lost"_s, u"a\n\n---\n\nb"_s},
    {"BehindARule", u"***\n\nb"_s, kRule + u"|\nb"_s, u"lost"_s, u"---\n\nb"_s},
    {"InBoldText", u"a **bb** c"_s, u"a b|b c"_s, u"x"_s, u"a **bxb** c"_s},
    {"RightBeforeBoldText", u"a **bb** c"_s, u"a |bb c"_s, u"x"_s, u"a **xbb** c"_s},
    {"RightBehindBoldText", u"a **bb** c"_s, u"a bb| c"_s, u"x"_s, u"a **bb**x c"_s},
    {"BehindBoldTextAtTheEnd", u"a **bb**"_s, u"a bb|"_s, u"x"_s, u"a **bbx**"_s},
    {"BehindBoldTextAtTheEndOfAParagraph", u"**bb**\n\nc"_s, u"bb|\nc"_s, u"x"_s, u"**bb**x\n\nc"_s},
    {"InCode", u"a `bb` c"_s, u"a b|b c"_s, u"*"_s, u"a `b*b` c"_s},
    {"InALink", u"[ab](u)"_s, u"a|b"_s, u"x"_s, u"[axb](u)"_s},
    {"AtTheEndOfALinkAtTheEnd", u"[ab](u)"_s, u"ab|"_s, u"x"_s, u"[abx](u)"_s},
    {"BehindALink", u"[ab](u) c"_s, u"ab| c"_s, u"x"_s, u"[ab](u)x c"_s},
    {"InsideAnImage", u"![ab](s)"_s, u"🖼 a|b"_s, u"x"_s, u"![ab](s)x![ab](s)"_s},
    {"BehindAnImage", u"![ab](s)"_s, u"🖼 ab|"_s, u"x"_s, u"![ab](s)x"_s},
    {"BeforeAnImage", u"![ab](s)"_s, u"|🖼 ab"_s, u"x"_s, u"x![ab](s)"_s},
    {"BehindAHardBreak", u"a  \nb"_s, u"a\u2028|b"_s, u"x"_s, u"a  \nxb"_s},
    {"OverASelection", u"a **bb** c"_s, u"a |bb| c"_s, u"x"_s, u"a **x** c"_s},
    {"OverTwoParagraphs", u"# one\n\ntwo"_s, u"o|ne\nt|wo"_s, u"x"_s, u"# oxwo"_s},
    {"OverEverything", u"# one\n\ntwo"_s, u"|one\ntwo|"_s, u"x"_s, u"# x"_s},
    {"AfterEverythingWasDeleted", u"# one\n\ntwo"_s, u"|one\ntwo|"_s, u"⌫x"_s, u"x"_s},
    {"IntoAnEmptyText", u""_s, u"|"_s, u"x"_s, u"x"_s},
    {"BlockSyntaxStaysText", u""_s, u"|"_s, u"# x"_s, u"# x"_s},
};

const Case kReturns[] = {
    {"GoesOnWithBullets", u"* a"_s, u"•\ta|"_s, u"⏎b"_s, u"- a\n- b"_s},
    {"GoesOnCounting", u"3. x"_s, u"3.\tx|"_s, u"⏎y⏎"_s, u"3. x\n4. y\n5. "_s},
    {"CountsUpFromBelowZero", u"-5. x"_s, u"-5.\tx|"_s, u"⏎"_s, u"-5. x\n-4. "_s},
    {"GoesOnWithTasks", u"- [ ] a"_s, u"☐\ta|"_s, u"⏎b"_s, u"- [ ] a\n- [ ] b"_s},
    {"GoesOnWithDoneTasks", u"- [x] a"_s, u"☑\ta|"_s, u"⏎b"_s, u"- [x] a\n- [x] b"_s},
    {"SplitsAnItem", u"1. ab"_s, u"1.\ta|b"_s, u"⏎"_s, u"1. a\n2. b"_s},
    {"OnAnEmptyItemGoesOn", u"- a"_s, u"•\ta|"_s, u"⏎⏎"_s, u"- a\n- \n- "_s},
    {"BeforeAMarkerGoesOn", u"- a"_s, u"|•\ta"_s, u"⏎"_s, u"- \n- a"_s},
    {"AtTheStartOfAParagraphBehindAListGoesOn", u"- a\n\nb"_s, u"•\ta\n|b"_s, u"⏎"_s, u"- a\n- \n- b"_s},
    {"OverASelectionInAListIsALineBreak", u"- abc"_s, u"•\ta|b|c"_s, u"⏎"_s, u"- a\n- c"_s},
    {"InAHeadingMakesAnother", u"## ab"_s, u"a|b"_s, u"⏎"_s, u"## a\n\n## b"_s},
    {"BehindAHeadingMakesAnother", u"# a\n\nb"_s, u"a|\nb"_s, u"⏎x"_s, u"# a\n\n# x\n\nb"_s},
    {"InAQuoteStaysInIt", u"> a"_s, u"a|"_s, u"⏎b"_s, u"> a\n> b"_s},
    {"InCodeStaysInIt", u"```c\na\n```\n\nb"_s, u"a|\nb"_s, u"⏎x⏎"_s, u"```c\na\nx\n\n```\n\nb"_s},
    {"SplitsAParagraph", u"one two"_s, u"one| two"_s, u"⏎"_s, u"one\n\n two"_s},
    {"SplitsABoldRun", u"**ab**"_s, u"a|b"_s, u"⏎"_s, u"**a**\n\n**b**"_s},
    {"AtTheEndAloneWritesNoParagraph", u"a"_s, u"a|"_s, u"⏎"_s, u"a"_s},
    {"TwiceMakesAnEmptyParagraph", u"a"_s, u"a|"_s, u"⏎⏎b"_s, u"a\n\n\n\nb"_s},
    {"InAnEmptyTextIsALineBreak", u""_s, u"|"_s, u"⏎x"_s, u"\n\nx"_s},
    {"InAnEmptyTextAloneWritesNothing", u""_s, u"|"_s, u"⏎"_s, u""_s},
    {"BehindARuleMakesAnother", u"---"_s, kRule + u"|"_s, u"⏎x"_s, u"---\n\n---"_s},
    {"InARowMakesAnotherRow", kTable, u"a\tb\n1\t2|"_s, u"⏎3⇥4"_s, u"| a | b |\n| --- | --- |\n| 1 | 2 |\n| 3 | 4 |"_s},
    {"InAHeaderMakesTwoTables", kTable, u"a|\tb\n1\t2"_s, u"⏎"_s,
     u"| a |\n| --- |\n\n|  | b |\n| --- | --- |\n| 1 | 2 |"_s},
};

const Case kJoining[] = {
    {"BackspaceJoinsAParagraphToAHeading", u"# one\n\ntwo"_s, u"one\n|two"_s, u"⌫"_s, u"# onetwo"_s},
    {"DeleteJoinsAParagraphToAHeading", u"# one\n\ntwo"_s, u"one|\ntwo"_s, u"⌦"_s, u"# onetwo"_s},
    {"BackspaceJoinsAHeadingToAParagraph", u"one\n\n# two"_s, u"one\n|two"_s, u"⌫"_s, u"onetwo"_s},
    {"WhatIsLeftOfAJoinedParagraphDecides", u"one\n\n# two"_s, u"one\n|two"_s, u"⌫⌫⌫⌫"_s, u"# two"_s},
    {"AnEmptyHeadingLeavesTheParagraphBehindItAlone", u"# \n\ntwo"_s, u"|\ntwo"_s, u"⌦"_s, u"two"_s},
    {"AnEmptyHeadingIsLeftByBackspaceToo", u"# \n\ntwo"_s, u"\n|two"_s, u"⌫"_s, u"two"_s},
    {"AnEmptyParagraphsKindIsThatOfItsLineBreak", u"# a\n\nb"_s, u"a|\nb"_s, u"⌫"_s, u"# \n\nb"_s},
    {"AnEmptyParagraphIsTypedIntoAsItsKind", u"# a\n\nb"_s, u"a|\nb"_s, u"⌫x"_s, u"# x\n\nb"_s},
    {"BackspaceTakesAMarkerPieceByPieceAndKeepsTheKind", u"- a\n- b"_s, u"•\ta\n•\t|b"_s, u"⌫⌫"_s, u"- a\n- b"_s},
    {"BackspaceBehindATakenMarkerJoins", u"- a\n- b"_s, u"•\ta\n•\t|b"_s, u"⌫⌫⌫"_s, u"- ab"_s},
    {"DeleteJoinsItemsWithTheMarker", u"- a\n- b"_s, u"•\ta|\n•\tb"_s, u"⌦"_s, u"- ab"_s},
    {"AReplacedSelectionJoinsItems", u"1. ab\n\ncd\n\n> ef"_s, u"1.\ta|b\ncd\ne|f"_s, u"x"_s, u"1. axf"_s},
    {"DeletingOverAWholeParagraphLeavesTheNext", u"# a\n\nb\n\n> c"_s, u"a\n|b\n|c"_s, u"⌫"_s, u"# a\n\n> c"_s},
    {"DeletingTheLastParagraphLeavesAnEmptyLineThatIsNone", u"a\n\n# b"_s, u"a\n|b|"_s, u"⌫"_s, u"a"_s},
    {"TypingIntoThatLineTakesTheKindOfTheLineBreak", u"> a\n\n# b"_s, u"a\n|b|"_s, u"⌫x"_s, u"> a\n> x"_s},
    {"LinesOfCodeJoin", u"```\na\nb\n```"_s, u"a|\nb"_s, u"⌦"_s, u"```\nab\n```"_s},
    {"AParagraphJoinsCode", u"```\na\n```\n\n*b*"_s, u"a\n|b"_s, u"⌫"_s, u"```\nab\n```"_s},
    {"CodeOfOneKindMergesWhenWhatPartedItGoes", u"```\na\n```\n\nx\n\n```\nb\n```"_s, u"a\n|x\n|b"_s, u"⌫"_s,
     u"```\na\nb\n```"_s},
    {"AHardBreakIsDeletedAsACharacter", u"a  \nb"_s, u"a\u2028|b"_s, u"⌫"_s, u"ab"_s},
    {"BackspaceAtTheStartDoesNothing", u"# a"_s, u"|a"_s, u"⌫"_s, u"# a"_s},
    {"DeleteAtTheEndDoesNothing", u"# a"_s, u"a|"_s, u"⌦"_s, u"# a"_s},
};

const Case kObjects[] = {
    {"TypingInACellChangesIt", kTable, u"a\tb\n1|\t2"_s, u"x"_s, u"| a | b |\n| --- | --- |\n| 1x | 2 |"_s},
    {"ATabMakesACell", kTable, u"a\tb\n1|\t2"_s, u"⇥"_s, u"| a | b |\n| --- | --- |\n| 1 |  | 2 |"_s},
    {"ATabInTheHeaderMakesADelimiterToo", kTable, u"a|\tb\n1\t2"_s, u"⇥"_s,
     u"| a |  | b |\n| --- | --- | --- |\n| 1 | 2 |"_s},
    {"DeletingATabMergesCells", kTable, u"a\tb\n1|\t2"_s, u"⌦"_s, u"| a | b |\n| --- | --- |\n| 12 |"_s},
    {"ATypedPipeIsEscaped", kTable, u"a\tb\n1|\t2"_s, u"|"_s, u"| a | b |\n| --- | --- |\n| 1\\| | 2 |"_s},
    {"ARowJoinsTheHeader", kTable, u"a\tb\n|1\t2"_s, u"⌫"_s, u"| a | b1 | 2 |\n| --- | --- | --- |"_s},
    {"ARowWithoutItsHeaderIsText", kTable, u"|a\tb\n|1\t2"_s, u"⌫"_s, u"1\t2"_s},
    {"AnImagesDescriptionIsNotWritten", u"![ab](s) c"_s, u"🖼 ab| c"_s, u"⌫"_s, u"![ab](s) c"_s},
    {"AnImageGoesWithItsWholePlaceholder", u"a ![b](s) c"_s, u"a |🖼 b| c"_s, u"⌫"_s, u"a  c"_s},
    {"AnImagesSignIsOneCharacter", u"![b](s)"_s, u"🖼| b"_s, u"⌫⌦⌦"_s, u""_s},
    {"ALinkShrinks", u"[abc](u)"_s, u"ab|c"_s, u"⌫"_s, u"[ac](u)"_s},
    {"ALinkGoesWithItsText", u"a [b](u) c"_s, u"a |b| c"_s, u"⌫"_s, u"a  c"_s},
    {"ARuleIsWrittenWhateverIsLeftOfIt", u"---\n\nb"_s, kRule.left(1) + u'|' + kRule.mid(1) + u"|\nb"_s, u"⌫"_s,
     u"---\n\nb"_s},
    {"ARuleGoesWithItsParagraph", u"a\n\n---\n\nb"_s, u"a\n|"_s + kRule + u"\n|b"_s, u"⌫"_s, u"a\n\nb"_s},
    {"CodeBecomesEmpty", u"a\n\n```\nb\n```\n\nc"_s, u"a\n|b|\nc"_s, u"⌫"_s, u"a\n\n```\n\n```\n\nc"_s},
};

std::string nameOf(const testing::TestParamInfo<Case> &row)
{
    return row.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Typing, WYSIWYGEditorKeys, testing::ValuesIn(kTyping), nameOf);
INSTANTIATE_TEST_SUITE_P(Return, WYSIWYGEditorKeys, testing::ValuesIn(kReturns), nameOf);
INSTANTIATE_TEST_SUITE_P(Joining, WYSIWYGEditorKeys, testing::ValuesIn(kJoining), nameOf);
INSTANTIATE_TEST_SUITE_P(Objects, WYSIWYGEditorKeys, testing::ValuesIn(kObjects), nameOf);

// What is shown, and where the caret stands

TEST(WYSIWYGEditorTyping, ReturnInANumberedItemInsertsTheNextNumberAndATab)
{
    OpenFormattedEditor open(u"3. x"_s);
    open.putCaretAtEnd();

    open.press(Qt::Key_Return);

    EXPECT_EQ(open.shown(), u"3.\tx\n4.\t"_s);
    EXPECT_EQ(open.selection(), caretAt(8));
    const TextAttributes attributes = open.attributed().attributesAt(6);
    EXPECT_EQ(attributes.blockStyle, u"numbered:4");
    EXPECT_TRUE(attributes.generatedMarker);
    EXPECT_EQ(open.attributed().attributesAt(4).blockStyle, u"numbered:4") << "the line break too";
    EXPECT_FALSE(open.attributed().attributesAt(4).generatedMarker);
}

TEST(WYSIWYGEditorTyping, ReturnAfterADoneTaskGivesAnOpenLookingBoxOnADoneTask)
{
    OpenFormattedEditor open(u"- [x] a"_s);
    open.putCaretAtEnd();

    open.press(Qt::Key_Return);
    open.type(u"b"_s);

    EXPECT_EQ(open.shown(), u"☑\ta\n☐\tb"_s);
    EXPECT_EQ(open.attributed().attributesAt(4).blockStyle, u"task:1");
    EXPECT_EQ(open.markdown(), u"- [x] a\n- [x] b"_s);
    open.setMarkdown(open.markdown() + u"\n"_s);
    EXPECT_EQ(open.shown(), u"☑\ta\n☑\tb"_s) << "when it is read again the sign is that of the kind";
}

TEST(WYSIWYGEditorTyping, ReturnOverASelectionInAListLeavesNoMarker)
{
    OpenFormattedEditor open(u"- abc"_s);
    open.select(u"b"_s);

    open.press(Qt::Key_Return);

    EXPECT_EQ(open.shown(), u"•\ta\nc"_s);
    EXPECT_EQ(open.selection(), caretAt(4));
}

TEST(WYSIWYGEditorTyping, EnterOfTheNumberPadContinuesAListToo)
{
    OpenFormattedEditor open(u"- a"_s);
    open.putCaretAtEnd();

    open.press(Qt::Key_Enter, Qt::KeypadModifier);

    EXPECT_EQ(open.markdown(), u"- a\n- "_s);
}

TEST(WYSIWYGEditorTyping, ContinuingAListBringsTheNewItemIntoView)
{
    OpenFormattedEditor open(u"- item\n"_s.repeated(200));
    open.putCaretAtEnd();
    open.settle();

    for (int i = 0; i < 20; ++i)
        open.press(Qt::Key_Return);
    open.settle();

    const QRect caret = open.view().caretRectInViewport(open.selection().caret);
    EXPECT_TRUE(open.view().viewport()->rect().contains(caret));
}

TEST(WYSIWYGEditorTyping, InputMethodsComposeInPlaceAndCommitAsTypedTextDoes)
{
    OpenFormattedEditor open(u"- a **b** c"_s);
    open.putCaretBefore(u"b"_s);

    open.compose(u"に"_s);
    EXPECT_EQ(open.editCount(), 0) << "composed text is not in the document yet";
    open.compose(u"にほ"_s);
    open.commit(u"日本"_s);

    EXPECT_EQ(open.markdown(), u"- a **日本b** c"_s);
    open.undo();
    EXPECT_EQ(open.markdown(), u"- a **b** c"_s);
}

TEST(WYSIWYGEditorTyping, InputMethodsMayReplaceWhatStandsBeforeTheCaret)
{
    OpenFormattedEditor open(u"# teh"_s);
    open.putCaretAtEnd();

    open.commit(u"the"_s, -3, 3);

    EXPECT_EQ(open.markdown(), u"# the"_s);
}

TEST(WYSIWYGEditorTyping, RightToLeftTextIsTypedAndItsCaretStandsOnTheLeft)
{
    OpenFormattedEditor open(u"- "_s);
    open.putCaretAtEnd();

    open.type(u"שלום"_s);

    EXPECT_EQ(open.markdown(), u"- שלום"_s);
    EXPECT_LT(open.pointAt(6).x(), open.pointAt(2).x());
    open.press(Qt::Key_Return);
    open.type(u"עולם"_s);
    EXPECT_EQ(open.markdown(), u"- שלום\n- עולם"_s);
    open.press(Qt::Key_Right);
    open.press(Qt::Key_Backspace);
    EXPECT_EQ(open.markdown(), u"- שלום\n- עום"_s) << "the right arrow goes back";
}

TEST(WYSIWYGEditorTyping, EmojiAndMarksAreDeletedAsOneCharacter)
{
    OpenFormattedEditor open(u"# a👩‍👩‍👧e\u0301"_s);
    open.putCaretAtEnd();

    open.press(Qt::Key_Backspace);
    EXPECT_EQ(open.markdown(), u"# a👩‍👩‍👧"_s);
    open.press(Qt::Key_Backspace);
    EXPECT_EQ(open.markdown(), u"# a"_s);
}

TEST(WYSIWYGEditorTyping, WordsAreDeletedInOneGo)
{
    OpenFormattedEditor open(u"one **two** three"_s);
    open.putCaretBehind(u"two"_s);

    open.press(Qt::Key_Backspace, Qt::ControlModifier);

    EXPECT_EQ(open.markdown(), u"one  three"_s);
}

} // namespace Tessaline
