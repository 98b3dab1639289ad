#include "editing/EditableText.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QSignalSpy>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using AnchorMode = EditableText::AnchorMode;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

std::unique_ptr<EditableText> textOf(const QString &text, const TextSelection &selection = {})
{
    auto editable = std::make_unique<EditableText>();
    editable->reset(ChunkedText(text));
    editable->select(selection);
    return editable;
}

void type(EditableText &text, const QString &characters)
{
    for (const QChar c : characters)
        text.insert(QString(c), EditKind::Typing);
}

QString plain(const EditableText &text)
{
    return text.text().toString();
}

} // namespace

// Typing and deleting

TEST(EditableText, BeginsEmptyWithACaretAtTheStart)
{
    const EditableText text;

    EXPECT_TRUE(text.text().isEmpty());
    EXPECT_EQ(text.selection(), caretAt(0));
    EXPECT_FALSE(text.canUndo());
    EXPECT_FALSE(text.canRedo());
}

TEST(EditableText, TypingReplacesTheSelectionAndPutsTheCaretBehind)
{
    const auto text = textOf(u"one two"_s, {4, 7});

    text->insert(u"2"_s, EditKind::Typing);

    EXPECT_EQ(plain(*text), u"one 2"_s);
    EXPECT_EQ(text->selection(), caretAt(5));
}

TEST(EditableText, ARunOfTypingIsOneStep)
{
    const auto text = textOf(u"()"_s, caretAt(1));

    type(*text, u"abc"_s);
    text->undo();

    EXPECT_EQ(plain(*text), u"()"_s);
    EXPECT_EQ(text->selection(), caretAt(1));
    EXPECT_FALSE(text->canUndo());
    text->redo();
    EXPECT_EQ(plain(*text), u"(abc)"_s);
    EXPECT_EQ(text->selection(), caretAt(4));
}

TEST(EditableText, ReturnEndsARunOfTyping)
{
    const auto text = textOf(u"x\u2029"_s, caretAt(1));

    type(*text, u"a"_s);
    text->insertLineEnd();
    type(*text, u"b"_s);
    text->undo();

    EXPECT_EQ(plain(*text), u"xa\u2029\u2029"_s);
    text->undo();
    EXPECT_EQ(plain(*text), u"x\u2029"_s);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, MovingTheCaretEndsARunOfTyping)
{
    const auto text = textOf(u""_s);

    type(*text, u"ab"_s);
    text->moveCaret(1, AnchorMode::MoveAnchor);
    text->moveCaret(2, AnchorMode::MoveAnchor);
    type(*text, u"c"_s);
    text->undo();

    EXPECT_EQ(plain(*text), u"ab"_s);
}

TEST(EditableText, ARunOfBackspacesIsOneStep)
{
    const auto text = textOf(u"abcdef"_s, caretAt(4));

    for (int i = 0; i < 3; ++i)
        text->deleteBackward();
    EXPECT_EQ(plain(*text), u"aef"_s);
    text->undo();

    EXPECT_EQ(plain(*text), u"abcdef"_s);
    EXPECT_EQ(text->selection(), caretAt(4));
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, ARunOfForwardDeletionsIsOneStep)
{
    const auto text = textOf(u"abcdef"_s, caretAt(1));

    for (int i = 0; i < 3; ++i)
        text->deleteForward();
    EXPECT_EQ(plain(*text), u"aef"_s);
    text->undo();

    EXPECT_EQ(plain(*text), u"abcdef"_s);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, DeletingTakesTheSelectionIfThereIsOne)
{
    for (const auto deletion : {&EditableText::deleteBackward, &EditableText::deleteForward,
                                &EditableText::deleteWordBackward, &EditableText::deleteWordForward}) {
        const auto text = textOf(u"one two"_s, {5, 2}); // the caret at its start

        (text.get()->*deletion)();

        EXPECT_EQ(plain(*text), u"onwo"_s);
        EXPECT_EQ(text->selection(), caretAt(2));
        text->undo();
        EXPECT_EQ(text->selection(), (TextSelection{5, 2}));
    }
}

TEST(EditableText, DeletingTakesWholeCharacters)
{
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
    for (const QString &character : {family, u"e\u0301"_s, u"\r\n"_s, u"\U0001D11E"_s, u"\U0001F44D\U0001F3FD"_s}) {
        const auto backward = textOf(u"a"_s + character + u"b"_s, caretAt(1 + character.size()));
        const auto forward = textOf(u"a"_s + character + u"b"_s, caretAt(1));

        backward->deleteBackward();
        forward->deleteForward();

        EXPECT_EQ(plain(*backward), u"ab"_s);
        EXPECT_EQ(plain(*forward), u"ab"_s);
    }
}

TEST(EditableText, DeletingAWordTakesWhatTheCaretWouldPass)
{
    const auto text = textOf(u"one two  three"_s, caretAt(9));

    text->deleteWordBackward();
    EXPECT_EQ(plain(*text), u"one three"_s);
    text->deleteWordForward();
    EXPECT_EQ(plain(*text), u"one "_s);
    text->undo();
    text->undo();
    EXPECT_EQ(plain(*text), u"one two  three"_s);
}

TEST(EditableText, DeletingAtTheEndsOfTheTextDoesNothing)
{
    const auto text = textOf(u"ab"_s);
    QSignalSpy edited(text.get(), &EditableText::edited);

    text->deleteBackward();
    text->deleteWordBackward();
    text->moveCaret(2, AnchorMode::MoveAnchor);
    text->deleteForward();
    text->deleteWordForward();

    EXPECT_EQ(plain(*text), u"ab"_s);
    EXPECT_EQ(edited.count(), 0);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, ReturnTakesTheLineEndOfTheDocument)
{
    for (const QString &lineEnd : {u"\n"_s, u"\r"_s, u"\r\n"_s, u"\u2029"_s}) {
        const auto text = textOf(u"one"_s + lineEnd + u"two"_s, caretAt(6 + lineEnd.size()));

        text->insertLineEnd();

        EXPECT_EQ(plain(*text), u"one"_s + lineEnd + u"two"_s + lineEnd);
        EXPECT_EQ(text->selection(), caretAt(text->text().size()));
    }
}

TEST(EditableText, ReplaceWithAnOffsetPutsTheCaretThereAsAStepOfItsOwn)
{
    const auto text = textOf(u"say x now"_s, {4, 5});
    type(*text, u"y"_s);

    text->replace({4, 1}, u"**y**", 2);

    EXPECT_EQ(plain(*text), u"say **y** now"_s);
    EXPECT_EQ(text->selection(), caretAt(6));
    text->undo();
    EXPECT_EQ(plain(*text), u"say y now"_s);
}

TEST(EditableText, ReplacingNothingByNothingIsNoEdit)
{
    const auto text = textOf(u"ab"_s, caretAt(1));
    QSignalSpy changed(text.get(), &EditableText::changed);

    text->insert(u"", EditKind::Typing);

    EXPECT_EQ(changed.count(), 0);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, UnpairedSurrogatesBecomeTheReplacementCharacter)
{
    const auto text = textOf(u"ab"_s, caretAt(1));

    text->insert(QString(QChar(0xD800)), EditKind::Other);

    EXPECT_EQ(plain(*text), u"a\uFFFDb"_s);
    text->undo();
    EXPECT_EQ(plain(*text), u"ab"_s);
    text->redo();
    EXPECT_EQ(plain(*text), u"a\uFFFDb"_s);
}

TEST(EditableText, ARangeThatCutsCharactersIsReplacedWithoutHalvingThem)
{
    // Input methods count in units and may name any range.
    const auto text = textOf(u"a\U0001F600b\U0001F601c"_s, caretAt(3));

    text->replace({2, 3}, u"x", EditKind::Other);

    EXPECT_EQ(plain(*text), u"axc"_s);
    text->undo();
    EXPECT_EQ(plain(*text), u"a\U0001F600b\U0001F601c"_s);
}

// The selection

TEST(EditableText, KeepAnchorSelectsFromWhereItBegan)
{
    const auto text = textOf(u"abcdef"_s, caretAt(3));

    text->moveCaret(1, AnchorMode::KeepAnchor);
    EXPECT_EQ(text->selection(), (TextSelection{3, 1}));
    EXPECT_EQ(text->selectedText(), u"bc"_s);
    text->moveCaret(5, AnchorMode::KeepAnchor);
    EXPECT_EQ(text->selection(), (TextSelection{3, 5}));
    text->moveCaret(5, AnchorMode::MoveAnchor);
    EXPECT_EQ(text->selection(), caretAt(5));
}

TEST(EditableText, TheSelectionIsClampedToTheText)
{
    const auto text = textOf(u"abc"_s);

    text->select({-5, 99});

    EXPECT_EQ(text->selection(), (TextSelection{0, 3}));
}

TEST(EditableText, TheSelectionNeverFallsInsideACharacter)
{
    const auto text = textOf(u"a\U0001F468\u200D\U0001F469e\u0301\r\nb"_s);
    const QList<qsizetype> boundaries{0, 1, 6, 8, 10, 11};

    for (qsizetype position = 0; position <= text->text().size(); ++position) {
        text->moveCaret(position, AnchorMode::MoveAnchor);

        EXPECT_TRUE(boundaries.contains(text->selection().caret)) << position;
        EXPECT_LE(text->selection().caret, position);
    }
}

TEST(EditableText, TheSameSelectionIsNotReportedAgain)
{
    const auto text = textOf(u"abc"_s, {1, 2});
    QSignalSpy changed(text.get(), &EditableText::selectionChanged);

    text->select({1, 2});

    EXPECT_EQ(changed.count(), 0);
}

TEST(EditableText, SelectAllReachesFromTheStartToTheEnd)
{
    const auto text = textOf(u"a\nb\n"_s, caretAt(2));

    text->selectAll();

    EXPECT_EQ(text->selection(), (TextSelection{0, 4}));
}

TEST(EditableText, TheCaretStaysBehindTypedTextThatJoinsWhatFollows)
{
    // The letter takes the mark that stood alone behind it: the caret would be inside the character.
    const auto text = textOf(u"\u0301"_s);

    type(*text, u"ex"_s);

    EXPECT_EQ(plain(*text), u"e\u0301x"_s);
    EXPECT_EQ(text->selection(), caretAt(3));
}

// By the program

TEST(EditableText, ResetKeepsTheNumbersOfTheSelectionClampedAndForgetsTheHistory)
{
    const auto text = textOf(u"a long text"_s, {2, 9});
    type(*text, u"x"_s);
    text->select({1, 4});
    QSignalSpy wasReset(text.get(), &EditableText::wasReset);
    QSignalSpy edited(text.get(), &EditableText::edited);

    text->reset(ChunkedText(u"new"_s));

    EXPECT_EQ(text->selection(), (TextSelection{1, 3}));
    EXPECT_FALSE(text->canUndo());
    EXPECT_EQ(wasReset.count(), 1);
    EXPECT_EQ(edited.count(), 0);
}

TEST(EditableText, TheSelectionFitsTheTextWheneverSomebodyIsTold)
{
    const auto text = textOf(u"a long text"_s, {3, 11});
    int told = 0;
    const auto check = [&text, &told] {
        ++told;
        EXPECT_LE(text->selection().anchor, text->text().size());
        EXPECT_LE(text->selection().caret, text->text().size());
    };
    QObject::connect(text.get(), &EditableText::wasReset, check);
    QObject::connect(text.get(), &EditableText::changed, check);
    QObject::connect(text.get(), &EditableText::selectionChanged, check);
    QObject::connect(text.get(), &EditableText::edited, check);

    text->replace({2, 9}, u"", EditKind::Other);
    text->undo();
    text->replaceFromOutside(ChunkedText(u"a"_s));
    text->select({0, 1});
    text->reset(ChunkedText());

    EXPECT_GE(told, 9);
}

TEST(EditableText, ReplaceFromOutsideIsOneUndoableStepOfWhatDiffers)
{
    const auto text = textOf(u"one two three"_s, {4, 7});
    type(*text, u"2"_s);
    QSignalSpy changed(text.get(), &EditableText::changed);
    QSignalSpy edited(text.get(), &EditableText::edited);

    text->replaceFromOutside(ChunkedText(u"one 22 three"_s));

    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).value<TextChange>().inserted, 1);
    EXPECT_EQ(changed.at(0).at(0).value<TextChange>().removed, 0);
    EXPECT_EQ(edited.count(), 0);
    text->undo();
    EXPECT_EQ(plain(*text), u"one 2 three"_s);
    EXPECT_EQ(edited.count(), 1);
    text->redo();
    EXPECT_EQ(plain(*text), u"one 22 three"_s);
}

TEST(EditableText, ReplaceFromOutsideWithTheSameTextDoesNothing)
{
    const auto text = textOf(u"same"_s, caretAt(2));
    QSignalSpy changed(text.get(), &EditableText::changed);

    text->replaceFromOutside(ChunkedText(u"same"_s));

    EXPECT_EQ(changed.count(), 0);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, ReplaceFromOutsideKeepsTheNumbersOfTheSelectionClamped)
{
    const auto text = textOf(u"one two three"_s, {4, 13});

    text->replaceFromOutside(ChunkedText(u"one two"_s));

    EXPECT_EQ(text->selection(), (TextSelection{4, 7}));
}

TEST(EditableText, ReplaceFromOutsideCutsNeitherSurrogatePairsNorLineEnds)
{
    const QList<std::pair<QString, QString>> pairs{
        {u"a\U0001F600b"_s, u"a\U0001F601b"_s}, // the first halves are equal
        {u"a\U0001F600b"_s, u"a\U0001FA00b"_s}, // the second halves are equal
        {u"a\r\nb"_s, u"a\rb"_s},
        {u"a\r\nb"_s, u"a\nb"_s},
        {u"a\rb"_s, u"a\r\nb"_s},
        {u"a\nb"_s, u"a\r\nb"_s},
        {u"aa"_s, u"aaa"_s},
        {u"\U0001F600\U0001F600"_s, u"\U0001F600"_s},
        {u""_s, u"\U0001F600"_s},
    };
    for (const auto &[before, after] : pairs) {
        const auto text = textOf(before);

        text->replaceFromOutside(ChunkedText(after));
        EXPECT_EQ(plain(*text), after);
        text->undo();
        EXPECT_EQ(plain(*text), before);
        text->redo();
        EXPECT_EQ(plain(*text), after);
    }
}

TEST(EditableText, FollowEditKeepsTheSelectionWithItsText)
{
    struct Case {
        TextChange change;
        QString inserted;
        TextSelection selection; // "three" is selected before
        const char *name;
    };
    const QList<Case> cases{
        {{0, 0, 4}, u"zero"_s, {12, 17}, "inserted before"},
        {{0, 4, 0}, u""_s, {4, 9}, "removed before"},
        {{13, 0, 2}, u"!!"_s, {8, 13}, "inserted right behind"},
        {{8, 0, 2}, u"!!"_s, {8, 15}, "inserted at its start"},
        {{10, 0, 2}, u"!!"_s, {8, 15}, "inserted inside"},
        {{10, 4, 1}, u"X"_s, {8, 10}, "its end replaced"},
        {{6, 4, 1}, u"X"_s, {6, 10}, "its start replaced"},
        {{6, 9, 1}, u"X"_s, {6, 6}, "replaced with its surroundings"},
    };
    for (const Case &test : cases) {
        const auto text = textOf(u"one two three four"_s, {8, 13});
        QSignalSpy edited(text.get(), &EditableText::edited);
        ChunkedText fresh = text->text();
        fresh.replace(test.change.location, test.change.removed, test.inserted);

        text->followEdit(fresh, test.change);

        EXPECT_EQ(text->text(), fresh) << test.name;
        EXPECT_EQ(text->selection(), test.selection) << test.name;
        EXPECT_EQ(edited.count(), 0) << test.name;
        text->undo();
        EXPECT_EQ(plain(*text), u"one two three four"_s) << test.name;
    }
}

TEST(EditableText, TypingInAnotherEditorIsOneStepHereToo)
{
    const auto text = textOf(u"ab"_s, caretAt(2));
    ChunkedText fresh = text->text();

    for (int i = 0; i < 4; ++i)
        text->followEdit(fresh, fresh.replace(1 + i, 0, u"x"));
    text->undo();

    EXPECT_EQ(plain(*text), u"ab"_s);
    EXPECT_FALSE(text->canUndo());
}

// Whole operations

TEST(EditableText, MoveSelectionToMovesForwardsAndBackwardsAsOneStep)
{
    const auto forwards = textOf(u"one two three"_s, {0, 4});
    const auto backwards = textOf(u"one two three"_s, {7, 4});

    forwards->moveSelectionTo(8);
    backwards->moveSelectionTo(0);

    EXPECT_EQ(plain(*forwards), u"two one three"_s);
    EXPECT_EQ(forwards->selection(), (TextSelection{4, 8}));
    EXPECT_EQ(plain(*backwards), u"twoone  three"_s);
    EXPECT_EQ(backwards->selection(), (TextSelection{0, 3}));
    forwards->undo();
    backwards->undo();
    EXPECT_EQ(plain(*forwards), u"one two three"_s);
    EXPECT_EQ(plain(*backwards), u"one two three"_s);
    EXPECT_EQ(backwards->selection(), (TextSelection{7, 4}));
}

TEST(EditableText, MoveSelectionToItselfDoesNothing)
{
    for (const qsizetype position : {2, 3, 5}) {
        const auto text = textOf(u"abcdefg"_s, {2, 5});

        text->moveSelectionTo(position);

        EXPECT_EQ(plain(*text), u"abcdefg"_s);
        EXPECT_FALSE(text->canUndo());
    }
}

TEST(EditableText, MoveSelectionToWithoutASelectionDoesNothing)
{
    const auto text = textOf(u"abc"_s, caretAt(1));

    text->moveSelectionTo(3);

    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, ReplaceAllIsOneStep)
{
    const auto text = textOf(u"a-b-c-d"_s);
    QSignalSpy edited(text.get(), &EditableText::edited);

    text->replaceAll({{1, 1}, {3, 1}, {5, 1}}, u"++"_s);

    EXPECT_EQ(plain(*text), u"a++b++c++d"_s);
    EXPECT_EQ(edited.count(), 1);
    text->undo();
    EXPECT_EQ(plain(*text), u"a-b-c-d"_s);
    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, ReplaceAllOfNothingDoesNothing)
{
    const auto text = textOf(u"abc"_s);

    text->replaceAll({}, u"x"_s);

    EXPECT_FALSE(text->canUndo());
}

TEST(EditableText, AnEditReportsTheChangeBeforeTheSelectionAndThePerson)
{
    const auto text = textOf(u"abc"_s, caretAt(3));
    QStringList order;
    QObject::connect(text.get(), &EditableText::changed, [&order] { order.append(u"changed"_s); });
    QObject::connect(text.get(), &EditableText::selectionChanged, [&order] { order.append(u"selectionChanged"_s); });
    QObject::connect(text.get(), &EditableText::edited, [&order] { order.append(u"edited"_s); });

    text->insert(u"d", EditKind::Typing);

    EXPECT_EQ(order, (QStringList{u"changed"_s, u"selectionChanged"_s, u"edited"_s}));
}

TEST(EditableText, UndoAndRedoWithoutStepsDoNothing)
{
    const auto text = textOf(u"abc"_s);
    QSignalSpy changed(text.get(), &EditableText::changed);

    text->undo();
    text->redo();

    EXPECT_EQ(changed.count(), 0);
}

} // namespace Tessaline
