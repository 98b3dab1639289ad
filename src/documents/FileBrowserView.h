#pragma once

#include "foundation_ui/Ground.h"

class QScrollArea;

namespace Tessaline {

class OpenFilesList;
class ProjectsList;
class ProjectTreeView;
class Workspace;

/// The sidebar: the section "Open Files" and below it the section "Projects". Both change the workspace directly.
class FileBrowserView final : public Ground
{
    Q_OBJECT
public:
    /// All three must outlive the view. The first scan of the projects begins at the first show.
    FileBrowserView(Workspace &workspace, ProjectsList &projects, const Theme &theme, QWidget *parent = nullptr);

Q_SIGNALS:
    /// The person chose a file to work on, also one that was active already. The workspace has been changed.
    void documentChosen();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void presentProjects();
    void divideHeight();

    ProjectsList &m_projects;
    OpenFilesList *m_openFiles;
    QScrollArea *m_openFilesArea;
    ProjectTreeView *m_tree;
    QWidget *m_noProjects;
    bool m_appeared = false;
};

} // namespace Tessaline
