#pragma once

#include "documents/FileItem.h"

#include <QtCore/QAbstractItemModel>

#include <memory>
#include <vector>

namespace Tessaline {

/// The scanned projects as a model: one row per project, below it what the scan found. A snapshot that is replaced
/// whole.
///
/// `index` and `parent` take constant time. Rows are made for a folder when a view first asks for them, so that the
/// closed folders of a large project cost nothing.
class ProjectTreeModel final : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role {
        SymbolRole = Qt::UserRole, // the name of the row's symbol
        IsFolderRole,
        UrlRole, // FileURL
    };

    explicit ProjectTreeModel(QObject *parent = nullptr);
    ~ProjectTreeModel() override;

    void setItems(const QList<FileItem> &items);

    /// The item of a valid index; valid until the next `setItems`.
    const FileItem &item(const QModelIndex &index) const;
    /// Every row that stands for this file or folder, in the order of the roots: projects may contain each other.
    QModelIndexList indexesOf(const FileURL &url) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    using QObject::parent;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &) const override { return 1; }
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// The header is never shown, but assistive technology reads it.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Node;
    Node *nodeOf(const QModelIndex &index) const;
    std::vector<Node> &childrenOf(Node *node) const; // makes them at the first call
    QString symbolOf(Node &node) const;

    QList<FileItem> m_items; // keeps what the nodes point to
    std::unique_ptr<Node> m_root;
};

} // namespace Tessaline
