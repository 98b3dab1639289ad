#include "documents/FileBrowserView.h"

#include "documents/OpenFilesList.h"
#include "documents/ProjectsList.h"
#include "documents/ProjectTreeView.h"
#include "documents/SidebarHeader.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TabOrder.h"
#include "foundation_ui/TextButton.h"

#include <QtCore/QTimer>
#include <QtGui/QHideEvent>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kSectionGap = 6; // above the title of a section
constexpr int kTextLeft = 20;
constexpr int kLeastOpenRows = 3; // of the open files are seen without scrolling, however low the window is

} // namespace

FileBrowserView::FileBrowserView(Workspace &workspace, ProjectsList &projects, const Theme &theme, QWidget *parent)
    : Ground(theme, ColorRole::SidebarBackground, parent), m_projects(projects),
      m_openFiles(new OpenFilesList(workspace, theme, this)), m_openFilesArea(new QScrollArea(this)),
      m_tree(new ProjectTreeView(workspace, projects, theme, this)), m_noProjects(new QWidget(this))
{
    setAccessibleName(u"Sidebar"_s);
    auto *openTitle = new SidebarHeader(theme, u"Open Files"_s, this);
    auto *projectsTitle = new SidebarHeader(theme, u"Projects"_s, this);
    IconButton *refresh = projectsTitle->addButton(u"arrow.clockwise"_s, u"Refresh Projects"_s);
    IconButton *add = projectsTitle->addButton(u"folder.badge.plus"_s, u"Add Project Folder"_s);

    m_openFilesArea->setFrameShape(QFrame::NoFrame);
    m_openFilesArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_openFilesArea->setWidgetResizable(true);
    m_openFilesArea->setFocusPolicy(Qt::NoFocus);
    m_openFilesArea->setWidget(m_openFiles);
    m_openFilesArea->viewport()->setAutoFillBackground(false);
    m_openFiles->setAutoFillBackground(false);

    auto *noProjectsLayout = new QVBoxLayout(m_noProjects);
    noProjectsLayout->setContentsMargins(kTextLeft, 4, 8, 0);
    noProjectsLayout->setSpacing(8);
    auto *addButton = new TextButton(theme, u"Add Project..."_s, TextButton::Kind::Bordered, m_noProjects);
    noProjectsLayout->addWidget(new Label(theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize),
                                          u"No projects added."_s, m_noProjects));
    noProjectsLayout->addWidget(addButton, 0, Qt::AlignLeft);
    noProjectsLayout->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, kSectionGap, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(openTitle);
    layout->addWidget(m_openFilesArea);
    layout->addSpacing(kSectionGap);
    layout->addWidget(projectsTitle);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_noProjects, 1);

    // Tab walks from the top to the bottom.
    QWidget *before = openTitle;
    for (QWidget *next :
         {static_cast<QWidget *>(m_openFiles), static_cast<QWidget *>(refresh), static_cast<QWidget *>(add),
          static_cast<QWidget *>(m_tree), static_cast<QWidget *>(addButton)}) {
        placeInTabOrder(before, next);
        before = next;
    }

    connect(refresh, &QAbstractButton::clicked, &projects, &ProjectsList::reload);
    connect(add, &QAbstractButton::clicked, &projects, &ProjectsList::addProjectFolder);
    connect(addButton, &QAbstractButton::clicked, &projects, &ProjectsList::addProjectFolder);
    connect(&projects, &ProjectsList::fileItemsChanged, this, &FileBrowserView::presentProjects);
    connect(m_openFiles, &OpenFilesList::documentChosen, this, &FileBrowserView::documentChosen);
    connect(m_openFiles, &OpenFilesList::heightChanged, this, &FileBrowserView::divideHeight);
    connect(m_openFiles, &OpenFilesList::rowNeeded, this, [this](QWidget *row) {
        // Once the list has its new height; before, there is nothing to scroll to.
        QTimer::singleShot(0, row, [this, row] { m_openFilesArea->ensureWidgetVisible(row, 0, 0); });
    });
    connect(m_tree, &ProjectTreeView::documentChosen, this, &FileBrowserView::documentChosen);
    presentProjects();
    divideHeight();
}

void FileBrowserView::presentProjects()
{
    // NOTE: what counts is the scanned tree: until the first scan has ended there are no projects to be seen.
    const bool isEmpty = m_projects.fileItems().isEmpty();
    m_tree->setVisible(!isEmpty);
    m_noProjects->setVisible(isEmpty);
}

/// The open files get what they need, but leave most of the height to the projects.
void FileBrowserView::divideHeight()
{
    const int limit = std::max(kLeastOpenRows * OpenFilesList::kRowHeight, height() * 2 / 5);
    m_openFilesArea->setFixedHeight(std::min(m_openFiles->sizeHint().height(), limit));
}

void FileBrowserView::resizeEvent(QResizeEvent *)
{
    divideHeight();
}

void FileBrowserView::showEvent(QShowEvent *event)
{
    Ground::showEvent(event);
    if (m_appeared)
        return;
    m_appeared = true;
    m_projects.appear();
}

void FileBrowserView::hideEvent(QHideEvent *event)
{
    Ground::hideEvent(event);
    if (event->spontaneous())
        return; // the window was only minimised
    m_appeared = false;
    m_projects.disappear();
}

} // namespace Tessaline
