#include "tests/NetworkImage/ImageServer.h"

#include <QtCore/QBuffer>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpSocket>

#include <memory>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

namespace NetworkImage {

ImageServer::ImageServer(Start start)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0 || bind(m_socket, reinterpret_cast<sockaddr *>(&address), length) != 0 ||
        getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        qFatal("The test gets no port.");
    m_port = ntohs(address.sin_port);

    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *const socket = nextPendingConnection())
            serve(socket);
    });
    if (start == Start::AtOnce)
        open();
}

void ImageServer::open()
{
    constexpr int kMostWaiting = 50;
    if (::listen(m_socket, kMostWaiting) != 0 || !setSocketDescriptor(m_socket))
        qFatal("The test cannot listen: %s", qPrintable(errorString()));
}

QUrl ImageServer::url(const QByteArray &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(QString::fromUtf8(path)));
}

void ImageServer::serve(QTcpSocket *socket)
{
    ++m_open;
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        --m_open;
        socket->deleteLater();
    });
    const auto received = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::readyRead, this, [this, socket, received] {
        *received += socket->readAll();
        if (received->endsWith("\r\n\r\n"))
            respond(socket, std::exchange(*received, {}));
    });
}

void ImageServer::respond(QTcpSocket *socket, const QByteArray &request)
{
    const QByteArray path = request.split(' ').value(1);
    m_requests[path].append(request);
    const Answer answer = m_answers.value(path, {"404 Not Found", "Not here."});

    QByteArray head = "HTTP/1.1 " + answer.status + "\r\nConnection: close\r\n" + answer.headers;
    if (!answer.headers.contains("Content-Length") && answer.ending != Ending::Endless)
        head +=
            "Content-Length: " + QByteArray::number(answer.body.size() + (answer.ending == Ending::Whole ? 0 : 1000)) +
            "\r\n";
    socket->write(head + "\r\n" + answer.body);
    if (answer.ending == Ending::Whole || answer.ending == Ending::Cut)
        socket->disconnectFromHost();
    if (answer.ending == Ending::Endless)
        connect(socket, &QTcpSocket::bytesWritten, this, [socket, body = answer.body] {
            if (socket->bytesToWrite() < 1'000'000)
                socket->write(body);
        });
}

QByteArray imageFile(QRgb colour, const QSize &size, const char *format)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format))
        qFatal("The test cannot write %s", format);
    return buffer.data();
}

} // namespace NetworkImage
