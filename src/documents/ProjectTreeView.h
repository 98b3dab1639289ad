#pragma once

#include "documents/ProjectTreeModel.h"

#include <QtWidgets/QTreeView>

namespace Tessaline {

class ProjectsList;
class Theme;
class Workspace;

/// The rows of the projects. A click or Return on a folder opens or closes it, on a file opens the file; Left and Right
/// close and open folders. The rows of the active file are drawn as selected.
class ProjectTreeView final : public QTreeView
{
    Q_OBJECT
public:
    static constexpr int kRowHeight = 28;

    /// All three must outlive the view.
    ProjectTreeView(Workspace &workspace, ProjectsList &projects, const Theme &theme, QWidget *parent = nullptr);

Q_SIGNALS:
    void documentChosen();

protected:
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void takeItems();
    void restoreExpansion(const QModelIndex &parent);
    void noteExpansion(const QModelIndex &index, bool isExpanded);
    void selectActiveFile();
    void activateRow(const QModelIndex &index);

    Workspace &m_workspace;
    ProjectsList &m_projects;
    const Theme &m_theme;
    ProjectTreeModel m_model;
    bool m_isRestoring = false;     // expansions are being put back, not made by the person
    bool m_showsCurrentRow = false; // the keyboard moves in the tree
};

} // namespace Tessaline
