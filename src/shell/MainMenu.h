#pragma once

#include <QtWidgets/QMenuBar>

namespace Tessaline {

class EditCommands;
class EventCenter;
class UpdateManager;
class Workspace;

struct MainMenuParts {
    EventCenter &events;
    Workspace &workspace;
    UpdateManager &updates;
    EditCommands &edit;
};

/// The menus over the sidebar: File, Edit, Format, Help. What others carry out by name goes out as an event; what the
/// window carries out, as a signal.
class MainMenu final : public QMenuBar
{
    Q_OBJECT
public:
    /// All parts must outlive the menu.
    explicit MainMenu(MainMenuParts parts, QWidget *parent = nullptr);

    /// Whether there is an editor to search in.
    void setCanFind(bool canFind);

Q_SIGNALS:
    void settingsRequested();
    void quitRequested();
    void findRequested();
    void replaceRequested();
    void shortcutsRequested();
    void aboutRequested();

private:
    void addFileMenu(const MainMenuParts &parts);
    void addEditMenu(EditCommands &edit);
    void addFormatMenu(EventCenter &events);
    void addHelpMenu(UpdateManager &updates);

    QAction *m_find = nullptr;
    QAction *m_replace = nullptr;
};

} // namespace Tessaline
