#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryDir>

#include <initializer_list>
#include <ostream>
#include <utility>

namespace Tessaline {

/// A folder of its own for one test, removed at the end.
class TemporaryFiles
{
public:
    TemporaryFiles() = default;
    /// Writes the given files; folders in their names are made.
    TemporaryFiles(std::initializer_list<std::pair<QString, QByteArray>> files);

    FileURL folder() const;
    FileURL url(const QString &name) const;
    void write(const QString &name, const QByteArray &bytes) const;
    void makeFolder(const QString &name) const;
    QByteArray read(const QString &name) const; // a null array if there is no such file
    bool exists(const QString &name) const;

private:
    QTemporaryDir m_folder;
};

/// Makes failed comparisons readable.
inline void PrintTo(const FileURL &url, std::ostream *out)
{
    *out << '"' << url.path().toStdString() << '"';
}

} // namespace Tessaline

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE
