#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QTemporaryDir>

namespace Tessaline {

/// A disk of its own for one test: a mounted file system in memory, which can fill up or be made read-only. Mounting
/// needs root and may be refused all the same (in some containers); a test that uses this has a twin that does not.
class SmallDisk
{
public:
    static constexpr int kSize = 64 * 1024; // bytes

    SmallDisk();
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isMounted() const { return m_isMounted; }
    FileURL url(const QString &name) const;
    /// Writes the file by ordinary means.
    void write(const QString &name, const QByteArray &bytes) const;
    QByteArray read(const QString &name) const;
    QStringList names() const; // hidden ones too
    void makeReadOnly();

private:
    QTemporaryDir m_folder;
    bool m_isMounted = false;
};

} // namespace Tessaline
