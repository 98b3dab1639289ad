#pragma once

#include "foundation/FileURL.h"

#include <vector>

#include <dirent.h>

namespace Tessaline {

/// What a tree shows of one entry of a folder.
struct FolderEntry {
    QString name;
    bool isFolder = false;
    friend bool operator==(const FolderEntry &, const FolderEntry &) = default;
};

enum class LastLink { Followed, Refused }; // what happens if the path itself ends in a symbolic link

/// The next entry of an open folder, as readdir(3) gives it; a test hands in one that fails.
using ReadEntry = dirent *(*)(DIR *);

/// What a tree shows of the folder's entries, in the order in which it shows them: folders before files, each group
/// in the order of localizedStandardCompare. Left out are hidden entries, symbolic links, folders of generated
/// files ("node_modules", "build" and the like), files without a DocumentType, and names that are not UTF-8, which
/// no text can hold.
///
/// If the folder or one of its entries cannot be read, what was read before it counts, and one line goes to
/// standard output: "Error loading contents of <path>: <error>". The path may be longer than the system takes in
/// one piece. Blocks; safe from any thread.
std::vector<FolderEntry> shownEntries(const FileURL &folder, LastLink lastLink, ReadEntry readEntry = ::readdir);

} // namespace Tessaline
