#include "documents/FileTree.h"

#include "documents/FolderListing.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace Tessaline {

namespace {

/// Fills folder items with what is below them, on several threads. A folder's list does not move once it has been made,
/// so each thread writes into the items of its own folders only; the lock guards the list of what is left to do.
class TreeScan
{
public:
    explicit TreeScan(std::stop_token stop = {}) : m_stop(std::move(stop)) {}

    /// `folder` must stay where it is until `run` has returned. A root may be reached through a symbolic link.
    void addRoot(FileItem &folder) { m_pending.push_back({&folder, LastLink::Followed}); }

    /// Returns when everything is filled, or soon after the stop.
    void run();

private:
    struct Task {
        FileItem *folder = nullptr;
        LastLink lastLink = LastLink::Refused;
    };

    void work();
    static std::vector<Task> fill(FileItem &folder, LastLink lastLink);

    const std::stop_token m_stop;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Task> m_pending;
    size_t m_running = 0; // tasks taken and not done; they may still add others
};

void TreeScan::run()
{
    if (m_pending.empty())
        return;
    // At least two: while one waits for the disk, the other classifies and sorts.
    const unsigned helpers = std::clamp(std::thread::hardware_concurrency(), 2u, 8u) - 1;
    std::vector<std::jthread> threads; // joined when it goes
    try {
        while (threads.size() < helpers)
            threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        // No more threads to be had: those that run do it all.
    }
    work();
}

void TreeScan::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return !m_pending.empty() || m_running == 0; });
        if (m_stop.stop_requested())
            m_pending.clear();
        if (m_pending.empty())
            return;
        const Task task = m_pending.back();
        m_pending.pop_back();
        ++m_running;
        lock.unlock();

        const std::vector<Task> below = fill(*task.folder, task.lastLink);

        lock.lock();
        --m_running;
        m_pending.insert(m_pending.end(), below.begin(), below.end());
        if (below.size() > 1 || m_running == 0)
            m_changed.notify_all();
    }
}

// Gives the folder its children, and returns those that are folders themselves.
std::vector<TreeScan::Task> TreeScan::fill(FileItem &folder, LastLink lastLink)
{
    std::vector<FolderEntry> entries = shownEntries(folder.url, lastLink);
    // A copy with a text of its own: one that all threads share would have them wait for its reference count.
    const ProjectReference project{
        FileURL(QString(folder.project.rootURL.path().data(), folder.project.rootURL.path().size()))};
    QList<FileItem> &children = folder.children.emplace();
    children.reserve(static_cast<qsizetype>(entries.size()));
    std::vector<Task> below;
    for (FolderEntry &entry : entries) {
        FileURL url = folder.url.appending(entry.name);
        children.emplaceBack(std::move(url), std::move(entry.name), entry.isFolder, project,
                             entry.isFolder ? std::optional(QList<FileItem>()) : std::nullopt);
        if (entry.isFolder)
            below.push_back({&children.last(), LastLink::Refused});
    }
    return below;
}

FileItem rootItem(const FileURL &url, const ProjectReference &project)
{
    return FileItem(url, url.lastPathComponent(), true, project, QList<FileItem>());
}

} // namespace

QList<FileItem> buildTree(const QList<ProjectReference> &projects, const std::stop_token &stop)
{
    QList<FileItem> roots;
    roots.reserve(projects.size());
    for (const ProjectReference &project : projects)
        roots.append(rootItem(project.rootURL, project));

    TreeScan scan(stop);
    for (FileItem &root : roots)
        scan.addRoot(root);
    scan.run();
    return roots;
}

QList<FileItem> scanDirectory(const FileURL &url, const ProjectReference &project)
{
    FileItem root = rootItem(url, project);
    TreeScan scan;
    scan.addRoot(root);
    scan.run();
    return *std::move(root.children);
}

} // namespace Tessaline
