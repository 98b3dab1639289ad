#include "editing/CaretBlinker.h"

#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtGui/QGuiApplication>
#include <QtGui/QStyleHints>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>

namespace Tessaline {

namespace {

class CaretBlinkerTest : public testing::Test
{
protected:
    ~CaretBlinkerTest() override { QApplication::setCursorFlashTime(m_flashTime); }

private:
    int m_flashTime = QApplication::cursorFlashTime();
};

} // namespace

TEST_F(CaretBlinkerTest, IsHiddenUntilItRuns)
{
    CaretBlinker blinker;

    EXPECT_FALSE(blinker.isVisible());
    blinker.restart();
    EXPECT_TRUE(blinker.isVisible());
    blinker.stop();
    EXPECT_FALSE(blinker.isVisible());
}

TEST_F(CaretBlinkerTest, GoesOnAndOffAtTheRateOfTheDesktop)
{
    QApplication::setCursorFlashTime(40);
    CaretBlinker blinker;
    QSignalSpy changes(&blinker, &CaretBlinker::visibilityChanged);

    blinker.restart();

    EXPECT_TRUE(eventually([&changes] { return changes.count() >= 5; }));
    EXPECT_EQ(blinker.isVisible(), changes.count() % 2 == 1);
}

TEST_F(CaretBlinkerTest, StaysWhereTheDesktopDoesNotBlink)
{
    QApplication::setCursorFlashTime(0);
    CaretBlinker blinker;
    blinker.restart();
    QSignalSpy changes(&blinker, &CaretBlinker::visibilityChanged);

    QTest::qWait(80);

    EXPECT_TRUE(blinker.isVisible());
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(CaretBlinkerTest, ARestartShowsTheCaretAtOnce)
{
    QApplication::setCursorFlashTime(40);
    CaretBlinker blinker;
    blinker.restart();
    ASSERT_TRUE(eventually([&blinker] { return !blinker.isVisible(); }));

    blinker.restart();

    EXPECT_TRUE(blinker.isVisible());
}

TEST_F(CaretBlinkerTest, NoTimerRunsAfterStop)
{
    QApplication::setCursorFlashTime(20);
    CaretBlinker blinker;
    blinker.restart();
    blinker.stop();
    QSignalSpy changes(&blinker, &CaretBlinker::visibilityChanged);

    QTest::qWait(60);

    EXPECT_EQ(changes.count(), 0);
}

} // namespace Tessaline
