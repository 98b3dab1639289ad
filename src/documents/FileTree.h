#pragma once

#include "documents/FileItem.h"

#include <stop_token>

namespace Tessaline {

/// One root node per project, in the order of `projects`, each with everything below it that can be shown. A project
/// whose folder cannot be read stays, with no children. Blocks for as long as the disk takes; safe from any thread.
/// Once `stop` is requested no further folder is looked into, and what is missing then is left out.
QList<FileItem> buildTree(const QList<ProjectReference> &projects, const std::stop_token &stop = {});

/// What a folder holds, recursively and without a limit to the depth: no hidden entries, no symbolic links, no
/// folders of generated files ("node_modules", "build" and the like), and only files that have a DocumentType.
/// Folders come before files, each group in the order of localizedStandardCompare. A folder that cannot be read
/// gives an empty list and one line on standard output: "Error loading contents of <path>: <error>". Blocks; safe
/// from any thread.
QList<FileItem> scanDirectory(const FileURL &url, const ProjectReference &project);

} // namespace Tessaline
