#pragma once

#include "documents/OpenFileReference.h"

#include <QtCore/QList>
#include <QtCore/QObject>

#include <optional>

namespace Tessaline {

class Preferences;

/// The workspace of the one window: the project folders, the open files and the active file, in the order in which the
/// user made them. The three columns share it and change it directly; every real change is stored at once (keys
/// lastProjectFolderURLs, lastOpenFileURLs, lastActiveFileURL: plain paths).
///
/// `openFiles` has at most one entry per URL, but for what a stored list repeats. The active file is normally one of
/// them, but nothing requires it. Main thread only.
class Workspace final : public QObject
{
    Q_OBJECT
public:
    /// `preferences` must outlive this object. Starts empty.
    explicit Workspace(Preferences &preferences, QObject *parent = nullptr);

    const QList<ProjectReference> &projects() const { return m_projects; }
    const QList<OpenFileReference> &openFiles() const { return m_openFiles; }
    const std::optional<FileURL> &activeFileURL() const { return m_activeFileURL; }

    /// The setters store the workspace on a real change only. A change of the projects first recomputes the project of
    /// every open file.
    void setProjects(QList<ProjectReference> projects);
    void setOpenFiles(QList<OpenFileReference> openFiles);
    void setActiveFileURL(std::optional<FileURL> url);

    /// The project that contains the active file, if any.
    std::optional<ProjectReference> activeProject() const;

    /// Reads the stored workspace; entries that no longer exist, or that cannot be edited, are dropped in silence.
    /// Called once, at the first appearance of the window.
    void restoreWorkspace();
    void persistWorkspace();

    /// Opens a file that was dropped or newly made: an entry with the same URL is replaced in its place, and the file
    /// becomes active.
    void openFile(const FileURL &url);
    /// What a drop of files on the window does: the first is opened if it can be edited, all else is ignored in
    /// silence. False if there is no file among them.
    bool dropFiles(const QList<FileURL> &urls);

    /// Opens a file from the project tree, whose project is known: an entry with the same URL stays as it is.
    void openFileOfProject(const FileURL &url, const ProjectReference &project);
    /// Removes the first entry of this file. If it was active, the last remaining entry becomes active.
    void closeFile(const FileURL &url);

    /// Appends the folder in its standardized form, unless it is a project already.
    void addProject(const FileURL &folder);
    /// Removes every project with this root. Its open files stay open.
    void removeProject(const ProjectReference &project);

Q_SIGNALS:
    void projectsChanged();
    void openFilesChanged();
    void activeFileURLChanged(const std::optional<Tessaline::FileURL> &oldURL,
                              const std::optional<Tessaline::FileURL> &newURL);

private:
    Preferences &m_preferences;
    QList<ProjectReference> m_projects;
    QList<OpenFileReference> m_openFiles;
    std::optional<FileURL> m_activeFileURL;
};

} // namespace Tessaline
