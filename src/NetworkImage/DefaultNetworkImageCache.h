#pragma once

#include "NetworkImage/NetworkImageCache.h"

#include <QtCore/QCache>

namespace NetworkImage {

/// Keeps the images that were used last: at most `countLimit` of them, and fewer if they are large.
class DefaultNetworkImageCache final : public NetworkImageCache
{
public:
    static constexpr int kCountLimit = 100;
    /// What all kept images may take in memory: one of the largest that are decoded, or a hundred of a window's size.
    static constexpr qsizetype kByteLimit = qsizetype(256) << 20;

    explicit DefaultNetworkImageCache(int countLimit = kCountLimit, qsizetype byteLimit = kByteLimit);

    QImage image(const QUrl &url) override;
    void setImage(const QImage &image, const QUrl &url) override;

private:
    const qsizetype m_share; // what an image costs at least
    QCache<QUrl, QImage> m_cache;
};

} // namespace NetworkImage
