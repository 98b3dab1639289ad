#include "documents/ProjectTreeModel.h"

#include "documents/DocumentSymbol.h"
#include "documents/DocumentType.h"
#include "foundation_ui/PlainToolTip.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Whether `url` is `folder` or lies below it, by the text of the paths.
bool isAtOrBelow(const FileURL &url, const FileURL &folder)
{
    const QString &path = url.path();
    const QString &root = folder.path();
    return path.startsWith(root) && (path.size() == root.size() || path.at(root.size()) == u'/' || root == "/"_L1);
}

} // namespace

/// A row. Its children are made once, all together, so their addresses hold until the model is reset.
struct ProjectTreeModel::Node {
    const FileItem *item = nullptr; // null for the invisible root
    Node *parent = nullptr;
    std::unique_ptr<std::vector<Node>> children; // null until asked for
    QString symbol;                              // of a file; empty until asked for
    int row = 0;
};

ProjectTreeModel::ProjectTreeModel(QObject *parent) : QAbstractItemModel(parent), m_root(std::make_unique<Node>()) {}

ProjectTreeModel::~ProjectTreeModel() = default;

void ProjectTreeModel::setItems(const QList<FileItem> &items)
{
    beginResetModel();
    m_root = std::make_unique<Node>();
    m_items = items;
    endResetModel();
}

ProjectTreeModel::Node *ProjectTreeModel::nodeOf(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Node *>(index.internalPointer()) : m_root.get();
}

std::vector<ProjectTreeModel::Node> &ProjectTreeModel::childrenOf(Node *node) const
{
    if (node->children)
        return *node->children;
    static const QList<FileItem> kNone;
    const QList<FileItem> *items = &kNone;
    if (!node->item)
        items = &m_items;
    else if (node->item->children)
        items = &*node->item->children;

    node->children = std::make_unique<std::vector<Node>>(static_cast<size_t>(items->size()));
    int row = 0;
    for (Node &child : *node->children) {
        child.item = &items->at(row);
        child.parent = node;
        child.row = row++;
    }
    return *node->children;
}

const FileItem &ProjectTreeModel::item(const QModelIndex &index) const
{
    Q_ASSERT(checkIndex(index, CheckIndexOption::IndexIsValid));
    return *nodeOf(index)->item;
}

QModelIndexList ProjectTreeModel::indexesOf(const FileURL &url) const
{
    QModelIndexList found;
    for (Node &root : childrenOf(m_root.get())) {
        // One step down for each folder of the path, and never into a folder beside it.
        Node *node = &root;
        while (node && isAtOrBelow(url, node->item->url)) {
            if (node->item->url == url) {
                found.append(createIndex(node->row, 0, node));
                break;
            }
            Node *next = nullptr;
            for (Node &child : childrenOf(node)) {
                if (isAtOrBelow(url, child.item->url)) {
                    next = &child;
                    break;
                }
            }
            node = next;
        }
    }
    return found;
}

QModelIndex ProjectTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column != 0 || parent.column() > 0)
        return {};
    std::vector<Node> &children = childrenOf(nodeOf(parent));
    if (static_cast<size_t>(row) >= children.size())
        return {};
    return createIndex(row, 0, &children[static_cast<size_t>(row)]);
}

QModelIndex ProjectTreeModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    Node *parent = nodeOf(child)->parent;
    return parent->item ? createIndex(parent->row, 0, parent) : QModelIndex();
}

int ProjectTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const FileItem *item = nodeOf(parent)->item;
    if (!item)
        return static_cast<int>(m_items.size());
    return item->children ? static_cast<int>(item->children->size()) : 0;
}

bool ProjectTreeModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant ProjectTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    Node &node = *nodeOf(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return node.item->name;
    case Qt::ToolTipRole:
        return plainToolTip(node.item->url.path());
    case SymbolRole:
        return symbolOf(node);
    case IsFolderRole:
        return node.item->isDirectory;
    case UrlRole:
        return QVariant::fromValue(node.item->url);
    default:
        return {};
    }
}

QString ProjectTreeModel::symbolOf(Node &node) const
{
    if (node.item->isDirectory)
        return u"folder"_s;
    // A file with an unknown extension is read for this, so the answer is kept.
    if (node.symbol.isEmpty())
        node.symbol = documentSymbol(documentType(node.item->url));
    return node.symbol;
}

QVariant ProjectTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section != 0 || orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return u"Name"_s;
}

Qt::ItemFlags ProjectTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return nodeOf(index)->item->isDirectory ? flags : flags | Qt::ItemNeverHasChildren;
}

} // namespace Tessaline
