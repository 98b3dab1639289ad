#include "tests/shell/OpenWindow.h"

#include "documents/FileBrowserView.h"

#include <QtCore/QTimer>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

class Window : public OpenWindow
{};

// --- columns

TEST_F(Window, ColumnsHaveTheirIdealWidthsWhereThereIsRoom)
{
    open();
    m_window.resize(1440, 900);
    EXPECT_EQ(columns(), (QList{260, 1440 - 2 - 2 - 260 - 380, 380})); // two pixels of border, two of lines
    m_window.resize(1920, 1080);
    EXPECT_EQ(columns(), (QList{260, 1920 - 4 - 260 - 380, 380}));
}

TEST_F(Window, TheLinesBetweenTheColumnsAreMovedByArrowKeys)
{
    open();
    m_window.resize(1440, 900);
    auto *splitter = m_window.findChild<ColumnSplitter *>();
    const auto press = [splitter](int handle, Qt::Key key, int times) {
        splitter->handle(handle)->setFocus(Qt::TabFocusReason);
        for (int i = 0; i < times; ++i)
            QTest::keyClick(splitter->handle(handle), key);
    };
    EXPECT_EQ(splitter->handle(1)->accessibleName(), u"Sidebar Width"_s);
    EXPECT_EQ(splitter->handle(2)->accessibleName(), u"Session Width"_s);
    EXPECT_TRUE(splitter->handle(1)->focusPolicy() & Qt::TabFocus);

    press(1, Qt::Key_Right, 3);
    EXPECT_EQ(columns().at(0), 290);
    press(1, Qt::Key_Left, 1);
    EXPECT_EQ(columns().at(0), 280);
    press(1, Qt::Key_Left, 20);
    EXPECT_EQ(columns().at(0), 200);
    press(2, Qt::Key_Left, 2);
    EXPECT_EQ(columns().at(2), 400);
    m_window.resize(1500, 900);
    EXPECT_EQ(columns().at(2), 400) << "as wide as it was made";
}

TEST_F(Window, TheSideColumnsGiveWayInASmallWindowAndComeBackInALargerOne)
{
    open();
    m_window.resize(1100, 600);
    EXPECT_EQ(columns().at(1), 520);
    EXPECT_LT(columns().at(0), 260);
    EXPECT_LT(columns().at(2), 380);
    m_window.resize(1440, 900);
    EXPECT_EQ(columns(), (QList{260, 796, 380}));
}

TEST_F(Window, AColumnDraggedWiderStopsAtItsMaximumAndKeepsItsWidth)
{
    open();
    m_window.resize(1440, 900);
    auto *splitter = m_window.findChild<ColumnSplitter *>();
    const auto drag = [splitter](int handle, int by) {
        QWidget *line = splitter->handle(handle);
        const QPoint grip = line->rect().center();
        QTest::mousePress(line, Qt::LeftButton, {}, grip);
        QTest::mouseMove(line, grip + QPoint(by, 0));
        QTest::mouseRelease(line, Qt::LeftButton, {}, grip);
    };
    drag(1, 40);
    EXPECT_NEAR(columns().at(0), 300, 2); // where the line is grasped
    drag(1, 400);
    EXPECT_EQ(columns().at(0), 350);
    drag(1, -600);
    EXPECT_EQ(columns().at(0), 200);
    drag(2, -600);
    EXPECT_EQ(columns().at(2), 480);

    m_window.resize(1600, 900);
    EXPECT_EQ(columns().at(0), 200);
    EXPECT_EQ(columns().at(2), 480);
}

TEST_F(Window, IsNeverSmallerThanItsColumnsAllow)
{
    open();
    EXPECT_EQ(m_window.minimumSize(), QSize(1100, 600));
    m_window.resize(300, 200);
    EXPECT_EQ(m_window.size(), QSize(1100, 600));
}

TEST_F(Window, AllMenusFitOverTheNarrowestSidebar)
{
    open();
    m_window.resize(1100, 600);
    auto *splitter = m_window.findChild<ColumnSplitter *>();
    splitter->setSizes({200, 570, 326});
    ASSERT_EQ(columns().at(0), 200);
    const MainMenu &bar = m_window.menu();
    const QRect last = bar.actionGeometry(bar.actions().constLast());
    EXPECT_FALSE(last.isEmpty());
    EXPECT_LE(last.right(), bar.width());
}

TEST_F(Window, LinesOfOnePixelStandBetweenTheColumns)
{
    open();
    m_window.resize(1440, 900);
    auto *splitter = m_window.findChild<ColumnSplitter *>();
    const QList<int> widths = columns();
    EXPECT_EQ(splitter->widget(1)->x() - widths.at(0), 1);
    EXPECT_EQ(splitter->widget(2)->x() - splitter->widget(1)->geometry().right() - 1, 1);
}

// --- the end

TEST_F(Window, ClosingAsksForTheEndAndLeavesTheWindow)
{
    open();
    QSignalSpy requests(&m_window, &MainWindow::closeRequested);

    EXPECT_FALSE(m_window.close());

    EXPECT_EQ(requests.count(), 1);
    EXPECT_TRUE(m_window.isVisible());
}

TEST_F(Window, QuitAsksForTheEndByMenuAndByKey)
{
    open();
    QSignalSpy requests(&m_window, &MainWindow::closeRequested);
    item(u"File"_s, u"Quit"_s)->trigger();
    QTest::keyClick(&m_window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(requests.count(), 2);
}

// --- appearance

TEST_F(Window, AChangeOfTheAppearanceReachesThePaletteOfEveryWindow)
{
    m_preferences.setAppTheme(AppTheme::Light);
    open();
    EXPECT_FALSE(m_theme.isDark());
    item(u"File"_s, u"Settings…"_s)->trigger();

    // The toolkit hands a palette to its windows only while the application's own event loop runs.
    const auto arrives = [this](AppTheme theme, Appearance expected) {
        bool has = false;
        QTimer::singleShot(0, &m_window, [&] {
            m_preferences.setAppTheme(theme);
            has = eventually([&] {
                return SystemAppearance::ofPalette(m_window.palette()) == expected &&
                       SystemAppearance::ofPalette(dialog(u"Settings"_s)->palette()) == expected;
            });
            QCoreApplication::exit();
        });
        QApplication::exec();
        return has;
    };

    EXPECT_TRUE(arrives(AppTheme::Dark, Appearance::Dark));
    EXPECT_TRUE(m_theme.isDark());
    EXPECT_TRUE(arrives(AppTheme::Light, Appearance::Light));
}

TEST_F(Window, TheColumnsPaintTheirOwnGroundUpIntoTheTitleRow)
{
    m_preferences.setAppTheme(AppTheme::Light);
    open();
    m_window.resize(1440, 900);
    const QImage picture = m_window.grab().toImage();
    EXPECT_EQ(picture.pixelColor(230, 4), color(ColorRole::SidebarBackground, Appearance::Light));
    EXPECT_EQ(picture.pixelColor(700, 4), color(ColorRole::EditorBackground, Appearance::Light));
    EXPECT_EQ(picture.pixelColor(1300, 4), color(ColorRole::RightColumn, Appearance::Light));
    EXPECT_EQ(picture.pixelColor(230, 890), color(ColorRole::SidebarBackground, Appearance::Light));
    EXPECT_EQ(picture.pixelColor(1300, 890), color(ColorRole::RightColumn, Appearance::Light));
}

// --- dialogs

TEST_F(Window, EachDialogOpensOnceAndEscapeClosesIt)
{
    open();
    const struct {
        QString menu;
        QString item;
        QString title;
    } rows[] = {{u"File"_s, u"Settings…"_s, u"Settings"_s},
                {u"Help"_s, u"Keyboard Shortcuts"_s, u"Keyboard Shortcuts"_s},
                {u"Help"_s, u"About Tessaline"_s, u"About Tessaline"_s}};
    for (const auto &row : rows) {
        item(row.menu, row.item)->trigger();
        QDialog *shown = dialog(row.title);
        ASSERT_TRUE(shown) << row.title.toStdString();
        item(row.menu, row.item)->trigger();
        EXPECT_EQ(dialog(row.title), shown);

        QTest::keyClick(shown, Qt::Key_Escape);
        EXPECT_FALSE(dialog(row.title));
        item(row.menu, row.item)->trigger();
        EXPECT_TRUE(dialog(row.title)) << "and again";
        dialog(row.title)->close();
    }
}

// --- the workspace

TEST_F(Window, OpeningRestoresTheWorkspaceAndTheAppearance)
{
    m_stored.set(PreferenceKeys::kLastOpenFileURLs, QStringList{m_files.url(u"a.md"_s).path()});
    m_stored.set(PreferenceKeys::kLastActiveFileURL, m_files.url(u"a.md"_s).path());
    m_stored.set(PreferenceKeys::kAppTheme, u"Dark"_s);

    m_window.open();

    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"a.md"_s));
    EXPECT_TRUE(m_theme.isDark());
    EXPECT_TRUE(eventually([this] { return m_area.hasText(m_files.url(u"a.md"_s)); }));
}

// --- the keyboard

TEST_F(Window, AKeyTakesTheFocusFromColumnToColumn)
{
    open();
    openFile(u"a.md"_s);
    QWidget *editor = m_window.content().editorArea().currentEditor()->textView();
    editor->setFocus();
    const auto hasFocus = [](QWidget &column) { return column.isAncestorOf(QApplication::focusWidget()); };

    QTest::keyClick(&m_window, Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_TRUE(hasFocus(m_window.content().sidebar()));
    QTest::keyClick(&m_window, Qt::Key_F6);
    EXPECT_EQ(QApplication::focusWidget(), editor);
    QTest::keyClick(&m_window, Qt::Key_F6);
    EXPECT_FALSE(hasFocus(m_window.content().sidebar()) || hasFocus(m_window.content().editorArea()));
    QTest::keyClick(&m_window, Qt::Key_F6);
    EXPECT_TRUE(hasFocus(m_window.content().sidebar()));
}

TEST_F(Window, TheRightColumnHasItsNameAndSaysThatTheAssistantIsMissing)
{
    bool isNamed = false;
    for (const QWidget *widget : m_window.findChildren<QWidget *>())
        isNamed |= widget->accessibleName() == u"Session Context"_s;
    EXPECT_TRUE(isNamed);
}

} // namespace
} // namespace Tessaline
