#pragma once

#include "documents/DocumentStore.h"
#include "foundation/EventCenter.h"
#include "foundation/FileAccess.h"
#include "foundation/Preferences.h"
#include "Services/LocalAIService.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QTcpServer>

#include <memory>

#include <unistd.h>

namespace Tessaline {

/// Whether a server could listen at this port of this machine.
inline bool isFree(quint16 port)
{
    return QTcpServer().listen(QHostAddress::LocalHost, port);
}

/// A port for a server that has to be told before it is started. The system gives none of these to anybody by itself,
/// and tests that run at the same time begin to look at different ones.
inline quint16 freePort()
{
    constexpr int kFirst = 10'000;
    constexpr int kCount = 20'000;
    constexpr int kApart = 7;
    int offset = static_cast<int>(getpid()) * kApart % kCount;
    while (!isFree(static_cast<quint16>(kFirst + offset)))
        offset = (offset + 1) % kCount;
    return static_cast<quint16>(kFirst + offset);
}

/// The whole service with all that is below it: its own child process, which does what a script says, its own folders
/// and documents. Only the port and the time between two probes of its health are not the application's.
class RunningAssistant
{
public:
    /// `script` is a JSON object without a port; `disk` has the documents and outlives this object.
    RunningAssistant(const QByteArray &script, FileAccess &disk)
        : m_port(freePort()), m_store(m_events, disk),
          m_server(withPort(script, m_port), ScriptedServerFolder::Port::Fixed)
    {
        WireOptions wire;
        wire.address.port = m_port;
        m_service = std::make_unique<LocalAIService>(LocalAIServiceParts{
            .server = {.preferences = m_preferences,
                       .checkHealth = {},
                       .cancelRequests = {},
                       .dataFolder = m_files.url(QStringLiteral("data")),
                       .candidates = {m_server.executable()},
                       .environment = m_server.environment(),
                       .delay = [](std::chrono::milliseconds,
                                   std::stop_token stop) { return delay(std::chrono::milliseconds(20), stop); }},
            .documents = m_store,
            .wire = wire,
            .now = [this] { return GrowingAnswer::TimePoint(m_time += std::chrono::hours(1)); }});
    }

    LocalAIService &service() { return *m_service; }
    Preferences &preferences() { return m_preferences; }
    const ScriptedServerFolder &server() const { return m_server; }
    const TemporaryFiles &files() const { return m_files; }
    quint16 port() const { return m_port; }
    void destroy() { m_service.reset(); }

private:
    static QByteArray withPort(const QByteArray &script, quint16 port)
    {
        QJsonObject object = QJsonDocument::fromJson(script).object();
        object.insert(QStringLiteral("port"), port);
        return QJsonDocument(object).toJson();
    }

    quint16 m_port;
    TemporaryFiles m_files;
    Preferences m_preferences{m_files.url(QStringLiteral("preferences.json"))};
    EventCenter m_events;
    DocumentStore m_store;
    ScriptedServerFolder m_server;
    std::chrono::steady_clock::duration m_time{0}; // so that every token is shown at once
    std::unique_ptr<LocalAIService> m_service;
};

} // namespace Tessaline
