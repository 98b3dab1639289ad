#include "NetworkImage/NetworkImageModel.h"

#include "NetworkImage/NetworkImageLoader.h"

#include <QtCore/QFutureWatcher>

namespace NetworkImage {

namespace {

NetworkImageState stateOf(const QFuture<ImageResult> &future, double scale)
{
    if (future.resultCount() == 0)
        return Failure(); // ended without a result
    const ImageResult result = future.result();
    const QImage *const decoded = std::get_if<QImage>(&result);
    if (!decoded)
        return Failure();
    const double pixelsPerPoint = scale > 0 ? scale : 1;
    QImage image = *decoded;
    image.setDevicePixelRatio(pixelsPerPoint);
    return Success{image, QSizeF(decoded->size()) / pixelsPerPoint};
}

} // namespace

NetworkImageModel::NetworkImageModel(NetworkImageLoader &imageLoader, QObject *parent)
    : QObject(parent), m_imageLoader(imageLoader)
{}

void NetworkImageModel::setSource(const std::optional<ImageSource> &source)
{
    if (source == m_source)
        return;
    m_source = source;
    ++m_load;
    m_isLoading = false;
    Q_EMIT sourceChanged();
    if (source != m_source)
        return; // who heard of it has set another one
    setImage(Empty());
    if (m_source && source == m_source)
        load();
}

void NetworkImageModel::cancel()
{
    if (!m_isLoading)
        return;
    ++m_load;
    m_isLoading = false;
    m_source.reset();
    Q_EMIT sourceChanged();
}

void NetworkImageModel::load()
{
    m_isLoading = true;
    // One watcher for each load: an event of the last load must not be taken for one of this.
    auto *const watcher = new QFutureWatcher<ImageResult>(this);
    connect(watcher, &QFutureWatcher<ImageResult>::finished, this,
            [this, watcher, number = ++m_load, scale = m_source->scale] {
                watcher->deleteLater();
                if (number != m_load)
                    return; // replaced or cancelled meanwhile
                m_isLoading = false;
                setImage(stateOf(watcher->future(), scale));
            });
    watcher->setFuture(m_imageLoader.image(m_source->url));
}

void NetworkImageModel::setImage(const NetworkImageState &image)
{
    if (image == m_image)
        return;
    m_image = image;
    Q_EMIT imageChanged();
}

} // namespace NetworkImage
