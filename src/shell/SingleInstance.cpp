#include "shell/SingleInstance.h"

#include "foundation/Descriptor.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Clock = std::chrono::steady_clock;

// On the wire: "activate", a space, the token, a line feed; answered by "ok" and a line feed.
constexpr QByteArrayView kActivate = "activate ";
constexpr QByteArrayView kAnswer = "ok\n";
constexpr qsizetype kLongestRequest = 4096; // bytes; a token has some dozens

/// The address of the socket. A socket's path is limited to about a hundred bytes, which a deep folder exceeds: there
/// the path goes by way of the folder's descriptor, which must stay open while the address is used.
class SocketAddress
{
public:
    explicit SocketAddress(const FileURL &folder)
    {
        QByteArray path = QFile::encodeName(folder.appending(u"instance.socket").path());
#ifdef Q_OS_LINUX
        if (path.size() >= static_cast<qsizetype>(sizeof m_address.sun_path)) {
            m_folder = Descriptor(open(QFile::encodeName(folder.path()).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            path = "/proc/self/fd/" + QByteArray::number(m_folder.number()) + "/instance.socket";
        }
#endif
        m_address.sun_family = AF_UNIX;
        qstrncpy(m_address.sun_path, path.constData(), sizeof m_address.sun_path);
    }

    const char *path() const
    {
        return m_address.sun_path;
    }
    const sockaddr *data() const
    {
        return reinterpret_cast<const sockaddr *>(&m_address);
    }
    socklen_t size() const
    {
        return sizeof m_address;
    }

private:
    sockaddr_un m_address = {};
    Descriptor m_folder;
};

int makeSocket()
{
    const int number = socket(AF_UNIX, SOCK_STREAM, 0);
    if (number >= 0) {
        fcntl(number, F_SETFD, FD_CLOEXEC);
        fcntl(number, F_SETFL, O_NONBLOCK);
    }
    return number;
}

/// Another process at the other end of the socket, until it has been answered or goes away.
class Connection final : public QObject
{
public:
    Connection(int number, SingleInstance *instance)
        : QObject(instance), m_instance(instance), m_descriptor(number), m_notifier(number, QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, &Connection::receive);
    }

private:
    void receive()
    {
        std::array<char, 512> bytes{};
        const ssize_t count = read(m_descriptor.number(), bytes.data(), bytes.size());
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count > 0)
            m_request.append(bytes.data(), count);
        if (count <= 0 || m_request.size() > kLongestRequest) {
            end();
        } else if (m_request.endsWith('\n')) {
            m_notifier.setEnabled(false);
            if (m_request.startsWith(kActivate)) {
                Q_EMIT m_instance->activationRequested(m_request.sliced(kActivate.size()).trimmed());
                send(m_descriptor.number(), kAnswer.data(), static_cast<size_t>(kAnswer.size()), MSG_NOSIGNAL);
            }
            end();
        }
    }

    void end()
    {
        m_notifier.setEnabled(false);
        deleteLater();
    }

    SingleInstance *m_instance;
    Descriptor m_descriptor;
    QSocketNotifier m_notifier;
    QByteArray m_request;
};

} // namespace

SingleInstance::SingleInstance(SingleInstanceOptions options, QObject *parent)
    : QObject(parent), m_options(std::move(options))
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &SingleInstance::takeConnection);
}

SingleInstance::~SingleInstance()
{
    stopListening();
    if (m_lock >= 0)
        close(m_lock); // releases the lock; the file stays, since removing it would race with the next one
}

SingleInstance::Outcome SingleInstance::acquire(const QByteArray &activationToken)
{
    const Clock::time_point deadline = Clock::now() + m_options.patience;
    for (;;) {
        switch (lock()) {
        case Lock::Taken:
            openSocket();
            return Outcome::First;
        case Lock::Impossible:
            return Outcome::First;
        case Lock::HeldByAnother:
            break;
        }
        if (ask(activationToken, deadline))
            return Outcome::HandedOver;
        // It is still starting, or just ending: look again.
        if (Clock::now() >= deadline)
            return Outcome::NoAnswer;
        std::this_thread::sleep_for(m_options.retryInterval);
    }
}

SingleInstance::Lock SingleInstance::lock()
{
    if (m_lock < 0) {
        QDir().mkpath(m_options.folder.path());
        const QByteArray path = QFile::encodeName(m_options.folder.appending(u"instance.lock").path());
        // Closed on exec, or a child that outlives this process would keep the lock.
        m_lock = open(path.constData(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
        if (m_lock < 0)
            return Lock::Impossible;
    }
    int result = -1;
    do {
        result = flock(m_lock, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0)
        return Lock::Taken;
    return errno == EWOULDBLOCK ? Lock::HeldByAnother : Lock::Impossible;
}

void SingleInstance::openSocket()
{
    const SocketAddress address(m_options.folder);
    unlink(address.path()); // what a crash left
    Descriptor listening(makeSocket());
    if (listening.number() < 0 || bind(listening.number(), address.data(), address.size()) != 0)
        return; // NOTE: a file system without sockets: others then learn only that one runs
    chmod(address.path(), 0600);
    if (::listen(listening.number(), 16) == 0)
        m_socket = listening.release();
}

bool SingleInstance::ask(const QByteArray &activationToken, Clock::time_point deadline) const
{
    const SocketAddress address(m_options.folder);
    const Descriptor connection(makeSocket());
    if (::connect(connection.number(), address.data(), address.size()) != 0)
        return false;
    const QByteArray request = kActivate.toByteArray() + activationToken.trimmed() + '\n';
    if (send(connection.number(), request.constData(), static_cast<size_t>(request.size()), MSG_NOSIGNAL) !=
        request.size())
        return false;

    QByteArray answer;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting{connection.number(), POLLIN, 0};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) == 0)
            return false;
        std::array<char, 16> bytes{};
        const ssize_t count = read(connection.number(), bytes.data(), bytes.size());
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (count <= 0)
            return false; // it ended without an answer
        answer.append(bytes.data(), count);
        if (answer.startsWith(kAnswer))
            return true;
    }
}

void SingleInstance::listen()
{
    if (m_socket < 0)
        return;
    m_notifier.setSocket(m_socket);
    m_notifier.setEnabled(true);
}

void SingleInstance::stopListening()
{
    if (m_socket < 0)
        return;
    m_notifier.setEnabled(false);
    unlink(SocketAddress(m_options.folder).path());
    close(std::exchange(m_socket, -1));
    // Whoever was not answered yet sees the end and tries again.
    const QObjectList connections = children();
    qDeleteAll(connections);
}

void SingleInstance::takeConnection()
{
    const int number = accept(m_socket, nullptr, nullptr);
    if (number < 0)
        return;
    fcntl(number, F_SETFD, FD_CLOEXEC);
    fcntl(number, F_SETFL, O_NONBLOCK);
    new Connection(number, this);
}

} // namespace Tessaline
