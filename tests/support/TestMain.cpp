#include <QtWidgets/QApplication>

#include <gtest/gtest.h>

/// Every test runs inside an application without a screen (CTest sets QT_QPA_PLATFORM), so signals, timers and widgets
/// work.
int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
