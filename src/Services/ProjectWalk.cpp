#include "Services/ProjectWalk.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

// Folders that file managers show as one thing: programs and their parts, projects and documents that are kept as a
// folder of files.
constexpr auto kPackageExtensions = std::to_array<QStringView>({
    u"abbu",     u"aplibrary",    u"app",          u"appex",         u"band",          u"bbprojectd",
    u"bundle",   u"dsym",         u"fcpbundle",    u"graffle",       u"imovielibrary", u"kext",
    u"logicx",   u"mdimporter",   u"mlpackage",    u"mpkg",          u"musiclibrary",  u"nib",
    u"numbers",  u"pages",        u"photolibrary", u"photoslibrary", u"playground",    u"playgroundbook",
    u"plugin",   u"prefpane",     u"qlgenerator",  u"rtfd",          u"saver",         u"scptd",
    u"scriv",    u"sparsebundle", u"swiftpm",      u"textbundle",    u"textpack",      u"tvlibrary",
    u"wdgt",     u"workflow",     u"xcarchive",    u"xcdatamodel",   u"xcdatamodeld",  u"xcodeproj",
    u"xcresult", u"xctest",       u"xcworkspace",  u"xpc",
});

bool isPackage(const FileURL &folder)
{
    const QString extension = folder.pathExtension().toLower();
    return std::ranges::find(kPackageExtensions, extension) != kPackageExtensions.end();
}

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

enum class LastLink { Followed, Refused };

/// The names in the folder that a walk sees: the first `most` of them, the last one first.
std::vector<QByteArray> namesIn(const QByteArray &path, LastLink lastLink, size_t most, const std::stop_token &stop)
{
    std::vector<QByteArray> names;
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (lastLink == LastLink::Refused ? O_NOFOLLOW : 0);
    const int descriptor = path.contains('\0') ? -1 : open(path.constData(), flags);
    if (descriptor < 0)
        return names;
    const std::unique_ptr<DIR, CloseFolder> folder(fdopendir(descriptor));
    if (!folder) {
        close(descriptor);
        return names;
    }

    const auto keepFirst = [&names, most] {
        if (names.size() <= most)
            return;
        std::ranges::nth_element(names, names.begin() + static_cast<std::ptrdiff_t>(most));
        names.resize(most);
    };
    while (const dirent *const entry = stop.stop_requested() ? nullptr : readdir(folder.get())) {
        const QByteArrayView name(entry->d_name);
        if (name.startsWith('.') || !name.isValidUtf8())
            continue;
        names.push_back(name.toByteArray());
        if (names.size() >= 2 * most + 64) // a folder of millions of files takes no more memory than one of thousands
            keepFirst();
    }
    keepFirst();
    std::ranges::sort(names, std::ranges::greater());
    return names;
}

/// Absent if the entry has vanished meanwhile or its path is too long for the system.
std::optional<ProjectEntry> entryAt(const FileURL &url, const QByteArray &path)
{
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0)
        return std::nullopt;
    if (S_ISDIR(status.st_mode))
        return ProjectEntry{url, ProjectEntry::Kind::Folder, 0};
    if (S_ISREG(status.st_mode))
        return ProjectEntry{url, ProjectEntry::Kind::File, status.st_size};
    return ProjectEntry{url, ProjectEntry::Kind::Other, 0};
}

} // namespace

void walkProject(const FileURL &root, qsizetype mostEntries, const std::function<WalkStep(const ProjectEntry &)> &visit,
                 const std::stop_token &stop)
{
    struct Folder {
        FileURL url;
        QByteArray path;               // as the system takes it
        std::vector<QByteArray> names; // that are still to be visited, the next one at the end
    };
    qsizetype visited = 0;
    std::vector<Folder> folders; // from the root to where the walk is
    const auto enter = [&](const FileURL &url, const QByteArray &path, LastLink lastLink) {
        folders.push_back({url, path, namesIn(path, lastLink, static_cast<size_t>(mostEntries - visited), stop)});
    };

    enter(root, QFile::encodeName(root.path()), LastLink::Followed);
    while (!folders.empty() && !stop.stop_requested()) {
        Folder &folder = folders.back();
        if (folder.names.empty()) {
            folders.pop_back();
            continue;
        }
        const QByteArray name = std::move(folder.names.back());
        folder.names.pop_back();
        if (visited >= mostEntries)
            return;
        ++visited;

        const QByteArray path = folder.path + '/' + name;
        const FileURL url = folder.url.appending(QString::fromUtf8(name));
        const std::optional<ProjectEntry> entry = entryAt(url, path);
        const WalkStep step = entry ? visit(*entry) : WalkStep::Continue;
        if (step == WalkStep::Stop)
            return;
        if (entry && entry->kind == ProjectEntry::Kind::Folder && step == WalkStep::Continue && !isPackage(url))
            enter(url, path, LastLink::Refused);
    }
}

} // namespace Tessaline
