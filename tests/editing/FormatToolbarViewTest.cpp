#include "editing/FormatToolbarView.h"

#include "editing/FormatButton.h"
#include "editing/MarkdownEditor.h"
#include "foundation/AppEvents.h"
#include "foundation_ui/Hairline.h"
#include "foundation_ui/ScrollEdgeButton.h"

#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// The toolbar above the formatted editor, which has the focus.
class FormatToolbar : public testing::Test
{
protected:
    FormatToolbar()
    {
        auto *const rows = new QVBoxLayout(&m_window);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
        rows->addWidget(&m_toolbar);
        rows->addWidget(&m_open.editor, 1);
        m_toolbar.setTarget(&m_open.view());
        m_window.resize(900, 400);
        m_window.show();
        m_window.activateWindow();
        (void)QTest::qWaitForWindowActive(&m_window);
        m_open.view().setFocus();
    }
    ~FormatToolbar() override
    {
        m_open.editor.setParent(nullptr); // it is the other's, and so is the toolbar
        m_toolbar.setParent(nullptr);
    }

    /// The controls in the order of the row, dividers included.
    QList<QWidget *> row() const
    {
        QList<QWidget *> row;
        for (QObject *const child : m_toolbar.widget()->children())
            if (auto *const widget = qobject_cast<QWidget *>(child))
                row.append(widget);
        std::sort(row.begin(), row.end(), [](QWidget *left, QWidget *right) { return left->x() < right->x(); });
        return row;
    }
    QList<FormatButton *> buttons() const
    {
        QList<FormatButton *> buttons;
        for (QWidget *const widget : row())
            if (auto *const button = qobject_cast<FormatButton *>(widget))
                buttons.append(button);
        return buttons;
    }
    FormatButton &button(const QString &type) const
    {
        const QList<FormatButton *> all = buttons();
        return **std::find_if(all.begin(), all.end(), [&](FormatButton *b) { return b->type() == type; });
    }
    bool isInView(const QWidget &widget) const
    {
        const QRect place(widget.mapTo(m_toolbar.viewport(), QPoint()), widget.size());
        return m_toolbar.viewport()->rect().contains(place);
    }

    OpenFormattedEditor m_open{u"one two"_s};
    FormatToolbarView m_toolbar{m_open.theme, m_open.events};
    QWidget m_window;
};

} // namespace

TEST_F(FormatToolbar, HasItsCommandsInGroupsWithTheirHelpTexts)
{
    QStringList seen;
    for (QWidget *const widget : row()) {
        if (auto *const button = qobject_cast<FormatButton *>(widget))
            seen.append(button->type() + u'=' + button->toolTip());
        else if (qobject_cast<Hairline *>(widget))
            seen.append(u"|"_s);
    }

    EXPECT_EQ(seen, (QStringList{u"bold=Bold"_s, u"italic=Italic"_s, u"|"_s, u"h1=Heading 1"_s, u"h2=Heading 2"_s,
                                 u"h3=Heading 3"_s, u"|"_s, u"bullet=Bullet List"_s, u"numbered=Numbered List"_s,
                                 u"task=Task List"_s, u"|"_s, u"quote=Blockquote"_s, u"codeInline=Inline Code"_s,
                                 u"codeBlock=Code Block"_s, u"|"_s, u"link=Insert Link"_s, u"image=Insert Image"_s,
                                 u"table=Insert Table"_s, u"hr=Horizontal Rule"_s}));
    for (const FormatButton *const button : buttons())
        EXPECT_EQ(button->accessibleName(), button->toolTip());
    EXPECT_EQ(m_toolbar.accessibleName(), u"Format"_s);
}

TEST_F(FormatToolbar, HasTheSizesOfItsDesign)
{
    EXPECT_EQ(m_toolbar.height(), 36);
    EXPECT_EQ(row().constFirst()->x(), 16);
    for (const QWidget *const widget : row()) {
        if (qobject_cast<const FormatButton *>(widget)) {
            EXPECT_EQ(widget->size(), QSize(24, 24));
            EXPECT_EQ(widget->y(), 6);
        } else {
            EXPECT_EQ(widget->size(), QSize(1, 14));
            EXPECT_EQ(widget->y(), 11);
        }
    }
    const QList<QWidget *> all = row();
    for (qsizetype i = 1; i < all.size(); ++i)
        EXPECT_EQ(all.at(i)->x() - all.at(i - 1)->geometry().right() - 1, 8) << i;
    // 15 buttons, 4 dividers, 18 gaps and the two sides.
    EXPECT_EQ(m_toolbar.sizeHint(), QSize(15 * 24 + 4 + 18 * 8 + 32, 36));
}

TEST_F(FormatToolbar, EachButtonPostsItsCommandAndNothingElse)
{
    QList<QVariantMap> posted;
    m_open.events.observe(AppEvents::kInsertMarkdownFormat, &m_toolbar,
                          [&posted](const QVariantMap &userInfo) { posted.append(userInfo); });
    m_toolbar.setTarget(nullptr);

    for (FormatButton *const button : buttons())
        QTest::mouseClick(button, Qt::LeftButton);

    ASSERT_EQ(posted.size(), 15);
    for (qsizetype i = 0; i < posted.size(); ++i)
        EXPECT_EQ(posted.at(i), (QVariantMap{{AppEvents::kType, buttons().at(i)->type()}}));
}

TEST_F(FormatToolbar, AClickLeavesTheFocusInTheEditorWhichTakesTheCommand)
{
    m_open.select(u"two"_s);

    QTest::mouseClick(&button(u"bold"_s), Qt::LeftButton);

    EXPECT_EQ(m_open.markdown(), u"one **two**"_s);
    EXPECT_TRUE(m_open.view().hasFocus());
    QTest::mouseClick(&button(u"h1"_s), Qt::LeftButton);
    EXPECT_EQ(m_open.markdown(), u"# one **two**"_s);
}

TEST_F(FormatToolbar, AClickWithTheFocusElsewhereDoesNothing)
{
    QWidget other(&m_window);
    other.setFocusPolicy(Qt::StrongFocus);
    other.show();
    other.setFocus();

    QTest::mouseClick(&button(u"bold"_s), Qt::LeftButton);

    EXPECT_EQ(m_open.editCount(), 0);
    EXPECT_TRUE(other.hasFocus());
}

TEST_F(FormatToolbar, EveryButtonIsReachedWithTab)
{
    QTest::keyClick(&m_open.view(), Qt::Key_Backtab, Qt::ShiftModifier);
    QStringList reached;
    for (int i = 0; i < 15; ++i) {
        auto *const focused = qobject_cast<FormatButton *>(QApplication::focusWidget());
        ASSERT_TRUE(focused) << i;
        reached.prepend(focused->type());
        QTest::keyClick(focused, Qt::Key_Backtab, Qt::ShiftModifier);
    }

    QStringList inOrder;
    for (const FormatButton *const button : buttons())
        inOrder.append(button->type());
    EXPECT_EQ(reached, inOrder);
    EXPECT_EQ(m_open.editCount(), 0);
}

TEST_F(FormatToolbar, APressByKeyboardAppliesTheCommandAndReturnsTheFocus)
{
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        m_open.setMarkdown(u"one two"_s);
        m_open.select(u"two"_s);
        button(u"italic"_s).setFocus(Qt::TabFocusReason);

        QTest::keyClick(&button(u"italic"_s), key);

        EXPECT_EQ(m_open.markdown(), u"one *two*"_s);
        EXPECT_TRUE(m_open.view().hasFocus());
        EXPECT_EQ(m_open.editor.selection(), (TextRange{4, 3}));
    }
}

TEST_F(FormatToolbar, AClickAfterWalkingThroughTheRowByKeyboardAppliesTheCommandToo)
{
    m_open.select(u"two"_s);
    button(u"link"_s).setFocus(Qt::TabFocusReason);

    QTest::mouseClick(&button(u"bold"_s), Qt::LeftButton);

    EXPECT_EQ(m_open.markdown(), u"one **two**"_s);
    EXPECT_TRUE(m_open.view().hasFocus());
}

TEST_F(FormatToolbar, ServesTheSourceEditorAsWell)
{
    MarkdownEditor source(m_open.theme, m_open.events, &m_window);
    source.setDocument(FileURL(u"/tmp/a.md"_s), ChunkedText(u"one two"_s));
    source.show();
    m_toolbar.setTarget(source.textView());
    source.select({4, 3});
    source.textView()->setFocus();

    QTest::mouseClick(&button(u"bold"_s), Qt::LeftButton);
    button(u"bullet"_s).setFocus(Qt::TabFocusReason);
    QTest::keyClick(&button(u"bullet"_s), Qt::Key_Space);

    EXPECT_EQ(source.shownText().toString(), u"one **two**- "_s);
    EXPECT_EQ(m_open.editCount(), 0);
}

TEST_F(FormatToolbar, AnEditorThatHasGoneIsNoTarget)
{
    auto *const view = new QWidget(&m_window);
    m_toolbar.setTarget(view);
    delete view;
    button(u"bold"_s).setFocus(Qt::TabFocusReason);

    QTest::keyClick(&button(u"bold"_s), Qt::Key_Space);

    EXPECT_EQ(m_open.editCount(), 0);
}

TEST_F(FormatToolbar, ScrollsWhereItIsTooNarrowAndShowsWhatHasTheFocus)
{
    m_window.resize(250, 400);
    QApplication::processEvents();
    EXPECT_EQ(m_toolbar.height(), 36);
    EXPECT_EQ(m_toolbar.widget()->width(), m_toolbar.sizeHint().width());
    EXPECT_FALSE(isInView(button(u"hr"_s)));
    EXPECT_FALSE(m_toolbar.horizontalScrollBar()->isVisible());

    button(u"hr"_s).setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(isInView(button(u"hr"_s)));
    EXPECT_EQ(button(u"hr"_s).mapTo(&m_toolbar, QPoint(24 + 16, 0)).x(), 250) << "with the padding at the end";
    button(u"bold"_s).setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(isInView(button(u"bold"_s)));
    EXPECT_EQ(m_toolbar.horizontalScrollBar()->value(), 0);
}

TEST_F(FormatToolbar, TheWheelScrollsSidewaysWhicheverWayItTurns)
{
    m_window.resize(250, 400);
    QApplication::processEvents();
    const auto wheel = [this](QPoint pixels, QPoint angle) {
        const QPoint point = m_toolbar.viewport()->rect().center();
        QWheelEvent event(point, m_toolbar.viewport()->mapToGlobal(point), pixels, angle, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_toolbar.viewport(), &event);
    };

    wheel({}, {0, -120});
    const int once = m_toolbar.horizontalScrollBar()->value();
    EXPECT_GT(once, 0);
    wheel({}, {-120, 0});
    EXPECT_GT(m_toolbar.horizontalScrollBar()->value(), once);
    wheel({0, 10000}, {});
    EXPECT_EQ(m_toolbar.horizontalScrollBar()->value(), 0);
}

TEST_F(FormatToolbar, AnEndThatIsCutShowsItAndAClickBringsTheRest)
{
    const auto edge = [this](const QString &name) -> QAbstractButton * {
        for (auto *candidate : m_toolbar.findChildren<ScrollEdgeButton *>())
            if (candidate->toolTip() == name)
                return candidate;
        return nullptr;
    };
    QAbstractButton *const earlier = edge(u"Show Earlier Format Commands"_s);
    QAbstractButton *const more = edge(u"Show More Format Commands"_s);
    ASSERT_TRUE(earlier && more);
    EXPECT_FALSE(earlier->isVisible() || more->isVisible()) << "all of it is in view";

    m_window.resize(350, 400);
    QApplication::processEvents();
    EXPECT_FALSE(earlier->isVisible());
    EXPECT_TRUE(more->isVisible());
    EXPECT_EQ(more->geometry().right(), 349);

    QTest::mouseClick(more, Qt::LeftButton);
    EXPECT_TRUE(isInView(button(u"hr"_s)));
    EXPECT_FALSE(more->isVisible());
    EXPECT_TRUE(earlier->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), &m_open.view());

    QTest::mouseClick(earlier, Qt::LeftButton);
    EXPECT_TRUE(isInView(button(u"bold"_s)));
    EXPECT_FALSE(earlier->isVisible());
    EXPECT_TRUE(more->isVisible());
}

TEST_F(FormatToolbar, WhatHasTheFocusIsNotUnderTheSignThatTheRowGoesOn)
{
    m_window.resize(350, 400);
    QApplication::processEvents();

    for (FormatButton *const each : buttons()) {
        each->setFocus(Qt::TabFocusReason);
        const QRect place(each->mapTo(&m_toolbar, QPoint()), each->size());
        for (auto *edge : m_toolbar.findChildren<ScrollEdgeButton *>())
            EXPECT_FALSE(edge->isVisible() && edge->geometry().intersects(place)) << each->type().toStdString();
    }
}

TEST_F(FormatToolbar, AWideRowKeepsItsButtonsOnTheLeftAndDoesNotScroll)
{
    m_window.resize(1400, 400);
    QApplication::processEvents();

    EXPECT_EQ(buttons().constFirst()->mapTo(&m_toolbar, QPoint()).x(), 16);
    EXPECT_EQ(buttons().constLast()->mapTo(&m_toolbar, QPoint()).x(), m_toolbar.sizeHint().width() - 16 - 24);
    EXPECT_EQ(m_toolbar.horizontalScrollBar()->maximum(), 0);
}

TEST_F(FormatToolbar, ToolsStandInALastGroupOfTheirOwn)
{
    const int width = m_toolbar.sizeHint().width();
    auto *const tool = new QWidget;
    tool->setFixedSize(30, 24);
    auto *const other = new QWidget;
    other->setFixedSize(30, 24);
    m_toolbar.addTool(tool);
    m_toolbar.addTool(other);
    QApplication::processEvents();

    const QList<QWidget *> all = row();
    EXPECT_TRUE(qobject_cast<Hairline *>(all.at(all.size() - 3)));
    EXPECT_EQ(all.at(all.size() - 2), tool);
    EXPECT_EQ(all.at(all.size() - 1), other);
    EXPECT_EQ(m_toolbar.sizeHint().width(), width + 8 + 1 + 8 + 30 + 8 + 30);
    EXPECT_EQ(tool->x(), all.at(all.size() - 3)->x() + 1 + 8);
}

} // namespace Tessaline
