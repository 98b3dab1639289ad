#include "editing/TextViewKeys.h"

#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr Qt::KeyboardModifiers kShift = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers kCtrl = Qt::ControlModifier;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

void send(OpenEditor &open, Qt::Key key, const QString &text, Qt::KeyboardModifiers modifiers)
{
    QTest::sendKeyEvent(QTest::Click, &open.view(), key, text, modifiers);
}

/// Whether the text view claims a key that a menu may have as its shortcut.
bool isClaimed(OpenEditor &open, Qt::Key key, Qt::KeyboardModifiers modifiers, const QString &text = {})
{
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, text);
    event.ignore();
    QApplication::sendEvent(&open.view(), &event);
    return event.isAccepted();
}

QString lines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"line %1\n"_s.arg(i));
    return text;
}

} // namespace

// Typing

TEST(TextViewKeys, TypesWhatTheKeysSay)
{
    OpenEditor open;

    open.type(u"aé漢ש"_s);
    send(open, Qt::Key_unknown, u"\U0001F600"_s, {});

    EXPECT_EQ(open.text(), u"aé漢ש\U0001F600"_s);
}

TEST(TextViewKeys, TypesATabAndLeavesBackwardsWithShift)
{
    OpenEditor open(u"ab"_s);
    QLineEdit other(&open.editor);
    other.show();
    QWidget::setTabOrder(&other, &open.view());
    open.press(Qt::Key_Right);

    open.press(Qt::Key_Tab);
    EXPECT_EQ(open.text(), u"a\tb"_s);
    EXPECT_TRUE(open.view().hasFocus());
    open.press(Qt::Key_Backtab, kShift);

    EXPECT_EQ(open.text(), u"a\tb"_s);
    EXPECT_FALSE(open.view().hasFocus());
}

TEST(TextViewKeys, ReturnTypesTheLineEndOfTheDocument)
{
    for (const QString &lineEnd : {u"\n"_s, u"\r\n"_s, u"\r"_s, u"\u2029"_s}) {
        OpenEditor open(u"one"_s + lineEnd + u"two"_s);

        open.press(Qt::Key_End, kCtrl);
        open.press(Qt::Key_Return);
        open.press(Qt::Key_Enter, Qt::KeypadModifier);
        open.press(Qt::Key_Return, kShift);

        EXPECT_EQ(open.text(), u"one"_s + lineEnd + u"two"_s + lineEnd.repeated(3));
    }
}

TEST(TextViewKeys, KeysWithCtrlOrAltTypeNothing)
{
    OpenEditor open(u"text"_s);

    send(open, Qt::Key_J, u"\x0a"_s, kCtrl);
    send(open, Qt::Key_J, u"j"_s, kCtrl);
    send(open, Qt::Key_J, u"J"_s, kCtrl | kShift);
    send(open, Qt::Key_F, u"f"_s, Qt::AltModifier);
    send(open, Qt::Key_Escape, u"\x1b"_s, {});
    send(open, Qt::Key_Delete, u"\x7f"_s, kCtrl | Qt::AltModifier);

    EXPECT_EQ(open.text(), u"text"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(TextViewKeys, TheThirdLevelOfAKeyboardTypes)
{
    OpenEditor open;

    send(open, Qt::Key_E, u"€"_s, kCtrl | Qt::AltModifier); // as it comes from some systems
    send(open, Qt::Key_E, u"€"_s, Qt::GroupSwitchModifier);
    send(open, Qt::Key_Space, u"\u200C"_s, kCtrl | kShift); // a joiner of Persian keyboards

    EXPECT_EQ(open.text(), u"€€\u200C"_s);
}

TEST(TextViewKeys, ClaimsTypingAndPlainMotionsFromTheMenus)
{
    OpenEditor open;

    EXPECT_TRUE(isClaimed(open, Qt::Key_A, {}, u"a"_s));
    EXPECT_TRUE(isClaimed(open, Qt::Key_A, kShift, u"A"_s));
    EXPECT_TRUE(isClaimed(open, Qt::Key_Left, {}));
    EXPECT_TRUE(isClaimed(open, Qt::Key_Delete, {}));
    EXPECT_TRUE(isClaimed(open, Qt::Key_Home, kShift));
    EXPECT_TRUE(isClaimed(open, Qt::Key_E, kCtrl | Qt::AltModifier, u"€"_s));
    EXPECT_FALSE(isClaimed(open, Qt::Key_Z, kCtrl, u"\x1a"_s));
    EXPECT_FALSE(isClaimed(open, Qt::Key_F, Qt::AltModifier, u"f"_s)) << "opens the File menu";
    EXPECT_FALSE(isClaimed(open, Qt::Key_F3, {}));
    EXPECT_FALSE(isClaimed(open, Qt::Key_Escape, {}, u"\x1b"_s));
}

TEST(TextViewKeys, LeavesUnknownKeysToOthers)
{
    OpenEditor open(u"text"_s);
    for (const Qt::Key key : {Qt::Key_F3, Qt::Key_Escape, Qt::Key_VolumeUp}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);

        QApplication::sendEvent(&open.view(), &event);

        EXPECT_FALSE(event.isAccepted()) << key;
    }
}

// Deleting

TEST(TextViewKeys, DeletesCharactersAndWords)
{
    OpenEditor open(u"one two three four"_s);
    open.press(Qt::Key_Right, {}, 8);

    open.press(Qt::Key_Backspace);
    EXPECT_EQ(open.text(), u"one twothree four"_s);
    open.press(Qt::Key_Delete);
    EXPECT_EQ(open.text(), u"one twohree four"_s);
    open.press(Qt::Key_Delete, kCtrl);
    EXPECT_EQ(open.text(), u"one two four"_s);
    open.press(Qt::Key_Backspace, kCtrl);
    EXPECT_EQ(open.text(), u"one  four"_s);
    open.press(Qt::Key_Backspace, kShift);
    EXPECT_EQ(open.text(), u"one four"_s);
}

TEST(TextViewKeys, DeletesTheSelection)
{
    OpenEditor open(u"one two"_s);
    open.press(Qt::Key_Right, kShift, 4);

    open.press(Qt::Key_Delete);

    EXPECT_EQ(open.text(), u"two"_s);
}

// Undo

TEST(TextViewKeys, UndoesAndRedoes)
{
    OpenEditor open;
    open.type(u"one"_s);
    open.press(Qt::Key_Return);
    open.type(u"two"_s);

    open.press(Qt::Key_Z, kCtrl);
    EXPECT_EQ(open.text(), u"one\n"_s);
    open.press(Qt::Key_Z, kCtrl);
    EXPECT_EQ(open.text(), u""_s);
    open.press(Qt::Key_Z, kCtrl | kShift);
    EXPECT_EQ(open.text(), u"one\n"_s);
    open.press(Qt::Key_Z, kCtrl | kShift);
    EXPECT_EQ(open.text(), u"one\ntwo"_s);
    EXPECT_EQ(open.selection(), caretAt(7));
}

TEST(TextViewKeys, UndoShowsWhereItChangedSomething)
{
    OpenEditor open(lines(300));
    open.type(u"x"_s);
    open.press(Qt::Key_End, kCtrl);
    ASSERT_FALSE(open.isInView(0));

    open.press(Qt::Key_Z, kCtrl);

    EXPECT_EQ(open.selection(), caretAt(0));
    EXPECT_TRUE(open.isInView(0));
}

// The clipboard

TEST(TextViewKeys, CutsCopiesAndPastes)
{
    OpenEditor open(u"one two"_s);
    open.press(Qt::Key_Right, kShift, 4);

    open.press(Qt::Key_X, kCtrl);
    EXPECT_EQ(open.text(), u"two"_s);
    EXPECT_EQ(QApplication::clipboard()->text(), u"one "_s);
    open.press(Qt::Key_End);
    open.press(Qt::Key_V, kCtrl);
    EXPECT_EQ(open.text(), u"twoone "_s);
    EXPECT_EQ(open.selection(), caretAt(7));
    open.press(Qt::Key_A, kCtrl);
    open.press(Qt::Key_C, kCtrl);
    EXPECT_EQ(QApplication::clipboard()->text(), u"twoone "_s);
    open.press(Qt::Key_Z, kCtrl);
    EXPECT_EQ(open.text(), u"two"_s) << "a paste is a step of undo";
}

TEST(TextViewKeys, TheOlderKeysOfTheClipboardWorkToo)
{
    OpenEditor open(u"one two"_s);
    open.press(Qt::Key_Right, kShift, 3);

    open.press(Qt::Key_Insert, kCtrl);
    open.press(Qt::Key_End);
    open.press(Qt::Key_Insert, kShift);
    EXPECT_EQ(open.text(), u"one twoone"_s);
    open.press(Qt::Key_Left, kShift, 6);
    open.press(Qt::Key_Delete, kShift);

    EXPECT_EQ(open.text(), u"one "_s);
    EXPECT_EQ(QApplication::clipboard()->text(), u"twoone"_s);
}

TEST(TextViewKeys, CopyingNothingLeavesTheClipboard)
{
    QApplication::clipboard()->setText(u"kept"_s);
    OpenEditor open(u"text"_s);

    open.press(Qt::Key_C, kCtrl);
    open.press(Qt::Key_X, kCtrl);

    EXPECT_EQ(QApplication::clipboard()->text(), u"kept"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(TextViewKeys, PastingNothingLeavesTheSelection)
{
    QApplication::clipboard()->clear();
    OpenEditor open(u"text"_s);
    open.select(0, 2);

    open.press(Qt::Key_V, kCtrl);

    EXPECT_EQ(open.text(), u"text"_s);
    EXPECT_EQ(open.selection(), (TextSelection{0, 2}));
}

TEST(TextViewKeys, ACopyStaysAsItWasWhenTheTextChangesOrGoes)
{
    {
        OpenEditor open(u"first"_s);
        open.press(Qt::Key_A, kCtrl);
        open.press(Qt::Key_C, kCtrl);
        open.type(u"changed"_s);
    }

    EXPECT_EQ(QApplication::clipboard()->text(), u"first"_s);
    EXPECT_EQ(QApplication::clipboard()->mimeData()->data(u"text/plain"_s), QByteArray("first"));
}

// Moving

TEST(TextViewKeys, MovesByCharactersAndWords)
{
    OpenEditor open(u"one, e\u0301\U0001F600 two\r\nx"_s);
    QList<qsizetype> stops;
    for (int i = 0; i < 8; ++i) {
        open.press(Qt::Key_Right);
        stops.append(open.selection().caret);
    }
    EXPECT_EQ(stops, (QList<qsizetype>{1, 2, 3, 4, 5, 7, 9, 10}));

    open.press(Qt::Key_Home, kCtrl);
    stops.clear();
    for (int i = 0; i < 7; ++i) {
        open.press(Qt::Key_Right, kCtrl);
        stops.append(open.selection().caret);
    }
    EXPECT_EQ(stops, (QList<qsizetype>{3, 5, 7, 10, 13, 15, 16}));
    open.press(Qt::Key_Left, kCtrl, 3);
    EXPECT_EQ(open.selection(), caretAt(10));
    open.press(Qt::Key_Right, kCtrl | kShift);
    EXPECT_EQ(open.selection(), (TextSelection{10, 13}));
    open.press(Qt::Key_Left, kCtrl | kShift, 2);
    EXPECT_EQ(open.selection(), (TextSelection{10, 7}));
}

TEST(TextViewKeys, AnArrowLeavesASelectionAtItsEnd)
{
    OpenEditor open(u"one two three"_s);

    open.select(4, 7);
    open.press(Qt::Key_Right);
    EXPECT_EQ(open.selection(), caretAt(7));
    open.select(4, 7);
    open.press(Qt::Key_Left);
    EXPECT_EQ(open.selection(), caretAt(4));
}

TEST(TextViewKeys, StopsAtTheEndsOfTheText)
{
    OpenEditor open(u"ab"_s);

    open.press(Qt::Key_Left, {}, 2);
    EXPECT_EQ(open.selection(), caretAt(0));
    open.press(Qt::Key_Right, {}, 9);
    EXPECT_EQ(open.selection(), caretAt(2));
    open.press(Qt::Key_Right, kCtrl);
    EXPECT_EQ(open.selection(), caretAt(2));
}

TEST(TextViewKeys, HomeAndEndGoToTheEndsOfTheRow)
{
    OpenEditor open(u"one\r\n"_s + u"word "_s.repeated(60) + u"\nlast"_s);
    open.select(5, 5);

    open.press(Qt::Key_End);
    const qsizetype rowEnd = open.selection().caret;
    EXPECT_GT(rowEnd, 20);
    EXPECT_LT(rowEnd, 200) << "a row of a wrapped paragraph, not the paragraph";
    EXPECT_EQ(open.view().caretRectInViewport(rowEnd).top(), open.view().caretRectInViewport(5).top());
    open.press(Qt::Key_End);
    EXPECT_EQ(open.selection().caret, rowEnd) << "a second End stays";
    open.press(Qt::Key_Home);
    EXPECT_EQ(open.selection(), caretAt(5));
    open.press(Qt::Key_Down);
    open.press(Qt::Key_End, kShift);
    EXPECT_GT(open.selection().range().length, 10);
    EXPECT_EQ(open.view().caretRectInViewport(open.selection().caret).top(),
              open.view().caretRectInViewport(open.selection().anchor).top());
    open.select(1, 1);
    open.press(Qt::Key_End);
    EXPECT_EQ(open.selection(), caretAt(3)) << "before the line end";
    open.press(Qt::Key_Home, kShift);
    EXPECT_EQ(open.selection(), (TextSelection{3, 0}));
}

TEST(TextViewKeys, CtrlHomeAndCtrlEndGoToTheEndsOfTheText)
{
    OpenEditor open(lines(300));

    open.press(Qt::Key_End, kCtrl);
    EXPECT_EQ(open.selection(), caretAt(open.text().size()));
    EXPECT_TRUE(open.isInView(open.text().size()));
    EXPECT_EQ(open.view().verticalScrollBar()->value(), open.view().verticalScrollBar()->maximum());
    open.press(Qt::Key_Home, kCtrl | kShift);
    EXPECT_EQ(open.selection(), (TextSelection{open.text().size(), 0}));
    EXPECT_TRUE(open.isInView(0));
}

TEST(TextViewKeys, UpAndDownKeepTheColumnAcrossShortLines)
{
    OpenEditor open(u"a long line\nab\n\nanother long line"_s);
    open.select(9, 9);

    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(14));
    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(15));
    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(25));
    open.press(Qt::Key_Up, {}, 3);
    EXPECT_EQ(open.selection(), caretAt(9));
    open.press(Qt::Key_Down, kShift, 3);
    EXPECT_EQ(open.selection(), (TextSelection{9, 25}));
}

TEST(TextViewKeys, AnotherMoveOrKeySetsANewColumn)
{
    OpenEditor open(u"a long line\nab\nanother long line"_s);
    open.select(9, 9);

    open.press(Qt::Key_Down);
    open.press(Qt::Key_Left);
    open.press(Qt::Key_Right); // at the end of the short line as before, but chosen
    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(17));

    open.select(9, 9);
    open.press(Qt::Key_Down);
    open.press(Qt::Key_Backspace);
    open.type(u"c"_s);
    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(17));
}

TEST(TextViewKeys, UpFromTheFirstRowAndDownFromTheLastGoToTheEnds)
{
    OpenEditor open(u"one\ntwo"_s);
    open.select(2, 2);

    open.press(Qt::Key_Up);
    EXPECT_EQ(open.selection(), caretAt(0));
    open.select(5, 5);
    open.press(Qt::Key_Down);
    EXPECT_EQ(open.selection(), caretAt(7));
}

TEST(TextViewKeys, UpAndDownGoThroughEveryRowOfAWrappedParagraph)
{
    OpenEditor open(u"word "_s.repeated(200));
    QList<int> tops;
    open.press(Qt::Key_Right, {}, 3);
    for (int i = 0; i < 5; ++i) {
        open.press(Qt::Key_Down);
        tops.append(open.view().caretRectInViewport(open.selection().caret).top() -
                    open.view().caretRectInViewport(0).top());
    }

    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(tops.at(i), (i + 1) * open.view().textLayout().rowHeight());
    open.press(Qt::Key_Up, {}, 5);
    EXPECT_EQ(open.selection(), caretAt(3));
}

TEST(TextViewKeys, PageUpAndPageDownMoveTheCaretAndTheViewByAPage)
{
    OpenEditor open(lines(300));
    open.press(Qt::Key_Down, {}, 4);
    const int place = open.pointAt(open.selection().caret).y();
    const int rows = open.view().viewport()->height() / open.view().textLayout().rowHeight() - 1;

    open.press(Qt::Key_PageDown);
    const qsizetype caret = open.selection().caret;
    const QString text = open.text();
    EXPECT_EQ(text.first(caret).count(u'\n'), 4 + rows);
    EXPECT_TRUE(open.isInView(caret));
    EXPECT_GT(open.view().verticalScrollBar()->value(), 0);
    open.press(Qt::Key_PageUp);
    EXPECT_EQ(open.text().first(open.selection().caret).count(u'\n'), 4);
    EXPECT_NEAR(open.pointAt(open.selection().caret).y(), place, 28);
    open.press(Qt::Key_PageUp);
    EXPECT_EQ(open.selection(), caretAt(0));
    EXPECT_EQ(open.view().verticalScrollBar()->value(), 0);
    open.press(Qt::Key_PageDown, kShift);
    EXPECT_EQ(open.selection().anchor, 0);
    EXPECT_GT(open.selection().caret, 0);
    for (int i = 0; i < 40; ++i)
        open.press(Qt::Key_PageDown);
    EXPECT_EQ(open.selection(), caretAt(text.size()));
    EXPECT_EQ(open.view().verticalScrollBar()->value(), open.view().verticalScrollBar()->maximum());
}

TEST(TextViewKeys, InARightToLeftParagraphLeftGoesForward)
{
    OpenEditor open(u"שלום עולם\nleft"_s);

    open.press(Qt::Key_Left, {}, 2);
    EXPECT_EQ(open.selection(), caretAt(2));
    open.press(Qt::Key_Right);
    EXPECT_EQ(open.selection(), caretAt(1));
    open.press(Qt::Key_Left, kCtrl);
    EXPECT_EQ(open.selection(), caretAt(5));
    open.press(Qt::Key_Right, kCtrl);
    EXPECT_EQ(open.selection(), caretAt(0));
    open.press(Qt::Key_Left, kShift, 4);
    EXPECT_EQ(open.selection(), (TextSelection{0, 4}));
    open.press(Qt::Key_End, kCtrl);
    open.press(Qt::Key_Left);
    EXPECT_EQ(open.selection(), caretAt(13)) << "in the other paragraph it goes back";
}

TEST(TextViewKeys, EveryMoveLeavesTheCaretInView)
{
    OpenEditor open(
        u"漢字の文章です。"_s.repeated(40).append(u'\n').repeated(60)); // rows that are twice as many as guessed
    const QList<std::pair<Qt::Key, Qt::KeyboardModifiers>> moves{
        {Qt::Key_PageDown, {}}, {Qt::Key_Down, {}},    {Qt::Key_End, kCtrl},  {Qt::Key_PageUp, {}},
        {Qt::Key_Up, {}},       {Qt::Key_Left, kCtrl}, {Qt::Key_Home, kCtrl}, {Qt::Key_PageDown, {}},
        {Qt::Key_End, {}},      {Qt::Key_Right, {}}};

    for (int round = 0; round < 6; ++round)
        for (const auto &[key, modifiers] : moves) {
            open.press(key, modifiers, 1 + round);

            EXPECT_TRUE(open.isInView(open.selection().caret)) << "round " << round << ", key " << key;
        }
}

} // namespace Tessaline
