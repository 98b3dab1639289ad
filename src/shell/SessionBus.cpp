#include "shell/SessionBus.h"

#include <QtCore/QList>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tessaline {

namespace {

constexpr QByteArrayView kUnix = "unix:";
constexpr QByteArrayView kPath = "path=";
constexpr QByteArrayView kAbstract = "abstract=";

struct SocketAddress {
    sockaddr_un address = {};
    socklen_t size = 0;
};

/// The socket that an address names; none for another form, and for a name that no socket can have.
std::optional<SocketAddress> socketOf(const QByteArray &address)
{
    const QByteArray first = address.split(';').constFirst();
    if (!first.startsWith(kUnix))
        return std::nullopt;
    for (const QByteArray &part : first.sliced(kUnix.size()).split(',')) {
        const bool isAbstract = part.startsWith(kAbstract);
        if (!isAbstract && !part.startsWith(kPath))
            continue;
        const QByteArray name =
            QByteArray::fromPercentEncoding(part.sliced(isAbstract ? kAbstract.size() : kPath.size()));
        SocketAddress socket;
        const size_t start = isAbstract ? 1 : 0; // the name of an abstract one begins behind a zero
        if (start + static_cast<size_t>(name.size()) >= sizeof socket.address.sun_path)
            return std::nullopt;
        socket.address.sun_family = AF_UNIX;
        std::memcpy(socket.address.sun_path + start, name.constData(), static_cast<size_t>(name.size()));
        socket.size =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + start + static_cast<size_t>(name.size()));
        return socket;
    }
    return std::nullopt;
}

} // namespace

SessionBus::SessionBus(const QByteArray &address)
{
    const std::optional<SocketAddress> place = socketOf(address);
    if (!place)
        return;

    m_connection = Descriptor(socket(AF_UNIX, SOCK_STREAM, 0));
    fcntl(m_connection.number(), F_SETFD, FD_CLOEXEC);
    fcntl(m_connection.number(), F_SETFL, O_NONBLOCK);
    if (connect(m_connection.number(), reinterpret_cast<const sockaddr *>(&place->address), place->size) != 0) {
        m_isSilent = errno == EAGAIN; // its queue is full
        m_connection.close();
        return;
    }
    // What every client begins with. The answer may be anything, a refusal too.
    const QByteArray hello = '\0' + QByteArray("AUTH EXTERNAL ") + QByteArray::number(getuid()).toHex() + "\r\n";
    m_isSilent =
        send(m_connection.number(), hello.constData(), static_cast<size_t>(hello.size()), MSG_NOSIGNAL) == hello.size();
}

QByteArray SessionBus::addressOfUser()
{
    if (const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS"); !address.isEmpty())
        return address;
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QByteArray() : "unix:path=" + (folder + "/bus").toPercentEncoding("/");
}

bool SessionBus::answersWithin(std::chrono::milliseconds patience)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + patience;
    while (m_isSilent) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd answer{m_connection.number(), POLLIN, 0};
        const int count = poll(&answer, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (count == 0 || (count < 0 && errno != EINTR))
            return false;
        m_isSilent = count < 0 || (answer.revents & (POLLIN | POLLHUP)) == 0;
    }
    return true;
}

void SessionBus::keepAway()
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:"); // a form that nothing understands, so that nothing is tried
}

} // namespace Tessaline
