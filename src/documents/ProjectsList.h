#pragma once

#include "documents/FileItem.h"

#include <QCoro/QCoroTask>
#include <QtCore/QHash>
#include <QtCore/QObject>

#include <functional>
#include <optional>
#include <stop_token>

namespace Tessaline {

class EventCenter;
class Workspace;

/// What the sidebar's section of projects shows: the scanned tree and which folders are open. Main thread only; the
/// scan runs on the worker pool.
class ProjectsList final : public QObject
{
    Q_OBJECT
public:
    /// Asks for one folder; absent if the person gave up.
    using AskForFolder = std::function<std::optional<FileURL>()>;

    ProjectsList(Workspace &workspace, EventCenter &events, AskForFolder askForFolder, QObject *parent = nullptr);
    ~ProjectsList() override;

    /// One root per project; empty until the first scan has ended. A rescan replaces it whole, the old one stays until
    /// then.
    const QList<FileItem> &fileItems() const { return m_fileItems; }

    bool isExpanded(const FileURL &folder) const { return m_expandedStates.value(folder, false); }
    void setExpanded(const FileURL &folder, bool expanded); // lives in memory only and outlives rescans

    void appear();    // the first scan; from here changes of the projects and ProjectFilesChanged scan again
    void disappear(); // a running scan's result is dropped
    void reload();    // a newer request replaces the older
    void addProjectFolder();
    /// Whether the row's menu offers "Remove Project": only on the root of a project that is still in the workspace.
    bool canRemoveProject(const FileItem &item) const;
    void removeProjectFolder(const ProjectReference &project);
    void openFile(const FileItem &item);

Q_SIGNALS:
    void fileItemsChanged();

private:
    QCoro::Task<> scan(QList<ProjectReference> projects);

    Workspace &m_workspace;
    AskForFolder m_askForFolder;
    QList<FileItem> m_fileItems;
    QHash<FileURL, bool> m_expandedStates;
    std::stop_source m_reload;   // of the one scan whose result is still wanted
    std::stop_source m_lifetime; // stopped by the destructor
    bool m_isShown = false;
};

} // namespace Tessaline
