#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/FileURL.h"
#include "foundation/Result.h"

#include <QtCore/QByteArray>

namespace Tessaline {

constexpr qsizetype kLargestFile = qsizetype(1)
                                   << 30; // bytes; a file is held in memory, more than once while it is read

/// Reads the whole file. Fails with NotFound or NotReadable (which a folder is, a device, and a file of more than
/// `largest` bytes, which is not read to its end). Blocks; safe from any thread.
Result<QByteArray> readBytes(const FileURL &url, qsizetype largest = kLargestFile);

/// Replaces the file at `url` by these bytes so that a crash at any moment leaves the old file or the new one, whole: a
/// new file in the same folder, flushed to the disk, renamed over the old one, and the folder flushed.
///
/// An existing file keeps its permission bits (and its owner where the process may set it). A symbolic link stays a
/// link and its target is written. A missing file is made with the user's default permissions, a missing folder is not.
/// Fails with NotFound (no such folder), NotWritable or NoSpace; the old file is then untouched and nothing is left
/// beside it. A crash leaves nothing beside it either, but for the moment of the renaming, on file systems that know
/// files without a name; elsewhere it may leave a hidden file whose name begins with ".~". Blocks; safe from any
/// thread.
Result<void> writeBytesAtomically(const FileURL &url, QByteArrayView bytes);

/// The same for a text, as UTF-8 without an added byte order mark; line ends stay as they are in the text.
Result<void> writeTextAtomically(const FileURL &url, const ChunkedText &text);

/// Reads the whole file as strict UTF-8 (see ChunkedText::fromUtf8). Blocks; safe from any thread.
Result<ChunkedText> readText(const FileURL &url);

/// Whether both are one file, reached by two names: through symbolic or hard links, or by another spelling of the path.
/// False if either is not there. Safe from any thread.
bool isSameFile(const FileURL &left, const FileURL &right);

/// The disk as the document store sees it, so that a test can stand in for a slow, full or failing one. Called from
/// several threads at once.
class FileAccess
{
public:
    virtual ~FileAccess() = default;
    virtual Result<ChunkedText> readText(const FileURL &url) = 0;
    virtual Result<void> writeText(const FileURL &url, const ChunkedText &text) = 0;
    virtual bool isSameFile(const FileURL &left, const FileURL &right) = 0;
};

/// The real disk.
class DiskAccess final : public FileAccess
{
public:
    Result<ChunkedText> readText(const FileURL &url) override { return Tessaline::readText(url); }
    Result<void> writeText(const FileURL &url, const ChunkedText &text) override
    {
        return writeTextAtomically(url, text);
    }
    bool isSameFile(const FileURL &left, const FileURL &right) override { return Tessaline::isSameFile(left, right); }
};

} // namespace Tessaline
