#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>

namespace Tessaline {

/// The real `tessaline-probe`, running.
class ProbeProcess
{
public:
    ProbeProcess();
    ~ProbeProcess();

    /// Sends one line and waits for its answer; empty if none comes.
    QByteArray answerTo(const QByteArray &line);
    /// The same for a request, with the answer read as JSON.
    QJsonObject ask(const QJsonObject &request);
    /// The `result` of a request that must succeed; what went wrong otherwise, as a text.
    QJsonValue resultOf(const QJsonObject &request);

    /// Ends the input, and returns the exit status; -1 if the process crashed or does not end.
    int finish();
    QByteArray standardError();

private:
    QProcess m_process;
};

} // namespace Tessaline
