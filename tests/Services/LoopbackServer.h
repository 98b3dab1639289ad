#pragma once

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <functional>

namespace Tessaline {

/// A server inside of the test, byte by byte: it keeps whole requests as they came, and answers what it is told to.
class LoopbackServer final : public QObject
{
    Q_OBJECT
public:
    /// Called with the connection and the request, once for each request.
    using Answer = std::function<void(QTcpSocket &connection, const QByteArray &request)>;

    /// Listens on a free port of 127.0.0.1.
    explicit LoopbackServer(Answer answer);

    quint16 port() const { return m_server.serverPort(); }
    const QList<QByteArray> &requests() const { return m_requests; }
    QByteArray request() const { return m_requests.value(0); } // the first
    int connectionCount() const { return m_connectionCount; }
    int openConnectionCount() const { return m_openConnectionCount; }
    /// The connection of the newest request; null once it is closed.
    QTcpSocket *connection() const { return m_connection; }

private:
    void accept();
    void read(QTcpSocket &connection);

    Answer m_answer;
    QHash<QTcpSocket *, QByteArray> m_begun; // requests that have yet to be whole
    QList<QByteArray> m_requests;
    QPointer<QTcpSocket> m_connection;
    int m_connectionCount = 0;
    int m_openConnectionCount = 0;
    QTcpServer m_server; // the last member: its connections end before what they tell
};

/// A whole reply, after which the connection is to be closed.
QByteArray httpReply(const QByteArray &body, const QByteArray &status = "200 OK");
/// The head of a reply that ends when the connection closes, and of one that comes in chunks.
extern const QByteArray kOpenHead;
extern const QByteArray kChunkedHead;
/// One chunk; an empty one is the last.
QByteArray chunk(const QByteArray &bytes);

} // namespace Tessaline
