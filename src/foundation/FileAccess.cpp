#include "foundation/FileAccess.h"

#include "foundation/Descriptor.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringEncoder>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// One sentence for what the system answered to a read or a write.
Failure failureFromErrno(int error, FailureKind otherwise)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return {FailureKind::NotFound, otherwise == FailureKind::NotWritable ? u"The folder does not exist."_s
                                                                             : u"The file does not exist."_s};
    case EACCES:
    case EPERM:
        return {otherwise, otherwise == FailureKind::NotWritable ? u"You do not have permission to write there."_s
                                                                 : u"You do not have permission to read it."_s};
    case EROFS:
        return {otherwise, u"The disk can only be read."_s};
    case ENOSPC:
    case EDQUOT:
        return {FailureKind::NoSpace, u"There is no space left on the disk."_s};
    case EISDIR:
        return {otherwise, u"There is a folder of that name."_s};
    case ENAMETOOLONG:
        return {otherwise, u"The name is too long."_s};
    case ELOOP:
        return {otherwise, u"The link leads back to itself."_s};
    default:
        return {otherwise, u"The system answered: %1."_s.arg(qt_error_string(error))};
    }
}

/// The path as the system takes it. Fails for a name with a zero in it, of which the system would see only what stands
/// before: no file has such a name.
Result<QByteArray> systemPath(const FileURL &url, FailureKind otherwise)
{
    QByteArray path = QFile::encodeName(url.path());
    if (path.contains('\0'))
        return failureFromErrno(ENOENT, otherwise);
    return path;
}

/// Where a write to `path` really goes: the end of a chain of symbolic links, which need not exist.
Result<QByteArray> writeTarget(QByteArray path)
{
    constexpr int kMostLinks = 40; // what the kernel follows too
    for (int i = 0; i < kMostLinks; ++i) {
        std::array<char, PATH_MAX> buffer;
        const ssize_t length = readlink(path.constData(), buffer.data(), buffer.size());
        if (length < 0)
            return path; // not a link, or not there: open and rename will tell
        const QByteArray target(buffer.data(), length);
        path = target.startsWith('/') ? target : path.first(path.lastIndexOf('/') + 1) + target;
    }
    return failureFromErrno(ELOOP, FailureKind::NotWritable);
}

/// One atomic replacement. The new file has no name while it is written, where the file system can do that, so that a
/// crash leaves nothing behind; it gets a name of its own and takes the target's place in `commit`. Whatever is not
/// committed disappears again.
class Replacement
{
public:
    explicit Replacement(QByteArray target)
        : m_target(std::move(target)), m_folder(m_target.first(m_target.lastIndexOf('/') + 1))
    {}

    ~Replacement()
    {
        if (!m_temporary.isEmpty())
            unlink(m_temporary.constData());
    }
    Replacement(const Replacement &) = delete;
    Replacement &operator=(const Replacement &) = delete;

    Result<void> open()
    {
        struct stat old = {};
        const bool replaces = stat(m_target.constData(), &old) == 0;
        if (replaces && S_ISDIR(old.st_mode))
            return failureFromErrno(EISDIR, FailureKind::NotWritable);
        if (replaces && !S_ISREG(old.st_mode))
            return Failure{FailureKind::NotWritable, u"It is not an ordinary file."_s};
        // A file that its owner made read-only is left alone, although a rename would get past its permission bits.
        if (replaces && faccessat(AT_FDCWD, m_target.constData(), W_OK, AT_EACCESS) != 0)
            return failureFromErrno(errno, FailureKind::NotWritable);

        // 0600 until it is complete: nobody else may look into a private file meanwhile.
        const mode_t mode = replaces ? 0600 : 0666;
        if (!makeUnnamed(mode) && !makeNamed(mode))
            return failureFromErrno(errno, FailureKind::NotWritable);
        if (replaces) {
            // Only root can give a file away; for others it fails.
            if (fchown(fd(), old.st_uid, old.st_gid) != 0 && fchown(fd(), static_cast<uid_t>(-1), old.st_gid) != 0)
                errno = 0;
            m_permissions = old.st_mode & 07777;
        }
        return {};
    }

    Result<void> write(QByteArrayView bytes)
    {
        while (!bytes.isEmpty()) {
            const ssize_t written = ::write(fd(), bytes.data(), static_cast<size_t>(bytes.size()));
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return failureFromErrno(errno, FailureKind::NotWritable);
            bytes = bytes.sliced(written);
        }
        return {};
    }

    Result<void> commit()
    {
        // Not before the last write: a change of the owner clears permission bits, and so does a write by an ordinary
        // user.
        if (m_permissions && fchmod(fd(), *m_permissions) != 0)
            return failureFromErrno(errno, FailureKind::NotWritable);
        // Some file systems report a full disk only when they are flushed, or when the file is closed.
        if (fsync(fd()) != 0 || !ensureNamed() || m_file.close() != 0)
            return failureFromErrno(errno, FailureKind::NotWritable);
        if (rename(m_temporary.constData(), m_target.constData()) != 0)
            return failureFromErrno(errno, FailureKind::NotWritable);
        m_temporary.clear();
        // The new content is in place; a folder that cannot be flushed only delays when a power cut would keep it.
        const Descriptor folder(::open(m_folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.isOpen())
            fsync(folder.number());
        return {};
    }

private:
    int fd() const { return m_file.number(); }

    /// False if the file system cannot, or if it could not be given a name later.
    bool makeUnnamed(mode_t mode)
    {
#ifdef O_TMPFILE
        m_file = Descriptor(::open(m_folder.constData(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
        return m_file.isOpen() && faccessat(AT_FDCWD, ownPath().constData(), F_OK, 0) == 0;
#else
        Q_UNUSED(mode);
        return false;
#endif
    }

    bool makeNamed(mode_t mode)
    {
        return withFreshName([this, mode](const char *path) {
            m_file = Descriptor(::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
            return m_file.isOpen();
        });
    }

    bool ensureNamed()
    {
        return !m_temporary.isEmpty() || withFreshName([this](const char *path) {
            return linkat(AT_FDCWD, ownPath().constData(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0;
        });
    }

    /// The open file by a path, which works without any name of its own.
    QByteArray ownPath() const
    {
        return "/proc/self/fd/" + QByteArray::number(fd());
    }

    /// Calls `make` with names beside the target until it finds one that is not taken. Otherwise `errno` says why not.
    template <class Make>
    bool withFreshName(Make make)
    {
        constexpr int kMostAttempts = 100;
        for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
            const QByteArray path = m_folder + ".~" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
            if (make(path.constData())) {
                m_temporary = path;
                return true;
            }
            if (errno != EEXIST)
                return false;
        }
        return false;
    }

    QByteArray m_target;
    QByteArray m_folder;    // ends in a slash
    QByteArray m_temporary; // empty while the new file has no name
    Descriptor m_file;
    std::optional<mode_t> m_permissions; // of the file that is replaced
};

/// Runs `writeContent(replacement)` between the opening and the commit of one replacement of `url`.
template <class WriteContent>
Result<void> replaceFile(const FileURL &url, WriteContent writeContent)
{
    const Result<QByteArray> path = systemPath(url, FailureKind::NotWritable);
    if (!path)
        return path.failure();
    const Result<QByteArray> target = writeTarget(path.value());
    if (!target)
        return target.failure();
    Replacement replacement(target.value());
    if (const Result<void> opened = replacement.open(); !opened)
        return opened;
    if (const Result<void> written = writeContent(replacement); !written)
        return written;
    return replacement.commit();
}

} // namespace

Result<QByteArray> readBytes(const FileURL &url, qsizetype largest)
{
    const Result<QByteArray> path = systemPath(url, FailureKind::NotReadable);
    if (!path)
        return path.failure();
    const Descriptor file(::open(path.value().constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen())
        return failureFromErrno(errno, FailureKind::NotReadable);
    struct stat status = {};
    if (fstat(file.number(), &status) != 0)
        return failureFromErrno(errno, FailureKind::NotReadable);
    if (S_ISDIR(status.st_mode))
        return Failure{FailureKind::NotReadable, u"It is a folder."_s};
    if (!S_ISREG(status.st_mode))
        return Failure{FailureKind::NotReadable, u"It is not an ordinary file."_s};

    const Failure tooLarge{FailureKind::NotReadable, largest == kLargestFile
                                                         ? u"The file is larger than 1 GB."_s
                                                         : u"The file is larger than %1 bytes."_s.arg(largest)};
    if (status.st_size > largest)
        return tooLarge;

    // The size is a first guess only: the file may grow or shrink while it is read.
    QByteArray bytes(static_cast<qsizetype>(status.st_size) + 1, Qt::Uninitialized);
    qsizetype length = 0;
    for (;;) {
        if (length > largest)
            return tooLarge;
        if (length == bytes.size())
            bytes.resize(bytes.size() * 2);
        const ssize_t count = ::read(file.number(), bytes.data() + length, static_cast<size_t>(bytes.size() - length));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failureFromErrno(errno, FailureKind::NotReadable);
        if (count == 0)
            break;
        length += count;
    }
    bytes.truncate(length);
    return bytes;
}

Result<void> writeBytesAtomically(const FileURL &url, QByteArrayView bytes)
{
    return replaceFile(url, [bytes](Replacement &replacement) { return replacement.write(bytes); });
}

Result<void> writeTextAtomically(const FileURL &url, const ChunkedText &text)
{
    return replaceFile(url, [&text](Replacement &replacement) -> Result<void> {
        QStringEncoder encode(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
        for (const QString &chunk : text.chunks()) {
            const QByteArray bytes = encode(chunk);
            if (const Result<void> written = replacement.write(bytes); !written)
                return written;
        }
        return {};
    });
}

bool isSameFile(const FileURL &left, const FileURL &right)
{
    struct stat first = {};
    struct stat second = {};
    const auto look = [](const FileURL &url, struct stat &status) {
        const Result<QByteArray> path = systemPath(url, FailureKind::NotReadable);
        return path && stat(path.value().constData(), &status) == 0;
    };
    return look(left, first) && look(right, second) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

Result<ChunkedText> readText(const FileURL &url)
{
    const Result<QByteArray> bytes = readBytes(url);
    if (!bytes)
        return bytes.failure();
    return ChunkedText::fromUtf8(bytes.value());
}

} // namespace Tessaline
