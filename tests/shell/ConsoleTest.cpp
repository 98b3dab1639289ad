#include "shell/Console.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

TEST(Console, MessagesAboutTheMachineThatChangeNothingAreNoise)
{
    EXPECT_TRUE(Console::isNoise(u"This plugin does not support propagateSizeHints()"_s));
    EXPECT_TRUE(Console::isNoise(u"QStandardPaths: XDG_RUNTIME_DIR not set, defaulting to '/tmp/runtime-root'"_s));
    EXPECT_TRUE(
        Console::isNoise(u"Detected locale \"C\" with character encoding \"ANSI_X3.4-1968\", which is not UTF-8."_s));
    EXPECT_TRUE(Console::isNoise(u"  OpenType support missing for \"\", script 11"_s));
}

TEST(Console, AScreenReaderThatAsksForARowThatHasGoneIsNoise)
{
    EXPECT_TRUE(Console::isNoise(
        u"WARNING Qt AtSpiAdaptor: Accessible invalid:  QAccessibleInterface(0x5647b899b450 invalid) \"/org/a11y\""_s));
}

TEST(Console, TheLossOfTheDisplayIsTakenFromWhatTheToolkitSays)
{
    EXPECT_TRUE(Console::isLossOfDisplay(u"The X11 connection broke (error 1). Did the X11 server die?"_s));
    EXPECT_TRUE(Console::isLossOfDisplay(u"The Wayland connection broke. Did the Wayland compositor die?"_s));
    EXPECT_TRUE(Console::isLossOfDisplay(u"The Wayland connection experienced a fatal error: Protocol error"_s));
    EXPECT_FALSE(Console::isLossOfDisplay(u"QXcbConnection: XCB error: 3 (BadWindow)"_s));
}

/// Loses the display in the way that `howItIsLost` shows, with a last act that says so on standard error.
void loseDisplay(void (*howItIsLost)())
{
    Console::filterToolkitMessages();
    Console::setDisplayLossHandler([] { std::fputs("the last act\n", stderr); });
    howItIsLost();
    std::exit(1); // as the toolkit does next
}

TEST(ConsoleDeathTest, TheLastActIsPerformedOnceWhenTheToolkitTellsOfTheLoss)
{
    EXPECT_EXIT(loseDisplay([] { qWarning("The X11 connection broke (error 1). Did the X11 server die?"); }),
                ::testing::ExitedWithCode(1), "^the last act\nThe X11 connection broke[^\n]*\n$");
}

TEST(ConsoleDeathTest, TheLastActIsPerformedWhenNobodyTellsOfTheLoss)
{
    EXPECT_EXIT(loseDisplay([] {}), ::testing::ExitedWithCode(1), "^the last act\n$");
}

TEST(ConsoleDeathTest, WithoutALastActNothingIsPerformed)
{
    EXPECT_EXIT(loseDisplay([] { Console::setDisplayLossHandler({}); }), ::testing::ExitedWithCode(1), "^$");
}

TEST(Console, ProblemsAreNotNoise)
{
    EXPECT_FALSE(Console::isNoise(QString()));
    EXPECT_FALSE(Console::isNoise(u"QObject::connect: No such signal"_s));
    EXPECT_FALSE(Console::isNoise(u"qt.qpa.xcb: could not connect to display :9"_s));
}

} // namespace
} // namespace Tessaline
