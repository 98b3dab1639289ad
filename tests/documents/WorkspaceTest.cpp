#include "documents/Workspace.h"

#include "foundation/Preferences.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QFile>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const ProjectReference kA{FileURL(u"/a"_s)};
const ProjectReference kAB{FileURL(u"/a/b"_s)};
const FileURL kOne(u"/a/one.md"_s);
const FileURL kTwo(u"/a/two.md"_s);
const FileURL kThree(u"/a/three.md"_s);

class WorkspaceTest : public ::testing::Test
{
protected:
    QList<FileURL> openURLs() const
    {
        QList<FileURL> urls;
        for (const OpenFileReference &file : m_workspace.openFiles())
            urls.append(file.url);
        return urls;
    }

    const TemporaryFiles m_files;
    Preferences m_preferences{m_files.url(u"preferences.json"_s)};
    Workspace m_workspace{m_preferences};
};

} // namespace

// Opening and closing

TEST_F(WorkspaceTest, IsEmptyAtFirstAndStoresNothing)
{
    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_EQ(m_preferences.stringList(u"lastProjectFolderURLs"_s), std::nullopt);
    EXPECT_EQ(m_preferences.stringList(u"lastOpenFileURLs"_s), std::nullopt);
}

TEST_F(WorkspaceTest, OpeningAFileAppendsItWithItsProjectAndMakesItActive)
{
    m_workspace.setProjects({kA});
    m_workspace.openFile(kOne);
    m_workspace.openFile(kTwo);

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kOne, kA}, {kTwo, kA}}));
    EXPECT_EQ(m_workspace.activeFileURL(), kTwo);
}

TEST_F(WorkspaceTest, AFileOpenedTwiceKeepsOneEntryAndItsPlaceAndBecomesActive)
{
    m_workspace.openFile(kOne);
    m_workspace.openFile(kTwo);

    m_workspace.openFile(kOne);

    EXPECT_EQ(openURLs(), (QList<FileURL>{kOne, kTwo}));
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
}

TEST_F(WorkspaceTest, OpeningAFileAgainRefreshesItsProject)
{
    m_workspace.setProjects({kA});
    m_workspace.setOpenFiles({{kOne, std::nullopt}});

    m_workspace.openFile(kOne);

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kOne, kA}}));
}

TEST_F(WorkspaceTest, OpeningAFileOfTheTreeTakesTheTreesProjectAndLeavesAnEntryAsItIs)
{
    m_workspace.openFileOfProject(kOne, kAB);
    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kOne, kAB}}));

    m_workspace.openFile(kTwo);
    m_workspace.openFileOfProject(kOne, kA);
    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kOne, kAB}, {kTwo, std::nullopt}}));
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
}

TEST_F(WorkspaceTest, ClosingTheActiveFileMakesTheLastOneActiveAndNotTheNeighbour)
{
    m_workspace.openFile(kOne);
    m_workspace.openFile(kTwo);
    m_workspace.openFile(kThree);
    m_workspace.setActiveFileURL(kOne);

    m_workspace.closeFile(kOne);

    EXPECT_EQ(openURLs(), (QList<FileURL>{kTwo, kThree}));
    EXPECT_EQ(m_workspace.activeFileURL(), kThree);
}

TEST_F(WorkspaceTest, ClosingTheOnlyFileLeavesNoActiveFileAndRemovesTheStoredOne)
{
    m_workspace.openFile(kOne);
    ASSERT_EQ(m_preferences.string(u"lastActiveFileURL"_s), u"/a/one.md"_s);

    m_workspace.closeFile(kOne);

    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_EQ(m_preferences.string(u"lastActiveFileURL"_s), std::nullopt);
    EXPECT_EQ(m_preferences.stringList(u"lastOpenFileURLs"_s), QStringList());
}

TEST_F(WorkspaceTest, ClosingAFileThatIsNotActiveLeavesTheActiveOneAlone)
{
    m_workspace.openFile(kOne);
    m_workspace.openFile(kTwo);
    QSignalSpy activeChanged(&m_workspace, &Workspace::activeFileURLChanged);

    m_workspace.closeFile(kOne);

    EXPECT_EQ(m_workspace.activeFileURL(), kTwo);
    EXPECT_EQ(activeChanged.count(), 0);
}

TEST_F(WorkspaceTest, ClosingAFileThatIsNotOpenDoesNothing)
{
    m_workspace.openFile(kOne);
    m_workspace.setActiveFileURL(kTwo); // active without an entry

    m_workspace.closeFile(kTwo);

    EXPECT_EQ(openURLs(), QList<FileURL>{kOne});
    EXPECT_EQ(m_workspace.activeFileURL(), kTwo);
}

TEST_F(WorkspaceTest, ClosingARepeatedEntryRemovesTheFirst)
{
    m_workspace.setOpenFiles({{kOne, kA}, {kTwo, std::nullopt}, {kOne, kAB}});

    m_workspace.closeFile(kOne);

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kTwo, std::nullopt}, {kOne, kAB}}));
}

TEST_F(WorkspaceTest, AnOperationMayBeGivenAnEntryOfItsOwnList)
{
    m_workspace.openFile(kOne);
    m_workspace.openFile(kTwo);

    m_workspace.openFile(m_workspace.openFiles().constFirst().url);
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);

    m_workspace.closeFile(m_workspace.openFiles().constFirst().url);
    EXPECT_EQ(m_workspace.activeFileURL(), kTwo);

    m_workspace.closeFile(*m_workspace.activeFileURL());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
}

// Dropped files

TEST_F(WorkspaceTest, OfThreeDroppedFilesTheFirstIsOpened)
{
    EXPECT_TRUE(m_workspace.dropFiles({kOne, kTwo, kThree}));

    EXPECT_EQ(openURLs(), QList<FileURL>{kOne});
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
}

TEST_F(WorkspaceTest, AFileDroppedTwiceKeepsOneEntryAndItsPlaceAndBecomesActive)
{
    m_workspace.dropFiles({kOne});
    m_workspace.dropFiles({kTwo});

    m_workspace.dropFiles({kOne});

    EXPECT_EQ(openURLs(), (QList<FileURL>{kOne, kTwo}));
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
}

TEST_F(WorkspaceTest, ADroppedBinaryFileIsIgnoredAndTheNextOneIsNotLookedAt)
{
    m_files.write(u"image.bin"_s, QByteArray("\0\1\2", 3));
    m_workspace.openFile(kOne);

    EXPECT_TRUE(m_workspace.dropFiles({m_files.url(u"image.bin"_s), kTwo}));

    EXPECT_EQ(openURLs(), QList<FileURL>{kOne});
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
}

TEST_F(WorkspaceTest, ADropWithoutFilesIsRefused)
{
    EXPECT_FALSE(m_workspace.dropFiles({}));
}

// Projects

TEST_F(WorkspaceTest, AProjectIsAddedInStandardizedFormAndOnce)
{
    m_workspace.addProject(FileURL(u"/a/./b"_s));
    m_workspace.addProject(FileURL(u"/a/b"_s));
    m_workspace.addProject(FileURL(u"/a/c/../b/"_s));

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{kAB});
}

TEST_F(WorkspaceTest, AFolderNestedInAProjectMayBeAProjectToo)
{
    m_workspace.addProject(kA.rootURL);
    m_workspace.addProject(kAB.rootURL);

    EXPECT_EQ(m_workspace.projects(), (QList<ProjectReference>{kA, kAB}));
}

TEST_F(WorkspaceTest, TheInnermostProjectHoldsAFileInWhicheverOrderTheyWereAdded)
{
    const FileURL inner(u"/a/b/c.md"_s);
    for (const QList<ProjectReference> &projects :
         {QList<ProjectReference>{kA, kAB}, QList<ProjectReference>{kAB, kA}}) {
        m_workspace.setProjects(projects);
        m_workspace.openFile(inner);
        EXPECT_EQ(m_workspace.openFiles().constFirst().project, kAB);
        EXPECT_EQ(m_workspace.activeProject(), kAB);
    }
}

TEST_F(WorkspaceTest, RemovingTheInnerProjectHandsItsFilesToTheOuter)
{
    m_workspace.setProjects({kA, kAB});
    m_workspace.openFile(FileURL(u"/a/b/c.md"_s));

    m_workspace.removeProject(kAB);

    EXPECT_EQ(m_workspace.openFiles().constFirst().project, kA);
    EXPECT_EQ(m_workspace.activeProject(), kA);
}

TEST_F(WorkspaceTest, RemovingAProjectLeavesItsFilesOpenAndActive)
{
    m_workspace.setProjects({kA});
    m_workspace.openFile(kOne);

    m_workspace.removeProject(kA);

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{kOne, std::nullopt}}));
    EXPECT_EQ(m_workspace.activeFileURL(), kOne);
    EXPECT_EQ(m_workspace.activeProject(), std::nullopt);
}

TEST_F(WorkspaceTest, RemovingAProjectRemovesItsRepetitionsToo)
{
    m_workspace.setProjects({kA, kAB, kA});

    m_workspace.removeProject(m_workspace.projects().constFirst());

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{kAB});
}

TEST_F(WorkspaceTest, WithoutAnActiveFileThereIsNoActiveProject)
{
    m_workspace.setProjects({kA});

    EXPECT_EQ(m_workspace.activeProject(), std::nullopt);
}

// Change and storage

TEST_F(WorkspaceTest, EveryChangeIsStoredAtOnceAsPlainPaths)
{
    m_workspace.addProject(kA.rootURL);
    EXPECT_EQ(m_preferences.stringList(u"lastProjectFolderURLs"_s), QStringList{u"/a"_s});
    EXPECT_EQ(m_preferences.string(u"lastActiveFileURL"_s), std::nullopt);

    m_workspace.openFile(kOne);
    EXPECT_EQ(m_preferences.stringList(u"lastOpenFileURLs"_s), QStringList{u"/a/one.md"_s});
    EXPECT_EQ(m_preferences.string(u"lastActiveFileURL"_s), u"/a/one.md"_s);

    m_workspace.removeProject(kA);
    EXPECT_EQ(m_preferences.stringList(u"lastProjectFolderURLs"_s), QStringList());
}

TEST_F(WorkspaceTest, OnlyARealChangeIsToldAndStored)
{
    m_workspace.setProjects({kA});
    m_workspace.openFile(kOne);
    QSignalSpy projectsChanged(&m_workspace, &Workspace::projectsChanged);
    QSignalSpy openFilesChanged(&m_workspace, &Workspace::openFilesChanged);
    QSignalSpy activeChanged(&m_workspace, &Workspace::activeFileURLChanged);
    m_preferences.remove(u"lastActiveFileURL"_s); // would come back with a needless write

    m_workspace.setProjects({kA});
    m_workspace.openFile(kOne);

    EXPECT_EQ(projectsChanged.count() + openFilesChanged.count() + activeChanged.count(), 0);
    EXPECT_EQ(m_preferences.string(u"lastActiveFileURL"_s), std::nullopt);
}

TEST_F(WorkspaceTest, AChangeIsToldWhenAllOfItCanBeRead)
{
    m_workspace.setOpenFiles({{kOne, std::nullopt}});
    std::optional<ProjectReference> seenByProjectsChanged;
    QObject::connect(&m_workspace, &Workspace::projectsChanged, &m_workspace,
                     [&] { seenByProjectsChanged = m_workspace.openFiles().constFirst().project; });
    QList<std::optional<FileURL>> seen;
    QObject::connect(&m_workspace, &Workspace::activeFileURLChanged, &m_workspace,
                     [&](const std::optional<FileURL> &oldURL, const std::optional<FileURL> &newURL) {
                         seen = {oldURL, newURL, m_workspace.activeFileURL()};
                     });

    m_workspace.setProjects({kA});
    m_workspace.setActiveFileURL(kOne);
    m_workspace.setActiveFileURL(kTwo);

    EXPECT_EQ(seenByProjectsChanged, kA);
    EXPECT_EQ(seen, (QList<std::optional<FileURL>>{kOne, kTwo, kTwo}));
}

} // namespace Tessaline
