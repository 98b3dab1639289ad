#pragma once

#include "foundation/FileURL.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QProcessEnvironment>

#include <functional>
#include <optional>
#include <stop_token>

namespace Tessaline {

class DocumentStore;

/// The assistant's service as far as the start and the end of the application need it. Called on the main thread.
class AssistantLifecycle
{
public:
    virtual ~AssistantLifecycle() = default;
    virtual void startServer() = 0; // returns at once
    virtual std::optional<FileURL> activeFileURL() const = 0;
    virtual void saveSession(const FileURL &url) = 0; // a failure is the service's own affair
    virtual void stopServer() = 0;                    // returns when the server's process has gone
};

struct AppDelegateServices {
    DocumentStore &store;
    AssistantLifecycle *assistant = nullptr; // null: there is no assistant, and its steps do nothing
    std::function<void()> setUpWindows;      // gives the windows their frame and appearance
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

/// The order in which the application starts and ends. It ends in three steps, each of them safe to ask for twice:
///
/// 1. Everything that means "quit" (the menu, the closing of the last window, SIGTERM and its like, the end of the
/// desktop
///    session) calls `applicationShouldTerminate`. The application stays alive while the pending texts are written.
/// 2. `terminationReady` is sent, whatever became of the writes. `main` connects it to the end of its event loop.
/// 3. `main` calls `applicationWillTerminate`: the session is saved, then the server is stopped.
///
/// Main thread only.
class AppDelegate final : public QObject
{
    Q_OBJECT
public:
    explicit AppDelegate(AppDelegateServices services, QObject *parent = nullptr);
    ~AppDelegate() override; // a flush that still runs is no longer waited for

    /// Enqueues the set-up of the windows, so that it runs once the event loop does, and starts the assistant's server,
    /// unless the environment has `XCTestConfigurationFilePath` (with any value).
    void applicationDidFinishLaunching();

    /// The application has no state without a window.
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }

    /// Begins the end, at most once: a second call neither restarts nor cuts short what the first one began. Text that
    /// is typed while the writes run is written too.
    void applicationShouldTerminate();
    bool isTerminating() const { return m_isTerminating; }

    /// The last steps; the second call does nothing.
    void applicationWillTerminate();

Q_SIGNALS:
    /// Every text has been written or has failed to be. Sent once, never from inside `applicationShouldTerminate`.
    void terminationReady();

private:
    QCoro::Task<> flushAndReply();

    AppDelegateServices m_services;
    std::stop_source m_flush;
    bool m_isTerminating = false;
    bool m_hasTerminated = false;
};

} // namespace Tessaline
