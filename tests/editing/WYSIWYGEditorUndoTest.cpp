#include "editing/WYSIWYGEditor.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

#include <functional>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A document whose first edit is one of these is brought into its normal form by it; undo gives that form.
const QString kWritten = u"# Title\r\n\r\n* one\n* two\n\n\n- [ ] task\n\nplain *words*"_s;
const QString kNormal = u"# Title\n\n- one\n- two\n- [ ] task\n\nplain *words*"_s;

struct Action {
    const char *name;
    void (*act)(OpenFormattedEditor &open);
};

void PrintTo(const Action &action, std::ostream *out)
{
    *out << action.name;
}

const Action kActions[] = {
    {"ATypedRun",
     [](OpenFormattedEditor &open) {
         open.putCaretBehind(u"Title"_s);
         open.type(u" of the book"_s);
     }},
    {"ARunOfBackspaces",
     [](OpenFormattedEditor &open) {
         open.putCaretBehind(u"words"_s);
         open.press(Qt::Key_Backspace, {}, 9);
     }},
    {"ARunOfDeletes",
     [](OpenFormattedEditor &open) {
         open.putCaretBefore(u"two"_s);
         open.press(Qt::Key_Delete, {}, 6);
     }},
    {"AReturnThatContinuesAList",
     [](OpenFormattedEditor &open) {
         open.putCaretBehind(u"one"_s);
         open.press(Qt::Key_Return);
     }},
    {"AReturnInAHeading",
     [](OpenFormattedEditor &open) {
         open.putCaretBehind(u"Ti"_s);
         open.press(Qt::Key_Return);
     }},
    {"AToggledBox", [](OpenFormattedEditor &open) { open.click(open.rectOf(open.positionOf(u"☐"_s)).center()); }},
    {"ABlockCommand",
     [](OpenFormattedEditor &open) {
         open.select(0, open.shown().size());
         open.format(u"numbered"_s);
     }},
    {"ABlockCommandThatChangesNoCharacter",
     [](OpenFormattedEditor &open) {
         open.putCaretBefore(u"plain"_s);
         open.format(u"h2"_s);
     }},
    {"AnInlineCommand",
     [](OpenFormattedEditor &open) {
         open.select(u"one\n•\ttwo"_s);
         open.format(u"bold"_s);
     }},
    {"AnInsertedTable",
     [](OpenFormattedEditor &open) {
         open.putCaretAtEnd();
         open.format(u"table"_s);
     }},
    {"AnInsertedLink",
     [](OpenFormattedEditor &open) {
         open.putCaretBefore(u"plain"_s);
         open.format(u"link"_s);
     }},
    {"ASelectionThatWasTypedOver",
     [](OpenFormattedEditor &open) {
         open.select(u"one\n•\ttw"_s);
         open.type(u"x"_s);
     }},
    {"ACut",
     [](OpenFormattedEditor &open) {
         open.select(u"Title\n•\tone\n"_s);
         open.press(Qt::Key_X, Qt::ControlModifier);
     }},
    {"APasteOfSeveralLines",
     [](OpenFormattedEditor &open) {
         QGuiApplication::clipboard()->setText(u"a\nb\nc"_s);
         open.putCaretBefore(u"plain"_s);
         open.press(Qt::Key_V, Qt::ControlModifier);
     }},
    {"APasteOfFormattedText",
     [](OpenFormattedEditor &open) {
         open.select(u"Title\n•\tone"_s);
         open.press(Qt::Key_C, Qt::ControlModifier);
         open.putCaretAtEnd();
         open.press(Qt::Key_V, Qt::ControlModifier);
     }},
    {"AWordThatWasDeleted",
     [](OpenFormattedEditor &open) {
         open.putCaretBehind(u"words"_s);
         open.press(Qt::Key_Backspace, Qt::ControlModifier);
     }},
    {"EverythingDeleted",
     [](OpenFormattedEditor &open) {
         open.press(Qt::Key_A, Qt::ControlModifier);
         open.press(Qt::Key_Delete);
     }},
    {"TextOfAnInputMethod",
     [](OpenFormattedEditor &open) {
         open.putCaretBefore(u"two"_s);
         open.compose(u"に"_s);
         open.commit(u"日"_s);
     }},
};

class WYSIWYGEditorUndo : public testing::TestWithParam<Action>
{};

} // namespace

TEST_P(WYSIWYGEditorUndo, TakesItBackInOneStepAndRedoesIt)
{
    OpenFormattedEditor open(kWritten);
    const AttributedText before = open.attributed();

    GetParam().act(open);
    const QString markdown = open.markdown();
    const AttributedText shown = open.attributed();
    const TextSelection selection = open.selection();
    ASSERT_NE(markdown, kNormal);

    open.undo();
    EXPECT_EQ(open.markdown(), kNormal);
    EXPECT_EQ(open.attributed(), before);
    EXPECT_FALSE(open.view().document().canUndo());
    open.redo();
    EXPECT_EQ(open.markdown(), markdown);
    EXPECT_EQ(open.attributed(), shown);
    EXPECT_EQ(open.selection(), selection);
    open.undo();
    EXPECT_EQ(open.markdown(), kNormal);
}

TEST_P(WYSIWYGEditorUndo, IsAStepOfItsOwnBetweenTypedRuns)
{
    OpenFormattedEditor open(kNormal);
    open.putCaretBehind(u"task"_s);
    open.type(u"12"_s);
    const QString typed = open.markdown();

    GetParam().act(open);
    const QString acted = open.markdown();
    open.putCaret(0);
    open.type(u"34"_s);

    open.undo();
    EXPECT_EQ(open.markdown(), acted);
    open.undo();
    EXPECT_EQ(open.markdown(), typed);
    open.undo();
    EXPECT_EQ(open.markdown(), kNormal);
}

INSTANTIATE_TEST_SUITE_P(Of, WYSIWYGEditorUndo, testing::ValuesIn(kActions),
                         [](const testing::TestParamInfo<Action> &action) { return std::string(action.param.name); });

TEST(WYSIWYGEditorHistory, GivesBackTheMarkdownOfEachStepByteForByte)
{
    OpenFormattedEditor open(kWritten);
    const auto typeAtEnd = [&open](const QString &text) {
        open.putCaretAtEnd();
        open.type(text);
    };
    const QList<std::function<void()>> steps{
        [&] {
            typeAtEnd(u" and more"_s);
            open.press(Qt::Key_Return); // the line break belongs to the run that it ends
        },
        [&] { open.format(u"task"_s); },
        [&] { typeAtEnd(u"buy *milk*"_s); },
        [&] { open.press(Qt::Key_Return); },
        [&] { typeAtEnd(u"and bread"_s); },
        [&] { open.click(open.rectOf(open.shown().lastIndexOf(u'☐')).center()); },
        [&] {
            open.select(u"milk"_s);
            open.format(u"bold"_s);
        },
        [&] { open.format(u"link"_s); },
        [&] {
            open.select(u"task\nplain"_s);
            open.format(u"numbered"_s);
        },
        [&] { open.press(Qt::Key_X, Qt::ControlModifier); },
        [&] {
            open.putCaretAtEnd();
            open.press(Qt::Key_V, Qt::ControlModifier);
        },
        [&] { open.format(u"table"_s); },
        [&] { open.press(Qt::Key_Backspace, {}, 3); },
    };
    QStringList written{kNormal};
    for (const std::function<void()> &step : steps) {
        step();
        written.append(open.markdown());
    }

    for (qsizetype i = written.size() - 2; i >= 0; --i) {
        open.undo();
        ASSERT_EQ(open.markdown(), written.at(i)) << i;
    }
    EXPECT_FALSE(open.view().document().canUndo());
    for (qsizetype i = 1; i < written.size(); ++i) {
        open.redo();
        ASSERT_EQ(open.markdown(), written.at(i)) << i;
    }
}

TEST(WYSIWYGEditorHistory, StopsAtTheDocumentAsItWasOpened)
{
    OpenFormattedEditor open(kWritten);

    open.undo();
    open.redo();

    EXPECT_EQ(open.markdown(), kWritten) << "nothing was done, so nothing is written";
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorHistory, AlsoTakesBackWhatAnotherEditorDid)
{
    OpenFormattedEditor open(u"one\n\ntwo"_s);
    open.putCaretAtEnd();
    open.type(u"!"_s);

    open.editElsewhere(0, 0, u"# "_s);
    EXPECT_EQ(open.attributed().attributesAt(0).blockStyle, u"heading:1");
    open.undo();

    EXPECT_EQ(open.markdown(), u"one\n\ntwo!"_s);
    EXPECT_EQ(open.attributed().attributesAt(0).blockStyle, u"paragraph");
}

} // namespace Tessaline
