#include "foundation/PrivateFiles.h"

#include "foundation/Descriptor.h"

#include <QtCore/QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

constexpr mode_t kPrivateFile = S_IRUSR | S_IWUSR;
constexpr mode_t kPrivateFolder = S_IRWXU;

/// The path as the system takes it; empty for a name with a zero in it, of which the system would see only a part.
QByteArray systemPath(const FileURL &url)
{
    QByteArray path = QFile::encodeName(url.path());
    return path.contains('\0') ? QByteArray() : path;
}

bool isFolder(const QByteArray &path)
{
    struct stat status = {};
    return stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// The ordinary file of that name for writing, made if it is missing and private from here on. Not open where that
/// cannot be; without a wait where the name stands for a pipe.
Descriptor openPrivateFile(const FileURL &url, int flags)
{
    const QByteArray path = systemPath(url);
    if (path.isEmpty())
        return {};
    Descriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | flags, kPrivateFile));
    struct stat status = {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    if ((status.st_mode & ALLPERMS) != kPrivateFile && fchmod(file.number(), kPrivateFile) != 0)
        return {};
    return file;
}

/// Lets the file grow to `size`. False if there is no room; a file system that cannot tell counts as one that has it.
bool claimSpace(int file, off_t oldSize, off_t size)
{
    const int error = posix_fallocate(file, oldSize, size - oldSize);
    return error != ENOSPC && error != EDQUOT && error != EFBIG;
}

bool writeAll(int file, QByteArrayView bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file, bytes.data() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR)
            return false;
        written += count > 0 ? count : 0;
    }
    return true;
}

} // namespace

bool makePrivateFolder(const FileURL &url)
{
    const QByteArray path = systemPath(url);
    if (path.isEmpty() || isFolder(path))
        return !path.isEmpty();
    // The folders above first, from the top down; one that exists, or that another process makes meanwhile, is no
    // error.
    for (qsizetype slash = path.indexOf('/', 1); slash > 0; slash = path.indexOf('/', slash + 1))
        mkdir(path.first(slash).constData(), kPrivateFolder);
    mkdir(path.constData(), kPrivateFolder);
    return isFolder(path);
}

bool writePrivateFile(const FileURL &url, QByteArrayView bytes)
{
    const Descriptor file = openPrivateFile(url, 0);
    struct stat status = {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0)
        return false;

    // 1. The space is claimed before the first byte changes, so that a full disk leaves the file as it was.
    if (bytes.size() > status.st_size && !claimSpace(file.number(), status.st_size, bytes.size())) {
        Q_UNUSED(ftruncate(file.number(), status.st_size));
        return false;
    }

    // 2. The content, and off with what was longer.
    return writeAll(file.number(), bytes) && ftruncate(file.number(), bytes.size()) == 0;
}

bool appendToPrivateFile(const FileURL &url, QByteArrayView bytes)
{
    const Descriptor file = openPrivateFile(url, O_APPEND);
    return file.isOpen() && writeAll(file.number(), bytes);
}

} // namespace Tessaline
