#pragma once

#include "documents/ProjectReference.h"

namespace Tessaline {

/// A file in the list of open files.
struct OpenFileReference {
    FileURL url; // also its identity
    std::optional<ProjectReference> project;

    friend bool operator==(const OpenFileReference &, const OpenFileReference &) = default;
    friend size_t qHash(const OpenFileReference &file, size_t seed = 0)
    {
        return qHashMulti(seed, file.url, file.project.has_value(), file.project ? file.project->rootURL : FileURL());
    }
};

} // namespace Tessaline
