#include "editing/TextViewMouse.h"

#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtCore/QMimeData>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QDrag>
#include <QtGui/QDropEvent>
#include <QtGui/QStyleHints>
#include <QtGui/QWindow>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>

#include <chrono>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

QString lines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"line %1\n"_s.arg(i));
    return text;
}

/// Lets text come from elsewhere over a point of the viewport and fall there; whether it was taken.
bool dropAt(OpenEditor &open, QPoint point, const QMimeData &transfer, Qt::DropAction action = Qt::CopyAction)
{
    QWidget *const viewport = open.view().viewport();
    QDragEnterEvent enter(point, action, &transfer, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(viewport, &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(point, action, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QDropEvent drop(point, action, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    return drop.isAccepted();
}

/// The platform of most tests ends every drag at once; `editing_ui.X11` runs these tests where drags are real.
bool hasDrags()
{
    return QGuiApplication::platformName() != "offscreen"_L1;
}

/// Drags from one position, inside the selection, to another, through the window as the platform does it.
void dragSelection(OpenEditor &open, qsizetype from, qsizetype to, Qt::KeyboardModifiers modifiers)
{
    QWindow *const window = open.editor.windowHandle();
    const auto inWindow = [&open](qsizetype position) {
        return open.view().viewport()->mapTo(&open.editor, open.pointAt(position));
    };
    const QPoint target = inWindow(to);
    // The drag runs an event loop of its own, in which the pointer goes on.
    QTimer whileDragging;
    QObject::connect(&whileDragging, &QTimer::timeout, window, [&, hasMoved = false]() mutable {
        if (!open.view().findChild<QDrag *>())
            return; // has yet to begin
        if (std::exchange(hasMoved, true)) {
            whileDragging.stop();
            QTest::mouseRelease(window, Qt::LeftButton, modifiers, target);
        } else {
            QTest::mouseMove(window, target);
        }
    });
    whileDragging.start(std::chrono::milliseconds(20));

    QTest::mousePress(window, Qt::LeftButton, modifiers, inWindow(from));
    QTest::mouseMove(window, inWindow(from) + QPoint(QApplication::startDragDistance() + 2, 2));
    QApplication::processEvents();
}

} // namespace

// Carets and selections

TEST(TextViewMouse, AClickPutsTheCaretAtTheNearestPlace)
{
    OpenEditor open(u"one two\nthree\n\nlast"_s);
    const int advance = open.pointAt(1).x() - open.pointAt(0).x();

    open.click(open.pointAt(5));
    EXPECT_EQ(open.selection(), caretAt(5));
    open.click(open.pointAt(5) + QPoint(advance / 2 + 2, 0));
    EXPECT_EQ(open.selection(), caretAt(6)) << "nearer to the next character";
    open.click(open.pointAt(3) + QPoint(400, 0));
    EXPECT_EQ(open.selection(), caretAt(7)) << "behind the end of the line";
    open.click({3, open.pointAt(10).y()});
    EXPECT_EQ(open.selection(), caretAt(8)) << "in the margin";
    open.click(open.pointAt(14));
    EXPECT_EQ(open.selection(), caretAt(14)) << "the empty line";
    open.click({40, 390});
    EXPECT_EQ(open.selection(), caretAt(16)) << "below the text: in its last line";
    open.click({300, 2});
    EXPECT_EQ(open.selection(), caretAt(7)) << "above the text: in its first line";
}

TEST(TextViewMouse, AClickGivesTheTextTheFocus)
{
    OpenEditor open(u"text"_s);
    open.view().clearFocus();

    open.click(open.pointAt(2));

    EXPECT_TRUE(open.view().hasFocus());
}

TEST(TextViewMouse, DraggingSelectsInBothDirections)
{
    OpenEditor open(u"one two\nthree"_s);

    open.drag(open.pointAt(1), open.pointAt(11));
    EXPECT_EQ(open.selection(), (TextSelection{1, 11}));
    open.click(open.pointAt(0));
    open.drag(open.pointAt(11), open.pointAt(1));
    EXPECT_EQ(open.selection(), (TextSelection{11, 1}));
}

TEST(TextViewMouse, AClickWithShiftMovesTheNearerToTheClick)
{
    OpenEditor open(u"one two three"_s);
    open.click(open.pointAt(4));

    open.click(open.pointAt(9), Qt::ShiftModifier);
    EXPECT_EQ(open.selection(), (TextSelection{4, 9}));
    open.click(open.pointAt(6), Qt::ShiftModifier);
    EXPECT_EQ(open.selection(), (TextSelection{4, 6}));
    open.click(open.pointAt(1), Qt::ShiftModifier);
    EXPECT_EQ(open.selection(), (TextSelection{4, 1}));
}

TEST(TextViewMouse, ADoubleClickSelectsAWord)
{
    OpenEditor open(u"one two-three\r\nfour"_s);

    open.doubleClick(open.pointAt(5));
    EXPECT_EQ(open.selection(), (TextSelection{4, 7}));
    QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval() + 50);
    open.doubleClick(open.pointAt(3) + QPoint(2, 0));
    EXPECT_EQ(open.selection(), (TextSelection{3, 4})) << "the gap";
}

TEST(TextViewMouse, DraggingFromADoubleClickSelectsWholeWords)
{
    OpenEditor open(u"one two three four"_s);
    QWidget *const viewport = open.view().viewport();

    QTest::mouseClick(viewport, Qt::LeftButton, {}, open.pointAt(5));
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, open.pointAt(5));
    // The double click of QTest ends with a release; a person still holds the button.
    QMouseEvent again(QEvent::MouseButtonDblClick, open.pointAt(5), viewport->mapToGlobal(open.pointAt(5)),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &again);
    const auto moveTo = [&](qsizetype position) {
        QMouseEvent move(QEvent::MouseMove, open.pointAt(position), viewport->mapToGlobal(open.pointAt(position)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
    };

    moveTo(10);
    EXPECT_EQ(open.selection(), (TextSelection{4, 13}));
    moveTo(1);
    EXPECT_EQ(open.selection(), (TextSelection{7, 0}));
    moveTo(5);
    EXPECT_EQ(open.selection(), (TextSelection{4, 7}));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, open.pointAt(5));
}

TEST(TextViewMouse, ATripleClickSelectsAParagraphWithItsLineEnd)
{
    OpenEditor open(u"one\r\ntwo words\r\nlast"_s);

    open.tripleClick(open.pointAt(7));

    EXPECT_EQ(open.selection(), (TextSelection{5, 16}));
}

TEST(TextViewMouse, AThirdClickThatComesLateOrElsewherePutsTheCaret)
{
    OpenEditor open(u"one two three\nfour"_s);

    open.doubleClick(open.pointAt(5));
    open.click(open.pointAt(12));
    EXPECT_EQ(open.selection(), caretAt(12)) << "elsewhere";
    QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval() + 50);
    open.doubleClick(open.pointAt(5));
    QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval() + 50);
    open.click(open.pointAt(7));
    EXPECT_EQ(open.selection(), caretAt(7)) << "late";
}

TEST(TextViewMouse, AClickInsideTheSelectionPutsTheCaretWhenItIsReleased)
{
    OpenEditor open(u"one two three"_s);
    open.select(2, 9);

    QTest::mousePress(open.view().viewport(), Qt::LeftButton, {}, open.pointAt(5));
    EXPECT_EQ(open.selection(), (TextSelection{2, 9})) << "it may become a drag";
    QTest::mouseRelease(open.view().viewport(), Qt::LeftButton, {}, open.pointAt(5));

    EXPECT_EQ(open.selection(), caretAt(5));
}

TEST(TextViewMouse, TheRightButtonLeavesTheSelection)
{
    OpenEditor open(u"one two three"_s);
    open.select(2, 9);

    QTest::mousePress(open.view().viewport(), Qt::RightButton, {}, open.pointAt(12));
    QTest::mouseRelease(open.view().viewport(), Qt::RightButton, {}, open.pointAt(12));

    EXPECT_EQ(open.selection(), (TextSelection{2, 9}));
}

TEST(TextViewMouse, DraggingOverAnEdgeScrollsOn)
{
    OpenEditor open(lines(300));
    QWidget *const viewport = open.view().viewport();
    const QPoint below(60, viewport->height() + 30);

    QTest::mousePress(viewport, Qt::LeftButton, {}, open.pointAt(3));
    QMouseEvent move(QEvent::MouseMove, below, viewport->mapToGlobal(below), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    const qsizetype reached = open.selection().caret;

    EXPECT_TRUE(eventually([&] { return open.selection().caret > reached + 50; }));
    EXPECT_EQ(open.selection().anchor, 3);
    EXPECT_GT(open.view().verticalScrollBar()->value(), 0);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, below);
    const TextSelection selection = open.selection();
    QTest::qWait(80);
    EXPECT_EQ(open.selection(), selection) << "the release ends it";
}

// The primary selection

TEST(TextViewMouse, TheMiddleButtonPastesTheLastSelectionWhereThePlatformHasOne)
{
    OpenEditor open(u"one two "_s);

    open.drag(open.pointAt(0), open.pointAt(4));
    QTest::mouseClick(open.view().viewport(), Qt::MiddleButton, {}, open.pointAt(8));

    if (QApplication::clipboard()->supportsSelection()) {
        EXPECT_EQ(open.text(), u"one two one "_s);
        EXPECT_EQ(open.selection(), caretAt(12));
    } else {
        EXPECT_EQ(open.text(), u"one two "_s);
        EXPECT_TRUE(open.editedTexts.isEmpty());
    }
}

// Drag and drop

TEST(TextViewMouse, DroppedTextGoesWhereItFallsAndIsSelected)
{
    OpenEditor open(u"one three"_s);
    open.select(0, 3);
    QMimeData transfer;
    transfer.setText(u"two\n"_s);

    EXPECT_TRUE(dropAt(open, open.pointAt(4), transfer));

    EXPECT_EQ(open.text(), u"one two\nthree"_s);
    EXPECT_EQ(open.selection(), (TextSelection{4, 8}));
    EXPECT_EQ(open.editedTexts.size(), 1);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"one three"_s);
    EXPECT_EQ(open.selection(), (TextSelection{0, 3}));
}

TEST(TextViewMouse, DraggingTheSelectionMovesItsTextAsOneStep)
{
    if (!hasDrags())
        GTEST_SKIP() << "this platform has no drags";
    OpenEditor open(u"one two three"_s);
    open.select(0, 4);

    dragSelection(open, 2, 8, Qt::NoModifier);

    EXPECT_EQ(open.text(), u"two one three"_s);
    EXPECT_EQ(open.selection(), (TextSelection{4, 8}));
    EXPECT_EQ(open.editedTexts.size(), 1);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"one two three"_s);
}

TEST(TextViewMouse, DraggingTheSelectionWithCtrlCopiesItsText)
{
    if (!hasDrags())
        GTEST_SKIP() << "this platform has no drags";
    OpenEditor open(u"one two three"_s);
    open.select(0, 4);

    dragSelection(open, 2, 8, Qt::ControlModifier);

    EXPECT_EQ(open.text(), u"one two one three"_s);
    EXPECT_EQ(open.selection(), (TextSelection{8, 12}));
}

TEST(TextViewMouse, DroppingTheSelectionOnItselfChangesNothing)
{
    if (!hasDrags())
        GTEST_SKIP() << "this platform has no drags";
    OpenEditor open(u"one two three"_s);
    open.select(0, 9);

    dragSelection(open, 2, 6, Qt::NoModifier);

    EXPECT_EQ(open.text(), u"one two three"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(TextViewMouse, MovingTextFromElsewhereInsertsItHere)
{
    OpenEditor open(u"ab"_s);
    QMimeData transfer;
    transfer.setText(u"x"_s);

    EXPECT_TRUE(dropAt(open, open.pointAt(1), transfer, Qt::MoveAction));

    EXPECT_EQ(open.text(), u"axb"_s);
}

TEST(TextViewMouse, FilesAreLeftToTheWindow)
{
    OpenEditor open(u"text"_s);
    QMimeData transfer;
    transfer.setUrls({QUrl::fromLocalFile(u"/tmp/file.md"_s)});
    QMimeData picture;
    picture.setData(u"image/png"_s, "not text");

    EXPECT_FALSE(dropAt(open, open.pointAt(1), transfer));
    EXPECT_FALSE(dropAt(open, open.pointAt(1), picture));

    EXPECT_EQ(open.text(), u"text"_s);
}

TEST(TextViewMouse, AFailedDropLeavesNoTrace)
{
    OpenEditor open(u"text"_s);
    open.select(0, 2);
    QMimeData transfer;
    transfer.setText(u"x"_s);
    const QPoint point = open.pointAt(3);
    QDragEnterEvent enter(point, Qt::CopyAction, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(open.view().viewport(), &enter);
    QDragMoveEvent move(point, Qt::CopyAction, &transfer, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(open.view().viewport(), &move);

    QDragLeaveEvent leave;
    QApplication::sendEvent(open.view().viewport(), &leave);

    EXPECT_EQ(open.text(), u"text"_s);
    EXPECT_EQ(open.selection(), (TextSelection{0, 2}));
}

// The context menu

TEST(TextViewMouse, TheContextMenuOffersWhatIsPossible)
{
    QApplication::clipboard()->clear();
    OpenEditor open;
    const auto enabled = [&open] {
        QStringList titles;
        const std::unique_ptr<QMenu> menu = open.view().makeContextMenu();
        for (const QAction *action : menu->actions())
            if (!action->isSeparator() && action->isEnabled())
                titles.append(action->text());
        return titles;
    };

    EXPECT_EQ(enabled(), QStringList());
    open.type(u"text"_s);
    EXPECT_EQ(enabled(), (QStringList{u"Undo"_s, u"Select All"_s}));
    open.press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(enabled(), (QStringList{u"Undo"_s, u"Cut"_s, u"Copy"_s, u"Delete"_s, u"Select All"_s}));
    open.press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(enabled(), (QStringList{u"Undo"_s, u"Paste"_s}));
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(enabled().contains(u"Redo"_s));
}

TEST(TextViewMouse, TheContextMenuDoesWhatItSays)
{
    OpenEditor open(u"one two"_s);
    const auto choose = [&open](const QString &title) {
        const std::unique_ptr<QMenu> menu = open.view().makeContextMenu();
        for (QAction *action : menu->actions())
            if (action->text() == title)
                action->trigger();
    };
    open.select(0, 4);

    choose(u"Copy"_s);
    choose(u"Delete"_s);
    EXPECT_EQ(open.text(), u"two"_s);
    choose(u"Paste"_s);
    EXPECT_EQ(open.text(), u"one two"_s);
    choose(u"Undo"_s);
    choose(u"Undo"_s);
    EXPECT_EQ(open.text(), u"one two"_s);
    choose(u"Redo"_s);
    choose(u"Select All"_s);
    choose(u"Cut"_s);
    EXPECT_EQ(open.text(), u""_s);
    EXPECT_EQ(QApplication::clipboard()->text(), u"two"_s);
}

TEST(TextViewMouse, TheContextMenuOpensAndClosesWithoutChange)
{
    OpenEditor open(u"one two"_s);
    open.select(1, 3);
    bool wasOpen = false;
    QTimer::singleShot(50, &open.editor, [&wasOpen] {
        wasOpen = QApplication::activePopupWidget() != nullptr;
        if (wasOpen)
            QApplication::activePopupWidget()->close();
    });

    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(open.view().viewport(), &event);

    EXPECT_TRUE(wasOpen);
    EXPECT_EQ(open.selection(), (TextSelection{1, 3}));
}

} // namespace Tessaline
