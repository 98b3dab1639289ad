#pragma once

#include "shell/ContentView.h"
#include "shell/FramelessWindow.h"
#include "shell/MainMenu.h"

#include <QtCore/QPointer>
#include <QtWidgets/QDialog>

#include <memory>

namespace Tessaline {

class AISettings;
class AppearanceSwitch;
class SelectionToolsView;

struct MainWindowParts {
    Workspace &workspace;
    ProjectsList &projects;
    EditorArea &area;
    AppPreferences &preferences;
    EventCenter &events;
    UpdateManager &updates;
    AppearanceSwitch &appearance;
    AISettings &assistantSettings;
    AssistantPanels &assistant;
    const Theme &theme;
    std::function<DocumentEditor *(EditorKind kind, QWidget *parent)> makeEditor;
    std::function<QList<FileURL>()> askForFiles;             // to attach to the session
    std::function<void(const QUrl &)> openOutside;           // a link of an answer
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // of the pictures in answers; null: none are loaded
};

/// The one window. It does not close by itself: the wish to close it ends the application, which writes what is pending
/// first.
class MainWindow final : public FramelessWindow
{
    Q_OBJECT
public:
    static constexpr QSize kMinimumSize{1100, 600};
    static constexpr QSize kGoodSize{1440, 900};

    /// All parts must outlive the window.
    explicit MainWindow(MainWindowParts parts);
    ~MainWindow() override;

    /// The first appearance: restores the workspace and the appearance, and shows the window, as large as is good or,
    /// where the screen has less room, maximized.
    void open();
    /// To the front, out of the task bar too.
    void comeToFront();

    MainMenu &menu() const { return *m_menu; }
    ContentView &content() const { return *m_content; }

Q_SIGNALS:
    /// By its button, the menu, or the desktop.
    void closeRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void addFormatToolbar();
    void connectMenu();
    void addKeys();
    void showDialog(QPointer<QDialog> &dialog, const std::function<QDialog *()> &make);

    MainWindowParts m_parts;
    MainMenu *m_menu;
    ContentView *m_content;
    std::unique_ptr<SelectionToolsView> m_tools;
    QPointer<QDialog> m_settings;
    QPointer<QDialog> m_shortcuts;
    QPointer<QDialog> m_about;
};

} // namespace Tessaline
