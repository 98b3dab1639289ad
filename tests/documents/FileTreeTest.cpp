#include "documents/FileTree.h"

#include "documents/DocumentType.h"
#include "foundation/NaturalCompare.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/WithoutPrivileges.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>

#include <algorithm>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

ProjectReference projectAt(const FileURL &root)
{
    return {root};
}

/// The names of a tree, one line each, indented by their depth; a folder's ends in a slash.
QStringList outline(const QList<FileItem> &items, int depth = 0)
{
    QStringList lines;
    for (const FileItem &item : items) {
        lines.append(QString(depth * 2, u' ') + item.name + (item.isDirectory ? u"/"_s : QString()));
        if (item.children)
            lines += outline(*item.children, depth + 1);
    }
    return lines;
}

QStringList outlineOf(const TemporaryFiles &files)
{
    return outline(scanDirectory(files.folder(), projectAt(files.folder())));
}

/// The rules in their plainest form, one folder after the other.
QList<FileItem> plainScan(const FileURL &folder, const ProjectReference &project)
{
    static const QStringList generated = {u"node_modules"_s, u"target"_s, u".git"_s,   u"DerivedData"_s, u".gradle"_s,
                                          u".idea"_s,        u"build"_s,  u".build"_s, u".gemini"_s};
    QList<FileItem> items;
    for (const QFileInfo &info :
         QDir(folder.path()).entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot | QDir::NoSymLinks)) {
        const FileURL url(info.filePath());
        if (info.isDir() && !generated.contains(info.fileName()))
            items.append(FileItem(url, info.fileName(), true, project, plainScan(url, project)));
        else if (!info.isDir() && documentType(url))
            items.append(FileItem(url, info.fileName(), false, project));
    }
    std::ranges::sort(items, [](const FileItem &left, const FileItem &right) {
        return left.isDirectory != right.isDirectory ? left.isDirectory
                                                     : localizedStandardCompare(left.name, right.name) < 0;
    });
    return items;
}

/// A chain of folders "d/d/d/…" which is deeper than a path may be long, with a file at its end.
class DeepFolder
{
public:
    explicit DeepFolder(int levels) : m_levels(levels)
    {
        int folder = open(m_files.folder().path().toUtf8().constData(), O_PATH | O_DIRECTORY);
        for (int i = 0; i < levels && folder >= 0; ++i) {
            const int inner = mkdirat(folder, "d", 0700) == 0 ? openat(folder, "d", O_PATH | O_DIRECTORY) : -1;
            close(folder);
            folder = inner;
        }
        m_isMade = folder >= 0 && mknodat(folder, "end.md", S_IFREG | 0600, 0) == 0 &&
                   mknodat(folder, "judged by its content", S_IFREG | 0600, 0) == 0;
        close(folder);
    }

    // No path leads to the end, so the chain is taken off at its beginning, link by link.
    ~DeepFolder()
    {
        const QByteArray root = m_files.folder().path().toUtf8() + '/';
        for (int i = 1; i < m_levels; ++i) {
            rename((root + "d/d").constData(), (root + "e").constData());
            rmdir((root + "d").constData());
            rename((root + "e").constData(), (root + "d").constData());
        }
    }
    DeepFolder(const DeepFolder &) = delete;
    DeepFolder &operator=(const DeepFolder &) = delete;

    bool isMade() const { return m_isMade; }
    FileURL url() const { return m_files.folder(); }

private:
    TemporaryFiles m_files;
    int m_levels;
    bool m_isMade = false;
};

} // namespace

TEST(FileTree, ProjectsKeepTheirOrder)
{
    const TemporaryFiles files{{u"zebra/z.md"_s, ""}, {u"ant/a.md"_s, ""}};
    const ProjectReference zebra = projectAt(files.url(u"zebra"_s));
    const ProjectReference ant = projectAt(files.url(u"ant"_s));

    const QList<FileItem> roots = buildTree({zebra, ant});

    const FileItem z(files.url(u"zebra/z.md"_s), u"z.md"_s, false, zebra);
    const FileItem a(files.url(u"ant/a.md"_s), u"a.md"_s, false, ant);
    const QList<FileItem> expected = {FileItem(zebra.rootURL, u"zebra"_s, true, zebra, QList<FileItem>{z}),
                                      FileItem(ant.rootURL, u"ant"_s, true, ant, QList<FileItem>{a})};
    EXPECT_TRUE(roots == expected) << outline(roots).join(u'\n').toStdString();
}

TEST(FileTree, NoProjectsGiveNoTree)
{
    EXPECT_TRUE(buildTree({}).isEmpty());
}

TEST(FileTree, AScanIsWhatARootHoldsInTheTree)
{
    const TemporaryFiles files{{u"a/b/c.md"_s, ""}, {u"d.txt"_s, ""}};
    const ProjectReference project = projectAt(files.folder());

    EXPECT_EQ(buildTree({project}).at(0).children, scanDirectory(files.folder(), project));
}

TEST(FileTree, FoldersComeBeforeFilesAndNumbersByTheirValueOnEveryLevel)
{
    const TemporaryFiles files{{u"alpha.md"_s, ""},
                               {u"zeta/File10.md"_s, ""},
                               {u"zeta/file2.md"_s, ""},
                               {u"zeta/sub 10/x.md"_s, ""},
                               {u"zeta/sub 9/x.md"_s, ""}};

    EXPECT_EQ(outlineOf(files), (QStringList{u"zeta/"_s, u"  sub 9/"_s, u"    x.md"_s, u"  sub 10/"_s, u"    x.md"_s,
                                             u"  file2.md"_s, u"  File10.md"_s, u"alpha.md"_s}));
}

TEST(FileTree, FilesHaveNoChildrenAndEmptyFoldersAnEmptyList)
{
    const TemporaryFiles files{{u"a.md"_s, ""}, {u"only data/x.png"_s, QByteArray("\0", 1)}};
    files.makeFolder(u"empty"_s);

    const QList<FileItem> items = scanDirectory(files.folder(), projectAt(files.folder()));

    ASSERT_EQ(outline(items), (QStringList{u"empty/"_s, u"only data/"_s, u"a.md"_s}));
    EXPECT_EQ(items.at(0).children, QList<FileItem>());
    EXPECT_EQ(items.at(1).children, QList<FileItem>());
    EXPECT_EQ(items.at(2).children, std::nullopt);
}

TEST(FileTree, AProjectNamedLikeAGeneratedFolderIsScanned)
{
    const TemporaryFiles files{{u"build/x.md"_s, ""}, {u"build/build/y.md"_s, ""}, {u".hidden/x.md"_s, ""}};

    const QList<FileItem> roots = buildTree({projectAt(files.url(u"build"_s)), projectAt(files.url(u".hidden"_s))});

    EXPECT_EQ(outline(roots), (QStringList{u"build/"_s, u"  x.md"_s, u".hidden/"_s, u"  x.md"_s}));
}

TEST(FileTree, ASymbolicLinkToAFolderDoesNotAppear)
{
    const TemporaryFiles files{{u"a/x.md"_s, ""}};
    ASSERT_EQ(symlink("..", (files.url(u"a"_s).path() + u"/up"_s).toUtf8().constData()), 0);
    ASSERT_EQ(symlink("a", files.url(u"b"_s).path().toUtf8().constData()), 0);

    EXPECT_EQ(outlineOf(files), (QStringList{u"a/"_s, u"  x.md"_s}));
}

TEST(FileTree, AProjectReachedThroughALinkIsScanned)
{
    const TemporaryFiles files{{u"a/b/x.md"_s, ""}};
    const FileURL link = files.url(u"link"_s);
    ASSERT_EQ(symlink("a", link.path().toUtf8().constData()), 0);

    const QList<FileItem> roots = buildTree({projectAt(link)});

    ASSERT_EQ(outline(roots), (QStringList{u"link/"_s, u"  b/"_s, u"    x.md"_s}));
    EXPECT_EQ(roots.at(0).children->at(0).children->at(0).url, files.url(u"link/b/x.md"_s));
}

TEST(FileTree, ItemsBelongToTheProjectThatWasScanned)
{
    const TemporaryFiles files{{u"inner/x.md"_s, ""}};
    const ProjectReference outer = projectAt(files.folder());
    const ProjectReference inner = projectAt(files.url(u"inner"_s));

    const QList<FileItem> roots = buildTree({outer, inner});

    EXPECT_EQ(roots.at(0).children->at(0).children->at(0).project, outer);
    EXPECT_EQ(roots.at(1).children->at(0).project, inner);
}

TEST(FileTree, AVanishedProjectStaysWithNoChildren)
{
    const TemporaryFiles files{{u"here/x.md"_s, ""}};
    const FileURL gone = files.url(u"gone"_s);

    testing::internal::CaptureStdout();
    const QList<FileItem> roots = buildTree({projectAt(gone), projectAt(files.url(u"here"_s))});
    const std::string printed = testing::internal::GetCapturedStdout();

    EXPECT_EQ(outline(roots), (QStringList{u"gone/"_s, u"here/"_s, u"  x.md"_s}));
    EXPECT_EQ(roots.at(0).children, QList<FileItem>());
    EXPECT_EQ(printed, "Error loading contents of " + gone.path().toStdString() + ": No such file or directory\n");
}

TEST(FileTree, AStoppedScanLooksIntoNoFurtherFolder)
{
    const TemporaryFiles files{{u"here/x.md"_s, ""}};
    std::stop_source stop;
    stop.request_stop();

    const QList<FileItem> roots = buildTree({projectAt(files.url(u"here"_s))}, stop.get_token());

    EXPECT_EQ(outline(roots), QStringList{u"here/"_s});
}

TEST(FileTree, AnUnreadableFolderIsEmptyAndTheRestIsThere)
{
    const TemporaryFiles files{{u"closed/x.md"_s, ""}, {u"open/y.md"_s, ""}, {u"secret"_s, "text"}};
    const FileURL closed = files.url(u"closed"_s);
    letEverybodyIn(files.folder().path().toUtf8().constData());
    letEverybodyIn(files.url(u"open"_s).path().toUtf8().constData());
    ASSERT_EQ(chmod(closed.path().toUtf8().constData(), 0), 0);
    ASSERT_EQ(chmod(files.url(u"secret"_s).path().toUtf8().constData(), 0), 0);

    testing::internal::CaptureStdout();
    const int result = runWithoutPrivileges([&files] {
        return outlineOf(files) == QStringList{u"closed/"_s, u"open/"_s, u"  y.md"_s} ? 0 : 1;
    });
    const std::string printed = testing::internal::GetCapturedStdout();

    EXPECT_EQ(result, 0);
    EXPECT_EQ(printed, "Error loading contents of " + closed.path().toStdString() + ": Permission denied\n");
    ASSERT_EQ(chmod(closed.path().toUtf8().constData(), 0700), 0);
}

TEST(FileTree, PipesAreNotWaitedFor)
{
    const TemporaryFiles files{{u"a/x.md"_s, ""}};
    ASSERT_EQ(mkfifo(files.url(u"a/pipe"_s).path().toUtf8().constData(), 0600), 0);

    EXPECT_EQ(outlineOf(files), (QStringList{u"a/"_s, u"  x.md"_s}));
}

TEST(FileTree, FoldersDeeperThanAPathIsLongAreScanned)
{
    constexpr int kLevels = 3000; // their path has 6000 characters and more, where the system takes 4095 at once
    const DeepFolder deep(kLevels);
    ASSERT_TRUE(deep.isMade());

    const QList<FileItem> items = scanDirectory(deep.url(), projectAt(deep.url()));

    int levels = 0;
    const QList<FileItem> *level = &items;
    while (level->size() == 1 && level->at(0).isDirectory) {
        level = &*level->at(0).children;
        ++levels;
    }
    EXPECT_EQ(levels, kLevels);
    EXPECT_EQ(outline(*level), (QStringList{u"end.md"_s, u"judged by its content"_s}));
}

TEST(FileTree, EqualsThePlainFormOfItsRules)
{
    const QStringList names = {u"a"_s,        u"B"_s,           u"build"_s,   u"file2.md"_s, u"File10.md"_s,
                               u"é.txt"_s,    u".hidden"_s,     u"data"_s,    u"x.png"_s,    u"target"_s,
                               u"ｗide.md"_s, u"a b.unknown"_s, u"日本.md"_s, u"note 3.md"_s};
    std::mt19937 random(99);
    for (int round = 0; round < 5; ++round) {
        const TemporaryFiles files;
        QStringList folders = {u"."_s};
        for (int i = 0; i < 300; ++i) {
            const QString &parent = folders.at(static_cast<qsizetype>(random() % static_cast<size_t>(folders.size())));
            const QString path =
                parent + u'/' + names.at(static_cast<qsizetype>(random() % static_cast<size_t>(names.size())));
            if (files.exists(path))
                continue;
            if (random() % 3 == 0) {
                files.makeFolder(path);
                folders.append(path);
            } else {
                files.write(path, random() % 2 ? "text" : QByteArray("\0", 1));
            }
        }
        const ProjectReference project = projectAt(files.folder());

        const QList<FileItem> items = scanDirectory(files.folder(), project);

        EXPECT_TRUE(items == plainScan(files.folder(), project)) << outline(items).join(u'\n').toStdString();
    }
}

} // namespace Tessaline
