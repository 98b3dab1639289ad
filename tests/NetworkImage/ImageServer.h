#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QUrl>
#include <QtGui/QImage>
#include <QtNetwork/QTcpServer>

class QTcpSocket;

namespace NetworkImage {

/// An HTTP server on this machine that answers as a test says and counts. Runs in the event loop of the test.
class ImageServer final : public QTcpServer
{
    Q_OBJECT
public:
    enum class Ending {
        Whole,   // the body has the length that was announced
        Cut,     // the connection is closed after the body, which was announced to be longer
        Stalled, // nothing comes after the body, which was announced to be longer
        Endless, // the body is sent again and again
    };
    struct Answer {
        QByteArray status = "200 OK";
        QByteArray body = {};
        QByteArray headers = {}; // further ones, each with its CR LF
        Ending ending = Ending::Whole;
    };

    enum class Start {
        AtOnce,
        Later, // the port is taken, and refuses connections until `open` is called
    };

    explicit ImageServer(Start start = Start::AtOnce);
    void open();

    QUrl url(const QByteArray &path) const;
    void setAnswer(const QByteArray &path, const Answer &answer) { m_answers.insert(path, answer); }
    int requestCount(const QByteArray &path) const { return static_cast<int>(m_requests.value(path).size()); }
    QByteArray lastRequest(const QByteArray &path) const
    {
        return m_requests.value(path).value(requestCount(path) - 1);
    }
    int openConnections() const { return m_open; }

private:
    void serve(QTcpSocket *socket);
    void respond(QTcpSocket *socket, const QByteArray &request);

    QHash<QByteArray, Answer> m_answers;
    QHash<QByteArray, QList<QByteArray>> m_requests;
    int m_socket = -1; // the server's own, once it is open
    quint16 m_port = 0;
    int m_open = 0;
};

/// The bytes of an image file of one colour.
QByteArray imageFile(QRgb colour, const QSize &size = {3, 2}, const char *format = "PNG");

} // namespace NetworkImage
