#include "Services/ServerLog.h"

#include "foundation/PrivateFiles.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QStringDecoder>

namespace Tessaline {

using namespace Qt::StringLiterals;

ServerLog::ServerLog(const std::optional<FileURL> &dataFolder) : m_dataFolder(dataFolder) {}

void ServerLog::reset() const
{
    if (m_dataFolder)
        QFile::remove(m_dataFolder->appending(u"server.log").path());
}

void ServerLog::append(const QString &text) const
{
    if (!m_dataFolder)
        return;
    makePrivateFolder(*m_dataFolder);
    const QString time = QLocale().toString(QDateTime::currentDateTime(), u"yyyy-MM-dd HH:mm:ss");
    appendToPrivateFile(m_dataFolder->appending(u"server.log"), u"[%1] %2\n"_s.arg(time, text).toUtf8());
}

std::optional<QString> serverOutputText(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return {};
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return {};
    return text.trimmed();
}

} // namespace Tessaline
