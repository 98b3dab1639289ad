#include "editing/WYSIWYGEditor.h"

#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtCore/QMimeData>
#include <QtGui/QDropEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kTasks = u"Before\n\n- [ ] open\n- [X] done\n- bullet"_s;
const QString kTasksNormal = u"Before\n\n- [ ] open\n- [x] done\n- bullet"_s;
const QString kOpenDone = u"Before\n\n- [x] open\n- [x] done\n- bullet"_s;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

/// Drags something from another program over a point and lets it go there; false if it was not taken.
bool drop(OpenFormattedEditor &open, QPoint point, const QMimeData &transfer)
{
    QWidget *const viewport = open.view().viewport();
    QDragEnterEvent enter(point, Qt::CopyAction, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(point, Qt::CopyAction, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    return drop.isAccepted();
}

} // namespace

// Check boxes

TEST(WYSIWYGEditorMouse, AClickOnABoxTicksTheTaskAndLeavesTheCaret)
{
    OpenFormattedEditor open(kTasks);
    open.putCaretBehind(u"Bef"_s);

    open.click(open.rectOf(open.positionOf(u"☐"_s)).center());

    EXPECT_EQ(open.markdown(), kOpenDone);
    EXPECT_EQ(open.shown(), u"Before\n☑\topen\n☑\tdone\n•\tbullet"_s);
    EXPECT_EQ(open.selection(), caretAt(3));
    EXPECT_EQ(open.editCount(), 1);
    EXPECT_TRUE(open.view().hasFocus());
}

TEST(WYSIWYGEditorMouse, AnotherClickUnticksIt)
{
    OpenFormattedEditor open(kTasks);
    const QPoint box = open.rectOf(open.positionOf(u"☑"_s)).center();

    open.click(box);
    EXPECT_EQ(open.markdown(), u"Before\n\n- [ ] open\n- [ ] done\n- bullet"_s);
    open.click(box);
    EXPECT_EQ(open.markdown(), kTasksNormal);
}

TEST(WYSIWYGEditorMouse, AClickOnABoxKeepsWhatIsSelected)
{
    OpenFormattedEditor open(kTasks);
    open.select(12, 2);

    open.click(open.rectOf(open.positionOf(u"☐"_s)).center());

    EXPECT_EQ(open.markdown(), kOpenDone);
    EXPECT_EQ(open.selection(), (TextSelection{12, 2}));
}

TEST(WYSIWYGEditorMouse, ADoubleClickOnABoxIsTwoClicks)
{
    OpenFormattedEditor open(kTasks);
    open.putCaret(1);

    open.doubleClick(open.rectOf(open.positionOf(u"☐"_s)).center());

    EXPECT_EQ(open.markdown(), kTasksNormal);
    EXPECT_EQ(open.editCount(), 2);
    EXPECT_EQ(open.selection(), caretAt(1));
}

TEST(WYSIWYGEditorMouse, ABoxIsHitInItsEnlargedRectangleAndNotBeyond)
{
    const QString markdown = u"Before\n\n- [ ] open\n\nAfter"_s;
    const QString ticked = u"Before\n\n- [x] open\n\nAfter"_s;
    OpenFormattedEditor open(markdown);
    const QRect box = open.rectOf(open.positionOf(u"☐"_s));
    const QPoint center = box.center();
    const struct {
        QPoint point;
        bool isHit;
    } kCases[] = {
        {center, true},
        {{box.left() - 4, center.y()}, true},
        {{box.left() - 7, center.y()}, false},
        {{box.right() + 4, center.y()}, true},
        {{box.right() + 8, center.y()}, false},
        {{center.x(), box.top() - 2}, true},
        {{center.x(), box.top() - 5}, false},
        {{center.x(), box.bottom() + 2}, true},
        {{center.x(), box.bottom() + 5}, false},
    };
    for (const auto &[point, isHit] : kCases) {
        open.setMarkdown(markdown);

        open.click(point);

        EXPECT_EQ(open.markdown(), isHit ? ticked : markdown)
            << (point - box.topLeft()).x() << ' ' << (point - box.topLeft()).y();
    }
}

TEST(WYSIWYGEditorMouse, WhereTheRectanglesOfTwoBoxesMeetTheOneInTheRowOfThePointIsHit)
{
    OpenFormattedEditor open(kTasks);
    const QRect first = open.rectOf(open.positionOf(u"☐"_s));
    const QRect second = open.rectOf(open.positionOf(u"☑"_s));

    open.click({first.center().x(), first.bottom()});
    EXPECT_EQ(open.markdown(), kOpenDone);
    open.click({first.center().x(), second.top()});
    EXPECT_EQ(open.markdown(), u"Before\n\n- [x] open\n- [ ] done\n- bullet"_s);
}

TEST(WYSIWYGEditorMouse, AClickOnATasksTextMovesTheCaretAndTogglesNothing)
{
    OpenFormattedEditor open(kTasks);
    const qsizetype place = open.positionOf(u"pen"_s);

    open.click(open.pointAt(place));

    EXPECT_EQ(open.selection(), caretAt(place));
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorMouse, AClickOnABulletMovesTheCaretAndTogglesNothing)
{
    OpenFormattedEditor open(kTasks);
    const qsizetype bullet = open.positionOf(u"•"_s);

    open.click(open.rectOf(bullet).center() - QPoint(1, 0));

    EXPECT_EQ(open.selection(), caretAt(bullet));
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorMouse, ABoxThatWasTypedIsTextAndTogglesNothing)
{
    OpenFormattedEditor open(u"☐ no task\n\n- [ ] a ☐"_s);

    open.click(open.rectOf(0).center());
    open.click(open.rectOf(open.shown().size() - 1).center());

    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorMouse, ABoxThatLooksOpenOnADoneTaskTurnsOpenWhenClicked)
{
    OpenFormattedEditor open(u"- [x] a"_s);
    open.putCaretAtEnd();
    open.press(Qt::Key_Return);
    ASSERT_EQ(open.markdown(), u"- [x] a\n- [x] "_s);

    open.click(open.rectOf(4).center()); // the kind decides, not the sign

    EXPECT_EQ(open.markdown(), u"- [x] a\n- [ ] "_s);
    EXPECT_EQ(open.shown(), u"☑\ta\n☐\t"_s);
}

TEST(WYSIWYGEditorMouse, ABoxInTextFromRightToLeftIsOnTheRight)
{
    OpenFormattedEditor open(u"- [ ] שלום\n- [ ] a"_s);
    const QRect box = open.rectOf(0);
    ASSERT_GT(box.left(), OpenFormattedEditor::kWidth / 2);

    open.click(box.center());

    EXPECT_EQ(open.markdown(), u"- [x] שלום\n- [ ] a"_s);
}

TEST(WYSIWYGEditorMouse, ABoxWhoseTabWasDeletedStillToggles)
{
    OpenFormattedEditor open(u"- [ ] a"_s);
    open.putCaret(2);
    open.press(Qt::Key_Backspace);
    ASSERT_EQ(open.shown(), u"☐a"_s);

    open.click(open.rectOf(0).center());

    EXPECT_EQ(open.markdown(), u"- [x] a"_s);
}

TEST(WYSIWYGEditorMouse, ABoxOfATaskThatWrapsIsOnItsFirstRowOnly)
{
    OpenFormattedEditor open(u"- [ ] "_s + u"word "_s.repeated(80));
    const QRect box = open.rectOf(0);

    open.click(box.center() + QPoint(0, 2 * box.height()));
    EXPECT_EQ(open.editCount(), 0);
    open.click(box.center());
    EXPECT_TRUE(open.markdown().startsWith(u"- [x] word"_s));
}

TEST(WYSIWYGEditorMouse, ClicksInAnEmptyTextPutTheCaretThere)
{
    OpenFormattedEditor open;

    open.click({10, 10});
    open.click({300, 300});
    open.doubleClick({48, 40});

    EXPECT_EQ(open.selection(), caretAt(0));
    EXPECT_EQ(open.editCount(), 0);
    open.type(u"x"_s);
    EXPECT_EQ(open.markdown(), u"x"_s);
}

TEST(WYSIWYGEditorMouse, TheRightButtonTogglesNothing)
{
    OpenFormattedEditor open(kTasks);

    QTest::mouseClick(open.view().viewport(), Qt::MiddleButton, {}, open.rectOf(open.positionOf(u"☐"_s)).center());
    QTest::mousePress(open.view().viewport(), Qt::RightButton, {}, open.rectOf(open.positionOf(u"☐"_s)).center());

    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorMouse, ABoxIsToggledWithAnyKeyHeld)
{
    OpenFormattedEditor open(kTasks);
    const QPoint box = open.rectOf(open.positionOf(u"☐"_s)).center();

    open.click(box, Qt::ShiftModifier);
    EXPECT_EQ(open.editCount(), 1);
    open.click(box, Qt::ControlModifier);
    EXPECT_EQ(open.editCount(), 2);
    EXPECT_EQ(open.selection(), caretAt(0));
}

TEST(WYSIWYGEditorMouse, ThePointerSaysWhatAClickWouldDo)
{
    OpenFormattedEditor open(u"- [ ] task\n\n[link](https://example.com) text"_s);
    const auto shapeAt = [&open](QPoint point, Qt::KeyboardModifiers modifiers) {
        QMouseEvent move(QEvent::MouseMove, point, open.view().viewport()->mapToGlobal(point), Qt::NoButton,
                         Qt::NoButton, modifiers);
        QApplication::sendEvent(open.view().viewport(), &move);
        return open.view().viewport()->cursor().shape();
    };

    EXPECT_EQ(shapeAt(open.rectOf(0).center(), {}), Qt::ArrowCursor);
    EXPECT_EQ(shapeAt(open.pointAt(5), {}), Qt::IBeamCursor);
    const QPoint link = open.rectOf(open.positionOf(u"ink"_s)).center();
    EXPECT_EQ(shapeAt(link, {}), Qt::IBeamCursor);
    EXPECT_EQ(shapeAt(link, Qt::ControlModifier), Qt::PointingHandCursor);
}

// Dragging text

TEST(WYSIWYGEditorMouse, ADragSelectsAndTheSelectionIsFormatted)
{
    OpenFormattedEditor open(u"one two three"_s);

    open.drag(open.pointAt(4), open.pointAt(7));
    open.format(u"italic"_s);

    EXPECT_EQ(open.markdown(), u"one *two* three"_s);
}

TEST(WYSIWYGEditorMouse, TextDroppedFromElsewhereTakesTheKindOfWhereItLands)
{
    OpenFormattedEditor open(u"# one\n\n**two** three"_s);
    open.putCaretBefore(u"two"_s);
    QMimeData dropped;
    dropped.setText(u"dropped"_s);
    dropped.setHtml(u"<b>dropped</b>"_s);

    EXPECT_TRUE(drop(open, open.pointAt(1), dropped));

    EXPECT_EQ(open.markdown(), u"# odroppedne\n\n**two** three"_s);
    open.undo();
    EXPECT_EQ(open.markdown(), u"# one\n\n**two** three"_s);
}

TEST(WYSIWYGEditorMouse, FilesAreNotDroppedIntoTheText)
{
    OpenFormattedEditor open(u"one"_s);
    QMimeData dropped;
    dropped.setUrls({QUrl(u"file:///tmp/picture.png"_s)});
    dropped.setText(u"file:///tmp/picture.png"_s);

    EXPECT_FALSE(drop(open, open.pointAt(1), dropped));
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorMouse, TextMovedWithinTheEditorKeepsItsAttributes)
{
    OpenFormattedEditor open(u"one **two** [three](u)"_s);
    open.select(u"two three"_s);

    open.view().document().moveSelectionTo(0); // what a drop of the editor's own drag does

    EXPECT_EQ(open.markdown(), u"**two** [three](u)one "_s);
    open.undo();
    EXPECT_EQ(open.markdown(), u"one **two** [three](u)"_s);
}

} // namespace Tessaline
