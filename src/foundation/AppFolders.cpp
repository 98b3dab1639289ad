#include "foundation/AppFolders.h"

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>

namespace Tessaline {

AppFolders AppFolders::ofUser(const QString &identifier)
{
    const auto folder = [&identifier](QStandardPaths::StandardLocation location, QStringView inHome) {
        // A relative path in the environment is to be ignored, or the folder would change with the place of the start.
        const QString path = QStandardPaths::writableLocation(location);
        const FileURL parent = QDir::isAbsolutePath(path) ? FileURL(path) : FileURL(QDir::homePath()).appending(inHome);
        return parent.appending(identifier);
    };
    return {folder(QStandardPaths::GenericConfigLocation, u".config"),
            folder(QStandardPaths::GenericDataLocation, u".local/share"),
            folder(QStandardPaths::GenericCacheLocation, u".cache")};
}

} // namespace Tessaline
