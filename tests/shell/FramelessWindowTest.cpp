#include "shell/FramelessWindow.h"

#include "foundation_ui/Theme.h"
#include "shell/WindowButtons.h"
#include "tests/support/Waiting.h"

#include <QtGui/QAccessible>
#include <QtGui/QWindow>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

class Frameless : public ::testing::Test
{
protected:
    Frameless()
    {
        m_window.resize(800, 600);
        m_window.show();
        EXPECT_TRUE(eventually([this] { return m_window.isVisible() && m_window.windowHandle(); }));
    }

    Theme m_theme;
    FramelessWindow m_window{m_theme};
};

TEST_F(Frameless, IsAWindowToAssistiveTechnology)
{
    m_window.setWindowTitle(u"Tessaline"_s);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&m_window);

    EXPECT_EQ(accessible->role(), QAccessible::Window);
    EXPECT_EQ(accessible->text(QAccessible::Name), u"Tessaline"_s);
}

TEST_F(Frameless, TellsThePopupsThatHangInItToAssistiveTechnologyButNoMenus)
{
    QWidget popup(&m_window, Qt::Popup);
    QMenu menu(&m_window);
    QAccessibleInterface *window = QAccessible::queryAccessibleInterface(&m_window);
    QAccessibleInterface *shown = QAccessible::queryAccessibleInterface(&popup);
    const int count = window->childCount();
    EXPECT_EQ(window->indexOfChild(shown), -1);

    popup.show();
    menu.popup(QPoint(0, 0));

    ASSERT_EQ(window->childCount(), count + 1);
    EXPECT_EQ(window->child(count), shown);
    EXPECT_EQ(window->indexOfChild(shown), count);
    menu.close();
    popup.close();
    EXPECT_EQ(window->childCount(), count);
}

TEST_F(Frameless, HasNoFrameOfTheSystem)
{
    EXPECT_TRUE(m_window.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(m_window.frameGeometry(), m_window.geometry());
}

TEST_F(Frameless, IsGraspedAtItsEdgesAndCorners)
{
    const Qt::Edges none;
    const Qt::Edges topLeft = Qt::TopEdge | Qt::LeftEdge;
    const Qt::Edges topRight = Qt::TopEdge | Qt::RightEdge;
    const Qt::Edges bottomLeft = Qt::BottomEdge | Qt::LeftEdge;
    const Qt::Edges bottomRight = Qt::BottomEdge | Qt::RightEdge;
    const struct {
        QPoint position;
        Qt::Edges edges;
    } rows[] = {
        {{0, 300}, Qt::LeftEdge},     {{4, 300}, Qt::LeftEdge},  {{5, 300}, none},        {{799, 300}, Qt::RightEdge},
        {{795, 300}, Qt::RightEdge},  {{794, 300}, none},        {{400, 0}, Qt::TopEdge}, {{400, 5}, none},
        {{400, 599}, Qt::BottomEdge}, {{400, 594}, none},        {{0, 0}, topLeft},       {{13, 2}, topLeft},
        {{2, 13}, topLeft},           {{13, 13}, none},          {{799, 0}, topRight},    {{0, 599}, bottomLeft},
        {{799, 599}, bottomRight},    {{790, 598}, bottomRight}, {{-1, 300}, none},       {{800, 300}, none},
    };
    for (const auto &row : rows)
        EXPECT_EQ(m_window.edgesAt(row.position), row.edges) << row.position.x() << ", " << row.position.y();
}

TEST_F(Frameless, CannotBeGraspedWhileMaximized)
{
    m_window.toggleMaximized();
    EXPECT_FALSE(m_window.edgesAt({0, 0}));
    EXPECT_FALSE(m_window.edgesAt({0, 300}));
    m_window.toggleMaximized();
    EXPECT_TRUE(m_window.edgesAt({0, 300}));
}

TEST_F(Frameless, AnEdgeShowsItsCursorAndTheInsideNone)
{
    const auto move = [this](QPoint to) { QTest::mouseMove(m_window.windowHandle(), to); };
    move({300, 300});
    EXPECT_FALSE(QGuiApplication::overrideCursor());
    const struct {
        QPoint position;
        Qt::CursorShape shape;
    } rows[] = {{{1, 300}, Qt::SizeHorCursor},   {{300, 1}, Qt::SizeVerCursor},     {{1, 1}, Qt::SizeFDiagCursor},
                {{798, 1}, Qt::SizeBDiagCursor}, {{798, 598}, Qt::SizeFDiagCursor}, {{300, 598}, Qt::SizeVerCursor}};
    for (const auto &row : rows) {
        move(row.position);
        ASSERT_TRUE(QGuiApplication::overrideCursor());
        EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), row.shape);
    }
    move({300, 300});
    EXPECT_FALSE(QGuiApplication::overrideCursor());

    move({1, 300});
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(m_window.windowHandle(), &leave);
    EXPECT_FALSE(QGuiApplication::overrideCursor());
}

TEST_F(Frameless, ADoubleClickInTheTitleRowMaximizesAndRestores)
{
    QSignalSpy changes(&m_window, &FramelessWindow::maximizedChanged);

    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, {300, 20});
    EXPECT_TRUE(eventually([this] { return m_window.isMaximized(); }));
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, {300, 20});
    EXPECT_TRUE(eventually([this] { return !m_window.isMaximized(); }));
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(Frameless, ADoubleClickElsewhereOrWithAnotherButtonDoesNot)
{
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, {300, 60});
    QTest::mouseDClick(&m_window, Qt::RightButton, {}, {300, 20});
    EXPECT_FALSE(m_window.isMaximized());
}

TEST_F(Frameless, AControlInTheTitleRowKeepsItsClicks)
{
    QLineEdit field(&m_window);
    field.setGeometry(100, 8, 200, 28);
    field.show();
    QTest::mouseDClick(&field, Qt::LeftButton, {}, {20, 10});
    EXPECT_FALSE(m_window.isMaximized());
}

TEST_F(Frameless, TheBorderIsOnePixelAndGoneWhileMaximized)
{
    EXPECT_EQ(m_window.contentsMargins(), QMargins(1, 1, 1, 1));
    m_window.toggleMaximized();
    EXPECT_EQ(m_window.contentsMargins(), QMargins());
}

TEST_F(Frameless, TheButtonsMinimizeMaximizeRestoreAndClose)
{
    WindowButtons buttons(m_theme, m_window, &m_window);
    buttons.show();
    const QList<QAbstractButton *> all = buttons.findChildren<QAbstractButton *>();
    ASSERT_EQ(all.size(), 3);
    EXPECT_EQ(all.at(0)->accessibleName(), u"Minimize"_s);
    EXPECT_EQ(all.at(1)->accessibleName(), u"Maximize"_s);
    EXPECT_EQ(all.at(2)->accessibleName(), u"Close"_s);

    all.at(1)->click();
    EXPECT_TRUE(eventually([this] { return m_window.isMaximized(); }));
    EXPECT_EQ(all.at(1)->accessibleName(), u"Restore"_s);
    all.at(1)->click();
    EXPECT_TRUE(eventually([this] { return !m_window.isMaximized(); }));
    EXPECT_EQ(all.at(1)->accessibleName(), u"Maximize"_s);
    all.at(0)->click();
    EXPECT_TRUE(eventually([this] { return m_window.isMinimized(); }));
    m_window.showNormal();
    all.at(2)->click();
    EXPECT_TRUE(eventually([this] { return !m_window.isVisible(); }));
}

} // namespace
} // namespace Tessaline
