#include "NetworkImage/DefaultNetworkImageCache.h"

#include <algorithm>

namespace NetworkImage {

// Every image costs at least its share of the bytes, and so there are never more than the count.
DefaultNetworkImageCache::DefaultNetworkImageCache(int countLimit, qsizetype byteLimit)
    : m_share(byteLimit / countLimit), m_cache(m_share * countLimit)
{}

QImage DefaultNetworkImageCache::image(const QUrl &url)
{
    const QImage *const image = m_cache.object(url);
    return image ? *image : QImage();
}

void DefaultNetworkImageCache::setImage(const QImage &image, const QUrl &url)
{
    m_cache.insert(url, new QImage(image), std::max<qsizetype>(image.sizeInBytes(), m_share));
}

} // namespace NetworkImage
