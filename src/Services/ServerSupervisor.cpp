#include "Services/ServerSupervisor.h"

#include "documents/AppPreferences.h"
#include "foundation/ConsoleLine.h"
#include "foundation/Preferences.h"
#include "Services/ServerCandidates.h"
#include "Services/ServerEnvironment.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const AIModelOption &chosenModel(const ServerSupervisorParts &parts)
{
    return resolveActiveModel(parts.preferences.string(PreferenceKeys::kAiModelSelection), parts.physicalMemoryBytes);
}

/// What becomes of the server's output. It runs on another thread, so it has nothing of the supervisor but the log.
std::function<void(const QByteArray &)> keepOutputIn(const ServerLog &log)
{
    return [log](const QByteArray &bytes) {
        const std::optional<QString> text = serverOutputText(bytes);
        if (!text)
            return;
        printConsoleLine(u"[Local AI Server] "_s + *text);
        log.append(*text);
    };
}

} // namespace

ServerSupervisor::ServerSupervisor(ServerSupervisorParts parts, QObject *parent)
    : QObject(parent), m_parts(std::move(parts)), m_log(m_parts.dataFolder), m_serverStatus(u"Stopped"_s),
      m_activeModel(chosenModel(m_parts))
{}

ServerSupervisor::~ServerSupervisor()
{
    cancelStartup();
    if (m_serverProcess) {
        m_serverProcess->setTerminationHandler({});
        m_serverProcess->terminate();
        m_serverProcess->waitUntilExit();
    }
}

void ServerSupervisor::startServer()
{
    if (m_serverProcess && m_serverProcess->isRunning())
        return;
    setActiveModel(chosenModel(m_parts));
    dropProcess();
    setServerRunning(false);
    if (m_startupTask)
        m_startupTask->request_stop();
    setServerStatus(u"Starting…"_s);
    launchServer();
}

void ServerSupervisor::launchServer()
{
    // 1. The log tells of this start only, so what is left of an earlier one is read to its end first.
    m_previousProcess.reset();
    m_log.reset();

    // 2. The program.
    const QList<FileURL> &candidates = m_parts.candidates;
    const auto executable = std::find_if(candidates.begin(), candidates.end(),
                                         [](const FileURL &candidate) { return QFileInfo::exists(candidate.path()); });
    if (executable == candidates.end()) {
        setServerStatus(u"Binary not found. Build server first."_s);
        printConsoleLine(u"tessaline-server binary not found. Paths checked: "_s + printedCandidates(candidates));
        return;
    }

    // 3. Its process.
    Result<std::shared_ptr<ChildProcess>> launched = m_parts.launch(
        {*executable, serverEnvironment(m_parts.environment, m_activeModel, m_parts.activeProcessorCount),
         keepOutputIn(m_log)});
    if (!launched) {
        setServerStatus(u"Start failed: "_s + launched.failure().text);
        printConsoleLine(u"Failed to run tessaline-server: "_s + launched.failure().text);
        return;
    }
    m_serverProcess = std::move(launched).value();
    printConsoleLine(u"Started tessaline-server process. Polling health check..."_s);
    m_serverProcess->setTerminationHandler(
        [this, process = m_serverProcess.get()] { noteTermination(process); }); // the handler goes with the process

    // 4. The polling, which begins once the event loop runs again: the caller has other things to do.
    m_startupTask.emplace();
    QMetaObject::invokeMethod(
        this, [this, process = m_serverProcess, stop = m_startupTask->get_token()] { pollHealth(process, stop); },
        Qt::QueuedConnection);
}

QCoro::Task<> ServerSupervisor::pollHealth(std::shared_ptr<ChildProcess> process, std::stop_token stop)
{
    if (stop.stop_requested())
        co_return;
    const auto deadline = m_parts.now() + kStartupTimeout;
    while (process->isRunning() && m_parts.now() < deadline) {
        const bool isHealthy = co_await m_parts.checkHealth(stop);
        if (stop.stop_requested())
            co_return; // the server was stopped or has ended, or this object has gone
        if (isHealthy) {
            m_startupTask.reset();
            setServerRunning(true);
            setServerStatus(u"Running"_s);
            printConsoleLine(u"Local AI Server is fully ready. Fetching initial document suggestions..."_s);
            Q_EMIT becameHealthy();
            co_return;
        }
        co_await m_parts.delay(kPollInterval, stop);
        if (stop.stop_requested())
            co_return;
    }

    m_startupTask.reset();
    if (!process->isRunning())
        co_return; // the termination handler has its own words for it
    setServerRunning(false);
    setServerStatus(u"Local AI startup timed out"_s);
    printConsoleLine(u"Local AI Server failed to respond to health check."_s);
}

void ServerSupervisor::noteTermination(const ChildProcess *process)
{
    if (m_serverProcess.get() != process)
        return; // an earlier one
    cancelStartup();
    const int status = m_serverProcess->terminationStatus();
    dropProcess();
    setServerRunning(false);
    if (m_serverStatus != u"Stopped")
        setServerStatus(u"Local AI exited (code %1)"_s.arg(status));
}

void ServerSupervisor::stopServer()
{
    cancelStartup();
    if (m_parts.cancelRequests)
        m_parts.cancelRequests();
    if (!m_serverProcess) {
        setServerRunning(false);
        setServerStatus(u"Stopped"_s);
        return;
    }
    printConsoleLine(u"Stopping Local AI Server subprocess..."_s);
    m_serverProcess->setTerminationHandler({}); // first, so that this end is not taken for one that nobody asked for
    m_serverProcess->terminate();
    m_serverProcess->waitUntilExit();
    dropProcess();
    setServerRunning(false);
    setServerStatus(u"Stopped"_s);
    printConsoleLine(u"Local AI Server stopped."_s);
}

void ServerSupervisor::cancelStartup()
{
    if (const auto task = std::exchange(m_startupTask, std::nullopt))
        std::stop_source(*task).request_stop();
}

void ServerSupervisor::dropProcess()
{
    if (m_serverProcess)
        m_previousProcess = std::exchange(m_serverProcess, nullptr);
}

void ServerSupervisor::setServerRunning(bool isRunning)
{
    if (std::exchange(m_isServerRunning, isRunning) != isRunning)
        Q_EMIT isServerRunningChanged();
}

void ServerSupervisor::setServerStatus(const QString &status)
{
    if (std::exchange(m_serverStatus, status) != status)
        Q_EMIT serverStatusChanged();
}

void ServerSupervisor::setActiveModel(const AIModelOption &model)
{
    if (std::exchange(m_activeModel, model) != model)
        Q_EMIT activeModelChanged();
}

} // namespace Tessaline
