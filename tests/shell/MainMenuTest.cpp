#include "shell/MainMenu.h"

#include "editing/FindBar.h"
#include "foundation/AppEvents.h"
#include "tests/shell/OpenWindow.h"

#include <QtWidgets/QApplication>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

class QuietUpdater final : public UpdaterController
{
public:
    explicit QuietUpdater(int &checks) : m_checks(checks) {}
    void setAutomaticallyChecksForUpdates(bool) override {}
    void checkForUpdates() override { ++m_checks; }

private:
    int &m_checks;
};

class Menu : public OpenWindow
{};

TEST_F(Menu, HasItsMenusInOrder)
{
    EXPECT_EQ(menuTitles(), (QStringList{u"File"_s, u"Edit"_s, u"Format"_s, u"Help"_s}));
    EXPECT_EQ(items(u"File"_s), (QStringList{u"New Document… Ctrl+N"_s, u"Close File Ctrl+W"_s, u"-"_s,
                                             u"Settings… Ctrl+,"_s, u"-"_s, u"Quit Ctrl+Q"_s}));
    EXPECT_EQ(items(u"Edit"_s), (QStringList{u"Undo Ctrl+Z"_s, u"Redo Ctrl+Shift+Z"_s, u"-"_s, u"Cut Ctrl+X"_s,
                                             u"Copy Ctrl+C"_s, u"Paste Ctrl+V"_s, u"Select All Ctrl+A"_s, u"-"_s,
                                             u"Find… Ctrl+F"_s, u"Find and Replace… Ctrl+H"_s}));
    EXPECT_EQ(items(u"Help"_s),
              (QStringList{u"Keyboard Shortcuts"_s, u"Check for Updates…"_s, u"-"_s, u"About Tessaline"_s}));
}

TEST_F(Menu, TheFormatMenuHasItsThreeItemsAndNothingElse)
{
    EXPECT_EQ(items(u"Format"_s),
              (QStringList{u"Increase Font Size Ctrl++"_s, u"Increase Font Size (Alternative) Ctrl+="_s,
                           u"Decrease Font Size Ctrl+-"_s}));
}

TEST_F(Menu, NoTwoActionsShareAKey)
{
    QHash<QKeySequence, QString> known;
    QList<QAction *> all = m_window.actions();
    for (const QString &title : menuTitles())
        all += menu(title)->actions();
    for (const QAction *action : all)
        for (const QKeySequence &key : action->shortcuts()) {
            EXPECT_FALSE(known.contains(key)) << key.toString().toStdString();
            known.insert(key, action->text());
        }
}

TEST_F(Menu, FontSizeItemsPostTheirEventsWithoutAnyInformation)
{
    QStringList posted;
    QObject::connect(&m_events, &EventCenter::posted, &m_window,
                     [&](QLatin1StringView name, const QVariantMap &userInfo) {
                         posted.append(QString(name));
                         EXPECT_TRUE(userInfo.isEmpty());
                     });
    for (QAction *action : menu(u"Format"_s)->actions())
        action->trigger();
    EXPECT_EQ(posted, (QStringList{u"ZoomInFont"_s, u"ZoomInFont"_s, u"ZoomOutFont"_s}));
}

TEST_F(Menu, BothKeysThatEnlargeTheTextDoSoByOneStepAndStayEnabledAtTheBounds)
{
    open();
    openFile(u"a.md"_s);
    const double before = m_preferences.editorFontSize();
    QTest::keyClick(&m_window, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), before + 1);
    QTest::keyClick(&m_window, Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), before + 2);
    QTest::keyClick(&m_window, Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), before + 1);

    for (int step = 0; step < 40; ++step)
        QTest::keyClick(&m_window, Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), 40);
    for (const QAction *action : menu(u"Format"_s)->actions())
        EXPECT_TRUE(action->isEnabled());
}

TEST_F(Menu, KeysOfTheNumberPadChangeTheTextSizeToo)
{
    open();
    openFile(u"a.md"_s);
    const double before = m_preferences.editorFontSize();
    QTest::keyClick(&m_window, Qt::Key_Plus, Qt::ControlModifier | Qt::KeypadModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), before + 1);
    QTest::keyClick(&m_window, Qt::Key_Minus, Qt::ControlModifier | Qt::KeypadModifier);
    EXPECT_EQ(m_preferences.editorFontSize(), before);
}

TEST_F(Menu, KeysOfCommandsAreNotTypedIntoTheText)
{
    open();
    openFile(u"a.md"_s);
    DocumentEditor *editor = m_window.content().editorArea().currentEditor();
    ASSERT_TRUE(eventually([&] { return editor->shownText().toString() == u"first"_s; }));
    const double before = m_preferences.editorFontSize();

    QTest::keyClick(editor->textView(), Qt::Key_Plus, Qt::ControlModifier | Qt::KeypadModifier);
    QTest::keyClick(editor->textView(), Qt::Key_F, Qt::AltModifier);

    EXPECT_EQ(m_preferences.editorFontSize(), before + 1);
    EXPECT_EQ(QApplication::activePopupWidget(), menu(u"File"_s));
    EXPECT_EQ(editor->shownText().toString(), u"first"_s);
    menu(u"File"_s)->close();
}

TEST_F(Menu, NewDocumentAsksForAPlace)
{
    open();
    QTest::keyClick(&m_window, Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(m_newDocuments, 1);
    item(u"File"_s, u"New Document…"_s)->trigger();
    EXPECT_EQ(m_newDocuments, 2);
}

TEST_F(Menu, CloseFileClosesTheActiveOneAndIsDisabledWithoutOne)
{
    open();
    EXPECT_FALSE(item(u"File"_s, u"Close File"_s)->isEnabled());
    m_files.write(u"b.md"_s, "second");
    m_workspace.openFile(m_files.url(u"b.md"_s));
    openFile(u"a.md"_s);

    QTest::keyClick(&m_window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"b.md"_s));
    QTest::keyClick(&m_window, Qt::Key_W, Qt::ControlModifier);

    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_FALSE(item(u"File"_s, u"Close File"_s)->isEnabled());
}

TEST_F(Menu, CloseFileClosesAnActiveFileThatIsNotAmongTheOpenOnes)
{
    open();
    m_workspace.setActiveFileURL(m_files.url(u"a.md"_s));

    QTest::keyClick(&m_window, Qt::Key_W, Qt::ControlModifier);

    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(Menu, FindIsEnabledWithAnEditorOnlyAndOpensTheBar)
{
    open();
    EXPECT_FALSE(item(u"Edit"_s, u"Find…"_s)->isEnabled());
    EXPECT_FALSE(item(u"Edit"_s, u"Find and Replace…"_s)->isEnabled());

    openFile(u"a.md"_s);
    EXPECT_TRUE(item(u"Edit"_s, u"Find…"_s)->isEnabled());
    QTest::keyClick(&m_window, Qt::Key_F, Qt::ControlModifier);

    EXPECT_TRUE(m_window.content().editorArea().findBar().isVisible());
}

TEST_F(Menu, FindNextWorksByItsKeyAfterTheBarWasClosed)
{
    m_files.write(u"tides.md"_s, "ebb flow ebb flow ebb");
    open();
    openFile(u"tides.md"_s);
    DocumentEditor *editor = m_window.content().editorArea().currentEditor();
    ASSERT_TRUE(eventually([&] { return editor->shownText().size() == 21; }));
    editor->select({0, 3});
    QTest::keyClick(&m_window, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    editor->select({0, 0});

    const auto selects = [editor](TextRange range) { return eventually([=] { return editor->selection() == range; }); };

    QTest::keyClick(&m_window, Qt::Key_F3);
    EXPECT_TRUE(selects({0, 3}));
    QTest::keyClick(&m_window, Qt::Key_F3);
    EXPECT_TRUE(selects({9, 3}));
    QTest::keyClick(&m_window, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_TRUE(selects({0, 3}));
}

TEST_F(Menu, CheckingForUpdatesIsGreyedOutWithoutAnUpdater)
{
    EXPECT_FALSE(item(u"Help"_s, u"Check for Updates…"_s)->isEnabled());
}

TEST_F(Menu, CheckingForUpdatesReachesTheUpdater)
{
    int checks = 0;
    UpdateEnvironment configured;
    configured.publicEDKey = u"key"_s;
    configured.startUpdater = [&checks] { return std::make_unique<QuietUpdater>(checks); };
    configured.log = [](const QString &) {};
    UpdateManager updates(configured);
    MainWindow window({m_workspace, m_projects, m_area, m_preferences, m_events, updates, m_appearance,
                       m_assistantSettings, m_assistantPanels, m_theme,
                       [](EditorKind, QWidget *) -> DocumentEditor * { return nullptr; },
                       [] { return QList<FileURL>(); }, [](const QUrl &) {}});

    for (const QAction *entry : window.menu().actions())
        for (QAction *action : entry->menu()->actions())
            if (action->text().remove(u'&') == u"Check for Updates…"_s) {
                EXPECT_TRUE(action->isEnabled());
                action->trigger();
            }

    EXPECT_EQ(checks, 1);
}

} // namespace
} // namespace Tessaline
