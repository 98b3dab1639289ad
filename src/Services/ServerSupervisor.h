#pragma once

#include "foundation/ChildProcess.h"
#include "foundation/Delay.h"
#include "Services/AIModelOption.h"
#include "Services/ServerLog.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace Tessaline {

class Preferences;

/// What supervising the server needs from outside.
struct ServerSupervisorParts {
    const Preferences &preferences; // for the model; outlives the supervisor
    /// Whether the server answers that it is well. Tried about once a second; a stop ends it early.
    std::function<QCoro::Task<bool>(std::stop_token stop)> checkHealth;
    std::function<void()>
        cancelRequests; // stops what is being asked of the server; called by `stopServer`; may be empty

    std::optional<FileURL> dataFolder; // where the log is kept; without it there is none
    QList<FileURL> candidates;         // where the server may be; the first that exists is started
    Environment environment;           // what the server's environment is made from
    quint64 physicalMemoryBytes = 0;
    int activeProcessorCount = 1;

    ChildLauncher launch = launchChildProcess;
    Delay delay = Tessaline::delay;
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
};

/// Finds `tessaline-server`, starts it as a child, keeps its output in a log, asks until it is healthy, notices its end
/// and stops it. Nothing restarts a server that died: only the person does. Main thread only.
///
/// | `serverStatus`                          | process | `isServerRunning` | `startupTask`          |
/// |-----------------------------------------|---------|-------------------|------------------------|
/// | "Stopped"                               | absent  | false             | absent                 |
/// | "Starting…"                             | alive   | false             | polling                |
/// | "Running"                               | alive   | true              | absent                 |
/// | "Binary not found. Build server first." | absent  | false             | as it was, but stopped |
/// | "Start failed: " and why                | absent  | false             | as it was, but stopped |
/// | "Local AI startup timed out"            | alive   | false             | absent                 |
/// | "Local AI exited (code N)"              | absent  | false             | absent                 |
///
/// After a time-out nobody asks any more, and the process is left alive: only `stopServer` and `startServer` help.
class ServerSupervisor final : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::seconds kStartupTimeout{600}; // loading a large model from a slow disk takes minutes
    static constexpr std::chrono::seconds kPollInterval{1};     // between the end of a probe and the next one

    explicit ServerSupervisor(ServerSupervisorParts parts, QObject *parent = nullptr);
    ~ServerSupervisor() override; // ends the server as `stopServer` does, but tells nobody

    bool isServerRunning() const { return m_isServerRunning; }
    const QString &serverStatus() const { return m_serverStatus; }
    const AIModelOption &activeModel() const { return m_activeModel; } // the server was or will be started with it
    const ChildProcess *serverProcess() const { return m_serverProcess.get(); } // null while there is none
    const std::optional<std::stop_source> &startupTask() const { return m_startupTask; }

    /// Starts the server unless its process is alive. Returns at once; `serverStatus` tells what becomes of it.
    void startServer();

    /// Cancels the polling, then all requests, and ends the process; blocks until it has gone.
    void stopServer();

Q_SIGNALS:
    void isServerRunningChanged();
    void serverStatusChanged();
    void activeModelChanged();
    /// The first healthy answer after a start: the moment for the first suggestions.
    void becameHealthy();

private:
    void launchServer();
    QCoro::Task<> pollHealth(std::shared_ptr<ChildProcess> process, std::stop_token stop);
    void noteTermination(const ChildProcess *process);
    void cancelStartup();
    void dropProcess();
    void setServerRunning(bool isRunning);
    void setServerStatus(const QString &status);
    void setActiveModel(const AIModelOption &model);

    ServerSupervisorParts m_parts;
    ServerLog m_log;
    bool m_isServerRunning = false;
    QString m_serverStatus;
    AIModelOption m_activeModel;
    std::shared_ptr<ChildProcess> m_serverProcess;
    std::shared_ptr<ChildProcess> m_previousProcess; // has ended; kept while the rest of its output is read
    std::optional<std::stop_source> m_startupTask;
};

} // namespace Tessaline
