#include "server/ClientSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

namespace {

using Clock = std::chrono::steady_clock;

/// What of `events` has come within `wait`, with errors and the other side's end; 0 if nothing has.
short waitFor(int socket, short events, std::chrono::milliseconds wait)
{
    const Clock::time_point deadline = Clock::now() + wait;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd asked{socket, events, 0};
        const int count = poll(&asked, 1, static_cast<int>(std::max<long long>(0, left.count())));
        if (count > 0)
            return asked.revents;
        if (count == 0 || errno != EINTR)
            return 0;
    }
}

} // namespace

ClientSocket::ClientSocket(int socket, const ClientLimits &limits, std::atomic<size_t> &heldBytes)
    : m_socket(socket), m_limits(limits), m_heldBytes(heldBytes), m_deadline(Clock::now() + limits.requestTime),
      m_allowed(limits.largestHead)
{
    const int yes = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes); // tokens are small, and go out as they come
}

ClientSocket::~ClientSocket()
{
    if (m_isLost) {
        // What a client has not read would stay with the system for a long time.
        const linger atOnce{1, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    close(m_socket);
}

void ClientSocket::finish()
{
    // NOTE: closing a socket with unread bytes resets the connection, and the client may lose the answer. So the rest
    // of a request that was refused is read, for a moment.
    constexpr std::chrono::milliseconds kMoment{500};
    m_isAnswered = false;
    m_heldBytes -= std::exchange(m_held, 0);
    if (m_isLost)
        return;
    shutdown(m_socket, SHUT_WR);
    const Clock::time_point end = Clock::now() + kMoment;
    while (Clock::now() < end && waitFor(m_socket, POLLIN, kMoment) != 0)
        if (recv(m_socket, m_buffer.data(), m_buffer.size(), MSG_DONTWAIT) <= 0)
            break;
}

void ClientSocket::cut()
{
    shutdown(m_socket, SHUT_RDWR);
}

bool ClientSocket::fill()
{
    // 1. Time and size.
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now());
    const auto wait = std::min(left, m_limits.silence);
    if (m_allowed == 0)
        m_reached = m_isInBody ? Limit::Body : Limit::Head;
    else if (wait.count() <= 0 || waitFor(m_socket, POLLIN, wait) == 0)
        m_reached = Limit::Time;
    if (m_reached != Limit::None)
        return false;

    // 2. What has come.
    const ssize_t count = recv(m_socket, m_buffer.data(), std::min(m_buffer.size(), m_allowed), 0);
    m_position = 0;
    m_end = count > 0 ? static_cast<size_t>(count) : 0;
    m_allowed -= m_end;

    if (m_isInBody)
        hold(m_end);
    return count >= 0 && m_reached == Limit::None;
}

void ClientSocket::hold(size_t bytes)
{
    m_held += bytes;
    if ((m_heldBytes += bytes) > m_limits.mostBytes)
        m_reached = Limit::Memory;
}

ssize_t ClientSocket::read(char *bytes, size_t size)
{
    if (m_reached != Limit::None || (m_position == m_end && !fill()))
        return -1;
    const size_t count = std::min(size, m_end - m_position);
    std::memcpy(bytes, m_buffer.data() + m_position, count);
    if (!m_isInBody)
        m_head.append(bytes, count);
    m_position += count;
    return static_cast<ssize_t>(count);
}

ssize_t ClientSocket::write(const char *bytes, size_t size)
{
    for (size_t written = 0; written < size && !m_isLost;) {
        const ssize_t count = send(m_socket, bytes + written, size - written, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0)
            written += static_cast<size_t>(count);
        else if (errno == EAGAIN || errno == EWOULDBLOCK)
            m_isLost = (waitFor(m_socket, POLLOUT, m_limits.silence) & POLLOUT) == 0;
        else
            m_isLost = errno != EINTR;
    }
    return m_isLost ? -1 : static_cast<ssize_t>(size);
}

void ClientSocket::beginBody()
{
    const size_t cameWithHead = m_end - m_position;
    m_isInBody = true;
    m_allowed = m_limits.largestBody + m_limits.largestHead - cameWithHead; // a body in chunks has lines of its own
    hold(cameWithHead);
}

bool ClientSocket::isReadable() const
{
    return m_position < m_end || waitFor(m_socket, POLLIN, m_limits.silence) != 0;
}

bool ClientSocket::isWritable() const
{
    return (waitFor(m_socket, POLLOUT, m_limits.silence) & POLLOUT) != 0;
}

} // namespace Tessaline::Server
