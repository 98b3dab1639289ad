#pragma once

#include "foundation/FileURL.h"
#include "foundation/Result.h"

#include <QtCore/QByteArray>
#include <QtCore/QMap>

#include <functional>
#include <memory>

namespace Tessaline {

/// The variables of a process by their names, in the bytes that the system has.
using Environment = QMap<QByteArray, QByteArray>;

/// This process's own. Main thread only.
Environment ownEnvironment();

/// What to start. The program gets no arguments, the environment as given, this process's working directory, nothing to
/// read on its standard input, and one pipe for both of its outputs.
struct ChildCommand {
    FileURL executable;
    Environment environment;
    /// Called on a thread of the child's own with what the program wrote, as it becomes available, in one piece of at
    /// most 64 KiB, one call after the other. It may still be called after the program has ended, until the
    /// ChildProcess is destroyed.
    std::function<void(const QByteArray &bytes)> outputHandler;
};

/// A program that this process started. Main thread only.
///
/// Destroying it does not end the program, but nobody hears of its end any more. What it has written by then is handed
/// over first; what it writes later finds no reader.
class ChildProcess
{
public:
    virtual ~ChildProcess() = default;

    virtual bool isRunning() const = 0;
    virtual void terminate() = 0;     // asks it to end (SIGTERM); nothing if it has
    virtual void waitUntilExit() = 0; // blocks, without the event loop
    /// The exit status, or the number of the signal that ended it; 0 while it runs.
    virtual int terminationStatus() const = 0;
    /// Called once from the event loop after the program has ended, however and whenever it did; empty for nobody.
    virtual void setTerminationHandler(std::function<void()> handler) = 0;
};

/// Starts programs; a test hands in its own.
using ChildLauncher = std::function<Result<std::shared_ptr<ChildProcess>>(const ChildCommand &command)>;

/// Starts it, and returns when the program has taken over or could not be started (its failure then says why).
///
/// The program has only its three standard streams open, default handling for every signal and none blocked. It is
/// killed when this process ends, however that comes about; for that the calling thread must live as long as the
/// process, so it is the main thread. This process must not ignore SIGCHLD, or the system forgets its children.
Result<std::shared_ptr<ChildProcess>> launchChildProcess(const ChildCommand &command);

} // namespace Tessaline
