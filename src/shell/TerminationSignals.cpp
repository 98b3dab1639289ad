#include "shell/TerminationSignals.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaline {

namespace {

// A handler may do next to nothing, so it leaves one byte in a pipe that the event loop watches.
volatile sig_atomic_t g_writeEnd = -1;

void leaveByte(int)
{
    const int error = errno;
    const char byte = 1;
    // NOTE: a full pipe is as good as one more byte.
    [[maybe_unused]] const ssize_t written = write(g_writeEnd, &byte, 1);
    errno = error;
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    Q_ASSERT(g_writeEnd == -1);
    if (pipe(m_pipe.data()) != 0)
        qFatal("Could not make a pipe for signals: error %d.", errno);
    for (const int end : m_pipe) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    g_writeEnd = m_pipe[1];

    m_notifier.setSocket(m_pipe[0]);
    connect(&m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::drain);
    m_notifier.setEnabled(true);

    struct sigaction action = {};
    action.sa_handler = leaveByte;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (size_t index = 0; index < kSignals.size(); ++index)
        sigaction(kSignals[index], &action, &m_previous[index]);
}

TerminationSignals::~TerminationSignals()
{
    for (size_t index = 0; index < kSignals.size(); ++index)
        sigaction(kSignals[index], &m_previous[index], nullptr);
    g_writeEnd = -1;
    m_notifier.setEnabled(false);
    for (const int end : m_pipe)
        close(end);
}

void TerminationSignals::drain()
{
    std::array<char, 64> bytes{};
    while (read(m_pipe[0], bytes.data(), bytes.size()) > 0) {
    }
    Q_EMIT terminationRequested();
}

} // namespace Tessaline
