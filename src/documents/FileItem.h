#pragma once

#include "documents/ProjectReference.h"

#include <QtCore/QList>

#include <optional>

namespace Tessaline {

/// A node of a project's tree, a snapshot of the disk. Trees may be as deep as the disk has them: comparing, hashing
/// and destroying one needs no more stack than a single node does.
struct FileItem {
    FileURL url;  // also its identity
    QString name; // as shown
    bool isDirectory = false;
    ProjectReference project;                // the project whose scan found it
    std::optional<QList<FileItem>> children; // absent for a file; possibly empty for a folder

    FileItem() = default;
    FileItem(FileURL url, QString name, bool isDirectory, ProjectReference project,
             std::optional<QList<FileItem>> children = std::nullopt);
    FileItem(const FileItem &);
    FileItem(FileItem &&) noexcept;
    FileItem &operator=(const FileItem &);
    FileItem &operator=(FileItem &&) noexcept;
    ~FileItem();

    /// All five fields count, the children one by one and in order; no children is not the same as an empty list.
    friend bool operator==(const FileItem &left, const FileItem &right);
};

size_t qHash(const FileItem &item, size_t seed = 0);

} // namespace Tessaline

Q_DECLARE_TYPEINFO(Tessaline::FileItem, Q_RELOCATABLE_TYPE);
