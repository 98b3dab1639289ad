#pragma once

#include "foundation/ChildProcess.h"
#include "foundation/FileURL.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>

#include <memory>
#include <optional>

namespace Tessaline {

/// What one run of the scripted server needs: a folder with the program under the name `tessaline-server`, its script,
/// and what it records. The scripts are described in tests/support/scripted-server/Script.h.
class ScriptedServerFolder
{
public:
    enum class Port { Free, Fixed }; // any free one, or the one in the script (23949 unless it says otherwise)

    /// `script` is JSON; the places of its files are added here.
    explicit ScriptedServerFolder(const QByteArray &script = "{}", Port port = Port::Free);

    FileURL executable() const { return m_files.url(QStringLiteral("tessaline-server")); }
    Environment environment() const; // this process's own and where the script is

    std::optional<quint16> port() const; // absent until it listens
    QJsonObject process() const;         // how the program was started; empty until it was
    qint64 processId() const;            // 0 until it was started
    /// Every request so far, byte by byte, in their order.
    QList<QByteArray> requests() const;
    QList<QByteArray> requests(const QByteArray &path) const; // to this path only
    /// Whether the client closed the connection of a request (counted from 0) before its reply was complete.
    bool isClosedByClient(qsizetype request) const;
    bool isAnswered(qsizetype request) const; // in full

    const TemporaryFiles &files() const { return m_files; }

private:
    TemporaryFiles m_files;
};

/// The scripted server as a program that runs as long as this object lives, on a port of its own.
class ScriptedServer final : public ScriptedServerFolder
{
public:
    explicit ScriptedServer(const QByteArray &script = "{}"); // returns when it listens
    ~ScriptedServer();

    quint16 port() const { return m_port; }
    void kill(); // returns when it has gone

private:
    std::shared_ptr<ChildProcess> m_process; // null if it could not be started
    quint16 m_port = 0;
};

/// The bytes of a request after its headers.
QByteArray bodyOf(const QByteArray &request);

} // namespace Tessaline
