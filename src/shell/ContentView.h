#pragma once

#include "documents/EditorAreaView.h"

#include <QtWidgets/QWidget>

namespace NetworkImage {
class NetworkImageLoader;
}

namespace Tessaline {

class EventCenter;
class FileBrowserView;
class FramelessWindow;
class ProjectsList;
struct AssistantPanels;

struct ContentViewParts {
    Workspace &workspace;
    ProjectsList &projects;
    EditorArea &area;
    AppPreferences &preferences;
    EventCenter &events;
    AssistantPanels &assistant;
    const Theme &theme;
    std::function<DocumentEditor *(EditorKind kind, QWidget *parent)> makeEditor;
    FramelessWindow &window;                                 // that the title row's buttons act on
    QWidget *menuBar;                                        // is taken over
    std::function<QList<FileURL>()> askForFiles;             // to attach to the session
    std::function<void(const QUrl &)> openOutside;           // a link of an answer
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // of the pictures in answers; null: none are loaded
};

/// The content of the window: the sidebar under the menus, the document, and the column of the assistant. Files dropped
/// anywhere on it are opened as the workspace says.
class ContentView final : public QWidget
{
    Q_OBJECT
public:
    /// All parts must outlive the view.
    explicit ContentView(ContentViewParts parts, QWidget *parent = nullptr);

    FileBrowserView &sidebar() { return *m_sidebar; }
    EditorAreaView &editorArea() { return *m_editorArea; }

    /// Moves the focus to the column to the right (1) or left (-1) of the one that has it, round in a circle.
    void focusColumn(int step);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QWidget *makeSidebarColumn(const ContentViewParts &parts);

    Workspace &m_workspace;
    FileBrowserView *m_sidebar;
    EditorAreaView *m_editorArea;
    QList<QWidget *> m_columns; // from left to right
};

} // namespace Tessaline
