#include "MarkdownUI/MarkdownView.h"

#include "foundation_ui/LinkQuestion.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtCore/QMimeData>
#include <QtGui/QAccessible>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QHelpEvent>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

/// A view on the screen, which notes the links that are opened.
struct OpenView {
    explicit OpenView(const QString &markdown, QSize size = {400, 300}) : view(theme)
    {
        view.resize(size);
        view.setOpenURL([this](const QUrl &url) { opened.append(url.toString()); });
        view.setMarkdown(markdown);
        view.show();
        view.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    MarkdownDisplay &display() { return view.display(); }
    MarkdownInteraction &interaction() { return view.interaction(); }

    /// In the middle of the character at a place, in the viewport.
    QPoint pointAt(qsizetype leaf, qsizetype offset)
    {
        const QRectF start = display().caretRect({leaf, offset});
        const QRectF end = display().caretRect({leaf, offset + 1});
        return view.toViewport({(start.left() + end.left()) / 2, start.center().y()}).toPoint();
    }
    /// In front of the character.
    QPoint before(qsizetype leaf, qsizetype offset)
    {
        return view.toViewport(display().caretRect({leaf, offset}).center()).toPoint();
    }
    void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, view.viewport()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &move);
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, to);
    }
    QString copied()
    {
        QGuiApplication::clipboard()->clear();
        QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
        return QGuiApplication::clipboard()->text();
    }

    Tessaline::Theme theme;
    QStringList opened;
    MarkdownView view;
};

const QString kTwoLinks = u"see [one](https://one.example) and\n\n- [two](https://two.example)\n\n```\ncode\n```"_s;

} // namespace

// --- selecting ---

TEST(MarkdownView, TheMouseSelectsAcrossBlocks)
{
    OpenView open(u"first words\n\n> second words\n\n- third"_s);

    open.drag(open.before(0, 6), open.before(2, 3));
    EXPECT_EQ(open.copied(), u"words\n\nsecond words\n\n• thi");
    EXPECT_EQ(QGuiApplication::clipboard()->mimeData()->data(u"text/markdown"_s), "words\n\n> second words\n\n- thi");
    open.drag(open.before(2, 3), open.before(0, 6));
    EXPECT_EQ(open.copied(), u"words\n\nsecond words\n\n• thi") << "upwards too";
}

TEST(MarkdownView, ADoubleClickSelectsAWordAndAThirdTheBlock)
{
    OpenView open(u"first words here\n\nother"_s);
    const QPoint point = open.pointAt(0, 7);

    QTest::mouseDClick(open.view.viewport(), Qt::LeftButton, {}, point);
    EXPECT_EQ(open.copied(), u"words");
    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, point);
    EXPECT_EQ(open.copied(), u"first words here");
}

TEST(MarkdownView, AClickWithShiftExtendsTheSelection)
{
    OpenView open(u"first words\n\nsecond words"_s);

    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, open.before(0, 6));
    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, Qt::ShiftModifier, open.before(1, 6));
    EXPECT_EQ(open.copied(), u"words\n\nsecond");
    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, open.before(0, 1));
    EXPECT_FALSE(open.interaction().hasSelection());
}

TEST(MarkdownView, KeysSelectAcrossBlocks)
{
    OpenView open(u"first words\n\nsecond words\n\n| a | b |\n|---|---|"_s);
    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, open.before(0, 6));

    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(open.copied(), u"w");
    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(open.copied(), u"words");
    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(open.copied(), u"words\n\ns") << "over the end of the block";
    QTest::keyClick(&open.view, Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(open.copied(), u"words\n\nsecond words");
    QTest::keyClick(&open.view, Qt::Key_End, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(open.copied(), u"words\n\nsecond words\n\na\tb");
    QTest::keyClick(&open.view, Qt::Key_Home, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(open.copied(), u"first ");
    QTest::keyClick(&open.view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_GT(open.interaction().caret().leaf, 0);
    QTest::keyClick(&open.view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(open.interaction().caret(), DisplayPosition());
    QTest::keyClick(&open.view, Qt::Key_Escape);
    EXPECT_FALSE(open.interaction().hasSelection());
    QTest::keyClick(&open.view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(open.copied(), u"first words\n\nsecond words\n\na\tb");
}

TEST(MarkdownView, CodeAndCharactersOfSeveralUnitsAreSelectedWhole)
{
    OpenView open(u"a👩‍👩‍👧b\n\n```\nx👩‍👩‍👧y\nz\n```"_s);
    open.interaction().select({0, 1}, {0, 1});

    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(open.copied(), u"👩‍👩‍👧");
    open.interaction().select({1, 1}, {1, 1});
    QTest::keyClick(&open.view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(open.copied(), u"👩‍👩‍👧");
    QTest::keyClick(&open.view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(open.interaction().caret().offset, open.display().leafText(1).size());
}

TEST(MarkdownView, ASelectionStaysWhileTheTextGrowsAndShrinksWithIt)
{
    OpenView open(u"first words\n\nsecond"_s);
    open.interaction().selectAll();

    open.view.setMarkdown(u"first words\n\nsecond and more"_s);
    EXPECT_EQ(open.copied(), u"first words\n\nsecond");
    open.view.setMarkdown(u"first"_s);
    EXPECT_EQ(open.copied(), u"first");
}

// --- links and code ---

TEST(MarkdownView, AClickOpensALinkAndADragOverItDoesNot)
{
    OpenView open(kTwoLinks);

    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, open.pointAt(0, 5));
    EXPECT_EQ(open.opened, QStringList{u"https://one.example"_s});
    open.drag(open.before(0, 4), open.before(0, 7));
    EXPECT_EQ(open.opened.size(), 1);
    EXPECT_EQ(open.copied(), u"one");
}

TEST(MarkdownView, ALinkShowsAHandAndItsTarget)
{
    OpenView open(kTwoLinks);
    const QPoint point = open.pointAt(0, 5);

    QTest::mouseMove(open.view.viewport(), point);
    EXPECT_TRUE(
        Tessaline::eventually([&] { return open.view.viewport()->cursor().shape() == Qt::PointingHandCursor; }));
    QHelpEvent help(QEvent::ToolTip, point, open.view.viewport()->mapToGlobal(point));
    QApplication::sendEvent(open.view.viewport(), &help);
    EXPECT_TRUE(QToolTip::text().contains(u"https://one.example"_s)) << QToolTip::text().toStdString();
    QToolTip::hideText();
    QTest::mouseMove(open.view.viewport(), open.pointAt(0, 1));
    EXPECT_TRUE(Tessaline::eventually([&] { return open.view.viewport()->cursor().shape() == Qt::IBeamCursor; }));
}

TEST(MarkdownView, TabGoesFromLinkToLinkToTheButtonAndOut)
{
    OpenView open(kTwoLinks);
    open.view.clearFocus();
    open.view.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(Tessaline::eventually([&] { return open.view.hasFocus(); }));

    EXPECT_EQ(open.interaction().focused(), (TargetPlace{0, 0})) << "the focus came by Tab";
    QTest::keyClick(&open.view, Qt::Key_Tab);
    EXPECT_EQ(open.interaction().focused(), (TargetPlace{1, 0}));
    QTest::keyClick(&open.view, Qt::Key_Return);
    EXPECT_EQ(open.opened, QStringList{u"https://two.example"_s});
    QTest::keyClick(&open.view, Qt::Key_Tab);
    EXPECT_EQ(open.display().target(open.interaction().focused()).name, u"Copy Code");
    QTest::keyClick(&open.view, Qt::Key_Space);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"code");
    QTest::keyClick(&open.view, Qt::Key_Backtab);
    EXPECT_EQ(open.interaction().focused(), (TargetPlace{1, 0}));
    EXPECT_FALSE(open.display().nextTarget({2, 0}).isValid());
}

TEST(MarkdownView, FocusOnAFarLinkScrollsToIt)
{
    OpenView open(u"text\n\n"_s.repeated(100) + u"[far](https://far.example)"_s);
    open.view.clearFocus();
    open.view.setFocus(Qt::TabFocusReason);

    ASSERT_TRUE(Tessaline::eventually([&] { return open.interaction().focused().isValid(); }));
    const QRectF link = open.display().target(open.interaction().focused()).rects.first();
    EXPECT_TRUE(open.view.viewport()->rect().contains(open.view.toViewport(link.center()).toPoint()));
}

TEST(MarkdownView, AButtonOverCodeAppearsForThePointerAndCopies)
{
    OpenView open(u"text\n\n```\nsome code\n```"_s);
    const QRectF button = open.display().target({1, 0}).rects.first();
    const QPoint corner = open.view.toViewport(button.center()).toPoint();
    const auto picture = [&] {
        return open.view.viewport()->grab(QRect(corner - QPoint(10, 10), QSize(20, 20))).toImage();
    };
    const QImage without = picture();

    QTest::mouseMove(open.view.viewport(), open.pointAt(1, 3));
    EXPECT_TRUE(Tessaline::eventually([&] { return picture() != without; }));
    QTest::mouseClick(open.view.viewport(), Qt::LeftButton, {}, corner);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"some code");
    EXPECT_FALSE(open.interaction().hasSelection());
}

TEST(MarkdownView, OnlyWebAndMailAddressesAreOpenedWithoutAQuestion)
{
    QWidget window;
    QStringList opened;
    const OpenURL outside = [&opened](const QUrl &url) { opened.append(url.toString()); };

    for (const QString &url : {u"http://a.example"_s, u"HTTPS://b.example"_s, u"mailto:c@d.example"_s})
        openWithCare(QUrl(url), &window, outside);
    EXPECT_EQ(opened.size(), 3);
    EXPECT_TRUE(window.findChildren<QDialog *>().isEmpty());

    openWithCare(QUrl(u"file:///etc/passwd"_s), &window, outside);
    auto *const question = window.findChild<Tessaline::LinkQuestion *>();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(opened.size(), 3);
    question->accept();
    EXPECT_EQ(opened.last(), u"file:///etc/passwd");
}

TEST(MarkdownView, ATargetIsShownWithoutSignsThatTurnItAround)
{
    EXPECT_EQ(shownTarget(QUrl(u"https://a.example/%E2%80%AEgpj.exe"_s)), u"https://a.example/%E2%80%AEgpj.exe");
    EXPECT_EQ(shownTarget(QUrl(u"https://a.example/\u2067b%E2%80%8Bc"_s)), u"https://a.example/%E2%81%A7b%E2%80%8Bc");
    EXPECT_EQ(shownTarget(QUrl(u"https://a.example/%C3%BCber"_s)), u"https://a.example/über");
}

TEST(MarkdownView, TheContextMenuOffersWhatCanBeDone)
{
    OpenView open(kTwoLinks);
    const auto names = [](QMenu &menu) {
        QStringList enabled;
        for (const QAction *const action : menu.actions())
            if (!action->isSeparator() && action->isEnabled())
                enabled.append(action->text());
        return enabled;
    };

    EXPECT_EQ(names(*open.view.makeContextMenu({})), QStringList{u"Select All"_s});
    open.interaction().selectAll();
    EXPECT_EQ(names(*open.view.makeContextMenu({0, 0})),
              (QStringList{u"Open Link"_s, u"Copy Link"_s, u"Copy"_s, u"Select All"_s}));
}

// --- scrolling ---

TEST(MarkdownView, AnotherWidthKeepsTheBlockAtTheTop)
{
    OpenView open(u"a paragraph of some words that take a row or two in a narrow view\n\n"_s.repeated(200));
    for (int i = 0; i < 12; ++i)
        QTest::keyClick(&open.view, Qt::Key_PageDown);
    const qsizetype leaf = open.display().leafAtY(open.view.toDisplay({0, 0}).y());

    for (const int width : {200, 333, 1200, 400}) {
        open.view.resize(width, 300);
        QApplication::processEvents();
        EXPECT_EQ(open.display().leafAtY(open.view.toDisplay({0, 0}).y()), leaf) << width;
    }
}

TEST(MarkdownView, TheEndIsReachedAndNothingBeyond)
{
    OpenView open(u"a paragraph\n\n"_s.repeated(300) + u"the end"_s);

    QTest::keyClick(&open.view, Qt::Key_End);
    QApplication::processEvents();
    const QRectF last = open.display().leafRect(open.display().leafCount() - 1);
    EXPECT_EQ(open.view.toViewport(last.bottomLeft()).y(), open.view.viewport()->height() - 16);
    EXPECT_EQ(open.view.verticalScrollBar()->value(), open.view.verticalScrollBar()->maximum());
    QTest::keyClick(&open.view, Qt::Key_Home);
    EXPECT_EQ(open.view.verticalScrollBar()->value(), 0);
    EXPECT_EQ(open.view.toViewport({0, 0}).y(), 16);
}

TEST(MarkdownView, WhatIsReadStaysWhereItIsWhileTheTextGrows)
{
    const QString start = u"a paragraph\n\n"_s.repeated(100);
    OpenView open(start);
    QTest::keyClick(&open.view, Qt::Key_PageDown);
    const double top = open.view.toDisplay({0, 0}).y();

    for (int i = 0; i < 20; ++i)
        open.view.setMarkdown(start + u"word\n\n"_s.repeated(i));
    EXPECT_EQ(open.view.toDisplay({0, 0}).y(), top);
    open.view.setMarkdown(u"short"_s);
    EXPECT_EQ(open.view.toDisplay({0, 0}).y(), -16) << "the end of a shorter text is followed";
}

TEST(MarkdownView, TheWheelWithShiftMovesCodeSideways)
{
    OpenView open(u"```\n"_s + u"long "_s.repeated(200) + u"\n```"_s);
    const QPoint point = open.pointAt(0, 3);
    QWheelEvent wheel(point, open.view.viewport()->mapToGlobal(point), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::ShiftModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(open.view.viewport(), &wheel);

    EXPECT_GT(open.display().box(0).sideways(), 0);
}

TEST(MarkdownView, TheAppearanceIsFollowed)
{
    OpenView open(u"text [link](https://a.example)"_s);
    const QImage light = open.view.viewport()->grab().toImage();

    open.theme.setAppearance(Tessaline::Appearance::Dark);
    const QImage dark = open.view.viewport()->grab().toImage();
    EXPECT_EQ(QColor(light.pixel(1, 1)).name(), u"#ffffff");
    EXPECT_EQ(QColor(dark.pixel(1, 1)).name(), u"#18191d");
}

// --- assistive technology ---

TEST(MarkdownView, AssistiveTechnologyGetsTheTextTheLinksAndTheButtons)
{
    OpenView open(kTwoLinks);
    QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(&open.view);
    ASSERT_NE(accessible, nullptr);
    QAccessibleTextInterface *const text = accessible->textInterface();
    ASSERT_NE(text, nullptr);

    EXPECT_EQ(accessible->role(), QAccessible::Document);
    EXPECT_TRUE(accessible->state().readOnly);
    EXPECT_EQ(text->text(0, text->characterCount()), u"see one and\ntwo\ncode");
    ASSERT_EQ(accessible->childCount(), 3);
    EXPECT_EQ(accessible->child(0)->text(QAccessible::Name), u"one");
    EXPECT_EQ(accessible->child(0)->role(), QAccessible::Link);
    EXPECT_EQ(accessible->child(2)->text(QAccessible::Name), u"Copy Code");
    EXPECT_EQ(accessible->child(2)->role(), QAccessible::Button);
    EXPECT_EQ(accessible->indexOfChild(accessible->child(1)), 1);
    accessible->child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(open.opened, QStringList{u"https://two.example"_s});
    const QPoint middle = accessible->child(0)->rect().center();
    EXPECT_EQ(accessible->childAt(middle.x(), middle.y()), accessible->child(0));

    text->setSelection(0, 4, 15);
    EXPECT_EQ(open.copied(), u"one and\n\n• two");
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    EXPECT_EQ(QPair(start, end), QPair(4, 15));
    EXPECT_EQ(text->offsetAtPoint(text->characterRect(6).center()), 6);

    open.view.setMarkdown(kTwoLinks + u"\n\nmore"_s);
    EXPECT_EQ(text->text(0, text->characterCount()), u"see one and\ntwo\ncode\nmore");
    EXPECT_EQ(accessible->childCount(), 3);
}

TEST(MarkdownView, NothingIsPrinted)
{
    static QStringList printed;
    printed.clear();
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &line) { printed.append(line); });
    {
        OpenView open(u"# one\n\n```\ncode\n```\n\n| a |\n|---|\n| b |\n\n![x](https://a.example)\n\nالعربية"_s);
        for (int width = 200; width <= 1200; width += 100) {
            open.view.resize(width, 300);
            open.view.grab();
        }
        open.view.setMarkdown(QString());
        open.view.grab();
    }
    qInstallMessageHandler(before);
    // What the platform of the tests cannot do is of no interest here.
    printed.removeIf([](const QString &line) { return line.startsWith(u"This plugin does not support"_s); });
    EXPECT_EQ(printed, QStringList());
}

} // namespace MarkdownUI
