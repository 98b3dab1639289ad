#include "foundation/PrivateFiles.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/WithoutPrivileges.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

mode_t modeOf(const FileURL &url)
{
    struct stat status = {};
    return stat(QFile::encodeName(url.path()).constData(), &status) == 0 ? status.st_mode & ALLPERMS : 0;
}

/// Runs the test with this file mode mask, and restores the old one.
class FileModeMask
{
public:
    explicit FileModeMask(mode_t mask) : m_old(umask(mask)) {}
    ~FileModeMask() { umask(m_old); }
    FileModeMask(const FileModeMask &) = delete;
    FileModeMask &operator=(const FileModeMask &) = delete;

private:
    mode_t m_old;
};

} // namespace

TEST(PrivateFiles, FoldersAreMadeWithTheirParentsAndForTheirUserAlone)
{
    const FileModeMask mask(0);
    const TemporaryFiles files;

    EXPECT_TRUE(makePrivateFolder(files.url(u"a/b/c"_s)));

    EXPECT_EQ(modeOf(files.url(u"a"_s)), 0700u);
    EXPECT_EQ(modeOf(files.url(u"a/b"_s)), 0700u);
    EXPECT_EQ(modeOf(files.url(u"a/b/c"_s)), 0700u);
}

TEST(PrivateFiles, AFolderThatIsThereKeepsItsMode)
{
    const TemporaryFiles files;
    files.makeFolder(u"open"_s);
    ASSERT_EQ(chmod(QFile::encodeName(files.url(u"open"_s).path()).constData(), 0750), 0);

    EXPECT_TRUE(makePrivateFolder(files.url(u"open"_s)));
    EXPECT_TRUE(makePrivateFolder(files.url(u"open/inner"_s)));

    EXPECT_EQ(modeOf(files.url(u"open"_s)), 0750u);
    EXPECT_EQ(modeOf(files.url(u"open/inner"_s)), 0700u);
}

TEST(PrivateFiles, AFolderWhosePlaceIsTakenByAFileIsNotMade)
{
    const TemporaryFiles files{{u"taken"_s, "x"}};

    EXPECT_FALSE(makePrivateFolder(files.url(u"taken"_s)));
    EXPECT_FALSE(makePrivateFolder(files.url(u"taken/inner"_s)));
    EXPECT_FALSE(makePrivateFolder(FileURL(files.url(u"zero"_s).path() + QChar(u'\0'))));
    EXPECT_EQ(files.read(u"taken"_s), "x");
    EXPECT_FALSE(files.exists(u"zero"_s));
}

TEST(PrivateFiles, AFileIsForItsUserAloneWhateverTheMaskAllowsAndWhateverItWas)
{
    const FileModeMask mask(0);
    const TemporaryFiles files{{u"old"_s, "for everybody"}};
    ASSERT_EQ(modeOf(files.url(u"old"_s)), 0666u);

    EXPECT_TRUE(writePrivateFile(files.url(u"new"_s), "one"));
    EXPECT_TRUE(writePrivateFile(files.url(u"old"_s), "two"));

    EXPECT_EQ(modeOf(files.url(u"new"_s)), 0600u);
    EXPECT_EQ(modeOf(files.url(u"old"_s)), 0600u);
    EXPECT_EQ(files.read(u"new"_s), "one");
    EXPECT_EQ(files.read(u"old"_s), "two");
}

TEST(PrivateFiles, WhatIsAddedStandsAtTheEndOfAFileForItsUserAlone)
{
    const FileModeMask mask(0);
    const TemporaryFiles files{{u"old"_s, "for everybody"}};

    for (const QString &name : {u"new"_s, u"old"_s}) {
        EXPECT_TRUE(appendToPrivateFile(files.url(name), "; one"));
        EXPECT_TRUE(appendToPrivateFile(files.url(name), "; two"));
        EXPECT_EQ(modeOf(files.url(name)), 0600u) << name.toStdString();
    }

    EXPECT_EQ(files.read(u"new"_s), "; one; two");
    EXPECT_EQ(files.read(u"old"_s), "for everybody; one; two");
}

TEST(PrivateFiles, AFileIsReplacedInPlaceByALongerAndByAShorterContent)
{
    const TemporaryFiles files{{u"file"_s, "short"}};
    struct stat before = {};
    ASSERT_EQ(stat(QFile::encodeName(files.url(u"file"_s).path()).constData(), &before), 0);

    EXPECT_TRUE(writePrivateFile(files.url(u"file"_s), QByteArray(100'000, 'x')));
    EXPECT_EQ(files.read(u"file"_s), QByteArray(100'000, 'x'));
    EXPECT_TRUE(writePrivateFile(files.url(u"file"_s), "y"));
    EXPECT_EQ(files.read(u"file"_s), "y");
    EXPECT_TRUE(writePrivateFile(files.url(u"file"_s), QByteArrayView()));
    EXPECT_EQ(files.read(u"file"_s), "");

    struct stat after = {};
    ASSERT_EQ(stat(QFile::encodeName(files.url(u"file"_s).path()).constData(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST(PrivateFiles, AWriteWithoutEnoughSpaceLeavesTheFileAsItWas)
{
    const TemporaryFiles files{{u"file"_s, "what was there"}};
    letEverybodyIn(QFile::encodeName(files.folder().path()).constData());
    ASSERT_EQ(chown(QFile::encodeName(files.url(u"file"_s).path()).constData(), geteuid() == 0 ? 65534 : geteuid(), -1),
              0);

    // A limit on the size of files stands for the end of the disk, and needs no disk of its own.
    const int answer = runWithoutPrivileges([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 2;
        return writePrivateFile(files.url(u"file"_s), QByteArray(2000, 'x')) ? 1 : 0;
    });

    EXPECT_EQ(answer, 0) << "0: it failed as it should, 1: it succeeded, 2: there was no limit, -1: it crashed";
    EXPECT_EQ(files.read(u"file"_s), "what was there");
}

TEST(PrivateFiles, AFileThatMayNotBeWrittenStaysAsItWas)
{
    const TemporaryFiles files{{u"file"_s, "what was there"}};
    letEverybodyIn(QFile::encodeName(files.folder().path()).constData());
    ASSERT_EQ(chmod(QFile::encodeName(files.url(u"file"_s).path()).constData(), 0444), 0);

    EXPECT_EQ(runWithoutPrivileges([&] { return writePrivateFile(files.url(u"file"_s), "x") ? 1 : 0; }), 0);
    EXPECT_EQ(files.read(u"file"_s), "what was there");
}

TEST(PrivateFiles, OnlyAnOrdinaryFileIsWrittenAndAPipeNotWaitedFor)
{
    const TemporaryFiles files;
    files.makeFolder(u"folder"_s);
    ASSERT_EQ(mkfifo(QFile::encodeName(files.url(u"pipe"_s).path()).constData(), 0600), 0);

    for (const auto write : {writePrivateFile, appendToPrivateFile}) {
        EXPECT_FALSE(write(files.url(u"folder"_s), "x"));
        EXPECT_FALSE(write(files.url(u"pipe"_s), "x"));
        EXPECT_FALSE(write(FileURL(u"/dev/null"_s), "x"));
        EXPECT_FALSE(write(files.url(u"missing/file"_s), "x"));
    }
}

} // namespace Tessaline
