#include "documents/ProjectsList.h"

#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "tests/support/HeldWorkers.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QDir>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class ProjectsListTest : public ::testing::Test
{
protected:
    ProjectsListTest()
    {
        m_list = std::make_unique<ProjectsList>(m_workspace, m_events, [this] {
            ++m_asked;
            return m_answer;
        });
    }

    QStringList rootNames() const
    {
        QStringList names;
        for (const FileItem &item : m_list->fileItems())
            names.append(item.name);
        return names;
    }

    QStringList namesIn(int root) const
    {
        QStringList names;
        for (const FileItem &item : m_list->fileItems().at(root).children.value_or(QList<FileItem>()))
            names.append(item.name);
        return names;
    }

    /// Waits until no scan can still bring a result.
    static void drain()
    {
        backgroundPool().waitForDone();
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    const TemporaryFiles m_files{{u"one/a.md"_s, "a"}, {u"one/sub/b.md"_s, "b"}, {u"two/c.md"_s, "c"}};
    const FileURL m_one = m_files.url(u"one"_s);
    const FileURL m_two = m_files.url(u"two"_s);
    Preferences m_preferences{m_files.url(u"config/preferences.json"_s)};
    Workspace m_workspace{m_preferences};
    EventCenter m_events;
    std::optional<FileURL> m_answer;
    int m_asked = 0;
    std::unique_ptr<ProjectsList> m_list;
};

} // namespace

TEST_F(ProjectsListTest, IsEmptyUntilTheFirstScanHasEnded)
{
    m_workspace.addProject(m_one);
    {
        const HeldWorkers held;
        m_list->appear();
        QCoreApplication::processEvents();
        EXPECT_TRUE(m_list->fileItems().isEmpty());
    }

    ASSERT_TRUE(eventually([&] { return !m_list->fileItems().isEmpty(); }));

    EXPECT_EQ(rootNames(), QStringList{u"one"_s});
    EXPECT_EQ(namesIn(0), (QStringList{u"sub"_s, u"a.md"_s}));
}

TEST_F(ProjectsListTest, ScansAgainWhenTheProjectsChange)
{
    m_list->appear();
    m_workspace.addProject(m_two);
    m_workspace.addProject(m_one);

    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 2; }));

    EXPECT_EQ(rootNames(), (QStringList{u"two"_s, u"one"_s})); // in the order in which they were added
}

TEST_F(ProjectsListTest, OnlyTheNewestOfManyScansLands)
{
    m_workspace.addProject(m_one);
    QSignalSpy changed(m_list.get(), &ProjectsList::fileItemsChanged);
    {
        const HeldWorkers held;
        m_list->appear();
        for (int i = 0; i < 20; ++i)
            m_list->reload();
        m_workspace.addProject(m_two);
        m_workspace.removeProject({m_one});
    }

    ASSERT_TRUE(eventually([&] { return changed.count() > 0; }));
    drain();

    EXPECT_EQ(rootNames(), QStringList{u"two"_s});
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(ProjectsListTest, ANewFileAppearsAfterProjectFilesChanged)
{
    m_workspace.addProject(m_two);
    m_list->appear();
    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 1; }));
    m_files.write(u"two/new.md"_s, "");
    EXPECT_EQ(namesIn(0), QStringList{u"c.md"_s}); // the old tree stays until then

    m_events.post(AppEvents::kProjectFilesChanged);

    EXPECT_TRUE(eventually([&] { return namesIn(0) == QStringList{u"c.md"_s, u"new.md"_s}; }));
}

TEST_F(ProjectsListTest, TheRefreshButtonScansAgain)
{
    m_workspace.addProject(m_two);
    m_list->appear();
    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 1; }));
    m_files.write(u"two/new.md"_s, "");

    m_list->reload();

    EXPECT_TRUE(eventually([&] { return namesIn(0).size() == 2; }));
}

TEST_F(ProjectsListTest, AProjectFolderThatHasGoneKeepsItsRoot)
{
    m_workspace.addProject(m_two);
    m_list->appear();
    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 1; }));
    QDir(m_two.path()).removeRecursively();

    ::testing::internal::CaptureStdout();
    m_list->reload();
    EXPECT_TRUE(eventually([&] { return namesIn(0).isEmpty(); }));
    ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(rootNames(), QStringList{u"two"_s});
}

TEST_F(ProjectsListTest, AfterItHasGoneARunningScanIsDroppedAndNothingScansAgain)
{
    m_workspace.addProject(m_one);
    {
        const HeldWorkers held;
        m_list->appear();
        m_list->disappear();
        m_workspace.addProject(m_two);
        m_events.post(AppEvents::kProjectFilesChanged);
    }
    drain();

    EXPECT_TRUE(m_list->fileItems().isEmpty());

    m_list->appear();
    EXPECT_TRUE(eventually([&] { return m_list->fileItems().size() == 2; }));
}

TEST_F(ProjectsListTest, MayBeDestroyedWhileItScans)
{
    m_workspace.addProject(m_one);
    {
        const HeldWorkers held;
        m_list->appear();
        m_list.reset();
    }
    drain();
}

TEST_F(ProjectsListTest, AScanThatOutlivesTheListLooksIntoNoFurtherFolder)
{
    m_workspace.addProject(m_files.url(u"missing"_s));
    ::testing::internal::CaptureStdout();
    {
        const HeldWorkers held;
        m_list->appear();
        m_list.reset();
    }
    drain();

    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "no folder was tried, so none was complained about";
}

TEST_F(ProjectsListTest, FoldersAreCollapsedAtFirstAndStayAsTheyWereOverAScan)
{
    const FileURL sub = m_files.url(u"one/sub"_s);
    m_workspace.addProject(m_one);
    m_list->appear();
    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 1; }));
    EXPECT_FALSE(m_list->isExpanded(m_one));
    EXPECT_FALSE(m_list->isExpanded(sub));

    m_list->setExpanded(m_one, true);
    m_list->setExpanded(sub, true);
    m_list->setExpanded(m_one, false);
    m_list->reload();
    drain();
    EXPECT_FALSE(m_list->isExpanded(m_one));
    EXPECT_TRUE(m_list->isExpanded(sub));
}

TEST_F(ProjectsListTest, AFolderThatComesBackIsAsItWas)
{
    const FileURL sub = m_files.url(u"one/sub"_s);
    m_workspace.addProject(m_one);
    m_list->appear();
    m_list->setExpanded(sub, true);
    ASSERT_TRUE(eventually([&] { return m_list->fileItems().size() == 1; }));

    QDir(sub.path()).removeRecursively();
    m_list->reload();
    ASSERT_TRUE(eventually([&] { return namesIn(0) == QStringList{u"a.md"_s}; }));
    m_files.write(u"one/sub/b.md"_s, "b");
    m_list->reload();
    ASSERT_TRUE(eventually([&] { return namesIn(0).size() == 2; }));

    EXPECT_TRUE(m_list->isExpanded(sub));
}

// The panel

TEST_F(ProjectsListTest, AChosenFolderBecomesAProject)
{
    m_answer = FileURL(m_files.folder().path() + u"/./one"_s);

    m_list->addProjectFolder();
    m_list->addProjectFolder();

    EXPECT_EQ(m_asked, 2);
    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{{m_one}});
}

TEST_F(ProjectsListTest, ACancelledPanelChangesNothing)
{
    m_list->addProjectFolder();

    EXPECT_EQ(m_asked, 1);
    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_EQ(m_preferences.stringList(u"lastProjectFolderURLs"_s), std::nullopt);
}

// Rows

TEST_F(ProjectsListTest, OnlyTheRootOfAPresentProjectOffersToRemoveIt)
{
    const ProjectReference one{m_one};
    m_workspace.addProject(m_one);
    const FileItem root(m_one, u"one"_s, true, one, QList<FileItem>());
    const FileItem sub(m_files.url(u"one/sub"_s), u"sub"_s, true, one, QList<FileItem>());
    const FileItem file(m_files.url(u"one/a.md"_s), u"a.md"_s, false, one);

    EXPECT_TRUE(m_list->canRemoveProject(root));
    EXPECT_FALSE(m_list->canRemoveProject(sub));
    EXPECT_FALSE(m_list->canRemoveProject(file));

    m_list->removeProjectFolder(one);
    EXPECT_FALSE(m_list->canRemoveProject(root)); // the old row may still be on screen
    EXPECT_TRUE(m_workspace.projects().isEmpty());
}

TEST_F(ProjectsListTest, ANestedProjectsFolderOffersItOnItsOwnRootOnly)
{
    const ProjectReference one{m_one};
    const ProjectReference sub{m_files.url(u"one/sub"_s)};
    m_workspace.setProjects({one, sub});
    const FileItem insideOne(sub.rootURL, u"sub"_s, true, one, QList<FileItem>());
    const FileItem ownRoot(sub.rootURL, u"sub"_s, true, sub, QList<FileItem>());

    EXPECT_FALSE(m_list->canRemoveProject(insideOne));
    EXPECT_TRUE(m_list->canRemoveProject(ownRoot));
}

TEST_F(ProjectsListTest, OpeningAFileTakesTheTreesProject)
{
    const ProjectReference one{m_one};
    const FileItem file(m_files.url(u"one/sub/b.md"_s), u"b.md"_s, false, one);
    m_workspace.setProjects({one, {m_files.url(u"one/sub"_s)}});

    m_list->openFile(file);

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{file.url, one}}));
    EXPECT_EQ(m_workspace.activeFileURL(), file.url);
}

} // namespace Tessaline
