#include "documents/Workspace.h"

#include "foundation/FileAccess.h"
#include "foundation/Preferences.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QFile>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kProjects = u"lastProjectFolderURLs"_s;
const QString kOpenFiles = u"lastOpenFileURLs"_s;
const QString kActive = u"lastActiveFileURL"_s;
const QString kRoot = u"lastRootFolderURL"_s;

class WorkspaceRestoreTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return m_files.url(name).path(); }

    const TemporaryFiles m_files{{u"p/one.md"_s, "# One"},
                                 {u"p/two.txt"_s, "two"},
                                 {u"p/inner/three.md"_s, "three"},
                                 {u"outside.md"_s, "outside"},
                                 {u"p/image.bin"_s, QByteArray("\0\1", 2)}};
    Preferences m_preferences{m_files.url(u"config/preferences.json"_s)};
    Workspace m_workspace{m_preferences};
    const ProjectReference m_p{m_files.url(u"p"_s)};
    const ProjectReference m_inner{m_files.url(u"p/inner"_s)};
};

} // namespace

TEST_F(WorkspaceRestoreTest, AFirstLaunchIsEmptyAndStoresNothing)
{
    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_EQ(m_preferences.stringList(kProjects), std::nullopt);

    m_workspace.addProject(m_p.rootURL);
    EXPECT_EQ(m_preferences.stringList(kProjects), QStringList{path(u"p"_s)});
    EXPECT_EQ(m_preferences.string(kActive), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, EverythingComesBackInItsOrder)
{
    m_preferences.set(kProjects, QStringList{path(u"p/inner"_s), path(u"p"_s)});
    m_preferences.set(kOpenFiles,
                      QStringList{path(u"p/two.txt"_s), path(u"p/inner/three.md"_s), path(u"outside.md"_s)});
    m_preferences.set(kActive, path(u"p/inner/three.md"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), (QList<ProjectReference>{m_inner, m_p}));
    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{m_files.url(u"p/two.txt"_s), m_p},
                                                                 {m_files.url(u"p/inner/three.md"_s), m_inner},
                                                                 {m_files.url(u"outside.md"_s), std::nullopt}}));
    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"p/inner/three.md"_s));
}

TEST_F(WorkspaceRestoreTest, TheNextProcessFindsWhatThisOneHad)
{
    m_workspace.addProject(m_p.rootURL);
    m_workspace.openFile(m_files.url(u"p/one.md"_s));
    m_workspace.openFile(m_files.url(u"outside.md"_s));
    m_workspace.setActiveFileURL(m_files.url(u"p/one.md"_s));
    m_preferences.waitForWrites();

    Preferences nextPreferences(m_files.url(u"config/preferences.json"_s));
    Workspace next(nextPreferences);
    next.restoreWorkspace();

    EXPECT_EQ(next.projects(), m_workspace.projects());
    EXPECT_EQ(next.openFiles(), m_workspace.openFiles());
    EXPECT_EQ(next.activeFileURL(), m_workspace.activeFileURL());
}

TEST_F(WorkspaceRestoreTest, TheSingleProjectOfEarlierReleasesIsTakenOverAndItsKeyStays)
{
    m_preferences.set(kRoot, path(u"p"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{m_p});
    EXPECT_EQ(m_preferences.stringList(kProjects), QStringList{path(u"p"_s)});
    EXPECT_EQ(m_preferences.string(kRoot), path(u"p"_s));
}

TEST_F(WorkspaceRestoreTest, AnEmptyStoredListKeepsTheSingleProjectOut)
{
    m_preferences.set(kProjects, QStringList());
    m_preferences.set(kRoot, path(u"p"_s));

    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
}

TEST_F(WorkspaceRestoreTest, AStoredListOfAnotherTypeFallsThroughToTheSingleProject)
{
    m_preferences.set(kProjects, path(u"p/inner"_s)); // a text, not a list
    m_preferences.set(kRoot, path(u"p"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{m_p});
}

TEST_F(WorkspaceRestoreTest, ASingleProjectThatHasGoneIsLookedForAgainAtTheNextLaunch)
{
    m_preferences.set(kRoot, path(u"unmounted"_s));

    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_EQ(m_preferences.stringList(kProjects), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, ValuesOfAnotherTypeCountAsNone)
{
    m_preferences.set(kProjects, 1.0);
    m_preferences.set(kOpenFiles, path(u"p/one.md"_s));
    m_preferences.set(kActive, QStringList{path(u"p/one.md"_s)});
    m_preferences.set(kRoot, 2.0);

    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, WhatHasGoneIsDroppedInSilenceAndForgotten)
{
    m_preferences.set(kProjects, QStringList{path(u"gone"_s), path(u"p"_s)});
    m_preferences.set(kOpenFiles, QStringList{path(u"p/gone.md"_s), path(u"p/one.md"_s), path(u"gone/two.md"_s)});

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{m_p});
    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{m_files.url(u"p/one.md"_s), m_p}}));
    EXPECT_EQ(m_preferences.stringList(kProjects), QStringList{path(u"p"_s)});
    EXPECT_EQ(m_preferences.stringList(kOpenFiles), QStringList{path(u"p/one.md"_s)});
}

TEST_F(WorkspaceRestoreTest, ADeletedActiveFileIsNotReplacedByAnother)
{
    m_preferences.set(kOpenFiles, QStringList{path(u"p/one.md"_s), path(u"p/gone.md"_s)});
    m_preferences.set(kActive, path(u"p/gone.md"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_EQ(m_workspace.openFiles().size(), 1);
    EXPECT_EQ(m_preferences.string(kActive), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, FilesThatCannotBeEditedAreDropped)
{
    m_preferences.set(kOpenFiles, QStringList{path(u"p/image.bin"_s), path(u"p/one.md"_s)});
    m_preferences.set(kActive, path(u"p/image.bin"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{m_files.url(u"p/one.md"_s), std::nullopt}}));
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, AnActiveFileWithoutAnEntryStaysActive)
{
    m_preferences.set(kActive, path(u"p/one.md"_s));

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"p/one.md"_s));
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
}

TEST_F(WorkspaceRestoreTest, AFileInThePlaceOfAProjectFolderStaysAProject)
{
    m_preferences.set(kProjects, QStringList{path(u"outside.md"_s)});

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{{m_files.url(u"outside.md"_s)}});
}

TEST_F(WorkspaceRestoreTest, AFolderInThePlaceOfAFileWithoutATextExtensionIsDropped)
{
    m_files.makeFolder(u"notes"_s);
    m_preferences.set(kOpenFiles, QStringList{path(u"notes"_s)});
    m_preferences.set(kActive, path(u"notes"_s));

    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, AFolderWithTheNameOfAMarkdownFileStaysAndItsLoadSaysWhy)
{
    m_files.makeFolder(u"chapter.md"_s);
    m_preferences.set(kActive, path(u"chapter.md"_s));

    m_workspace.restoreWorkspace();

    ASSERT_EQ(m_workspace.activeFileURL(), m_files.url(u"chapter.md"_s));
    EXPECT_EQ(readText(*m_workspace.activeFileURL()).failure().text, u"It is a folder."_s);
}

TEST_F(WorkspaceRestoreTest, ProjectsAreStandardizedAndFilesAreNot)
{
    m_preferences.set(kProjects, QStringList{path(u"p"_s) + u"/./inner/.."_s});
    m_preferences.set(kOpenFiles, QStringList{path(u"p"_s) + u"/./one.md"_s});

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), QList<ProjectReference>{m_p});
    EXPECT_EQ(m_workspace.openFiles(), (QList<OpenFileReference>{{FileURL(path(u"p"_s) + u"/./one.md"_s), m_p}}));
}

TEST_F(WorkspaceRestoreTest, RepeatedPathsComeBackRepeated)
{
    m_preferences.set(kProjects, QStringList{path(u"p"_s), path(u"p"_s)});
    m_preferences.set(kOpenFiles, QStringList{path(u"p/one.md"_s), path(u"p/one.md"_s)});

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_workspace.projects(), (QList<ProjectReference>{m_p, m_p}));
    EXPECT_EQ(m_workspace.openFiles().size(), 2);
    EXPECT_EQ(m_workspace.openFiles().constLast().project, m_p);
}

TEST_F(WorkspaceRestoreTest, EmptyPathsAreDropped)
{
    m_preferences.set(kProjects, QStringList{u""_s});
    m_preferences.set(kOpenFiles, QStringList{u""_s});
    m_preferences.set(kActive, u""_s);

    m_workspace.restoreWorkspace();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(WorkspaceRestoreTest, PathsWithAZeroAreDroppedInSilence)
{
    m_preferences.set(kProjects, QStringList{u"/tmp\0tail"_s});
    m_preferences.set(kOpenFiles, QStringList{u"/tmp\0tail.md"_s});
    m_preferences.set(kActive, u"/tmp\0tail.md"_s);

    ::testing::internal::CaptureStderr();
    m_workspace.restoreWorkspace();
    const std::string said = ::testing::internal::GetCapturedStderr();

    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_TRUE(m_workspace.openFiles().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_EQ(said, "");
}

TEST_F(WorkspaceRestoreTest, NamesOfEveryKindComeBack)
{
    const QStringList names{u"line\nbreak.md"_s, u"\"quotes\".md"_s, u"😀.md"_s, u"\u200Fשלום.md"_s};
    QStringList paths;
    for (const QString &name : names) {
        m_files.write(name, "text");
        paths.append(path(name));
    }
    m_preferences.set(kOpenFiles, paths);
    m_preferences.waitForWrites();

    Preferences nextPreferences(m_files.url(u"config/preferences.json"_s));
    Workspace next(nextPreferences);
    next.restoreWorkspace();

    ASSERT_EQ(next.openFiles().size(), names.size());
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_EQ(next.openFiles().at(i).url.lastPathComponent(), names.at(i));
}

TEST_F(WorkspaceRestoreTest, AtNoMomentIsHalfTheWorkspaceStored)
{
    m_preferences.set(kProjects, QStringList{path(u"gone"_s), path(u"p"_s)});
    m_preferences.set(kOpenFiles, QStringList{path(u"p/one.md"_s)});
    m_preferences.set(kActive, path(u"p/one.md"_s));
    bool wasComplete = true;
    QObject::connect(&m_preferences, &Preferences::valueChanged, &m_preferences, [&] {
        wasComplete = wasComplete && m_preferences.string(kActive) && !m_preferences.stringList(kOpenFiles)->isEmpty();
    });

    m_workspace.restoreWorkspace();

    EXPECT_EQ(m_preferences.stringList(kProjects), QStringList{path(u"p"_s)});
    EXPECT_TRUE(wasComplete);
}

TEST_F(WorkspaceRestoreTest, WhatChangedIsToldOnce)
{
    m_preferences.set(kProjects, QStringList{path(u"p"_s)});
    m_preferences.set(kOpenFiles, QStringList{path(u"p/one.md"_s)});
    QSignalSpy projectsChanged(&m_workspace, &Workspace::projectsChanged);
    QSignalSpy openFilesChanged(&m_workspace, &Workspace::openFilesChanged);
    QSignalSpy activeChanged(&m_workspace, &Workspace::activeFileURLChanged);

    m_workspace.restoreWorkspace();

    EXPECT_EQ(projectsChanged.count(), 1);
    EXPECT_EQ(openFilesChanged.count(), 1);
    EXPECT_EQ(activeChanged.count(), 0);
}

} // namespace Tessaline
