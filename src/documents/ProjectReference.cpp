#include "documents/ProjectReference.h"

namespace Tessaline {

namespace {

bool liesInside(QStringView path, QStringView root)
{
    // NOTE: the slash after the root is compared too, so the disk's root "/" holds nothing but itself.
    return path == root || (path.size() > root.size() && path.startsWith(root) && path.at(root.size()) == u'/');
}

} // namespace

bool ProjectReference::contains(const FileURL &url) const
{
    return liesInside(url.standardized().path(), rootURL.path());
}

std::optional<QString> ProjectReference::relativePath(const FileURL &url) const
{
    const QString path = url.standardized().path();
    const QString &root = rootURL.path();
    if (!liesInside(path, root))
        return std::nullopt;
    return path == root ? rootURL.lastPathComponent() : path.sliced(root.size() + 1);
}

std::optional<ProjectReference> projectForFile(const FileURL &url, const QList<ProjectReference> &projects)
{
    const ProjectReference *innermost = nullptr;
    for (const ProjectReference &project : projects) {
        if (!project.contains(url))
            continue;
        if (!innermost || project.rootURL.path().size() > innermost->rootURL.path().size())
            innermost = &project;
    }
    return innermost ? std::optional(*innermost) : std::nullopt;
}

} // namespace Tessaline
