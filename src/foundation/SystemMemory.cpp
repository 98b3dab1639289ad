#include "foundation/SystemMemory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <unistd.h>

namespace Tessaline {

using namespace Qt::StringLiterals;

quint64 physicalMemoryBytes()
{
    const quint64 usable = static_cast<quint64>(sysconf(_SC_PHYS_PAGES)) * static_cast<quint64>(sysconf(_SC_PAGESIZE));
    return physicalMemoryBytes(usable, FileURL(u"/sys/devices/system/memory"_s));
}

quint64 physicalMemoryBytes(quint64 usableBytes, const FileURL &blocks)
{
    QFile size(blocks.appending(u"block_size_bytes").path());
    if (!size.open(QIODevice::ReadOnly))
        return usableBytes;
    const quint64 blockSize = size.readAll().trimmed().toULongLong(nullptr, 16);
    const auto count = static_cast<quint64>(QDir(blocks.path()).entryList({u"memory*"_s}, QDir::Dirs).size());
    const quint64 installed = blockSize * count;
    return installed >= usableBytes && installed <= usableBytes + usableBytes / 8 ? installed : usableBytes;
}

} // namespace Tessaline
