#include "foundation/FileURL.h"

#include <QtCore/QDir>

namespace Tessaline {

FileURL::FileURL(QString path) : m_path(std::move(path))
{
    qsizetype length = m_path.size();
    while (length > 1 && m_path.at(length - 1) == u'/')
        --length;
    m_path.truncate(length);
}

QString FileURL::lastPathComponent() const
{
    if (m_path.size() <= 1)
        return m_path;
    return m_path.sliced(m_path.lastIndexOf(u'/') + 1);
}

QStringView FileURL::pathExtensionOf(QStringView path)
{
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot > name ? path.sliced(dot + 1) : QStringView();
}

FileURL FileURL::deletingLastPathComponent() const
{
    const qsizetype slash = m_path.lastIndexOf(u'/');
    FileURL parent;
    parent.m_path = slash > 0 ? m_path.first(slash) : m_path.first(slash + 1);
    return parent;
}

FileURL FileURL::appending(QStringView component) const
{
    FileURL child;
    child.m_path.reserve(m_path.size() + 1 + component.size());
    child.m_path.append(m_path);
    if (!m_path.endsWith(u'/'))
        child.m_path.append(u'/');
    child.m_path.append(component);
    return child;
}

FileURL FileURL::standardized() const
{
    QString path = QDir::cleanPath(m_path);
    // Qt keeps the ".." that lead above the root; the system stays at the root.
    while (path.startsWith(QStringLiteral("/../")))
        path.remove(0, 3);
    return FileURL(path == QStringLiteral("/..") ? QStringLiteral("/") : path);
}

} // namespace Tessaline
