#include "Services/HttpExchange.h"

#include <QtNetwork/QHostAddress>
#include <QtNetwork/QNetworkProxy>

#include <utility>

#include <fcntl.h>
#ifdef Q_OS_LINUX
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

using Kind = WireFailure::Kind;

constexpr int kSuccess = 200;
constexpr qint64 kReadAhead = 256 * 1024; // bytes; what arrives beyond waits in the connection

const WireFailure kStopped{Kind::Stopped, -1, QString()};

WireFailure transportFailure(const QString &description)
{
    return {Kind::Transport, -1, description};
}

/// Whether the other side has broken the connection off (RST) instead of closing it.
///
/// WORKAROUND: QTcpSocket of Qt 6.4 tells both as an ordinary end, and a reply without a length ends with the
/// connection: what had arrived of it would pass for the whole.
bool isBrokenOff(const Descriptor &connection)
{
#ifdef Q_OS_LINUX
    tcp_info info = {};
    socklen_t size = sizeof info;
    return connection.isOpen() && getsockopt(connection.number(), IPPROTO_TCP, TCP_INFO, &info, &size) == 0 &&
           info.tcpi_state == TCP_CLOSE; // one that was closed waits for this side to close it too
#else
    Q_UNUSED(connection);
    return false;
#endif
}

} // namespace

HttpExchange::HttpExchange(Request request, std::shared_ptr<BodyReader> reader, QObject *parent)
    : QObject(parent), m_request(std::move(request)), m_reader(std::move(reader))
{
    m_idle.setSingleShot(true);
    m_idle.setInterval(m_request.timeout);
    connect(&m_idle, &QTimer::timeout, this, [this] { end(transportFailure(u"The request timed out."_s)); });

    connect(&m_socket, &QTcpSocket::connected, this, &HttpExchange::send);
    connect(&m_socket, &QTcpSocket::bytesWritten, &m_idle, qOverload<>(&QTimer::start));
    connect(&m_socket, &QTcpSocket::readyRead, this, &HttpExchange::receive);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, &HttpExchange::connectionEnded);
    connect(&m_socket, &QTcpSocket::disconnected, this, &HttpExchange::connectionEnded);
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_socket.setReadBufferSize(kReadAhead);
    m_idle.start();
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), m_request.address.port);
}

HttpExchange::~HttpExchange()
{
    m_socket.disconnect(this);
}

void HttpExchange::send()
{
    m_wasConnected = true;
    m_connection = Descriptor(fcntl(static_cast<int>(m_socket.socketDescriptor()), F_DUPFD_CLOEXEC, 0));
    const QByteArray body = std::exchange(m_request.body, {});
    QByteArray head = m_request.method + ' ' + m_request.path +
                      " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_request.address.port) +
                      "\r\nConnection: close\r\n";
    if (!body.isEmpty())
        head += "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n";
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket.write(head + "\r\n");
    m_socket.write(body);
    m_idle.start();
}

void HttpExchange::stop()
{
    m_isStopped = true;
    m_reader->stop();
    if (!m_isReading)
        end(kStopped);
}

/// Takes the bytes that have arrived. Whoever gets them may stop the exchange meanwhile, or run the event loop; the end
/// comes behind that.
void HttpExchange::receive()
{
    if (m_isReading || m_end)
        return;
    m_idle.start();
    m_isReading = true;
    std::optional<End> result = read();
    m_isReading = false;
    if (m_isStopped)
        result = kStopped;
    if (result)
        end(*std::move(result));
    else if (m_socket.state() == QAbstractSocket::UnconnectedState)
        connectionEnded();
}

/// What the exchange comes to, or absent if more is to come.
std::optional<HttpExchange::End> HttpExchange::read()
{
    while (m_socket.bytesAvailable() > 0 && !m_isStopped) {
        QByteArray body = m_reply.take(m_socket.readAll());
        if (const std::optional<int> status = m_reply.status(); status && *status != kSuccess)
            return WireFailure{Kind::Status, *status, u"The server answered with status %1."_s.arg(*status)};
        const BodyReader::Wish wish = body.isEmpty() ? BodyReader::Wish::More : m_reader->take(std::move(body));
        if (wish == BodyReader::Wish::TooLong)
            return transportFailure(u"The server's answer is too long."_s);
        if (wish == BodyReader::Wish::Enough)
            return std::monostate();
        if (m_reply.isMalformed())
            return transportFailure(u"The server's answer could not be read."_s);
        if (m_reply.isComplete()) {
            m_reader->finish();
            return std::monostate();
        }
    }
    return std::nullopt;
}

void HttpExchange::connectionEnded()
{
    if (m_isReading || m_end)
        return;
    m_isReading = true;
    std::optional<End> result = read();
    if (!result && !m_isStopped) {
        if (!isBrokenOff(m_connection))
            m_reply.finish();
        if (m_reply.isComplete()) {
            m_reader->finish();
            result = std::monostate();
        } else if (m_wasConnected) {
            result = transportFailure(u"The network connection was lost."_s);
        } else {
            result = transportFailure(u"Could not connect to the server."_s);
        }
    }
    m_isReading = false;
    end(m_isStopped ? End(kStopped) : *std::move(result));
}

void HttpExchange::end(End result)
{
    if (m_end)
        return;
    m_end = std::move(result);
    m_idle.stop();
    m_socket.abort();
    m_connection.close();
    // The last thing: who waits goes on in here.
    if (const std::coroutine_handle<> waiting = std::exchange(m_waiting, nullptr))
        waiting.resume();
}

} // namespace Tessaline
