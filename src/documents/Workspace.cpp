#include "documents/Workspace.h"

#include "documents/AppPreferences.h"
#include "documents/DocumentType.h"
#include "foundation/Preferences.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Tessaline {

namespace {

bool exists(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar::Null) && QFileInfo::exists(path);
}

/// The file of a stored path, which only a foreign hand makes relative.
FileURL fileAt(const QString &path)
{
    return FileURL(QDir::isAbsolutePath(path) ? path : QDir::current().absoluteFilePath(path));
}

bool isEditableFile(const QString &path)
{
    return exists(path) && documentType(fileAt(path)).has_value();
}

template <class References, class PathOf>
QStringList paths(const References &references, PathOf pathOf)
{
    QStringList result;
    result.reserve(references.size());
    for (const auto &reference : references)
        result.append(pathOf(reference).path());
    return result;
}

auto entryOf(const FileURL &url)
{
    return [&url](const OpenFileReference &file) { return file.url == url; };
}

} // namespace

Workspace::Workspace(Preferences &preferences, QObject *parent) : QObject(parent), m_preferences(preferences) {}

void Workspace::setProjects(QList<ProjectReference> projects)
{
    if (projects == m_projects)
        return;
    m_projects = std::move(projects);
    QList<OpenFileReference> openFiles = m_openFiles;
    for (OpenFileReference &file : openFiles)
        file.project = projectForFile(file.url, m_projects);
    setOpenFiles(std::move(openFiles));
    persistWorkspace();
    Q_EMIT projectsChanged();
}

void Workspace::setOpenFiles(QList<OpenFileReference> openFiles)
{
    if (openFiles == m_openFiles)
        return;
    m_openFiles = std::move(openFiles);
    persistWorkspace();
    Q_EMIT openFilesChanged();
}

void Workspace::setActiveFileURL(std::optional<FileURL> url)
{
    if (url == m_activeFileURL)
        return;
    const std::optional<FileURL> old = std::exchange(m_activeFileURL, url);
    persistWorkspace();
    Q_EMIT activeFileURLChanged(old, url);
}

std::optional<ProjectReference> Workspace::activeProject() const
{
    return m_activeFileURL ? projectForFile(*m_activeFileURL, m_projects) : std::nullopt;
}

void Workspace::restoreWorkspace()
{
    // 1. The projects. The key of earlier releases counts only while the new one has no value at all: an empty list is
    // one.
    QList<ProjectReference> projects;
    std::optional<QStringList> roots = m_preferences.stringList(PreferenceKeys::kLastProjectFolderURLs);
    if (!roots)
        if (const auto root = m_preferences.string(PreferenceKeys::kLastRootFolderURL))
            roots = QStringList{*root};
    for (const QString &path : roots.value_or(QStringList()))
        if (exists(path))
            projects.append({fileAt(path).standardized()});

    // 2. The open files.
    QList<OpenFileReference> openFiles;
    for (const QString &path : m_preferences.stringList(PreferenceKeys::kLastOpenFileURLs).value_or(QStringList()))
        if (isEditableFile(path))
            openFiles.append({fileAt(path), projectForFile(fileAt(path), projects)});

    // 3. The active file. No other takes its place if it has gone.
    std::optional<FileURL> active;
    if (const auto path = m_preferences.string(PreferenceKeys::kLastActiveFileURL); path && isEditableFile(*path))
        active = fileAt(*path);

    // 4. All three are set before any of them is stored again, so that no moment exists at which the stored workspace
    // is half of what it was.
    const bool hasProjects = projects != m_projects;
    const bool hasOpenFiles = openFiles != m_openFiles;
    const bool hasActive = active != m_activeFileURL;
    m_projects = std::move(projects);
    m_openFiles = std::move(openFiles);
    const std::optional<FileURL> old = std::exchange(m_activeFileURL, active);
    if (hasProjects || hasOpenFiles || hasActive)
        persistWorkspace();
    if (hasProjects)
        Q_EMIT projectsChanged();
    if (hasOpenFiles)
        Q_EMIT openFilesChanged();
    if (hasActive)
        Q_EMIT activeFileURLChanged(old, active);
}

void Workspace::persistWorkspace()
{
    m_preferences.set(PreferenceKeys::kLastProjectFolderURLs,
                      paths(m_projects, [](const ProjectReference &project) { return project.rootURL; }));
    if (m_activeFileURL)
        m_preferences.set(PreferenceKeys::kLastActiveFileURL, m_activeFileURL->path());
    else
        m_preferences.remove(PreferenceKeys::kLastActiveFileURL);
    m_preferences.set(PreferenceKeys::kLastOpenFileURLs,
                      paths(m_openFiles, [](const OpenFileReference &file) { return file.url; }));
}

void Workspace::openFile(const FileURL &url)
{
    const OpenFileReference file{url, projectForFile(url, m_projects)};
    QList<OpenFileReference> openFiles = m_openFiles;
    const auto entry = std::find_if(openFiles.begin(), openFiles.end(), entryOf(url));
    if (entry != openFiles.end())
        *entry = file;
    else
        openFiles.append(file);
    setOpenFiles(std::move(openFiles));
    setActiveFileURL(file.url); // `url` may have been part of the list that changed
}

bool Workspace::dropFiles(const QList<FileURL> &urls)
{
    if (urls.isEmpty())
        return false;
    if (documentType(urls.constFirst()))
        openFile(urls.constFirst());
    return true;
}

void Workspace::openFileOfProject(const FileURL &url, const ProjectReference &project)
{
    const OpenFileReference file{url, project};
    if (std::none_of(m_openFiles.begin(), m_openFiles.end(), entryOf(url)))
        setOpenFiles(m_openFiles + QList<OpenFileReference>{file});
    setActiveFileURL(file.url);
}

void Workspace::closeFile(const FileURL &url)
{
    QList<OpenFileReference> openFiles = m_openFiles;
    const auto entry = std::find_if(openFiles.begin(), openFiles.end(), entryOf(url));
    if (entry == openFiles.end())
        return;
    const FileURL closed = entry->url;
    openFiles.erase(entry);
    setOpenFiles(std::move(openFiles));
    if (m_activeFileURL == closed)
        setActiveFileURL(m_openFiles.isEmpty() ? std::nullopt : std::optional(m_openFiles.constLast().url));
}

void Workspace::addProject(const FileURL &folder)
{
    const ProjectReference project{folder.standardized()};
    if (!m_projects.contains(project))
        setProjects(m_projects + QList<ProjectReference>{project});
}

void Workspace::removeProject(const ProjectReference &project)
{
    QList<ProjectReference> projects = m_projects;
    projects.removeAll(project);
    setProjects(std::move(projects));
}

} // namespace Tessaline
