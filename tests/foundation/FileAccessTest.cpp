#include "foundation/FileAccess.h"

#include "tests/support/Printers.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/WithoutPrivileges.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QByteArray encoded(const FileURL &url)
{
    return QFile::encodeName(url.path());
}

mode_t modeOf(const FileURL &url)
{
    struct stat status = {};
    return stat(encoded(url).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

ino_t inodeOf(const FileURL &url)
{
    struct stat status = {};
    return stat(encoded(url).constData(), &status) == 0 ? status.st_ino : 0;
}

bool isLink(const FileURL &url)
{
    struct stat status = {};
    return lstat(encoded(url).constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Everything in the folder, hidden files too.
QStringList namesIn(const FileURL &folder)
{
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

TEST(WriteAtomically, MakesANewFileWithTheUsersDefaultPermissions)
{
    const TemporaryFiles files;
    const mode_t mask = umask(027);

    const Result<void> result = writeBytesAtomically(files.url(u"new.md"_s), "text");
    umask(mask);

    EXPECT_TRUE(result);
    EXPECT_EQ(files.read(u"new.md"_s), "text");
    EXPECT_EQ(modeOf(files.url(u"new.md"_s)), 0640);
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"new.md"_s});
}

TEST(WriteAtomically, ReplacesTheFileByAnother)
{
    const TemporaryFiles files{{u"a.md"_s, "a text that is longer than the new one"}};
    const ino_t before = inodeOf(files.url(u"a.md"_s));

    EXPECT_TRUE(writeBytesAtomically(files.url(u"a.md"_s), "new"));

    EXPECT_EQ(files.read(u"a.md"_s), "new");
    EXPECT_NE(inodeOf(files.url(u"a.md"_s)), before);
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteAtomically, KeepsThePermissionBits)
{
    for (const mode_t mode : {0600u, 0644u, 0664u, 0755u, 0606u, 02644u, 04755u}) {
        const TemporaryFiles files{{u"a.md"_s, "old"}};
        ASSERT_EQ(chmod(encoded(files.url(u"a.md"_s)).constData(), mode), 0);

        EXPECT_TRUE(writeBytesAtomically(files.url(u"a.md"_s), "new"));

        EXPECT_EQ(modeOf(files.url(u"a.md"_s)), mode);
    }
}

TEST(WriteAtomically, KeepsThePermissionBitsForAnOrdinaryUser)
{
    const TemporaryFiles files;
    ASSERT_EQ(chmod(encoded(files.folder()).constData(), 0777), 0);

    const int wrong = runWithoutPrivileges([&] {
        int differences = 0;
        for (const mode_t mode : {0600u, 0644u, 0755u, 04755u}) {
            const FileURL url = files.url(u"%1.md"_s.arg(mode));
            const bool isWritten = writeBytesAtomically(url, "old") && chmod(encoded(url).constData(), mode) == 0 &&
                                   writeBytesAtomically(url, "new");
            differences += !isWritten || modeOf(url) != mode;
        }
        return differences;
    });

    EXPECT_EQ(wrong, 0);
}

TEST(WriteAtomically, KeepsTheOwnerWhereTheProcessMaySetIt)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can give a file away.";
    const TemporaryFiles files{{u"a.md"_s, "old"}};
    ASSERT_EQ(chown(encoded(files.url(u"a.md"_s)).constData(), 65534, 65534), 0);

    EXPECT_TRUE(writeBytesAtomically(files.url(u"a.md"_s), "new"));

    struct stat status = {};
    ASSERT_EQ(stat(encoded(files.url(u"a.md"_s)).constData(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534u);
    EXPECT_EQ(status.st_gid, 65534u);
}

TEST(WriteAtomically, AnEmptyTextMakesAnEmptyFile)
{
    const TemporaryFiles files{{u"a.md"_s, "old"}};

    EXPECT_TRUE(writeTextAtomically(files.url(u"a.md"_s), ChunkedText()));

    EXPECT_TRUE(files.exists(u"a.md"_s));
    EXPECT_EQ(files.read(u"a.md"_s).size(), 0);
}

TEST(WriteAtomically, WritesUtf8WithoutAByteOrderMark)
{
    const TemporaryFiles files;

    EXPECT_TRUE(writeTextAtomically(files.url(u"a.md"_s), ChunkedText(u"Grüße 😀\r\n")));

    EXPECT_EQ(files.read(u"a.md"_s), "Grüße 😀\r\n");
}

TEST(WriteAtomically, TakesNamesOfEveryKind)
{
    const TemporaryFiles files;
    const QStringList names{u"line\nbreak.md"_s,
                            u"\"quotes\" and 'more'.md"_s,
                            u"😀👩‍👩‍👧.md"_s,
                            u"\u200Fשלום\u202E.md"_s,
                            u" blank .md"_s,
                            u"-rf.md"_s,
                            u"%1 %s $HOME `id`.md"_s,
                            QString(250, u'n') + u".md"_s};
    for (const QString &name : names) {
        EXPECT_TRUE(writeBytesAtomically(files.url(name), name.toUtf8()));
        EXPECT_EQ(readBytes(files.url(name)).value(), name.toUtf8());
    }
    EXPECT_EQ(namesIn(files.folder()).size(), names.size());
}

TEST(WriteAtomically, WritesTheTargetOfALinkAndKeepsTheLink)
{
    const TemporaryFiles files{{u"real/a.md"_s, "old"}};
    ASSERT_EQ(symlink("real/a.md", encoded(files.url(u"link.md"_s)).constData()), 0);

    EXPECT_TRUE(writeBytesAtomically(files.url(u"link.md"_s), "new"));

    EXPECT_TRUE(isLink(files.url(u"link.md"_s)));
    EXPECT_EQ(files.read(u"real/a.md"_s), "new");
    EXPECT_EQ(namesIn(files.url(u"real"_s)), QStringList{u"a.md"_s});
}

TEST(WriteAtomically, FollowsAChainOfLinks)
{
    const TemporaryFiles files{{u"real.md"_s, "old"}};
    ASSERT_EQ(symlink("second", encoded(files.url(u"first"_s)).constData()), 0);
    ASSERT_EQ(symlink(encoded(files.url(u"real.md"_s)).constData(), encoded(files.url(u"second"_s)).constData()), 0);

    EXPECT_TRUE(writeBytesAtomically(files.url(u"first"_s), "new"));

    EXPECT_TRUE(isLink(files.url(u"first"_s)));
    EXPECT_TRUE(isLink(files.url(u"second"_s)));
    EXPECT_EQ(files.read(u"real.md"_s), "new");
}

TEST(WriteAtomically, MakesTheFileThatADanglingLinkPointsTo)
{
    const TemporaryFiles files;
    ASSERT_EQ(symlink("missing.md", encoded(files.url(u"link.md"_s)).constData()), 0);

    EXPECT_TRUE(writeBytesAtomically(files.url(u"link.md"_s), "new"));

    EXPECT_TRUE(isLink(files.url(u"link.md"_s)));
    EXPECT_EQ(files.read(u"missing.md"_s), "new");
}

TEST(WriteAtomically, WritesThroughALinkToAFolder)
{
    const TemporaryFiles files{{u"real/a.md"_s, "old"}};
    ASSERT_EQ(symlink("real", encoded(files.url(u"folder"_s)).constData()), 0);

    EXPECT_TRUE(writeBytesAtomically(files.url(u"folder/a.md"_s), "new"));

    EXPECT_TRUE(isLink(files.url(u"folder"_s)));
    EXPECT_EQ(files.read(u"real/a.md"_s), "new");
}

TEST(WriteAtomically, ARoundOfLinksFails)
{
    const TemporaryFiles files;
    ASSERT_EQ(symlink("two", encoded(files.url(u"one"_s)).constData()), 0);
    ASSERT_EQ(symlink("one", encoded(files.url(u"two"_s)).constData()), 0);

    const Result<void> result = writeBytesAtomically(files.url(u"one"_s), "new");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), (Failure{FailureKind::NotWritable, u"The link leads back to itself."_s}));
    EXPECT_EQ(namesIn(files.folder()), (QStringList{u"one"_s, u"two"_s}));
}

TEST(WriteAtomically, AReaderSeesTheOldFileOrTheNewOneWhole)
{
    const TemporaryFiles files;
    const FileURL url = files.url(u"a.md"_s);
    const QByteArray old(300000, 'o');
    const QByteArray fresh(200000, 'n');
    ASSERT_TRUE(writeBytesAtomically(url, old));
    std::atomic<bool> done = false;
    std::atomic<int> torn = 0;
    std::thread reader([&] {
        while (!done) {
            const Result<QByteArray> bytes = readBytes(url);
            if (!bytes || (bytes.value() != old && bytes.value() != fresh))
                ++torn;
        }
    });

    for (int i = 0; i < 60; ++i)
        EXPECT_TRUE(writeBytesAtomically(url, i % 2 == 0 ? fresh : old));
    done = true;
    reader.join();

    EXPECT_EQ(torn, 0);
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteAtomically, WritersAtTheSameTimeLeaveOneOfTheirTexts)
{
    const TemporaryFiles files;
    const FileURL url = files.url(u"a.md"_s);
    const auto writeMany = [&url](char letter) {
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(writeBytesAtomically(url, QByteArray(100000, letter)));
    };

    std::thread first(writeMany, 'a');
    std::thread second(writeMany, 'b');
    first.join();
    second.join();

    const QByteArray bytes = files.read(u"a.md"_s);
    EXPECT_TRUE(bytes == QByteArray(100000, 'a') || bytes == QByteArray(100000, 'b'));
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteAtomically, AFileOf50MegabytesComesBackAsItWas)
{
    const TemporaryFiles files;
    const QByteArray line = "A line of a very long document, with ümläuts and 字.\r\n";
    const QByteArray bytes = line.repeated(50 * 1024 * 1024 / line.size());
    ASSERT_TRUE(writeBytesAtomically(files.url(u"in.txt"_s), bytes));

    const Result<ChunkedText> text = readText(files.url(u"in.txt"_s));
    ASSERT_TRUE(text);
    ASSERT_TRUE(writeTextAtomically(files.url(u"out.txt"_s), text.value()));

    EXPECT_TRUE(files.read(u"out.txt"_s) == bytes);
}

TEST(WriteAtomically, ALineOf5MegabytesComesBackAsItWas)
{
    const TemporaryFiles files{{u"in.txt"_s, QByteArray(5 * 1024 * 1024, 'x')}};

    const Result<ChunkedText> text = readText(files.url(u"in.txt"_s));
    ASSERT_TRUE(text);
    ASSERT_TRUE(writeTextAtomically(files.url(u"out.txt"_s), text.value()));

    EXPECT_TRUE(files.read(u"out.txt"_s) == files.read(u"in.txt"_s));
}

TEST(ReadBytes, ReadsAnEmptyFile)
{
    const TemporaryFiles files{{u"a.md"_s, ""}};

    const Result<QByteArray> bytes = readBytes(files.url(u"a.md"_s));

    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes.value().size(), 0);
}

TEST(ReadBytes, GivesNoFileOfMoreThanTheLimit)
{
    const TemporaryFiles files{{u"a.md"_s, "four"}};
    EXPECT_EQ(readBytes(files.url(u"a.md"_s), 4).value(), "four");
    EXPECT_EQ(readBytes(files.url(u"a.md"_s), 3).failure(),
              (Failure{FailureKind::NotReadable, u"The file is larger than 3 bytes."_s}));
    // It says that it is empty, and is not.
    EXPECT_EQ(readBytes(FileURL(u"/proc/self/status"_s), 0).failure().kind, FailureKind::NotReadable);
}

TEST(ReadBytes, ReadsAFileThatSaysItIsEmpty)
{
    // Files of the kernel have no size until they are read.
    const Result<QByteArray> bytes = readBytes(FileURL(u"/proc/self/status"_s));

    ASSERT_TRUE(bytes);
    EXPECT_TRUE(bytes.value().startsWith("Name:"));
}

TEST(SameFile, IsWhatLinksAndOtherSpellingsLeadTo)
{
    const TemporaryFiles files{{u"folder/a.md"_s, "a"}, {u"b.md"_s, "a"}};
    const FileURL a = files.url(u"folder/a.md"_s);
    ASSERT_EQ(symlink("folder/a.md", encoded(files.url(u"symbolic.md"_s)).constData()), 0);
    ASSERT_EQ(link(encoded(a).constData(), encoded(files.url(u"hard.md"_s)).constData()), 0);

    EXPECT_TRUE(isSameFile(a, a));
    EXPECT_TRUE(isSameFile(a, files.url(u"folder/../folder/./a.md"_s)));
    EXPECT_TRUE(isSameFile(a, files.url(u"symbolic.md"_s)));
    EXPECT_TRUE(isSameFile(files.url(u"symbolic.md"_s), files.url(u"hard.md"_s)));
    EXPECT_FALSE(isSameFile(a, files.url(u"b.md"_s))) << "the same bytes are not the same file";
    EXPECT_FALSE(isSameFile(a, files.url(u"missing.md"_s)));
    EXPECT_FALSE(isSameFile(files.url(u"missing.md"_s), files.url(u"missing.md"_s)));
}

} // namespace Tessaline
