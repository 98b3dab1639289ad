#pragma once

#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <functional>
#include <memory>

namespace Tessaline {

/// The running updater of the platform's update framework, with its own interface.
class UpdaterController
{
public:
    virtual ~UpdaterController() = default;
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;
    virtual void checkForUpdates() = 0; // shows its own windows, also for failures
};

/// What the decision about updating depends on.
struct UpdateEnvironment {
    QProcessEnvironment environment;
    /// The key that updates are signed with, as the build put it into the application: `SUPublicEDKey`. Invalid if
    /// there is none.
    QVariant publicEDKey;
    /// Makes the updater and starts it. Empty where the platform has no such framework, which is so on Linux: updates
    /// come from the system's packages there.
    std::function<std::unique_ptr<UpdaterController>()> startUpdater;
    std::function<void(const QString &)> log; // for developers, one line a call

    /// The real one: this process, this build, standard output.
    static UpdateEnvironment ofProcess();
};

/// Decides once, when it is made, whether this process can update itself. It cannot under a test host (an environment
/// variable whose name begins with "XCTest"), without a public key (one line in the log says so), or without an
/// updater.
class UpdateManager
{
public:
    explicit UpdateManager(const UpdateEnvironment &environment = UpdateEnvironment::ofProcess());
    ~UpdateManager();

    /// Whether "Check for Updates…" is enabled. Does not change.
    bool canCheckForUpdates() const { return m_updaterController != nullptr; }
    /// Does nothing if it cannot.
    void checkForUpdates();

private:
    std::unique_ptr<UpdaterController> m_updaterController; // null: updating is off for this run
};

} // namespace Tessaline
