#include "Services/ProjectWalk.h"
#include "Services/WorkspaceContextBuilder.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"
#include "tests/support/WithoutPrivileges.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <atomic>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Tessaline;
using namespace Tessaline::WorkspaceContextBuilder;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kAll = 1000;

QStringList names(const QList<ContextItem> &items)
{
    QStringList names;
    for (const ContextItem &item : items)
        names.append(item.name);
    return names;
}

QStringList ranked(const TemporaryFiles &files, const QString &query,
                   const std::optional<FileURL> &activeFileURL = std::nullopt)
{
    return names(rankFiles(query, files.folder(), activeFileURL, kAll));
}

QStringList walked(const FileURL &root, qsizetype mostEntries = kWalkLimit)
{
    QStringList paths;
    walkProject(root, mostEntries, [&](const ProjectEntry &entry) {
        paths.append(entry.url.path().sliced(root.path().size() + 1));
        return WalkStep::Continue;
    });
    return paths;
}

} // namespace

TEST(RankFiles, GivesTheFilesThatTheQuerySpeaksOfTheBestFirst)
{
    const TemporaryFiles files{{u"notes/once.md"_s, "The tide."},
                               {u"notes/twice.txt"_s, "A TIDE and a tide."},
                               {u"never.md"_s, "Nothing of that kind."}};
    const QString subtitle = u"Project · "_s + files.folder().lastPathComponent();

    EXPECT_EQ(rankFiles(u"tide"_s, files.folder(), std::nullopt, 6),
              (QList<ContextItem>{{u"notes/twice.txt"_s, subtitle, u"A TIDE and a tide."_s, std::nullopt},
                                  {u"notes/once.md"_s, subtitle, u"The tide."_s, std::nullopt}}));
}

TEST(RankFiles, CountsAHitInThePathSixTimes)
{
    const TemporaryFiles files{{u"a.md"_s, QByteArray("tide ").repeated(7)},
                               {u"b.md"_s, QByteArray("tide ").repeated(5)},
                               {u"Tides/c.md"_s, "None."}};
    EXPECT_EQ(ranked(files, u"tide"_s), (QStringList{u"a.md"_s, u"Tides/c.md"_s, u"b.md"_s}));
}

TEST(RankFiles, CountsTheHitsOfTheChosenWindowOnly)
{
    // Two hits that both windows hold, since they share that stretch, count twice and not four times.
    QByteArray shared(4000, '.');
    shared.replace(2800, 9, "tide tide");
    const TemporaryFiles files{{u"shared.md"_s, shared}, {u"three.md"_s, "tide tide tide"}};

    const QList<ContextItem> items = rankFiles(u"tide"_s, files.folder(), std::nullopt, 6);

    EXPECT_EQ(names(items), (QStringList{u"three.md"_s, u"shared.md"_s}));
    EXPECT_EQ(items.at(1).content, QString::fromUtf8(shared.first(3000)));
}

TEST(RankFiles, OrdersEqualScoresByPath)
{
    const TemporaryFiles files{{u"a/c.md"_s, "tide"},    {u"a/b.md"_s, "tide"},        {u"a.md"_s, "tide"},
                               {u"\uFA0E.md"_s, "tide"}, {u"\U00020000.md"_s, "tide"}, {u"Z.md"_s, "tide"}};
    EXPECT_EQ(ranked(files, u"tide"_s),
              (QStringList{u"Z.md"_s, u"a.md"_s, u"a/b.md"_s, u"a/c.md"_s, u"\uFA0E.md"_s, u"\U00020000.md"_s}));
}

TEST(RankFiles, BringsReadmeFilesAlongWhateverTheQueryIs)
{
    const TemporaryFiles files{{u"README.md"_s, "x"},     {u"sub/readme.txt"_s, "x"}, {u"sub/ReadMe"_s, "x"},
                               {u"readme-old.md"_s, "x"}, {u"readme.old.md"_s, "x"},  {u"other.md"_s, "x"}};
    const QStringList readmes{u"README.md"_s, u"sub/ReadMe"_s, u"sub/readme.txt"_s};

    EXPECT_EQ(ranked(files, u"what is it that we have"_s), readmes);
    EXPECT_EQ(ranked(files, QString()), readmes);
    EXPECT_EQ(ranked(files, u"lighthouse"_s), readmes);
}

TEST(RankFiles, GivesNoMoreThanTheLimit)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}, {u"b.md"_s, "tide tide"}};
    const auto limited = [&files](qsizetype limit) {
        return names(rankFiles(u"tide"_s, files.folder(), std::nullopt, limit));
    };
    EXPECT_EQ(limited(1), QStringList{u"b.md"_s});
    EXPECT_TRUE(limited(0).isEmpty());
    EXPECT_TRUE(limited(-1).isEmpty());
    EXPECT_EQ(limited(std::numeric_limits<qsizetype>::max()).size(), 2);
}

TEST(RankFiles, LeavesOutTheActiveFile)
{
    const TemporaryFiles files{{u"a.md"_s, "tide tide tide"}, {u"b.md"_s, "tide"}};
    EXPECT_EQ(ranked(files, u"tide"_s, files.url(u"a.md"_s)), QStringList{u"b.md"_s});
    EXPECT_EQ(ranked(files, u"tide"_s, FileURL(files.folder().path() + u"/x/.././/a.md"_s)), QStringList{u"b.md"_s});
    EXPECT_EQ(ranked(files, u"tide"_s, FileURL(u"/elsewhere/a.md"_s)).size(), 2);
}

TEST(RankFiles, LeavesOutWhatIsHiddenGeneratedOrInsideOfAPackage)
{
    const TemporaryFiles files{
        {u".hidden.md"_s, "tide"},          {u".git/a.md"_s, "tide"},        {u"build/a.md"_s, "tide"},
        {u"x/node_modules/a.md"_s, "tide"}, {u"DerivedData/a.md"_s, "tide"}, {u"target/a.md"_s, "tide"},
        {u"xcuserdata/a.md"_s, "tide"},     {u"Tool.app/a.md"_s, "tide"},    {u"Notes.RTFD/sub/a.md"_s, "tide"},
        {u".swiftpm/a.md"_s, "tide"},       {u"Build/kept.md"_s, "tide"},    {u"built/build.md"_s, "tide"}};
    EXPECT_EQ(ranked(files, u"tide"_s), (QStringList{u"Build/kept.md"_s, u"built/build.md"_s}));
}

TEST(RankFiles, LooksIntoARootWhateverItsNameIs)
{
    const TemporaryFiles files{{u"build/a.md"_s, "tide"}, {u"Tool.app/b.md"_s, "tide"}, {u".hidden/c.md"_s, "tide"}};
    QFile::link(files.url(u"build"_s).path(), files.url(u"link"_s).path());

    for (const QString &root : {u"build"_s, u"Tool.app"_s, u".hidden"_s, u"link"_s})
        EXPECT_EQ(rankFiles(u"tide"_s, files.url(root), std::nullopt, 6).size(), 1) << root.toStdString();
}

TEST(RankFiles, FollowsNoSymbolicLink)
{
    const TemporaryFiles files{{u"a/real.md"_s, "tide"}};
    ASSERT_TRUE(QFile::link(files.url(u"a/real.md"_s).path(), files.url(u"link.md"_s).path()));
    ASSERT_TRUE(QFile::link(files.folder().path(), files.url(u"a/loop"_s).path()));
    EXPECT_EQ(ranked(files, u"tide"_s), QStringList{u"a/real.md"_s});
}

TEST(RankFiles, ReadsAFileOfTheLargestSizeAndNoneBeyond)
{
    const TemporaryFiles files{{u"largest.md"_s, "tide" + QByteArray(399'996, ' ')},
                               {u"larger.md"_s, "tide" + QByteArray(399'997, ' ')}};
    EXPECT_EQ(ranked(files, u"tide"_s), QStringList{u"largest.md"_s});
}

TEST(RankFiles, LeavesOutWhatIsNoText)
{
    const TemporaryFiles files{{u"tide-picture.png"_s, QByteArray("\x89PNG\0tide", 9)},
                               {u"tide-latin1.md"_s, "tide \xE9t\xE9"},
                               {u"tide-empty.md"_s, ""},
                               {u"tide-unknown.wip"_s, "x"}};
    ASSERT_EQ(mkfifo(qPrintable(files.url(u"tide-pipe.md"_s).path()), 0600), 0);
    EXPECT_EQ(ranked(files, u"tide"_s), QStringList{u"tide-unknown.wip"_s});
}

TEST(RankFiles, ScoresNoMoreThan300Files)
{
    const TemporaryFiles files;
    for (int i = 0; i < 305; ++i)
        files.write(u"%1.md"_s.arg(i, 3, 10, QChar(u'0')), "tide");
    const QStringList all = ranked(files, u"tide"_s);
    EXPECT_EQ(all.size(), 300);
    EXPECT_EQ(all.last(), u"299.md"_s);
}

TEST(RankFiles, KeepsTheFileThatGoesBeyondTheBytesAndNoneAfterIt)
{
    const TemporaryFiles files;
    for (int i = 10; i < 22; ++i)
        files.write(u"%1.md"_s.arg(i), "tide" + QByteArray(399'000 - 4, ' '));
    const QStringList all = ranked(files, u"tide"_s); // ten are 3,990,000 bytes
    EXPECT_EQ(all.size(), 11);
    EXPECT_EQ(all.last(), u"20.md"_s);
}

TEST(RankFiles, VisitsNoMoreThan5000Entries)
{
    const TemporaryFiles files;
    files.makeFolder(u"a"_s);
    for (int i = 0; i < 4997; ++i) // pictures: visited, not scored
        QFile(files.url(u"a/%1.png"_s.arg(i)).path()).open(QIODevice::WriteOnly);
    files.write(u"b.md"_s, "tide");
    files.write(u"c.md"_s, "tide");
    files.write(u"d.md"_s, "tide");
    EXPECT_EQ(ranked(files, u"tide"_s), (QStringList{u"b.md"_s, u"c.md"_s}));
}

TEST(RankFiles, OfAFolderThatIsNotThereGivesNothing)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}};
    EXPECT_TRUE(rankFiles(u"tide"_s, files.url(u"gone"_s), std::nullopt, 6).isEmpty());
    EXPECT_TRUE(rankFiles(u"tide"_s, files.url(u"a.md"_s), std::nullopt, 6).isEmpty());
    EXPECT_TRUE(rankFiles(u"tide"_s, FileURL(), std::nullopt, 6).isEmpty());
}

TEST(RankFiles, LeavesOutWhatMayNotBeRead)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}, {u"locked.md"_s, "tide"}, {u"closed/b.md"_s, "tide"}};
    letEverybodyIn(qPrintable(files.folder().path()));
    ASSERT_EQ(chmod(qPrintable(files.url(u"locked.md"_s).path()), 0), 0);
    ASSERT_EQ(chmod(qPrintable(files.url(u"closed"_s).path()), 0), 0);
    EXPECT_EQ(runWithoutPrivileges([&files] { return ranked(files, u"tide"_s) == QStringList{u"a.md"_s} ? 0 : 1; }), 0);
    ASSERT_EQ(chmod(qPrintable(files.url(u"closed"_s).path()), 0700), 0);
}

TEST(RankFiles, LeavesOutAFileThatHoldsMoreThanItsSize)
{
    const FileURL root(u"/proc/sys/kernel/random"_s); // made up as they are read: of size 0, and not empty
    if (!QFile::exists(root.path() + u"/boot_id"_s))
        GTEST_SKIP() << "This system has no files that grow as they are read.";
    EXPECT_TRUE(rankFiles(u"boot_id"_s, root, std::nullopt, 6).isEmpty());
}

TEST(RankFiles, KeepsToWholeFilesWhileTheyAreReplacedAndRemoved)
{
    const TemporaryFiles files{{u"steady.md"_s, "tide"}};
    const QByteArray versions[] = {QByteArray("tide one ").repeated(20), QByteArray("tide two ").repeated(4000)};
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        for (int round = 0; !isDone; ++round) {
            files.write(u".new"_s, versions[round % 2]);
            rename(qPrintable(files.url(u".new"_s).path()), qPrintable(files.url(u"restless.md"_s).path()));
            if (round % 3 == 0)
                QFile::remove(files.url(u"restless.md"_s).path());
        }
    });
    for (int round = 0; round < 100; ++round) {
        const QList<ContextItem> items = rankFiles(u"tide"_s, files.folder(), std::nullopt, 6);
        EXPECT_TRUE(names(items).contains(u"steady.md"_s));
        for (const ContextItem &item : items)
            EXPECT_TRUE(item.name == u"steady.md" || item.content == QString::fromUtf8(versions[0]) ||
                        item.content == QString::fromUtf8(versions[1]).first(3000));
    }
    isDone = true;
    other.join();
}

TEST(RankFiles, GivesEqualListsForEqualTrees)
{
    const auto fill = [](const TemporaryFiles &files, bool forwards) {
        for (int i = 0; i < 400; ++i) {
            const int number = forwards ? i : 399 - i;
            files.write(u"d%1/%2.md"_s.arg(number % 7).arg(number), "tide " + QByteArray::number(number));
        }
    };
    const TemporaryFiles one;
    const TemporaryFiles other;
    fill(one, true);
    fill(other, false);
    EXPECT_EQ(ranked(one, u"tide 17"_s), ranked(other, u"tide 17"_s));
    EXPECT_EQ(ranked(one, u"tide 17"_s).size(), 300);
}

TEST(RankFiles, GivesNothingOnceItIsStopped)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}};
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(rankFiles(u"tide"_s, files.folder(), std::nullopt, 6, stop.get_token()).isEmpty());
}

// --- walkProject ---------------------------------------------------------------------------------------------------

TEST(WalkProject, GoesThroughEachFolderInTheOrderOfTheNames)
{
    const TemporaryFiles files{
        {u"b/z.md"_s, ""}, {u"b/a/deep.md"_s, ""}, {u"a.md"_s, ""}, {u"c.md"_s, ""}, {u"B.md"_s, ""}};
    EXPECT_EQ(walked(files.folder()),
              (QStringList{u"B.md"_s, u"a.md"_s, u"b"_s, u"b/a"_s, u"b/a/deep.md"_s, u"b/z.md"_s, u"c.md"_s}));
    EXPECT_EQ(walked(files.folder(), 3), (QStringList{u"B.md"_s, u"a.md"_s, u"b"_s}));
    EXPECT_TRUE(walked(files.folder(), 0).isEmpty());
}

TEST(WalkProject, KeepsTheFirstNamesOfAVeryLargeFolder)
{
    const TemporaryFiles files;
    for (int i = 199; i >= 0; --i)
        QFile(files.url(u"%1"_s.arg(i, 4, 10, QChar(u'0'))).path()).open(QIODevice::WriteOnly);
    EXPECT_EQ(walked(files.folder(), 3), (QStringList{u"0000"_s, u"0001"_s, u"0002"_s}));
}

TEST(WalkProject, DoesNotMindThatWhatItGoesThroughVanishes)
{
    const TemporaryFiles files{{u"a/1.md"_s, ""}, {u"a/2.md"_s, ""}, {u"b/3.md"_s, ""}, {u"c.md"_s, ""}};
    QStringList paths;
    walkProject(files.folder(), kWalkLimit, [&](const ProjectEntry &entry) {
        paths.append(entry.url.lastPathComponent());
        if (paths.last() == u"1.md")
            QDir(files.url(u"a"_s).path()).removeRecursively();
        if (paths.last() == u"b")
            QDir(entry.url.path()).removeRecursively();
        return WalkStep::Continue;
    });
    EXPECT_EQ(paths, (QStringList{u"a"_s, u"1.md"_s, u"b"_s, u"c.md"_s}));
}

TEST(WalkProject, PassesNamesThatNoTextCanHold)
{
    const TemporaryFiles files{{u"z.md"_s, ""}};
    QFile broken;
    const QByteArray path = QFile::encodeName(files.folder().path()) + "/a\xFF.md";
    const int descriptor = creat(path.constData(), 0600);
    if (descriptor < 0)
        GTEST_SKIP() << "This file system takes no such names.";
    broken.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle);
    EXPECT_EQ(walked(files.folder()), QStringList{u"z.md"_s});
    ::remove(path.constData());
}

TEST(WalkProject, EndsWhenItIsStopped)
{
    const TemporaryFiles files{{u"a.md"_s, ""}, {u"b.md"_s, ""}};
    std::stop_source stop;
    int visited = 0;
    walkProject(
        files.folder(), kWalkLimit,
        [&](const ProjectEntry &) {
            ++visited;
            stop.request_stop();
            return WalkStep::Continue;
        },
        stop.get_token());
    EXPECT_EQ(visited, 1);
}

TEST(WalkProject, ComesOutOfATreeOfAnyDepth)
{
    const TemporaryFiles files;
    QByteArray path = QFile::encodeName(files.folder().path());
    int depth = 0;
    while (path.size() < 4000) { // near the longest path that the system takes
        path += "/a folder in a folder in a folder in a folder";
        ASSERT_EQ(mkdir(path.constData(), 0700), 0);
        ++depth;
    }
    EXPECT_EQ(walked(files.folder()).size(), depth);
}

// --- buildContext --------------------------------------------------------------------------------------------------

TEST(BuildContext, WithoutAProjectIsEmptyAtOnce)
{
    const QFuture<QList<ContextItem>> context = buildContext(u"tide"_s, std::nullopt, std::nullopt, 6);
    EXPECT_TRUE(context.isFinished());
    EXPECT_TRUE(context.result().isEmpty());
}

TEST(BuildContext, RanksTheProjectElsewhereThanOnTheMainThread)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}, {u"b.md"_s, "tide"}};
    const QFuture<QList<ContextItem>> context =
        buildContext(u"tide"_s, ProjectReference{files.folder()}, files.url(u"b.md"_s), 6);
    ASSERT_TRUE(finishes(context));
    EXPECT_EQ(names(context.result()), QStringList{u"a.md"_s});
}

TEST(BuildContext, EndsSoonAndEmptyWhenItIsStopped)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}};
    std::stop_source stop;
    stop.request_stop();
    const QFuture<QList<ContextItem>> context =
        buildContext(u"tide"_s, ProjectReference{files.folder()}, std::nullopt, 6, stop.get_token());
    ASSERT_TRUE(finishes(context));
    EXPECT_TRUE(context.result().isEmpty());
}
