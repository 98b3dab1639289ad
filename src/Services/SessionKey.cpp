#include "Services/SessionKey.h"

namespace Tessaline {

QString sessionKey(const QString &path)
{
    quint64 hash = 5381;
    const QByteArray bytes = path.toUtf8();
    for (const char byte : bytes)
        hash = hash * 33 + static_cast<uchar>(byte);
    return QStringLiteral("%1").arg(hash, 16, 16, QLatin1Char('0'));
}

} // namespace Tessaline
