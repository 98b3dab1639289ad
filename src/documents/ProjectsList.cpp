#include "documents/ProjectsList.h"

#include "documents/FileTree.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/EventCenter.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

namespace Tessaline {

ProjectsList::ProjectsList(Workspace &workspace, EventCenter &events, AskForFolder askForFolder, QObject *parent)
    : QObject(parent), m_workspace(workspace), m_askForFolder(std::move(askForFolder))
{
    const auto reloadIfShown = [this] {
        if (m_isShown)
            reload();
    };
    connect(&m_workspace, &Workspace::projectsChanged, this, reloadIfShown);
    events.observe(AppEvents::kProjectFilesChanged, this, [reloadIfShown](const QVariantMap &) { reloadIfShown(); });
}

ProjectsList::~ProjectsList()
{
    m_reload.request_stop();
    m_lifetime.request_stop();
}

void ProjectsList::setExpanded(const FileURL &folder, bool expanded)
{
    m_expandedStates.insert(folder, expanded);
}

void ProjectsList::appear()
{
    m_isShown = true;
    reload();
}

void ProjectsList::disappear()
{
    m_isShown = false;
    m_reload.request_stop();
}

void ProjectsList::reload()
{
    m_reload.request_stop();
    m_reload = std::stop_source();
    scan(m_workspace.projects());
}

QCoro::Task<> ProjectsList::scan(QList<ProjectReference> projects)
{
    const std::stop_token stop = m_reload.get_token();
    // A scan that was replaced runs out; one that outlives the list would hold up the end of the process.
    const QFuture<QList<FileItem>> scanning =
        QtConcurrent::run(&backgroundPool(), buildTree, projects, m_lifetime.get_token());
    QList<FileItem> items = co_await scanning;
    if (stop.stop_requested())
        co_return; // replaced, or the list is gone

    m_fileItems = std::move(items);
    Q_EMIT fileItemsChanged();
}

void ProjectsList::addProjectFolder()
{
    if (const std::optional<FileURL> folder = m_askForFolder())
        m_workspace.addProject(*folder);
}

bool ProjectsList::canRemoveProject(const FileItem &item) const
{
    return item.url == item.project.rootURL && m_workspace.projects().contains(item.project);
}

void ProjectsList::removeProjectFolder(const ProjectReference &project)
{
    m_workspace.removeProject(project);
}

void ProjectsList::openFile(const FileItem &item)
{
    m_workspace.openFileOfProject(item.url, item.project);
}

} // namespace Tessaline
