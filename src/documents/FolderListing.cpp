#include "documents/FolderListing.h"

#include "documents/DocumentType.h"
#include "foundation/ConsoleLine.h"
#include "foundation/NaturalCompare.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

constexpr std::array<QByteArrayView, 9> kGeneratedFolders = {
    "node_modules", "target", ".git", "DerivedData", ".gradle", ".idea", "build", ".build", ".gemini",
};

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// Opens a path that is too long for one call piece by piece. -1 and errno on failure.
int openInPieces(QByteArrayView path, int flags)
{
    constexpr qsizetype kLongestPiece = 2048; // well below PATH_MAX, well above the length of a name
    int folder = AT_FDCWD;
    while (!path.isEmpty()) {
        qsizetype length = path.size();
        if (length > kLongestPiece) {
            length = path.first(kLongestPiece).lastIndexOf('/') + 1;
            if (length == 0)
                length = kLongestPiece; // a name that no file can have; opening it will say so
        }
        const bool isLast = length == path.size();
        const QByteArray piece = path.first(length).toByteArray();
        const int next = openat(folder, piece.constData(), isLast ? flags : O_PATH | O_DIRECTORY | O_CLOEXEC);
        const int error = errno;
        if (folder != AT_FDCWD)
            close(folder);
        errno = error;
        if (next < 0)
            return -1;
        folder = next;
        path = path.sliced(length);
    }
    return folder;
}

/// Null and errno on failure.
OpenFolder openFolder(const FileURL &url, LastLink lastLink)
{
    const QByteArray path = QFile::encodeName(url.path());
    if (path.contains('\0')) { // no file has such a name, but the system would see only what stands before the zero
        errno = ENOENT;
        return nullptr;
    }
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (lastLink == LastLink::Refused ? O_NOFOLLOW : 0);
    int descriptor = open(path.constData(), flags);
    if (descriptor < 0 && errno == ENAMETOOLONG)
        descriptor = openInPieces(path, flags);
    if (descriptor < 0)
        return nullptr;
    OpenFolder folder(fdopendir(descriptor));
    if (!folder)
        close(descriptor);
    return folder;
}

enum class EntryKind { File, Folder, Link, Special };

/// What the entry is; absent and errno if the system does not say.
std::optional<EntryKind> kindOf(DIR *folder, const dirent &entry)
{
    switch (entry.d_type) {
    case DT_DIR:
        return EntryKind::Folder;
    case DT_LNK:
        return EntryKind::Link;
    case DT_REG:
        return EntryKind::File;
    case DT_UNKNOWN: // the file system does not keep the kind beside the name
        break;
    default:
        return EntryKind::Special;
    }
    struct stat status = {};
    if (fstatat(dirfd(folder), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    if (S_ISDIR(status.st_mode))
        return EntryKind::Folder;
    if (S_ISLNK(status.st_mode))
        return EntryKind::Link;
    return S_ISREG(status.st_mode) ? EntryKind::File : EntryKind::Special;
}

/// Whether a tree shows the entry; `name` is its name as a text.
bool isShown(DIR *folder, const dirent &entry, EntryKind kind, QStringView name)
{
    switch (kind) {
    case EntryKind::Link:
        return false;
    case EntryKind::Folder:
        return std::ranges::find(kGeneratedFolders, QByteArrayView(entry.d_name)) == kGeneratedFolders.end();
    case EntryKind::File:
    case EntryKind::Special:
        break;
    }
    if (documentTypeOfExtension(FileURL::pathExtensionOf(name)))
        return true;
    return kind == EntryKind::File && looksLikeText(dirfd(folder), entry.d_name); // a pipe has no content to look at
}

void sortAsShown(std::vector<FolderEntry> &entries)
{
    const auto isFolder = [](const FolderEntry &entry) { return entry.isFolder; };
    const auto files = std::stable_partition(entries.begin(), entries.end(), isFolder);
    std::vector<FolderEntry> sorted;
    sorted.reserve(entries.size());
    const auto appendSorted = [&sorted](auto begin, auto end) {
        QList<QStringView> names;
        names.reserve(end - begin);
        std::for_each(begin, end, [&names](const FolderEntry &entry) { names.append(entry.name); });
        for (const qsizetype index : localizedStandardOrder(names))
            sorted.push_back(std::move(begin[index]));
    };
    appendSorted(entries.begin(), files);
    appendSorted(files, entries.end());
    entries = std::move(sorted);
}

void printFailure(const FileURL &folder, int error)
{
    printConsoleLine(QStringLiteral("Error loading contents of %1: %2").arg(folder.path(), qt_error_string(error)));
}

} // namespace

std::vector<FolderEntry> shownEntries(const FileURL &url, LastLink lastLink, ReadEntry readEntry)
{
    std::vector<FolderEntry> entries;
    const OpenFolder folder = openFolder(url, lastLink);
    if (!folder) {
        printFailure(url, errno);
        return entries;
    }

    for (;;) {
        errno = 0;
        const dirent *const entry = readEntry(folder.get());
        if (!entry) {
            if (errno != 0)
                printFailure(url, errno);
            break;
        }
        const QByteArrayView bytes(entry->d_name);
        if (bytes.startsWith('.') || !bytes.isValidUtf8()) // "." and ".." too
            continue;
        const std::optional<EntryKind> kind = kindOf(folder.get(), *entry);
        if (!kind) {
            printFailure(url, errno);
            break;
        }
        QString name = QString::fromUtf8(bytes);
        if (isShown(folder.get(), *entry, *kind, name))
            entries.push_back({std::move(name), *kind == EntryKind::Folder});
    }
    sortAsShown(entries);
    return entries;
}

} // namespace Tessaline
