#pragma once

#include "NetworkImage/NetworkImageLoader.h"

namespace Gallery {

/// Draws the images of the sample text: "https://gallery.invalid/240x120" is 240 by 120 pixels. All other addresses
/// fail, so that a picture of the gallery does not depend on a network.
class SampleImages final : public NetworkImage::NetworkImageLoader
{
public:
    QFuture<NetworkImage::ImageResult> image(const QUrl &url) override;
};

} // namespace Gallery
