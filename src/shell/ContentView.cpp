#include "shell/ContentView.h"

#include "documents/FileBrowserView.h"
#include "documents/Workspace.h"
#include "shell/ColumnSplitter.h"
#include "shell/FramelessWindow.h"
#include "shell/SessionColumn.h"

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDragEnterEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

constexpr int kMenuIndent = 8; // so that all menus fit over the narrowest sidebar

QList<FileURL> localFiles(const QMimeData &dragged)
{
    QList<FileURL> files;
    for (const QUrl &url : dragged.urls())
        if (url.isLocalFile())
            files.append(FileURL(url.toLocalFile()));
    return files;
}

/// The first widget inside `column` that a key can give the focus to, or that had it last.
QWidget *focusTarget(QWidget *column)
{
    if (QWidget *last = column->focusWidget(); last && last != column && last->isVisible())
        return last;
    for (QWidget *next = column->nextInFocusChain(); next != column; next = next->nextInFocusChain())
        if (column->isAncestorOf(next) && next->isVisible() && next->isEnabled() &&
            (next->focusPolicy() & Qt::TabFocus))
            return next;
    return nullptr;
}

} // namespace

ContentView::ContentView(ContentViewParts parts, QWidget *parent) : QWidget(parent), m_workspace(parts.workspace)
{
    QWidget *sidebarColumn = makeSidebarColumn(parts);
    m_editorArea = new EditorAreaView({parts.area, parts.workspace, parts.preferences, parts.theme, parts.makeEditor});
    auto *sessionColumn = new SessionColumn({parts.assistant, parts.workspace, parts.area, parts.events, parts.theme,
                                             parts.window, parts.askForFiles, parts.openOutside, parts.imageLoader});
    m_columns = {sidebarColumn, m_editorArea, sessionColumn};

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new ColumnSplitter(parts.theme, sidebarColumn, m_editorArea, sessionColumn));
    setAcceptDrops(true);

    connect(m_sidebar, &FileBrowserView::documentChosen, m_editorArea, &EditorAreaView::focusEditor);
}

QWidget *ContentView::makeSidebarColumn(const ContentViewParts &parts)
{
    auto *column = new Ground(parts.theme, ColorRole::SidebarBackground);
    m_sidebar = new FileBrowserView(parts.workspace, parts.projects, parts.theme);

    auto *menuRow = new QHBoxLayout;
    menuRow->setContentsMargins(kMenuIndent, 0, 0, 0);
    menuRow->addWidget(parts.menuBar);
    menuRow->addStretch();
    parts.menuBar->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed); // what it leaves free moves the window

    auto *rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    auto *menuPlace = new QWidget;
    menuPlace->setLayout(menuRow);
    menuPlace->setFixedHeight(FramelessWindow::kTitleRowHeight);
    rows->addWidget(menuPlace);
    rows->addWidget(m_sidebar, 1);
    return column;
}

void ContentView::focusColumn(int step)
{
    qsizetype current = 1; // the document, if the focus is nowhere
    for (qsizetype index = 0; index < m_columns.size(); ++index)
        if (m_columns.at(index)->isAncestorOf(focusWidget()))
            current = index;
    for (qsizetype tried = 1; tried <= m_columns.size(); ++tried) {
        const qsizetype index = (current + step * tried + m_columns.size() * tried) % m_columns.size();
        if (QWidget *target = focusTarget(m_columns.at(index))) {
            target->setFocus(step > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return;
        }
    }
}

void ContentView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!localFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void ContentView::dropEvent(QDropEvent *event)
{
    if (!m_workspace.dropFiles(localFiles(*event->mimeData())))
        return;
    event->setDropAction(Qt::CopyAction); // a file manager that moves would remove what was opened
    event->accept();
    m_editorArea->focusEditor();
}

} // namespace Tessaline
