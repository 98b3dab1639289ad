#include "editing/UndoHistory.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

UndoStep typed(qsizetype location, const QString &text)
{
    return {location,
            {},
            AttributedText(text),
            {location, location},
            {location + text.size(), location + text.size()},
            EditKind::Typing};
}

UndoStep deletedBackward(qsizetype end, const QString &text)
{
    const qsizetype start = end - text.size();
    return {start, AttributedText(text), {}, {end, end}, {start, start}, EditKind::DeletingBackward};
}

UndoStep deletedForward(qsizetype location, const QString &text)
{
    return {location, AttributedText(text), {}, {location, location}, {location, location}, EditKind::DeletingForward};
}

UndoStep other(qsizetype location, const QString &text)
{
    UndoStep step = typed(location, text);
    step.kind = EditKind::Other;
    return step;
}

UndoHistory historyOf(std::initializer_list<UndoStep> steps)
{
    UndoHistory history;
    for (const UndoStep &step : steps)
        history.add(step);
    return history;
}

qsizetype undoCount(UndoHistory history)
{
    qsizetype count = 0;
    while (history.takeUndo())
        ++count;
    return count;
}

} // namespace

TEST(UndoHistory, ANewOneHasNothingToTake)
{
    UndoHistory history;

    EXPECT_FALSE(history.canUndo());
    EXPECT_FALSE(history.canRedo());
    EXPECT_FALSE(history.takeUndo());
    EXPECT_FALSE(history.takeRedo());
}

TEST(UndoHistory, TypedCharactersGrowIntoOneStep)
{
    UndoHistory history = historyOf({typed(3, u"a"_s), typed(4, u"b"_s), typed(5, u"\U0001F600"_s)});

    const std::optional<UndoStep> step = history.takeUndo();

    ASSERT_TRUE(step);
    EXPECT_EQ(step->location, 3);
    EXPECT_EQ(step->inserted.text(), u"ab\U0001F600"_s);
    EXPECT_EQ(step->before, (TextSelection{3, 3}));
    EXPECT_EQ(step->after, (TextSelection{7, 7}));
    EXPECT_FALSE(history.canUndo());
}

TEST(UndoHistory, TypingOverASelectionBeginsARun)
{
    UndoHistory history =
        historyOf({{2, AttributedText(u"old"), AttributedText(u"n"), {2, 5}, {3, 3}, EditKind::Typing},
                   typed(3, u"e"_s),
                   typed(4, u"w"_s)});

    const std::optional<UndoStep> step = history.takeUndo();

    ASSERT_TRUE(step);
    EXPECT_EQ(step->removed.text(), u"old"_s);
    EXPECT_EQ(step->inserted.text(), u"new"_s);
    EXPECT_FALSE(history.canUndo());
}

TEST(UndoHistory, ALineEndOfAnyKindEndsARun)
{
    for (const QString &lineEnd : {u"\n"_s, u"\r"_s, u"\r\n"_s, u"\u2029"_s}) {
        const UndoHistory history = historyOf({typed(0, u"a"_s), typed(1, lineEnd), typed(1 + lineEnd.size(), u"b"_s)});

        EXPECT_EQ(undoCount(history), 2) << lineEnd.toUtf8().toHex().toStdString();
    }
}

TEST(UndoHistory, BackspacesGrowIntoOneStep)
{
    UndoHistory history = historyOf({deletedBackward(5, u"e"_s), deletedBackward(4, u"d"_s)});

    const std::optional<UndoStep> step = history.takeUndo();

    ASSERT_TRUE(step);
    EXPECT_EQ(step->location, 3);
    EXPECT_EQ(step->removed.text(), u"de"_s);
    EXPECT_EQ(step->before, (TextSelection{5, 5}));
    EXPECT_FALSE(history.canUndo());
}

TEST(UndoHistory, ForwardDeletionsGrowIntoOneStep)
{
    UndoHistory history = historyOf({deletedForward(2, u"c"_s), deletedForward(2, u"d"_s)});

    const std::optional<UndoStep> step = history.takeUndo();

    ASSERT_TRUE(step);
    EXPECT_EQ(step->location, 2);
    EXPECT_EQ(step->removed.text(), u"cd"_s);
    EXPECT_FALSE(history.canUndo());
}

TEST(UndoHistory, WhatDoesNotContinueARunIsAStepOfItsOwn)
{
    EXPECT_EQ(undoCount(historyOf({typed(0, u"a"_s), typed(5, u"b"_s)})), 2) << "typed elsewhere";
    EXPECT_EQ(undoCount(historyOf({typed(0, u"a"_s), deletedBackward(1, u"a"_s)})), 2) << "another kind";
    EXPECT_EQ(undoCount(historyOf({other(0, u"a"_s), other(1, u"b"_s)})), 2) << "other changes never join";
    EXPECT_EQ(undoCount(historyOf({other(0, u"a"_s), typed(1, u"b"_s)})), 2) << "typing behind another change";
    EXPECT_EQ(undoCount(historyOf({deletedBackward(5, u"e"_s), deletedBackward(9, u"x"_s)})), 2);
    EXPECT_EQ(undoCount(historyOf({deletedForward(2, u"c"_s), deletedForward(3, u"d"_s)})), 2);
}

TEST(UndoHistory, EndRunBeginsANewStep)
{
    UndoHistory history = historyOf({typed(0, u"a"_s)});

    history.endRun();
    history.add(typed(1, u"b"_s));

    EXPECT_EQ(undoCount(history), 2);
}

TEST(UndoHistory, UndoEndsARun)
{
    UndoHistory history = historyOf({typed(0, u"a"_s)});

    history.takeUndo();
    history.takeRedo();
    history.add(typed(1, u"b"_s));

    EXPECT_EQ(undoCount(history), 2);
}

TEST(UndoHistory, TakesStepsBackAndForthInOrder)
{
    UndoHistory history = historyOf({other(0, u"1"_s), other(1, u"2"_s), other(2, u"3"_s)});

    EXPECT_EQ(history.takeUndo()->inserted.text(), u"3"_s);
    EXPECT_EQ(history.takeUndo()->inserted.text(), u"2"_s);
    EXPECT_EQ(history.takeRedo()->inserted.text(), u"2"_s);
    EXPECT_EQ(history.takeRedo()->inserted.text(), u"3"_s);
    EXPECT_FALSE(history.canRedo());
    EXPECT_TRUE(history.canUndo());
}

TEST(UndoHistory, ANewChangeForgetsWhatCouldBeDoneAgain)
{
    UndoHistory history = historyOf({other(0, u"1"_s), other(1, u"2"_s)});
    history.takeUndo();

    history.add(other(1, u"x"_s));

    EXPECT_FALSE(history.canRedo());
    EXPECT_EQ(history.takeUndo()->inserted.text(), u"x"_s);
    EXPECT_EQ(history.takeUndo()->inserted.text(), u"1"_s);
}

TEST(UndoHistory, ClearForgetsEverything)
{
    UndoHistory history = historyOf({other(0, u"1"_s), other(1, u"2"_s)});
    history.takeUndo();

    history.clear();

    EXPECT_FALSE(history.canUndo());
    EXPECT_FALSE(history.canRedo());
}

TEST(UndoHistory, TheOldestStepsGoWhenAllTogetherAreTooLarge)
{
    const QString large(UndoHistory::kMostUnits / 4, u'x');
    UndoHistory history;

    for (int i = 0; i < 6; ++i)
        history.add(other(i, large));

    EXPECT_EQ(undoCount(history), 4);
    EXPECT_EQ(history.takeUndo()->location, 5);
}

TEST(UndoHistory, OneStepLargerThanAllThatIsKeptCanStillBeUndone)
{
    UndoHistory history = historyOf({other(0, u"1"_s)});

    history.add(other(0, QString(UndoHistory::kMostUnits + 1, u'x')));

    EXPECT_EQ(undoCount(history), 1);
}

} // namespace Tessaline
