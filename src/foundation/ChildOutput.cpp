#include "foundation/ChildOutput.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Tessaline {

ChildOutput::ChildOutput(Descriptor pipe, Handler handler)
    : m_pipe(std::move(pipe)), m_wake(eventfd(0, EFD_CLOEXEC)), m_handler(std::move(handler)),
      m_thread([this] { run(); })
{}

ChildOutput::~ChildOutput()
{
    eventfd_write(m_wake.number(), 1);
    m_thread.join();
}

void ChildOutput::run()
{
    std::array<pollfd, 2> sources{pollfd{m_pipe.number(), POLLIN, 0}, pollfd{m_wake.number(), POLLIN, 0}};
    while (true) {
        if (poll(sources.data(), sources.size(), -1) == -1) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (sources[1].revents != 0) {
            handOverTheRest();
            return;
        }
        if (handOver() == 0)
            return;
    }
}

qsizetype ChildOutput::handOver()
{
    QByteArray bytes(kLargestPiece, Qt::Uninitialized);
    ssize_t count = 0;
    do
        count = read(m_pipe.number(), bytes.data(), static_cast<size_t>(bytes.size()));
    while (count == -1 && errno == EINTR);
    if (count <= 0)
        return 0;
    bytes.truncate(count);
    m_handler(bytes);
    return count;
}

void ChildOutput::handOverTheRest()
{
    // NOTE: a program that the child started may hold the pipe and write for ever, so this ends with what it holds now.
    pollfd source{m_pipe.number(), POLLIN, 0};
    for (qsizetype total = 0; total < kLargestPiece && poll(&source, 1, 0) == 1;) {
        const qsizetype count = handOver();
        if (count == 0)
            return;
        total += count;
    }
}

} // namespace Tessaline
