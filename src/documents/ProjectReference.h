#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QList>

#include <optional>

namespace Tessaline {

/// A project: a folder that the user added. Equal by its folder.
struct ProjectReference {
    FileURL rootURL; // in standardized form when made by the application

    /// Whether the file, by its standardized path, is the root or lies below it. Exact compare: "/a/b" does not hold
    /// "/a/bc". The root of the disk, "/", holds only itself.
    bool contains(const FileURL &url) const;
    /// The path inside the project; the root's own name for the root; absent for a file outside.
    std::optional<QString> relativePath(const FileURL &url) const;

    friend bool operator==(const ProjectReference &, const ProjectReference &) = default;
    friend size_t qHash(const ProjectReference &project, size_t seed = 0) { return qHash(project.rootURL, seed); }
};

/// The innermost of `projects` that contains the file; of two with equally long roots the earlier. Absent if none does.
std::optional<ProjectReference> projectForFile(const FileURL &url, const QList<ProjectReference> &projects);

} // namespace Tessaline
