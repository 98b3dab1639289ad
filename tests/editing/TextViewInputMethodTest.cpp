#include "editing/TextViewInputMethod.h"

#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QInputMethodEvent>
#include <QtGui/QTextCharFormat>
#include <QtWidgets/QApplication>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

} // namespace

TEST(TextViewInputMethod, ComposedTextIsShownButNotInTheDocument)
{
    OpenEditor open(u"ab"_s);
    open.press(Qt::Key_Right);
    const int place = open.pointAt(2).x();

    open.compose(u"にほん"_s);

    EXPECT_EQ(open.text(), u"ab"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
    EXPECT_EQ(open.selection(), caretAt(1));
    EXPECT_GT(open.pointAt(2).x(), place + 20) << "what follows makes room";
    EXPECT_GT(open.pointAt(1).x(), open.pointAt(0).x() + 20) << "the caret stands behind it";
    EXPECT_FALSE(open.view().document().canUndo());
}

TEST(TextViewInputMethod, TheCaretStandsInTheComposedTextWhereTheInputMethodWantsIt)
{
    OpenEditor open;
    open.compose(u"abcd"_s);
    const int behind = open.pointAt(0).x();

    QInputMethodEvent event(u"abcd"_s, {{QInputMethodEvent::Cursor, 1, 1, {}}});
    QApplication::sendEvent(&open.view(), &event);

    EXPECT_NEAR(open.pointAt(0).x() - 28, (behind - 28) / 4.0, 1.5);
}

TEST(TextViewInputMethod, TheCommittedTextIsTyped)
{
    OpenEditor open(u"ab"_s);
    open.press(Qt::Key_Right);

    open.compose(u"に"_s);
    open.compose(u"にほん"_s);
    open.commit(u"日本"_s);

    EXPECT_EQ(open.text(), u"a日本b"_s);
    EXPECT_EQ(open.selection(), caretAt(3));
    EXPECT_EQ(open.editedTexts.size(), 1);
    EXPECT_NEAR(open.pointAt(3).x(), open.view().caretRectInViewport(open.selection().caret).left(), 1);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"ab"_s);
}

TEST(TextViewInputMethod, ACancelledCompositionLeavesTheText)
{
    OpenEditor open(u"ab"_s);
    const int place = open.pointAt(2).x();

    open.compose(u"に"_s);
    open.compose(u""_s);

    EXPECT_EQ(open.text(), u"ab"_s);
    EXPECT_EQ(open.pointAt(2).x(), place);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(TextViewInputMethod, ComposingTakesThePlaceOfTheSelection)
{
    OpenEditor open(u"one two"_s);
    open.select(4, 7);

    open.compose(u"に"_s);
    EXPECT_EQ(open.text(), u"one "_s);
    open.commit(u"二"_s);

    EXPECT_EQ(open.text(), u"one 二"_s);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"one two"_s);
}

TEST(TextViewInputMethod, ACommitWithoutCompositionTypes)
{
    OpenEditor open(u"one two"_s);
    open.select(0, 3);

    open.commit(u"é"_s); // as a dead key gives it

    EXPECT_EQ(open.text(), u"é two"_s);
}

TEST(TextViewInputMethod, ACommitMayReplaceTextAroundTheCaret)
{
    OpenEditor open(u"hello wrold"_s);
    open.press(Qt::Key_End);

    open.commit(u"world"_s, -5, 5);
    EXPECT_EQ(open.text(), u"hello world"_s);
    open.commit(u""_s, -6, 6);
    EXPECT_EQ(open.text(), u"hello"_s);
    open.commit(u"y"_s, -99, 99);
    EXPECT_EQ(open.text(), u"y"_s) << "clamped to the text";
}

TEST(TextViewInputMethod, AReplacementNeverHalvesASurrogatePair)
{
    OpenEditor open(u"a\U0001F600b"_s);
    open.press(Qt::Key_End);

    open.commit(u"x"_s, -2, 2);

    EXPECT_EQ(open.text(), u"ax"_s);
}

TEST(TextViewInputMethod, AReplacementMayTakeAMarkOffItsLetter)
{
    OpenEditor open(u"tie\u0302"_s); // keyboards for Vietnamese correct marks one by one
    open.press(Qt::Key_End);

    open.commit(u"\u0301"_s, -1, 1);

    EXPECT_EQ(open.text(), u"tie\u0301"_s);
}

TEST(TextViewInputMethod, TheFormatsOfAnInputMethodAreShown)
{
    OpenEditor open(u"ab"_s);
    open.press(Qt::Key_Right);
    QTextCharFormat format;
    format.setFontUnderline(true);
    QInputMethodEvent event(u"xyz"_s,
                            {{QInputMethodEvent::TextFormat, 1, 2, QVariant::fromValue<QTextFormat>(format)}});

    QApplication::sendEvent(&open.view(), &event);

    const QList<QTextLayout::FormatRange> formats = open.view().textLayout().blockAt(0).layout->formats();
    const auto underlined =
        std::find_if(formats.begin(), formats.end(), [](const auto &range) { return range.format.fontUnderline(); });
    ASSERT_NE(underlined, formats.end());
    EXPECT_EQ(underlined->start, 2);
    EXPECT_EQ(underlined->length, 2);
}

TEST(TextViewInputMethod, AnEditOfAnotherEditorWhileComposingKeepsBoth)
{
    OpenEditor open(u"one\ntwo"_s);
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.compose(u"に"_s);

    ChunkedText text = open.editor.shownText();
    open.editor.followEdit(text, text.replace(0, 4, u""));
    open.settle();
    open.commit(u"二"_s);

    EXPECT_EQ(open.text(), u"two二"_s);
}

TEST(TextViewInputMethod, AnotherDocumentWhileComposingForgetsTheComposition)
{
    OpenEditor open(u"one\ntwo"_s);
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.compose(u"に"_s);

    open.open(u"/tmp/other.md"_s, u"x"_s);
    open.settle();

    EXPECT_TRUE(open.view().textLayout().preedit().text.isEmpty());
    EXPECT_EQ(open.text(), u"x"_s);
}

TEST(TextViewInputMethod, AnswersWhatInputMethodsAsk)
{
    OpenEditor open(u"first\nsecond line\r\nthird"_s);
    open.select(13, 9);
    const auto ask = [&open](Qt::InputMethodQuery query) { return open.view().inputMethodQuery(query); };

    EXPECT_TRUE(ask(Qt::ImEnabled).toBool());
    EXPECT_EQ(ask(Qt::ImSurroundingText).toString(), u"second line"_s);
    EXPECT_EQ(ask(Qt::ImCursorPosition).toInt(), 3);
    EXPECT_EQ(ask(Qt::ImAnchorPosition).toInt(), 7);
    EXPECT_EQ(ask(Qt::ImCurrentSelection).toString(), u"ond "_s);
    EXPECT_EQ(ask(Qt::ImTextBeforeCursor).toString(), u"sec"_s);
    EXPECT_EQ(ask(Qt::ImTextAfterCursor).toString(), u"ond line"_s);
    EXPECT_EQ(ask(Qt::ImAbsolutePosition).toInt(), 9);
    EXPECT_EQ(ask(Qt::ImCursorRectangle).toRect().topLeft(), open.view().caretRectInViewport(9).topLeft());
    EXPECT_TRUE(ask(Qt::ImFont).isValid());
}

TEST(TextViewInputMethod, AnswersWithTheSurroundingsOnlyInAVeryLongParagraph)
{
    OpenEditor open(u"word "_s.repeated(100'000));
    open.select(250'000, 250'000);

    EXPECT_EQ(open.view().inputMethodQuery(Qt::ImSurroundingText).toString().size(), 2048);
    EXPECT_EQ(open.view().inputMethodQuery(Qt::ImCursorPosition).toInt(), 1024);
}

} // namespace Tessaline
