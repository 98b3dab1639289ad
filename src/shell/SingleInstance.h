#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <chrono>

namespace Tessaline {

struct SingleInstanceOptions {
    FileURL folder;                              // holds "instance.lock" and "instance.socket"; made if it is missing
    std::chrono::milliseconds patience{5000};    // how long `acquire` waits for one that quits or does not answer
    std::chrono::milliseconds retryInterval{20}; // between two looks
};

/// Sees to it that one process per user and folder runs. The first holds a lock on a file, which the kernel releases
/// however the process ends, so nothing stale ever keeps anyone out. A later one asks the first, through a local socket
/// beside the lock, to come to the front. The lock is held until this object is destroyed. Main thread only.
class SingleInstance final : public QObject
{
    Q_OBJECT
public:
    enum class Outcome {
        First,      // this process is the one; also where the folder cannot be written, so that nothing can be locked
        HandedOver, // another runs and has been asked to come to the front
        NoAnswer,   // another runs, but neither answered nor ended in time
    };

    explicit SingleInstance(SingleInstanceOptions options, QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Decides which one this process is. `activationToken` is what the desktop gave this process to bring a window to
    /// the front; it goes to the first. Blocks for milliseconds, and for up to the patience if the other one is just
    /// quitting or does not answer. Needs no application object.
    Outcome acquire(const QByteArray &activationToken = {});

    /// For the first one, once there is an application object: from here on others are answered. Those who asked before
    /// are waiting.
    void listen();
    /// For the first one when it begins to end: others wait until it has gone, and then start themselves.
    void stopListening();

Q_SIGNALS:
    /// Another process was started; `activationToken` may be empty.
    void activationRequested(const QByteArray &activationToken);

private:
    enum class Lock { Taken, HeldByAnother, Impossible };
    Lock lock();
    void openSocket();
    bool ask(const QByteArray &activationToken, std::chrono::steady_clock::time_point deadline) const;
    void takeConnection();

    SingleInstanceOptions m_options;
    int m_lock = -1;
    int m_socket = -1;
    QSocketNotifier m_notifier{QSocketNotifier::Read};
};

} // namespace Tessaline
