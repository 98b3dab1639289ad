#include "foundation/FileAccess.h"

#include "tests/support/Printers.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/WithoutPrivileges.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QByteArray encoded(const FileURL &url)
{
    return QFile::encodeName(url.path());
}

/// Everything in the folder, hidden files too.
QStringList namesIn(const FileURL &folder)
{
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

const Failure kNoFolder{FailureKind::NotFound, u"The folder does not exist."_s};
const Failure kNoFile{FailureKind::NotFound, u"The file does not exist."_s};
const Failure kMayNotWrite{FailureKind::NotWritable, u"You do not have permission to write there."_s};
const Failure kMayNotRead{FailureKind::NotReadable, u"You do not have permission to read it."_s};
const Failure kNoSpace{FailureKind::NoSpace, u"There is no space left on the disk."_s};

/// Runs `body` without privileges; success and the expected failure are told apart there, since a value cannot come
/// back.
template <class Operation>
void expectFailsWithoutPrivileges(const Failure &expected, Operation operation)
{
    const int answer = runWithoutPrivileges([&] {
        const auto result = operation();
        if (result)
            return 1;
        return result.failure() == expected ? 0 : 2;
    });
    EXPECT_EQ(answer, 0) << "0: it failed as it should, 1: it succeeded, 2: it failed in another way, -1: it crashed";
}

void allow(const TemporaryFiles &files, const QString &name, mode_t mode)
{
    ASSERT_EQ(chmod(encoded(files.url(name)).constData(), mode), 0);
}

/// Limits the size of the files that this process can write, so that a write stops half-way.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before = {};
    void (*m_handler)(int) = nullptr;
};

} // namespace

// Writing

TEST(WriteFailure, AMissingFolderIsNotMade)
{
    const TemporaryFiles files;

    const Result<void> result = writeBytesAtomically(files.url(u"gone/a.md"_s), "text");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), kNoFolder);
    EXPECT_FALSE(files.exists(u"gone"_s));
}

TEST(WriteFailure, AFileInThePlaceOfTheFolder)
{
    const TemporaryFiles files{{u"file"_s, "x"}};

    const Result<void> result = writeBytesAtomically(files.url(u"file/a.md"_s), "text");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), kNoFolder);
}

TEST(WriteFailure, AFolderIsNotReplaced)
{
    const TemporaryFiles files{{u"a.md/inside.md"_s, "x"}};

    const Result<void> result = writeBytesAtomically(files.url(u"a.md"_s), "text");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), (Failure{FailureKind::NotWritable, u"There is a folder of that name."_s}));
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
    EXPECT_EQ(files.read(u"a.md/inside.md"_s), "x");
}

TEST(WriteFailure, ANamedPipeIsNotReplaced)
{
    const TemporaryFiles files;
    ASSERT_EQ(mkfifo(encoded(files.url(u"pipe.md"_s)).constData(), 0600), 0);

    const Result<void> result = writeBytesAtomically(files.url(u"pipe.md"_s), "text");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), (Failure{FailureKind::NotWritable, u"It is not an ordinary file."_s}));
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"pipe.md"_s});
}

TEST(WriteFailure, ANameThatIsTooLong)
{
    const TemporaryFiles files;

    const Result<void> result = writeBytesAtomically(files.url(QString(300, u'n')), "text");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), (Failure{FailureKind::NotWritable, u"The name is too long."_s}));
    EXPECT_EQ(namesIn(files.folder()), QStringList());
}

TEST(WriteFailure, AReadOnlyFileIsLeftAlone)
{
    const TemporaryFiles files{{u"a.md"_s, "old"}};
    letEverybodyIn(encoded(files.folder()).constData());
    ASSERT_EQ(chmod(encoded(files.folder()).constData(), 0777), 0); // a rename would get past the file's own bits
    allow(files, u"a.md"_s, 0444);

    expectFailsWithoutPrivileges(kMayNotWrite, [&] { return writeBytesAtomically(files.url(u"a.md"_s), "new"); });

    EXPECT_EQ(files.read(u"a.md"_s), "old");
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteFailure, AFolderWithoutWritePermission)
{
    const TemporaryFiles files{{u"a.md"_s, "old"}};
    allow(files, u"a.md"_s, 0666);
    ASSERT_EQ(chmod(encoded(files.folder()).constData(), 0555), 0);

    expectFailsWithoutPrivileges(kMayNotWrite, [&] { return writeBytesAtomically(files.url(u"a.md"_s), "new"); });
    expectFailsWithoutPrivileges(kMayNotWrite, [&] { return writeBytesAtomically(files.url(u"new.md"_s), "new"); });

    EXPECT_EQ(files.read(u"a.md"_s), "old");
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteFailure, AFolderThatCannotBeEntered)
{
    const TemporaryFiles files{{u"inside/a.md"_s, "old"}};
    letEverybodyIn(encoded(files.folder()).constData());
    allow(files, u"inside"_s, 0600);

    expectFailsWithoutPrivileges(kMayNotWrite,
                                 [&] { return writeBytesAtomically(files.url(u"inside/a.md"_s), "new"); });

    allow(files, u"inside"_s, 0700); // or an ordinary user could not read it either
    EXPECT_EQ(files.read(u"inside/a.md"_s), "old");
}

TEST(WriteFailure, AFullDiskLeavesTheOldFileAndNothingElse)
{
    const SmallDisk disk;
    if (!disk.isMounted())
        GTEST_SKIP()
            << "Mounting is refused here; AWriteThatStopsHalfWay... goes the same way without a disk of its own.";
    disk.write(u"a.md"_s, "old");

    const Result<void> result = writeBytesAtomically(disk.url(u"a.md"_s), QByteArray(2 * SmallDisk::kSize, 'x'));

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), kNoSpace);
    EXPECT_EQ(disk.read(u"a.md"_s), "old");
    EXPECT_EQ(disk.names(), QStringList{u"a.md"_s});
    EXPECT_TRUE(writeBytesAtomically(disk.url(u"a.md"_s), "a text that fits")); // the space is free again
}

TEST(WriteFailure, ATextThatFillsTheDiskLeavesTheOldFileAndNothingElse)
{
    const SmallDisk disk;
    if (!disk.isMounted())
        GTEST_SKIP()
            << "Mounting is refused here; AWriteThatStopsHalfWay... goes the same way without a disk of its own.";
    disk.write(u"a.md"_s, "old");

    const ChunkedText text(QString(2 * SmallDisk::kSize, u'x'));
    const Result<void> result = writeTextAtomically(disk.url(u"a.md"_s), text);

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), kNoSpace);
    EXPECT_EQ(disk.read(u"a.md"_s), "old");
    EXPECT_EQ(disk.names(), QStringList{u"a.md"_s});
}

TEST(WriteFailure, ADiskThatCanOnlyBeRead)
{
    SmallDisk disk;
    if (!disk.isMounted())
        GTEST_SKIP() << "Mounting is refused here; AFolderWithoutWritePermission stands in.";
    disk.write(u"a.md"_s, "old");
    disk.makeReadOnly();

    const Result<void> result = writeBytesAtomically(disk.url(u"a.md"_s), "new");

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure(), (Failure{FailureKind::NotWritable, u"The disk can only be read."_s}));
    EXPECT_EQ(disk.read(u"a.md"_s), "old");
}

TEST(WriteFailure, AWriteThatStopsHalfWayLeavesTheOldFileAndNothingElse)
{
    const TemporaryFiles files{{u"a.md"_s, "old"}};
    Result<void> result;
    {
        const FileSizeLimit limit(64 * 1024);
        result = writeTextAtomically(files.url(u"a.md"_s), ChunkedText(QString(1024 * 1024, u'x')));
    }

    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure().kind, FailureKind::NotWritable);
    EXPECT_EQ(files.read(u"a.md"_s), "old");
    EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
}

TEST(WriteFailure, ACrashInTheMiddleOfAWriteLeavesTheOldFileAndNothingElse)
{
    const TemporaryFiles files{{u"a.md"_s, "old"}};
    const int unnamed = open(encoded(files.folder()).constData(), O_WRONLY | O_TMPFILE, 0600);
    const bool diskKnowsUnnamedFiles = unnamed >= 0;
    close(unnamed);

    // The kernel ends the child at the byte where the limit is, without any clean-up.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit noCore{0, 0};
        const rlimit small{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_CORE, &noCore);
        setrlimit(RLIMIT_FSIZE, &small);
        std::signal(SIGXFSZ, SIG_DFL);
        const QByteArray bytes(1024 * 1024, 'x');
        (void)writeBytesAtomically(files.url(u"a.md"_s), bytes);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);

    ASSERT_TRUE(WIFSIGNALED(status)) << "the child was to die while it wrote";
    EXPECT_EQ(files.read(u"a.md"_s), "old");
    if (diskKnowsUnnamedFiles) {
        EXPECT_EQ(namesIn(files.folder()), QStringList{u"a.md"_s});
    }
}

// Reading

TEST(WriteFailure, ANameWithAZeroIsNotThatOfTheFileWhoseNameEndsThere)
{
    const TemporaryFiles files{{u"a"_s, "text"}};

    EXPECT_EQ(writeBytesAtomically(files.url(u"a\0b.md"_s), "new").failure(), kNoFolder);
    EXPECT_EQ(files.read(u"a"_s), "text");
}

TEST(ReadFailure, AMissingFile)
{
    const TemporaryFiles files;

    const Result<ChunkedText> text = readText(files.url(u"missing.md"_s));

    ASSERT_FALSE(text);
    EXPECT_EQ(text.failure(), kNoFile);
}

TEST(ReadFailure, AFileInAMissingFolder)
{
    const TemporaryFiles files;

    EXPECT_EQ(readText(files.url(u"gone/missing.md"_s)).failure(), kNoFile);
}

TEST(ReadFailure, ADanglingLink)
{
    const TemporaryFiles files;
    ASSERT_EQ(symlink("missing.md", encoded(files.url(u"link.md"_s)).constData()), 0);

    EXPECT_EQ(readText(files.url(u"link.md"_s)).failure(), kNoFile);
}

TEST(ReadFailure, AFolder)
{
    const TemporaryFiles files{{u"a.md/inside.md"_s, "x"}};

    EXPECT_EQ(readText(files.url(u"a.md"_s)).failure(), (Failure{FailureKind::NotReadable, u"It is a folder."_s}));
}

TEST(ReadFailure, ANamedPipeIsNotWaitedFor)
{
    const TemporaryFiles files;
    ASSERT_EQ(mkfifo(encoded(files.url(u"pipe.md"_s)).constData(), 0600), 0);

    EXPECT_EQ(readText(files.url(u"pipe.md"_s)).failure(),
              (Failure{FailureKind::NotReadable, u"It is not an ordinary file."_s}));
}

TEST(ReadFailure, ADevice)
{
    EXPECT_EQ(readText(FileURL(u"/dev/zero"_s)).failure(),
              (Failure{FailureKind::NotReadable, u"It is not an ordinary file."_s}));
}

TEST(ReadFailure, ANameWithAZeroIsNotThatOfTheFileWhoseNameEndsThere)
{
    const TemporaryFiles files{{u"a"_s, "text"}};

    EXPECT_EQ(readText(files.url(u"a\0b.md"_s)).failure(), kNoFile);
}

TEST(ReadFailure, AFileWithoutReadPermission)
{
    const TemporaryFiles files{{u"a.md"_s, "secret"}};
    letEverybodyIn(encoded(files.folder()).constData());
    allow(files, u"a.md"_s, 0200);

    expectFailsWithoutPrivileges(kMayNotRead, [&] { return readText(files.url(u"a.md"_s)); });
}

TEST(ReadFailure, AFileThatIsLargerThanTheMemoryShouldHold)
{
    const TemporaryFiles files{{u"a.txt"_s, "x"}};
    ASSERT_EQ(truncate(encoded(files.url(u"a.txt"_s)).constData(), off_t(1) << 40), 0); // a hole, nothing on the disk

    EXPECT_EQ(readText(files.url(u"a.txt"_s)).failure(),
              (Failure{FailureKind::NotReadable, u"The file is larger than 1 GB."_s}));
}

TEST(ReadFailure, AFileInAnotherEncoding)
{
    const TemporaryFiles files{{u"a.txt"_s, "caf\xE9"}};

    EXPECT_EQ(readText(files.url(u"a.txt"_s)).failure(),
              (Failure{FailureKind::Malformed, u"The file is not text in UTF-8."_s}));
}

} // namespace Tessaline
