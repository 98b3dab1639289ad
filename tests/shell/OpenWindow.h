#pragma once

#include "documents/DocumentStore.h"
#include "documents/ProjectsList.h"
#include "documents/Workspace.h"
#include "editing/MarkdownEditor.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "panels/AssistantPanels.h"
#include "Services/AISettings.h"
#include "shell/AppearanceSwitch.h"
#include "shell/ColumnSplitter.h"
#include "shell/MainWindow.h"
#include "shell/SystemAppearance.h"
#include "shell/UpdateManager.h"
#include "tests/support/AssistantWithoutServer.h"
#include "tests/support/DressingTheme.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtGui/QAction>
#include <QtWidgets/QMenu>

#include <gtest/gtest.h>

namespace Tessaline {

/// The whole window over a folder of the test's own.
class OpenWindow : public ::testing::Test
{
protected:
    OpenWindow()
    {
        m_files.write(QStringLiteral("a.md"), "first");
        m_theme.setAppearance(Appearance::Light);
    }

    void open()
    {
        m_window.open();
        m_window.showNormal(); // the test's screen is so small that the window is maximized
        m_window.activateWindow();
        ASSERT_TRUE(eventually([this] { return m_window.isActiveWindow(); }));
    }
    void openFile(const QString &name)
    {
        m_preferences.setViewMode(ViewMode::RawMarkdown);
        m_workspace.openFile(m_files.url(name));
        ASSERT_TRUE(eventually([this] { return m_window.content().editorArea().currentEditor() != nullptr; }));
    }

    QStringList menuTitles() const
    {
        QStringList titles;
        for (const QAction *entry : m_window.menu().actions())
            titles.append(entry->text().remove(u'&'));
        return titles;
    }
    QMenu *menu(const QString &title) const
    {
        for (const QAction *entry : m_window.menu().actions())
            if (entry->text().remove(u'&') == title)
                return entry->menu();
        return nullptr;
    }
    /// "Title key", in order; "-" for a separator.
    QStringList items(const QString &title) const
    {
        QStringList lines;
        for (const QAction *item : menu(title)->actions())
            lines.append(item->isSeparator()
                             ? QStringLiteral("-")
                             : QString(item->text().remove(u'&') + u' ' + item->shortcut().toString()).trimmed());
        return lines;
    }
    QAction *item(const QString &menuTitle, const QString &title) const
    {
        for (QAction *entry : menu(menuTitle)->actions())
            if (entry->text().remove(u'&') == title)
                return entry;
        ADD_FAILURE() << "no item " << title.toStdString();
        return nullptr;
    }
    QList<int> columns() const { return m_window.findChild<ColumnSplitter *>()->sizes(); }
    QDialog *dialog(const QString &title) const
    {
        for (QDialog *candidate : m_window.findChildren<QDialog *>())
            if (candidate->windowTitle() == title && candidate->isVisible())
                return candidate;
        return nullptr;
    }

    int m_newDocuments = 0;
    TemporaryFiles m_files;
    Preferences m_stored{m_files.url(QStringLiteral("preferences.json"))};
    AppPreferences m_preferences{m_stored};
    EventCenter m_events;
    DiskAccess m_disk;
    DocumentStore m_store{m_events, m_disk};
    Workspace m_workspace{m_stored};
    EditorArea m_area{{m_workspace, m_preferences, m_store, m_events, m_disk, [this](const FileURL &) {
                           ++m_newDocuments;
                           return std::optional<FileURL>();
                       }}};
    ProjectsList m_projects{m_workspace, m_events, [] { return std::optional<FileURL>(); }};
    UpdateManager m_updates{{QProcessEnvironment(), QVariant(), {}, [](const QString &) {}}};
    LocalAIService m_assistant{assistantWithoutServer(m_stored, m_store)};
    AISettings m_assistantSettings{m_assistant, m_preferences, kEightGiB};
    AssistantPanels m_assistantPanels{
        {m_assistant, m_store, m_area, m_workspace, m_events, m_disk, [](const QString &) {}}};
    Theme &m_theme = dressingTheme();
    SystemAppearance m_system{Appearance::Light};
    AppearanceSwitch m_appearance{m_preferences, m_system, m_theme};
    MainWindow m_window{{m_workspace, m_projects, m_area, m_preferences, m_events, m_updates, m_appearance,
                         m_assistantSettings, m_assistantPanels, m_theme,
                         [this](EditorKind, QWidget *parent) { return new MarkdownEditor(m_theme, m_events, parent); },
                         [] { return QList<FileURL>(); }, [](const QUrl &) {}}};
};

} // namespace Tessaline
