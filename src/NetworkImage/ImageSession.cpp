#include "NetworkImage/ImageSession.h"

#include "foundation/PrivateFiles.h"

#include <QtCore/QIODevice>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <algorithm>
#include <memory>
#include <utility>

namespace NetworkImage {

namespace {

constexpr int kMostRedirects = 20;

bool isWeb(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

/// The system's proxies, but none for this machine.
class Proxies final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        const QString host = query.peerHostName();
        if (host == QLatin1String("localhost") || QHostAddress(host).isLoopback())
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return systemProxyForQuery(query);
    }
};

/// Why the reply has no answer; only for one that has none.
URLError errorOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError: // how the toolkit calls its own limit; we never cancel and then ask
        return URLError::TimedOut;
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::InsecureRedirectError:
        return URLError::UnsupportedURL;
    default:
        return URLError::ConnectionFailed;
    }
}

bool mayKeep(const QNetworkReply &reply)
{
    return !reply.rawHeader("Cache-Control").toLower().contains("no-store");
}

} // namespace

/// One request, until its answer has been given.
class ImageSession::Download final : public QObject
{
public:
    Download(ImageSession &session, const QUrl &url, Completion done)
        : QObject(&session), m_session(session), m_url(url), m_done(std::move(done))
    {
        request(url);
    }
    ~Download() override { dropReply(); }

private:
    void request(const QUrl &url)
    {
        QNetworkRequest request(url);
        request.setRawHeader("Accept", "image/*");
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
        request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
        request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
        request.setTransferTimeout(static_cast<int>(m_session.m_options.timeout.count()));
        m_reply = m_session.m_network.get(request);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, [this] { headersCame(); });
        connect(m_reply, &QNetworkReply::readyRead, this, [this] { bytesCame(); });
        connect(m_reply, &QNetworkReply::finished, this, [this] { ended(); });
    }

    int statusCode() const { return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(); }

    enum class Outcome { Settled, Open }; // whether what came already says what the answer is

    Outcome headersCame()
    {
        if (!m_reply || statusCode() == 0)
            return Outcome::Open;
        const QVariant target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
        const qint64 length = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (target.isValid()) {
            follow(m_reply->url().resolved(target.toUrl()));
        } else if (!ImageResponse::isSuccess(statusCode())) {
            finish(ImageResponse{statusCode(), {}});
        } else if (length > m_session.m_options.mostBytes) {
            finish(ImageResponse{statusCode(), {}, true});
        } else {
            m_bytes.reserve(length);
            return Outcome::Open;
        }
        return Outcome::Settled;
    }

    // NOTE: the toolkit can follow redirects too, but reports the end of one more than once where it must not go on.
    void follow(const QUrl &target)
    {
        dropReply();
        if (!isWeb(target))
            return finish(URLError::UnsupportedURL);
        if (++m_redirects > kMostRedirects)
            return finish(URLError::ConnectionFailed);
        request(target);
    }

    void bytesCame()
    {
        if (!m_reply)
            return;
        m_bytes += m_reply->readAll();
        if (m_bytes.size() > m_session.m_options.mostBytes)
            finish(ImageResponse{statusCode(), {}, true});
    }

    void ended()
    {
        // A status may come with an error of the toolkit's, and without the signal of the headers.
        if (headersCame() == Outcome::Settled || !m_reply)
            return;
        if (m_reply->error() != QNetworkReply::NoError)
            return finish(errorOf(m_reply->error()));
        bytesCame();
        if (!m_reply)
            return;
        if (statusCode() == 200 && mayKeep(*m_reply))
            m_session.keep(m_url, m_bytes);
        finish(ImageResponse{statusCode(), m_bytes});
    }

    void finish(const ImageDataResult &result)
    {
        dropReply();
        deleteLater();
        m_done(result);
    }

    void dropReply()
    {
        QNetworkReply *const reply = std::exchange(m_reply, nullptr);
        if (!reply)
            return;
        disconnect(reply, nullptr, this, nullptr);
        // Closes the connection. Not at once, for it may be its signal that is being delivered.
        reply->deleteLater();
    }

    ImageSession &m_session;
    const QUrl m_url;
    const Completion m_done;
    QByteArray m_bytes;
    QNetworkReply *m_reply = nullptr; // the manager's; null once the answer is given
    int m_redirects = 0;
};

ImageSession::ImageSession(ImageSessionOptions options, QObject *parent)
    : QObject(parent), m_options(std::move(options)), m_memory(m_options.memoryCapacity)
{
    // Without a folder the memory alone keeps bytes.
    if (Tessaline::makePrivateFolder(m_options.cacheFolder)) {
        m_disk.emplace();
        m_disk->setCacheDirectory(m_options.cacheFolder.path());
        m_disk->setMaximumCacheSize(m_options.diskCapacity);
    }
    m_network.setProxyFactory(new Proxies); // owned by the manager
}

ImageSession::~ImageSession()
{
    // Downloads first: they have replies of the manager's.
    qDeleteAll(findChildren<Download *>(Qt::FindDirectChildrenOnly));
}

void ImageSession::data(const QUrl &url, Completion done)
{
    if (!url.isValid() || !isWeb(url) || url.host().isEmpty())
        return done(URLError::UnsupportedURL);
    const QUrl resource = url.adjusted(QUrl::RemoveFragment); // the server does not see the rest
    const QByteArray kept = keptBytes(resource);
    if (!kept.isNull())
        return done(ImageResponse{200, kept});
    new Download(*this, resource, std::move(done)); // deletes itself
}

void ImageSession::forget(const QUrl &url)
{
    const QUrl resource = url.adjusted(QUrl::RemoveFragment);
    m_memory.remove(resource);
    if (m_disk)
        m_disk->remove(resource);
}

QByteArray ImageSession::keptBytes(const QUrl &url)
{
    if (const QByteArray *const bytes = m_memory.object(url))
        return *bytes;
    const std::unique_ptr<QIODevice> file(m_disk ? m_disk->data(url) : nullptr);
    if (!file || file->size() > m_options.mostBytes)
        return QByteArray();
    const QByteArray bytes = file->readAll();
    if (bytes.size() != file->size())
        return QByteArray();
    m_memory.insert(url, new QByteArray(bytes), bytes.size());
    return bytes;
}

void ImageSession::keep(const QUrl &url, const QByteArray &bytes)
{
    m_memory.insert(url, new QByteArray(bytes), bytes.size());
    if (!m_disk)
        return;
    QNetworkCacheMetaData entry;
    entry.setUrl(url);
    entry.setSaveToDisk(true);
    QIODevice *const file = m_disk->prepare(entry); // the cache's own, until it is inserted or the URL removed
    if (!file)
        return;
    if (file->write(bytes) == bytes.size())
        m_disk->insert(file);
    else
        m_disk->remove(url);
}

} // namespace NetworkImage
