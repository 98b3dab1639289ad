#pragma once

#include <QtCore/QHashFunctions>
#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Tessaline {

/// A file or folder by its absolute path. Two spellings of one path ("/a/./b", "/a/b") are two values until both are
/// `standardized()`; links are never resolved. An empty one names nothing; where a file may be absent the type is
/// `std::optional<FileURL>`.
class FileURL
{
public:
    FileURL() = default;
    /// Takes the path as it stands, but for slashes at its end (the root keeps its one).
    explicit FileURL(QString path);

    const QString &path() const { return m_path; }
    bool isEmpty() const { return m_path.isEmpty(); }

    QString lastPathComponent() const; // "/" for the root
    /// What follows the last dot of the name: "md" for "a.b.md"; empty for "a", "a." and ".profile".
    QString pathExtension() const { return pathExtensionOf(m_path).toString(); }
    static QStringView pathExtensionOf(QStringView path); // the same for a bare path or name; points into it
    FileURL deletingLastPathComponent() const;
    FileURL appending(QStringView component) const;
    /// Without ".", ".." and doubled slashes; decided on the text alone, the disk is not asked. Nothing lies above the
    /// root.
    FileURL standardized() const;

    friend bool operator==(const FileURL &, const FileURL &) = default;
    friend size_t qHash(const FileURL &url, size_t seed = 0) { return qHash(url.m_path, seed); }

private:
    QString m_path;
};

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::FileURL)
