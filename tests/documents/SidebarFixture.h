#pragma once

#include "documents/FileBrowserView.h"
#include "documents/OpenFileRow.h"
#include "documents/OpenFilesList.h"
#include "documents/ProjectsList.h"
#include "documents/ProjectTreeView.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "tests/documents/ToolbarFixture.h"
#include "tests/support/Waiting.h"

#include <QtCore/QDir>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

/// The sidebar on real folders: "one" with a sub-folder, and "two".
class SidebarFixture : public ::testing::Test
{
protected:
    SidebarFixture()
    {
        m_view.resize(260, 600);
        m_view.show();
        QApplication::setActiveWindow(&m_view);
    }

    ProjectTreeView &tree() { return *m_view.findChild<ProjectTreeView *>(); }
    const ProjectTreeModel &model() { return *static_cast<ProjectTreeModel *>(tree().model()); }

    /// Adds the folder and waits for its row.
    void addProject(const FileURL &folder)
    {
        m_workspace.addProject(folder);
        ASSERT_TRUE(eventually([&] { return !model().indexesOf(folder).isEmpty(); }));
        QCoreApplication::processEvents();
    }

    void rescan()
    {
        QSignalSpy changed(&m_projects, &ProjectsList::fileItemsChanged);
        QTest::mouseClick(buttonNamed(m_view, QStringLiteral("Refresh Projects")), Qt::LeftButton);
        ASSERT_TRUE(eventually([&] { return !changed.isEmpty(); }));
        QCoreApplication::processEvents();
    }

    QModelIndex row(const FileURL &url) { return model().indexesOf(url).value(0); }

    void clickRow(const FileURL &url)
    {
        ASSERT_TRUE(row(url).isValid()) << url.path().toStdString();
        QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, tree().visualRect(row(url)).center());
    }

    void rightClick(const FileURL &url)
    {
        const QPoint place = tree().visualRect(row(url)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, tree().viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(tree().viewport(), &event);
    }

    QList<OpenFileRow *> openRows() const
    {
        QList<OpenFileRow *> rows = m_view.findChildren<OpenFileRow *>();
        rows.removeIf([](OpenFileRow *row) { return !row->isVisible(); });
        std::sort(rows.begin(), rows.end(),
                  [](OpenFileRow *left, OpenFileRow *right) { return left->y() < right->y(); });
        return rows;
    }

    QStringList openNames() const
    {
        QStringList names;
        for (OpenFileRow *row : openRows())
            names.append(accessibleText(row, QAccessible::Name));
        return names;
    }

    /// Clicks on the close button of the row at this place.
    void closeRow(qsizetype index)
    {
        QTest::mouseClick(openRows().at(index)->findChild<PlainButton *>(), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    const TemporaryFiles m_files{{QStringLiteral("one/a.md"), "a"},
                                 {QStringLiteral("one/sub/b.md"), "b"},
                                 {QStringLiteral("one/sub/deep/c.txt"), "c"},
                                 {QStringLiteral("two/a.md"), "other a"}};
    const FileURL m_one = m_files.url(QStringLiteral("one"));
    const FileURL m_two = m_files.url(QStringLiteral("two"));
    const FileURL m_sub = m_files.url(QStringLiteral("one/sub"));
    const FileURL m_deep = m_files.url(QStringLiteral("one/sub/deep"));
    const FileURL m_a = m_files.url(QStringLiteral("one/a.md"));
    const FileURL m_b = m_files.url(QStringLiteral("one/sub/b.md"));
    const FileURL m_c = m_files.url(QStringLiteral("one/sub/deep/c.txt"));
    const FileURL m_otherA = m_files.url(QStringLiteral("two/a.md"));
    Preferences m_stored{m_files.url(QStringLiteral("preferences.json"))};
    Workspace m_workspace{m_stored};
    EventCenter m_events;
    std::optional<FileURL> m_answer; // of the panel that asks for a folder
    int m_asked = 0;
    ProjectsList m_projects{m_workspace, m_events, [this] {
                                ++m_asked;
                                return m_answer;
                            }};
    Theme m_theme;
    FileBrowserView m_view{m_workspace, m_projects, m_theme};
};

} // namespace Tessaline
