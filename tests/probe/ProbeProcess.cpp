#include "tests/probe/ProbeProcess.h"

#include <QtCore/QJsonDocument>

namespace Tessaline {

namespace {

constexpr int kPatience = 60'000; // milliseconds; far more than a sanitizer needs

}

ProbeProcess::ProbeProcess()
{
    m_process.start(QStringLiteral(TESSALINE_PROBE), QStringList());
    m_process.waitForStarted(kPatience);
}

ProbeProcess::~ProbeProcess()
{
    finish();
}

QByteArray ProbeProcess::answerTo(const QByteArray &line)
{
    m_process.write(line + '\n');
    while (!m_process.canReadLine())
        if (!m_process.waitForReadyRead(kPatience))
            return {};
    const QByteArray answer = m_process.readLine();
    return answer.first(answer.size() - 1);
}

QJsonObject ProbeProcess::ask(const QJsonObject &request)
{
    return QJsonDocument::fromJson(answerTo(QJsonDocument(request).toJson(QJsonDocument::Compact))).object();
}

QJsonValue ProbeProcess::resultOf(const QJsonObject &request)
{
    const QJsonObject answer = ask(request);
    const QJsonValue ok = answer.value(QLatin1StringView("ok"));
    const bool hasResult = ok == QJsonValue(true) && answer.contains(QLatin1StringView("result"));
    return hasResult ? answer.value(QLatin1StringView("result"))
                     : QString::fromUtf8("no result: " + QJsonDocument(answer).toJson(QJsonDocument::Compact));
}

int ProbeProcess::finish()
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(kPatience) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

QByteArray ProbeProcess::standardError()
{
    return m_process.readAllStandardError();
}

} // namespace Tessaline
