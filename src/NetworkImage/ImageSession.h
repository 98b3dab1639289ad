#pragma once

#include "foundation/FileURL.h"
#include "NetworkImage/ImageTransport.h"

#include <QtCore/QCache>
#include <QtCore/QObject>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkDiskCache>

#include <chrono>
#include <optional>

namespace NetworkImage {

struct ImageSessionOptions {
    Tessaline::FileURL cacheFolder; // made when it is needed, for the user alone; the session's own
    qint64 memoryCapacity = 10'485'760;
    qint64 diskCapacity = 104'857'600;
    std::chrono::milliseconds timeout{15'000}; // without any byte of the answer
    qint64 mostBytes = qint64(64) << 20;       // of one body
};

/// Fetches images by HTTP. Bytes that are kept, in memory or on the disk, are used without asking the server, however
/// old they are; kept is what came with status 200, unless the server forbade it. Redirects are followed among http and
/// https. No cookies, no passwords; a proxy of the system is used, but for loopback.
///
/// An answer without a body to wait for (a status outside of 200 to 299) and one with a body beyond `mostBytes` are
/// given at once, and the connection is dropped. Fails with UnsupportedURL, TimedOut or ConnectionFailed. Everything
/// happens on the thread that made it.
class ImageSession final : public QObject, public ImageTransport
{
    Q_OBJECT
public:
    explicit ImageSession(ImageSessionOptions options, QObject *parent = nullptr);
    ~ImageSession() override;

    void data(const QUrl &url, Completion done) override;
    void forget(const QUrl &url) override;

private:
    class Download;
    QByteArray keptBytes(const QUrl &url); // null if there are none
    void keep(const QUrl &url, const QByteArray &bytes);

    const ImageSessionOptions m_options;
    QCache<QUrl, QByteArray> m_memory;
    std::optional<QNetworkDiskCache> m_disk; // absent if there is no folder to write to
    QNetworkAccessManager m_network;
};

} // namespace NetworkImage
