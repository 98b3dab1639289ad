#include "Services/ServerAddress.h"

#include <QtCore/QString>

namespace Tessaline {

QUrl ServerAddress::url(QLatin1StringView path) const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(port);
    url.setPath(path);
    return url;
}

} // namespace Tessaline
