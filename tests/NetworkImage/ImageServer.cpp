#include "tests/NetworkImage/ImageServer.h"

#include <QtCore/QBuffer>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpSocket>

#include <memory>

namespace NetworkImage {

ImageServer::ImageServer(quint16 port)
{
    if (!listen(QHostAddress::LocalHost, port))
        qFatal("The test cannot listen: %s", qPrintable(errorString()));
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *const socket = nextPendingConnection())
            serve(socket);
    });
}

QUrl ImageServer::url(const QByteArray &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(QString::fromUtf8(path)));
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
