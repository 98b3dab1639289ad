#include "probe/Operations.h"

#include "documents/DocumentType.h"
#include "documents/FileTree.h"
#include "documents/ProjectReference.h"
#include "foundation/NaturalCompare.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace Tessaline::Probe {

namespace {

FileURL url(const Arguments &arguments, const char *name)
{
    return FileURL(arguments.text(name));
}

QList<ProjectReference> projects(const Arguments &arguments)
{
    QList<ProjectReference> projects;
    for (const QString &root : arguments.texts("projects"))
        projects.append({FileURL(root)});
    return projects;
}

/// The tree as lists in lists, level by level: a call for each level would need more stack for a deep tree than there
/// is.
Json jsonOfTree(const QList<FileItem> &tree)
{
    Json result = Json::array();
    std::vector<std::pair<const QList<FileItem> *, Json *>> pending{{&tree, &result}};
    while (!pending.empty()) {
        const auto [items, list] = pending.back();
        pending.pop_back();
        auto &elements = list->get_ref<Json::array_t &>();
        elements.resize(static_cast<size_t>(items->size())); // now they stay where they are
        for (qsizetype i = 0; i < items->size(); ++i) {
            const FileItem &item = items->at(i);
            Json &element = elements[static_cast<size_t>(i)];
            element["path"] = jsonFrom(item.url.path());
            element["name"] = jsonFrom(item.name);
            element["isDirectory"] = item.isDirectory;
            element["project"] = jsonFrom(item.project.rootURL.path());
            Json &children = element["children"]; // null for a file
            if (item.children) {
                children = Json::array();
                pending.emplace_back(&*item.children, &children);
            }
        }
    }
    return result;
}

constexpr Operation kOperations[] = {
    {"documentType",
     [](const Arguments &arguments) {
         const std::optional<DocumentType> type = documentType(url(arguments, "path"));
         return type ? jsonFrom(rawValue(*type)) : Json();
     }},
    {"contains",
     [](const Arguments &arguments) {
         return Json(ProjectReference{url(arguments, "root")}.contains(url(arguments, "path")));
     }},
    {"relativePath",
     [](const Arguments &arguments) {
         const std::optional<QString> path =
             ProjectReference{url(arguments, "root")}.relativePath(url(arguments, "path"));
         return path ? jsonFrom(*path) : Json();
     }},
    {"projectForFile",
     [](const Arguments &arguments) {
         const std::optional<ProjectReference> project = projectForFile(url(arguments, "path"), projects(arguments));
         return project ? jsonFrom(project->rootURL.path()) : Json();
     }},
    {"buildTree", [](const Arguments &arguments) { return jsonOfTree(buildTree(projects(arguments))); }},
    {"localizedStandardCompare",
     [](const Arguments &arguments) {
         return Json(localizedStandardCompare(arguments.text("a"), arguments.text("b")));
     }},
};

} // namespace

std::span<const Operation> documentsOperations()
{
    return kOperations;
}

} // namespace Tessaline::Probe
