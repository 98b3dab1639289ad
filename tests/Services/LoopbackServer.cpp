#include "tests/Services/LoopbackServer.h"

#include <QtNetwork/QHostAddress>
#include <QtNetwork/QNetworkProxy>

namespace Tessaline {

namespace {

/// The size of the first whole request of these bytes; 0 if it has yet to arrive.
qsizetype requestSize(const QByteArray &bytes)
{
    const qsizetype head = bytes.indexOf("\r\n\r\n");
    if (head < 0)
        return 0;
    const QByteArray fields = bytes.first(head).toLower() + "\r\n";
    constexpr QByteArrayView kLength = "\r\ncontent-length:";
    const qsizetype at = fields.indexOf(kLength);
    qsizetype body = 0;
    if (at >= 0) {
        const qsizetype from = at + kLength.size();
        body = fields.sliced(from, fields.indexOf("\r\n", from) - from).trimmed().toLongLong();
    }
    const qsizetype size = head + 4 + body;
    return bytes.size() >= size ? size : 0;
}

} // namespace

const QByteArray kOpenHead = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";
const QByteArray kChunkedHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

QByteArray httpReply(const QByteArray &body, const QByteArray &status)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray chunk(const QByteArray &bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

LoopbackServer::LoopbackServer(Answer answer) : m_answer(std::move(answer))
{
    connect(&m_server, &QTcpServer::newConnection, this, &LoopbackServer::accept);
    m_server.setProxy(QNetworkProxy::NoProxy);
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("The test cannot listen: %s", qPrintable(m_server.errorString()));
}

void LoopbackServer::accept()
{
    while (QTcpSocket *connection = m_server.nextPendingConnection()) {
        ++m_connectionCount;
        ++m_openConnectionCount;
        connect(connection, &QTcpSocket::readyRead, this, [this, connection] { read(*connection); });
        connect(connection, &QTcpSocket::disconnected, this, [this, connection] {
            --m_openConnectionCount;
            m_begun.remove(connection);
            connection->deleteLater();
        });
    }
}

void LoopbackServer::read(QTcpSocket &connection)
{
    QByteArray &bytes = m_begun[&connection];
    bytes += connection.readAll();
    const qsizetype size = requestSize(bytes);
    if (size == 0)
        return;
    const QByteArray request = bytes.first(size);
    bytes.remove(0, size);
    m_requests.append(request);
    m_connection = &connection;
    m_answer(connection, request);
}

} // namespace Tessaline
