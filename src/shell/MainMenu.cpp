#include "shell/MainMenu.h"

#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "shell/EditCommands.h"
#include "shell/UpdateManager.h"

#include <QtWidgets/QMenu>

#include <algorithm>

namespace Tessaline {

MainMenu::MainMenu(MainMenuParts parts, QWidget *parent) : QMenuBar(parent)
{
    setNativeMenuBar(false); // it stands in the window's own top row
    addFileMenu(parts);
    addEditMenu(parts.edit);
    addFormatMenu(parts.events);
    addHelpMenu(parts.updates);
}

void MainMenu::addFileMenu(const MainMenuParts &parts)
{
    QMenu *menu = addMenu(tr("&File"));
    EventCenter &events = parts.events;
    Workspace &workspace = parts.workspace;

    menu->addAction(tr("&New Document…"), QKeySequence(Qt::CTRL | Qt::Key_N), this,
                    [&events] { events.post(AppEvents::kCreateNewDocument); });
    QAction *close = menu->addAction(tr("&Close File"), QKeySequence(Qt::CTRL | Qt::Key_W), this, [&workspace] {
        const std::optional<FileURL> active = workspace.activeFileURL();
        if (!active)
            return;
        workspace.closeFile(*active);
        const auto isActive = [&active](const OpenFileReference &file) { return file.url == *active; };
        if (std::none_of(workspace.openFiles().begin(), workspace.openFiles().end(), isActive) &&
            workspace.activeFileURL() == active)
            workspace.setActiveFileURL(std::nullopt); // it was restored without being among the open files
    });
    close->setEnabled(workspace.activeFileURL().has_value());
    connect(&workspace, &Workspace::activeFileURLChanged, close,
            [close](const auto &, const auto &now) { close->setEnabled(now.has_value()); });

    menu->addSeparator();
    QAction *settings =
        menu->addAction(tr("&Settings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma), this, &MainMenu::settingsRequested);
    settings->setMenuRole(QAction::PreferencesRole);
    menu->addSeparator();
    QAction *quit = menu->addAction(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this, &MainMenu::quitRequested);
    quit->setMenuRole(QAction::QuitRole);
}

void MainMenu::addEditMenu(EditCommands &edit)
{
    QMenu *menu = addMenu(tr("&Edit"));
    menu->addActions({edit.undo, edit.redo});
    menu->addSeparator();
    menu->addActions({edit.cut, edit.copy, edit.paste, edit.selectAll});
    menu->addSeparator();
    m_find = menu->addAction(tr("&Find…"), QKeySequence(Qt::CTRL | Qt::Key_F), this, &MainMenu::findRequested);
    m_replace = menu->addAction(tr("Find and &Replace…"), QKeySequence(Qt::CTRL | Qt::Key_H), this,
                                &MainMenu::replaceRequested);
    setCanFind(false);
    connect(menu, &QMenu::aboutToShow, &edit, &EditCommands::refreshWithClipboard);
    // With an empty clipboard Paste is greyed out in the open menu only: its key must work as soon as there is
    // something.
    connect(menu, &QMenu::aboutToHide, &edit, &EditCommands::refresh, Qt::QueuedConnection);
}

void MainMenu::setCanFind(bool canFind)
{
    m_find->setEnabled(canFind);
    m_replace->setEnabled(canFind);
}

void MainMenu::addFormatMenu(EventCenter &events)
{
    QMenu *menu = addMenu(tr("F&ormat"));
    const auto post = [&events](QLatin1StringView name) { return [&events, name] { events.post(name); }; };
    menu->addAction(tr("&Increase Font Size"), QKeySequence(Qt::CTRL | Qt::Key_Plus), this,
                    post(AppEvents::kZoomInFont));
    menu->addAction(tr("Increase Font Size (&Alternative)"), QKeySequence(Qt::CTRL | Qt::Key_Equal), this,
                    post(AppEvents::kZoomInFont));
    menu->addAction(tr("&Decrease Font Size"), QKeySequence(Qt::CTRL | Qt::Key_Minus), this,
                    post(AppEvents::kZoomOutFont));
}

void MainMenu::addHelpMenu(UpdateManager &updates)
{
    QMenu *menu = addMenu(tr("&Help"));
    menu->addAction(tr("&Keyboard Shortcuts"), this, &MainMenu::shortcutsRequested);
    QAction *check = menu->addAction(tr("Check for &Updates…"), this, [&updates] { updates.checkForUpdates(); });
    check->setEnabled(updates.canCheckForUpdates());
    menu->addSeparator();
    QAction *about = menu->addAction(tr("&About Tessaline"), this, &MainMenu::aboutRequested);
    about->setMenuRole(QAction::AboutRole);
}

} // namespace Tessaline
