#include "documents/FolderListing.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QStringList namesIn(const std::vector<FolderEntry> &entries)
{
    QStringList names;
    for (const FolderEntry &entry : entries)
        names.append(entry.isFolder ? entry.name + u'/' : entry.name);
    return names;
}

QStringList shownNames(const FileURL &folder, ReadEntry readEntry = ::readdir)
{
    return namesIn(shownEntries(folder, LastLink::Followed, readEntry));
}

/// As a file system reads that does not keep the kinds of entries beside their names.
dirent *withoutKind(DIR *folder)
{
    dirent *const entry = readdir(folder);
    if (entry)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

int entriesBeforeFailure = 0;

/// As a disk reads that fails in the middle of a folder.
dirent *failing(DIR *folder)
{
    if (entriesBeforeFailure-- > 0)
        return readdir(folder);
    errno = EIO;
    return nullptr;
}

/// As a file system reads whose entry has gone by the time it is looked at.
dirent *vanishing(DIR *folder)
{
    dirent *const entry = readdir(folder);
    if (entry && entriesBeforeFailure-- <= 0) {
        entry->d_type = DT_UNKNOWN;
        std::strcpy(entry->d_name, "gone");
    }
    return entry;
}

QString printedWhile(const std::function<void()> &body)
{
    testing::internal::CaptureStdout();
    body();
    return QString::fromStdString(testing::internal::GetCapturedStdout());
}

} // namespace

TEST(FolderListing, FoldersComeBeforeFiles)
{
    const TemporaryFiles files{{u"alpha.md"_s, ""}, {u"beta.md"_s, ""}, {u"zeta/x.md"_s, ""}, {u"Eta/x.md"_s, ""}};

    EXPECT_EQ(shownNames(files.folder()), (QStringList{u"Eta/"_s, u"zeta/"_s, u"alpha.md"_s, u"beta.md"_s}));
}

TEST(FolderListing, NumbersInNamesAreOrderedByTheirValue)
{
    const TemporaryFiles files{{u"File10.md"_s, ""}, {u"file2.md"_s, ""}, {u"File1.md"_s, ""}};

    EXPECT_EQ(shownNames(files.folder()), (QStringList{u"File1.md"_s, u"file2.md"_s, u"File10.md"_s}));
}

TEST(FolderListing, HiddenEntriesAreLeftOut)
{
    const TemporaryFiles files{{u".hidden.md"_s, ""}, {u".folder/x.md"_s, ""}, {u"a.md"_s, ""}, {u"..b.md"_s, ""}};

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"a.md"_s});
}

TEST(FolderListing, SymbolicLinksAreLeftOut)
{
    const TemporaryFiles files{{u"a.md"_s, ""}, {u"folder/x.md"_s, ""}};
    const QByteArray folder = files.folder().path().toUtf8();
    ASSERT_EQ(symlink("a.md", (folder + "/link.md").constData()), 0);
    ASSERT_EQ(symlink("folder", (folder + "/linked folder").constData()), 0);
    ASSERT_EQ(symlink(".", (folder + "/loop").constData()), 0);
    ASSERT_EQ(symlink("nowhere", (folder + "/broken.md").constData()), 0);

    EXPECT_EQ(shownNames(files.folder()), (QStringList{u"folder/"_s, u"a.md"_s}));
    EXPECT_EQ(shownNames(files.folder(), withoutKind), (QStringList{u"folder/"_s, u"a.md"_s}));
}

TEST(FolderListing, FoldersOfGeneratedFilesAreLeftOut)
{
    const TemporaryFiles files;
    for (const QString &name : {u"node_modules"_s, u"target"_s, u".git"_s, u"DerivedData"_s, u".gradle"_s, u".idea"_s,
                                u"build"_s, u".build"_s, u".gemini"_s, u"src"_s})
        files.write(name + u"/x.md"_s, "");

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"src/"_s});
}

TEST(FolderListing, OnlyTheExactNamesOfGeneratedFoldersAreLeftOut)
{
    const TemporaryFiles files;
    for (const QString &name : {u"Build"_s, u"builds"_s, u"my build"_s, u"deriveddata"_s, u"TARGET"_s})
        files.write(name + u"/x.md"_s, "");

    EXPECT_EQ(shownNames(files.folder()),
              (QStringList{u"Build/"_s, u"builds/"_s, u"deriveddata/"_s, u"my build/"_s, u"TARGET/"_s}));
}

TEST(FolderListing, AFileNamedLikeAGeneratedFolderIsKeptIfItCanBeEdited)
{
    const TemporaryFiles files{{u"build"_s, "text"}, {u"target"_s, QByteArray("\0", 1)}};

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"build"_s});
}

TEST(FolderListing, FilesThatCannotBeEditedAreLeftOut)
{
    const TemporaryFiles files{{u"a.md"_s, ""},
                               {u"b.txt"_s, ""},
                               {u"c.unknown"_s, "text"},
                               {u"d"_s, "text"},
                               {u"e.png"_s, QByteArray("\x89PNG\0", 5)},
                               {u"f"_s, "\xff"}};

    EXPECT_EQ(shownNames(files.folder()), (QStringList{u"a.md"_s, u"b.txt"_s, u"c.unknown"_s, u"d"_s}));
}

TEST(FolderListing, AFolderNamedLikeADocumentIsAFolder)
{
    const TemporaryFiles files{{u"book.md/x.md"_s, ""}};

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"book.md/"_s});
}

TEST(FolderListing, PipesAreNotWaitedFor)
{
    const TemporaryFiles files{{u"a.md"_s, ""}};
    const QByteArray folder = files.folder().path().toUtf8();
    ASSERT_EQ(mkfifo((folder + "/pipe").constData(), 0600), 0);
    ASSERT_EQ(mkfifo((folder + "/pipe.unknown").constData(), 0600), 0);

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"a.md"_s});
    EXPECT_EQ(shownNames(files.folder(), withoutKind), QStringList{u"a.md"_s});
}

TEST(FolderListing, NamesThatAreNotUtf8AreLeftOut)
{
    const TemporaryFiles files{{u"a.md"_s, ""}};
    const QByteArray folder = files.folder().path().toUtf8();
    ASSERT_EQ(mkdir((folder + "/caf\xe9").constData(), 0700), 0);
    ASSERT_EQ(mknod((folder + "/\xff.md").constData(), S_IFREG | 0600, 0), 0);

    EXPECT_EQ(shownNames(files.folder()), QStringList{u"a.md"_s});

    rmdir((folder + "/caf\xe9").constData()); // Qt cannot name them, so it could not remove them either
    unlink((folder + "/\xff.md").constData());
}

TEST(FolderListing, NamesOfAnyOtherCharactersWork)
{
    const QStringList names = {
        u"line\nbreak.md"_s, u"\"quotes\" 'and'.md"_s, u"emoji 📝.md"_s, u"\u202Emirrored\u202C.md"_s,
        u"%1 %2.md"_s,       u"back\\slash.md"_s,      u" .md"_s,       QString(83, u'語') + u"-.md"_s};
    const TemporaryFiles files;
    for (const QString &name : names)
        files.write(name, "");

    QStringList shown = shownNames(files.folder());
    EXPECT_EQ(QSet<QString>(shown.begin(), shown.end()), QSet<QString>(names.begin(), names.end()));
}

TEST(FolderListing, AFileSystemThatDoesNotKeepKindsGivesTheSame)
{
    const TemporaryFiles files{
        {u"a.md"_s, ""}, {u"b"_s, "text"}, {u"c"_s, QByteArray("\0", 1)}, {u"d/x.md"_s, ""}, {u"build/x.md"_s, ""}};

    EXPECT_EQ(shownNames(files.folder(), withoutKind), (QStringList{u"d/"_s, u"a.md"_s, u"b"_s}));
}

TEST(FolderListing, AFailureInTheMiddleKeepsWhatWasReadBeforeItInOrder)
{
    const TemporaryFiles files;
    for (int i = 0; i < 20; ++i)
        files.write(u"%1.md"_s.arg(i), "");
    files.makeFolder(u"folder"_s);
    entriesBeforeFailure = 12;

    std::vector<FolderEntry> entries;
    const QString printed = printedWhile([&] { entries = shownEntries(files.folder(), LastLink::Followed, failing); });

    EXPECT_EQ(printed, u"Error loading contents of %1: Input/output error\n"_s.arg(files.folder().path()));
    EXPECT_GE(entries.size(), 10u); // twelve were read, "." and ".." perhaps among them
    EXPECT_LE(entries.size(), 12u);
    std::vector<FolderEntry> whole = shownEntries(files.folder(), LastLink::Followed);
    std::erase_if(whole,
                  [&entries](const FolderEntry &entry) { return std::ranges::find(entries, entry) == entries.end(); });
    EXPECT_EQ(entries, whole);
}

TEST(FolderListing, AnEntryThatCannotBeLookedAtEndsTheFolder)
{
    const TemporaryFiles files;
    for (int i = 0; i < 20; ++i)
        files.write(u"%1.md"_s.arg(i), "");
    entriesBeforeFailure = 12;

    std::vector<FolderEntry> entries;
    const QString printed =
        printedWhile([&] { entries = shownEntries(files.folder(), LastLink::Followed, vanishing); });

    EXPECT_EQ(printed, u"Error loading contents of %1: No such file or directory\n"_s.arg(files.folder().path()));
    EXPECT_GE(entries.size(), 10u);
    EXPECT_LE(entries.size(), 12u);
}

TEST(FolderListing, AWholeFolderPrintsNothing)
{
    const TemporaryFiles files{{u"a.md"_s, ""}, {u"b"_s, QByteArray("\0", 1)}};

    EXPECT_EQ(printedWhile([&] { shownEntries(files.folder(), LastLink::Followed); }), QString());
}

TEST(FolderListing, WhatIsNoFolderGivesALineAndNothingElse)
{
    const TemporaryFiles files{{u"a.md"_s, ""}};
    const QString missing = files.url(u"gone"_s).path();
    const QString file = files.url(u"a.md"_s).path();
    const auto printedFor = [](const QString &path) {
        return printedWhile([&path] { EXPECT_TRUE(shownNames(FileURL(path)).isEmpty()); });
    };

    EXPECT_EQ(printedFor(missing), u"Error loading contents of %1: No such file or directory\n"_s.arg(missing));
    EXPECT_EQ(printedFor(file), u"Error loading contents of %1: Not a directory\n"_s.arg(file));
    EXPECT_EQ(printedFor(QString()), u"Error loading contents of : No such file or directory\n"_s);
    EXPECT_EQ(printedFor(u"/tmp"_s + QChar(0)),
              u"Error loading contents of /tmp"_s + QChar(0) + u": No such file or directory\n"_s);
    EXPECT_EQ(printedFor(u"/%1/%2"_s), u"Error loading contents of /%1/%2: No such file or directory\n"_s);
}

TEST(FolderListing, ALinkAtTheEndOfThePathIsFollowedOnlyOnRequest)
{
    const TemporaryFiles files{{u"folder/x.md"_s, ""}};
    const QString link = files.url(u"link"_s).path();
    ASSERT_EQ(symlink("folder", link.toUtf8().constData()), 0);

    EXPECT_EQ(shownNames(FileURL(link)), QStringList{u"x.md"_s});
    std::vector<FolderEntry> refused;
    const QString printed = printedWhile([&] { refused = shownEntries(FileURL(link), LastLink::Refused); });
    EXPECT_TRUE(refused.empty());
    EXPECT_TRUE(printed.startsWith(u"Error loading contents of %1: "_s.arg(link))) << printed.toStdString();
}

} // namespace Tessaline
