#pragma once

#include "foundation/FileURL.h"
#include "NetworkImage/ImageTransport.h"
#include "NetworkImage/NetworkImageCache.h"
#include "NetworkImage/NetworkImageLoader.h"

#include <QtCore/QThread>
#include <QtCore/QThreadPool>

#include <functional>
#include <memory>
#include <mutex>

namespace NetworkImage {

/// Loads images one step at a time on a thread of its own, and decodes them on workers of its own. Those who ask for a
/// URL while it is loaded share one download and one decoding.
///
/// What fails is asked for again the next time, with one exception: where the server gave no answer at all (a time-out,
/// no connection, a URL that is not fetched) the same failure is given at once as long as the loader lives. So a dead
/// server is waited for once, not by each view that shows its image.
///
/// Nothing runs before the first image is asked for.
class DefaultNetworkImageLoader final : public NetworkImageLoader
{
public:
    using MakeTransport = std::function<std::unique_ptr<ImageTransport>()>; // called once, on the loader's thread

    DefaultNetworkImageLoader(MakeTransport makeTransport, std::unique_ptr<NetworkImageCache> cache);
    /// Drops the downloads and waits for a decoding that runs; all futures come to their end.
    ~DefaultNetworkImageLoader() override;

    QFuture<ImageResult> image(const QUrl &url) override;

private:
    class Executor; // lives on m_thread

    std::once_flag m_start;
    QThread m_thread;
    QThreadPool m_decoders;
    Executor *m_executor; // deleted on its own thread when that ends
};

/// The loader for the whole process: it keeps the bytes of images in `cacheFolder`, which is its own, and at most 100
/// decoded images in memory.
std::unique_ptr<NetworkImageLoader> makeSharedLoader(const Tessaline::FileURL &cacheFolder);

} // namespace NetworkImage
