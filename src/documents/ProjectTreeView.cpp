#include "documents/ProjectTreeView.h"

#include "documents/ProjectsList.h"
#include "documents/Workspace.h"
#include "foundation_ui/FocusRing.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/Symbols.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyledItemDelegate>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

// Where things stand in a row, from its left edge; each level adds an indentation.
constexpr int kIndentation = 16;
constexpr int kChevronCentre = 20;
constexpr int kSymbolLeft = 36;
constexpr int kNameLeft = 56;
constexpr int kNameRight = 16; // from the right edge
constexpr double kSymbolSize = 13;
constexpr int kRowInset = 8; // of the ground of a selected row
constexpr double kRowRadius = 6;

/// The tree is drawn row by row; the delegate only tells the height.
class RowHeight final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return QSize(0, ProjectTreeView::kRowHeight);
    }
};

int depthOf(const QModelIndex &index)
{
    int depth = 0;
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent())
        ++depth;
    return depth;
}

/// A small filled triangle that points down for an open folder and to the right for a closed one.
void drawChevron(QPainter &painter, const QPointF &centre, bool isOpen, const QColor &color)
{
    constexpr double kHalfBase = 3;
    constexpr double kHalfHeight = 2.75;
    QPolygonF triangle;
    if (isOpen)
        triangle << QPointF(-kHalfBase, -kHalfHeight) << QPointF(kHalfBase, -kHalfHeight) << QPointF(0, kHalfHeight);
    else
        triangle << QPointF(-kHalfHeight, -kHalfBase) << QPointF(-kHalfHeight, kHalfBase) << QPointF(kHalfHeight, 0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(triangle.translated(centre));
}

} // namespace

ProjectTreeView::ProjectTreeView(Workspace &workspace, ProjectsList &projects, const Theme &theme, QWidget *parent)
    : QTreeView(parent), m_workspace(workspace), m_projects(projects), m_theme(theme)
{
    setModel(&m_model);
    setItemDelegate(new RowHeight(this));
    setAccessibleName(u"Projects"_s);
    setFont(Fonts::interface(Fonts::kInterfaceSize));
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(true);
    // Rows indent themselves: a click on the chevron is a click on the row.
    setIndentation(0);
    setRootIsDecorated(false);
    setExpandsOnDoubleClick(false);
    setSelectionMode(QAbstractItemView::NoSelection); // the workspace decides what is selected
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFocusPolicy(Qt::TabFocus); // a click leaves the focus with the text
    viewport()->setAutoFillBackground(false);
    viewport()->setAttribute(Qt::WA_Hover);

    connect(&theme, &Theme::changed, viewport(), qOverload<>(&QWidget::update));
    connect(&projects, &ProjectsList::fileItemsChanged, this, &ProjectTreeView::takeItems);
    connect(&workspace, &Workspace::activeFileURLChanged, this, &ProjectTreeView::selectActiveFile);
    connect(this, &QTreeView::clicked, this, &ProjectTreeView::activateRow);
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) { noteExpansion(index, true); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) { noteExpansion(index, false); });
    takeItems();
}

void ProjectTreeView::takeItems()
{
    // 1. Where the person stands, told by files, since rows come and go.
    const QModelIndex top = indexAt(QPoint(0, 0));
    const FileURL topURL = top.isValid() ? m_model.item(top).url : FileURL();
    const int topOffset = visualRect(top).top();
    const int scrolled = verticalScrollBar()->value();
    const QModelIndex current = currentIndex();
    const FileURL currentURL = current.isValid() ? m_model.item(current).url : FileURL();

    // 2. The new rows, with the folders open that were.
    m_model.setItems(m_projects.fileItems());
    restoreExpansion(QModelIndex());

    // 3. Back to where the person stood. Moving the current row must not scroll to it.
    const QModelIndexList currentRows = m_model.indexesOf(currentURL);
    if (!currentRows.isEmpty()) {
        setAutoScroll(false);
        selectionModel()->setCurrentIndex(currentRows.constFirst(), QItemSelectionModel::NoUpdate);
        setAutoScroll(true);
    }
    selectActiveFile();
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(scrolled);
    const QModelIndexList topRows = m_model.indexesOf(topURL);
    if (!topRows.isEmpty() && scrolled > 0)
        if (const QRect place = visualRect(topRows.constFirst()); place.isValid())
            verticalScrollBar()->setValue(scrolled + place.top() - topOffset);
}

void ProjectTreeView::restoreExpansion(const QModelIndex &parent)
{
    const QScopedValueRollback restoring(m_isRestoring, true);
    for (int row = 0; row < m_model.rowCount(parent); ++row) {
        const QModelIndex index = m_model.index(row, 0, parent);
        const FileItem &item = m_model.item(index);
        if (!item.isDirectory)
            break; // folders come first
        if (m_projects.isExpanded(item.url)) {
            expand(index);
            restoreExpansion(index);
        }
    }
}

void ProjectTreeView::noteExpansion(const QModelIndex &index, bool isExpanded)
{
    if (m_isRestoring)
        return;
    const FileURL url = m_model.item(index).url;
    m_projects.setExpanded(url, isExpanded);
    // A folder below two projects opens and closes in both.
    {
        const QScopedValueRollback restoring(m_isRestoring, true);
        for (const QModelIndex &twin : m_model.indexesOf(url))
            setExpanded(twin, isExpanded);
    }
    if (isExpanded)
        for (const QModelIndex &twin : m_model.indexesOf(url))
            restoreExpansion(twin);
}

void ProjectTreeView::selectActiveFile()
{
    QItemSelection selection;
    if (const std::optional<FileURL> &active = m_workspace.activeFileURL())
        for (const QModelIndex &index : m_model.indexesOf(*active))
            selection.select(index, index);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void ProjectTreeView::activateRow(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    const FileItem &item = m_model.item(index);
    if (item.isDirectory) {
        setExpanded(index, !isExpanded(index));
        return;
    }
    m_projects.openFile(FileItem(item)); // a copy: the row may go while its file is opened
    Q_EMIT documentChosen();
}

void ProjectTreeView::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool isSelected = selectionModel()->isSelected(index);
    const bool isFolder = index.data(ProjectTreeModel::IsFolderRole).toBool();
    const bool isHovered = viewport()->underMouse() && option.rect.contains(viewport()->mapFromGlobal(QCursor::pos()));
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);

    // 1. The ground, and the ring where the keyboard is; rows touch, so it lies inside.
    const QRectF ground = QRectF(option.rect).adjusted(kRowInset, 0, -kRowInset, 0);
    painter->setPen(Qt::NoPen);
    if (isSelected || isHovered) {
        painter->setBrush(m_theme.color(isSelected ? ColorRole::SelectedRow : ColorRole::Hover));
        painter->drawRoundedRect(ground, kRowRadius, kRowRadius);
    }
    if (m_showsCurrentRow && index == currentIndex())
        FocusRing::drawInside(*painter, ground, kRowRadius, m_theme);

    // 2. Chevron, symbol, name.
    const int indentation = depthOf(index) * kIndentation;
    const int left = option.rect.left() + indentation;
    const double middle = QRectF(option.rect).center().y();
    if (isFolder && m_model.hasChildren(index))
        drawChevron(*painter, QPointF(left + kChevronCentre, middle + 0.5), isExpanded(index),
                    m_theme.color(ColorRole::SecondaryText));
    ColorRole symbolRole = isSelected ? ColorRole::AccentText : ColorRole::SecondaryText;
    if (isFolder)
        symbolRole = ColorRole::Accent;
    const QRectF symbolBox(left + kSymbolLeft, middle - kSymbolSize / 2, kSymbolSize, kSymbolSize);
    Symbols::draw(*painter, index.data(ProjectTreeModel::SymbolRole).toString(), symbolBox, kSymbolSize,
                  m_theme.color(symbolRole));

    const QRect nameBox = option.rect.adjusted(indentation + kNameLeft, 0, -kNameRight, 0);
    const QString name = Label::singleLine(index.data(Qt::DisplayRole).toString());
    painter->setFont(font());
    painter->setPen(m_theme.color(ColorRole::Text));
    painter->drawText(nameBox, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                      fontMetrics().elidedText(name, Qt::ElideMiddle, nameBox.width()));
    painter->restore();
}

void ProjectTreeView::keyPressEvent(QKeyEvent *event)
{
    if (!m_showsCurrentRow) {
        m_showsCurrentRow = true;
        viewport()->update();
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        activateRow(currentIndex());
        return;
    default:
        QTreeView::keyPressEvent(event);
    }
}

void ProjectTreeView::focusInEvent(QFocusEvent *event)
{
    if (!currentIndex().isValid()) // the keyboard begins at the active file, if it can be seen
        for (const QModelIndex &selected : selectionModel()->selectedIndexes())
            if (visualRect(selected).isValid())
                selectionModel()->setCurrentIndex(selected, QItemSelectionModel::NoUpdate);
    QTreeView::focusInEvent(event);
    m_showsCurrentRow = m_showsCurrentRow || FocusRing::isKeyboardFocus(*event);
    viewport()->update();
}

void ProjectTreeView::focusOutEvent(QFocusEvent *event)
{
    QTreeView::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        m_showsCurrentRow = false;
    viewport()->update();
}

void ProjectTreeView::mousePressEvent(QMouseEvent *event)
{
    m_showsCurrentRow = false;
    QTreeView::mousePressEvent(event);
}

void ProjectTreeView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid())
        return;
    const FileItem &item = m_model.item(index);
    if (!m_projects.canRemoveProject(item))
        return; // only the folder of a project has a menu
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(u"Remove Project"_s, this,
                    [this, project = item.project] { m_projects.removeProjectFolder(project); });
    menu->popup(isByKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos());
}

} // namespace Tessaline
