#include "tests/support/SmallDisk.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/mount.h>

namespace Tessaline {

SmallDisk::SmallDisk()
{
    const QByteArray options = "size=" + QByteArray::number(kSize);
    m_isMounted = mount("tmpfs", QFile::encodeName(m_folder.path()).constData(), "tmpfs", 0, options.constData()) == 0;
}

SmallDisk::~SmallDisk()
{
    if (m_isMounted)
        umount2(QFile::encodeName(m_folder.path()).constData(), MNT_DETACH);
}

FileURL SmallDisk::url(const QString &name) const
{
    return FileURL(m_folder.filePath(name));
}

void SmallDisk::write(const QString &name, const QByteArray &bytes) const
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("The test cannot write %s", qPrintable(file.fileName()));
}

QByteArray SmallDisk::read(const QString &name) const
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList SmallDisk::names() const
{
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void SmallDisk::makeReadOnly()
{
    if (mount("tmpfs", QFile::encodeName(m_folder.path()).constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        qFatal("The test cannot make its disk read-only");
}

} // namespace Tessaline
