#pragma once

#include <QtCore/QUrl>
#include <QtGui/QImage>

namespace NetworkImage {

/// Keeps decoded images for the loader, which uses it on its own thread only.
class NetworkImageCache
{
public:
    virtual ~NetworkImageCache() = default;
    virtual QImage image(const QUrl &url) = 0; // a null image if there is none
    virtual void setImage(const QImage &image, const QUrl &url) = 0;
};

} // namespace NetworkImage
