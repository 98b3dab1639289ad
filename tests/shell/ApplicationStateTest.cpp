#include "shell/ApplicationState.h"

#include <QtGui/QGuiApplication>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace std::chrono_literals;

void become(Qt::ApplicationState state)
{
    Q_EMIT qGuiApp->applicationStateChanged(state);
}

TEST(ApplicationState, AStartInTheForegroundIsNoComingBack)
{
    ApplicationState state(1h);
    QSignalSpy back(&state, &ApplicationState::cameBack);

    become(Qt::ApplicationActive);

    EXPECT_EQ(back.count(), 0);
}

TEST(ApplicationState, TheFirstLookAtOneThatStartedBehindOtherWindowsIs)
{
    ApplicationState state(0ms);
    QSignalSpy back(&state, &ApplicationState::cameBack);
    QSignalSpy left(&state, &ApplicationState::left);

    become(Qt::ApplicationInactive);
    EXPECT_EQ(left.count(), 0) << "nobody was there";
    become(Qt::ApplicationActive);

    EXPECT_EQ(back.count(), 1);
}

TEST(ApplicationState, TellsEachLeavingAndComingBackOnce)
{
    ApplicationState state(1h);
    QSignalSpy back(&state, &ApplicationState::cameBack);
    QSignalSpy left(&state, &ApplicationState::left);
    become(Qt::ApplicationActive);

    become(Qt::ApplicationInactive);
    become(Qt::ApplicationHidden);
    EXPECT_EQ(left.count(), 1);
    EXPECT_EQ(back.count(), 0);

    become(Qt::ApplicationActive);
    become(Qt::ApplicationActive);
    EXPECT_EQ(left.count(), 1);
    EXPECT_EQ(back.count(), 1);
}

} // namespace
} // namespace Tessaline
