#include "NetworkImage/DefaultNetworkImageLoader.h"

#include "NetworkImage/DefaultNetworkImageCache.h"
#include "NetworkImage/ImageDecoding.h"
#include "NetworkImage/ImageSession.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QPromise>

#include <optional>
#include <utility>
#include <vector>

namespace NetworkImage {

namespace {

using Promise = std::shared_ptr<QPromise<ImageResult>>;

constexpr int kMostDecodings = 2; // at once; each may take half a gigabyte

void fulfil(const Promise &promise, const ImageResult &result)
{
    promise->addResult(result);
    promise->finish();
}

} // namespace

/// What the loader does and knows, on its own thread.
class DefaultNetworkImageLoader::Executor final : public QObject
{
public:
    Executor(MakeTransport makeTransport, std::unique_ptr<NetworkImageCache> cache, QThreadPool &decoders)
        : m_makeTransport(std::move(makeTransport)), m_cache(std::move(cache)), m_decoders(decoders)
    {}

    void image(const QUrl &url, const Promise &promise)
    {
        // 1. What has been decoded is there.
        if (const QImage image = m_cache->image(url); !image.isNull())
            return fulfil(promise, image);

        // 2. A load of the same URL is joined, also one that has failed and stays.
        if (const auto ongoing = m_ongoingTasks.find(url); ongoing != m_ongoingTasks.end()) {
            if (ongoing->failure)
                fulfil(promise, *ongoing->failure);
            else
                ongoing->waiting.push_back(promise);
            return;
        }

        // 3. Otherwise it begins.
        m_ongoingTasks.insert(url, {{promise}, std::nullopt});
        if (!m_transport)
            m_transport = m_makeTransport();
        m_transport->data(url, [this, url](const ImageDataResult &result) { dataCame(url, result); });
    }

    /// Nothing is called from outside behind this.
    void stop()
    {
        m_transport.reset();
        for (const Task &task : std::exchange(m_ongoingTasks, {}))
            for (const Promise &promise : task.waiting)
                fulfil(promise, URLError::Cancelled);
    }

private:
    struct Task {
        std::vector<Promise> waiting;
        std::optional<URLError> failure; // of a task that stays
    };

    void dataCame(const QUrl &url, const ImageDataResult &result)
    {
        if (const URLError *const error = std::get_if<URLError>(&result)) {
            Task &task = m_ongoingTasks[url];
            task.failure = *error;
            for (const Promise &promise : std::exchange(task.waiting, {}))
                fulfil(promise, *error);
            return;
        }
        const auto &response = std::get<ImageResponse>(result);
        if (!ImageResponse::isSuccess(response.statusCode))
            return finish(url, URLError::BadServerResponse);
        if (response.isTooLarge)
            return finish(url, URLError::CannotDecodeContentData);
        m_decoders.start([this, url, bytes = response.bytes] { // the pool ends before this object does
            const ImageResult decoded = decodedImage(bytes);
            QMetaObject::invokeMethod(
                this, [this, url, decoded] { imageCame(url, decoded); }, Qt::QueuedConnection);
        });
    }

    void imageCame(const QUrl &url, const ImageResult &result)
    {
        if (!m_transport)
            return; // stopped
        if (const QImage *const image = std::get_if<QImage>(&result))
            m_cache->setImage(*image, url);
        else
            m_transport->forget(url); // the next request gets other bytes, if there are any
        finish(url, result);
    }

    void finish(const QUrl &url, const ImageResult &result)
    {
        const Task task = m_ongoingTasks.take(url);
        for (const Promise &promise : task.waiting)
            fulfil(promise, result);
    }

    const MakeTransport m_makeTransport;
    const std::unique_ptr<NetworkImageCache> m_cache;
    QThreadPool &m_decoders;
    std::unique_ptr<ImageTransport> m_transport; // made for the first image; null again once stopped
    QHash<QUrl, Task> m_ongoingTasks;
};

DefaultNetworkImageLoader::DefaultNetworkImageLoader(MakeTransport makeTransport,
                                                     std::unique_ptr<NetworkImageCache> cache)
    : m_executor(new Executor(std::move(makeTransport), std::move(cache), m_decoders))
{
    prepareDecoding();
    m_thread.setObjectName(QStringLiteral("NetworkImage"));
    m_decoders.setMaxThreadCount(kMostDecodings);
    m_executor->moveToThread(&m_thread);
}

DefaultNetworkImageLoader::~DefaultNetworkImageLoader()
{
    if (!m_thread.isRunning()) {
        delete m_executor;
        return;
    }
    QObject::connect(&m_thread, &QThread::finished, m_executor, &QObject::deleteLater);
    QMetaObject::invokeMethod(
        m_executor, [executor = m_executor] { executor->stop(); }, Qt::BlockingQueuedConnection);
    m_decoders.clear();
    m_decoders.waitForDone();
    m_thread.quit();
    m_thread.wait();
}

QFuture<ImageResult> DefaultNetworkImageLoader::image(const QUrl &url)
{
    std::call_once(m_start, [this] { m_thread.start(); });
    const auto promise = std::make_shared<QPromise<ImageResult>>();
    promise->start();
    QMetaObject::invokeMethod(
        m_executor, [executor = m_executor, url, promise] { executor->image(url, promise); }, Qt::QueuedConnection);
    return promise->future();
}

std::unique_ptr<NetworkImageLoader> makeSharedLoader(const Tessaline::FileURL &cacheFolder)
{
    return std::make_unique<DefaultNetworkImageLoader>(
        [cacheFolder] { return std::make_unique<ImageSession>(ImageSessionOptions{cacheFolder}); },
        std::make_unique<DefaultNetworkImageCache>());
}

} // namespace NetworkImage
