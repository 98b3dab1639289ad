#include "tests/support/TemporaryFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Tessaline {

TemporaryFiles::TemporaryFiles(std::initializer_list<std::pair<QString, QByteArray>> files)
{
    for (const auto &[name, bytes] : files)
        write(name, bytes);
}

FileURL TemporaryFiles::folder() const
{
    return FileURL(m_folder.path());
}

FileURL TemporaryFiles::url(const QString &name) const
{
    return FileURL(m_folder.filePath(name));
}

void TemporaryFiles::write(const QString &name, const QByteArray &bytes) const
{
    const QString path = m_folder.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("The test cannot write %s", qPrintable(path));
}

void TemporaryFiles::makeFolder(const QString &name) const
{
    QDir().mkpath(m_folder.filePath(name));
}

QByteArray TemporaryFiles::read(const QString &name) const
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TemporaryFiles::exists(const QString &name) const
{
    return QFileInfo::exists(m_folder.filePath(name));
}

} // namespace Tessaline
