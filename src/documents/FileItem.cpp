#include "documents/FileItem.h"

#include <QtCore/QHashFunctions>

#include <utility>
#include <vector>

namespace Tessaline {

FileItem::FileItem(FileURL fileURL, QString shownName, bool isFolder, ProjectReference ofProject,
                   std::optional<QList<FileItem>> items)
    : url(std::move(fileURL)), name(std::move(shownName)), isDirectory(isFolder), project(std::move(ofProject)),
      children(std::move(items))
{}

FileItem::FileItem(const FileItem &) = default;
FileItem::FileItem(FileItem &&) noexcept = default;
FileItem &FileItem::operator=(const FileItem &) = default;
FileItem &FileItem::operator=(FileItem &&) noexcept = default;

// Left to the members, the destruction of a folder would go one call deeper with each level below it.
FileItem::~FileItem()
{
    if (!children || children->isEmpty())
        return;
    std::vector<QList<FileItem>> pending;
    pending.push_back(*std::exchange(children, std::nullopt));
    while (!pending.empty()) {
        QList<FileItem> items = std::move(pending.back());
        pending.pop_back();
        if (!items.isDetached())
            continue; // somebody else has it too and will see to what is below
        for (FileItem &item : items)
            if (item.children && !item.children->isEmpty())
                pending.push_back(*std::exchange(item.children, std::nullopt));
    }
}

bool operator==(const FileItem &left, const FileItem &right)
{
    std::vector<std::pair<const FileItem *, const FileItem *>> pending{{&left, &right}};
    while (!pending.empty()) {
        const auto [one, other] = pending.back();
        pending.pop_back();
        if (one->url != other->url || one->name != other->name || one->isDirectory != other->isDirectory ||
            one->project != other->project || one->children.has_value() != other->children.has_value())
            return false;
        if (!one->children)
            continue;
        if (one->children->size() != other->children->size())
            return false;
        if (one->children->constData() == other->children->constData())
            continue; // one list that the two share
        for (qsizetype i = 0; i < one->children->size(); ++i)
            pending.emplace_back(&one->children->at(i), &other->children->at(i));
    }
    return true;
}

size_t qHash(const FileItem &item, size_t seed)
{
    std::vector<const FileItem *> pending{&item};
    while (!pending.empty()) {
        const FileItem &next = *pending.back();
        pending.pop_back();
        const qsizetype count =
            next.children ? next.children->size() : 0; // keeps a nested list apart from one that goes on
        seed = qHashMulti(seed, next.url, next.name, next.isDirectory, next.project, next.children.has_value(), count);
        for (qsizetype i = count - 1; i >= 0; --i)
            pending.push_back(&next.children->at(i));
    }
    return seed;
}

} // namespace Tessaline
