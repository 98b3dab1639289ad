#pragma once

#include "foundation/FileURL.h"

#include <functional>
#include <stop_token>

namespace Tessaline {

/// What a walk through a project comes upon.
struct ProjectEntry {
    enum class Kind { Folder, File, Other }; // a symbolic link is never followed and is an Other
    FileURL url;
    Kind kind = Kind::Other;
    qint64 size = 0; // bytes, of a file
};

enum class WalkStep {
    Continue,
    SkipContents, // of the folder that was visited
    Stop,
};

/// Visits what is in the folder `root` and below it: a folder, then what it holds, then what comes behind it, in each
/// folder in the order of the names' bytes, so that equal trees are walked alike wherever they lie. Hidden entries,
/// what is inside of packages (folders that stand for one document or program, by their extension) and names that are
/// not UTF-8 are left out. The root itself may be hidden, a package or a symbolic link.
///
/// Ends after `mostEntries` entries, or soon after `stop` is requested. An entry that has vanished counts as one but is
/// not visited; a folder that cannot be read has no contents. Blocks; safe from any thread.
void walkProject(const FileURL &root, qsizetype mostEntries, const std::function<WalkStep(const ProjectEntry &)> &visit,
                 const std::stop_token &stop = {});

} // namespace Tessaline
