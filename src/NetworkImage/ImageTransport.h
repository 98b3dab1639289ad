#pragma once

#include "NetworkImage/NetworkImageLoader.h"

#include <QtCore/QByteArray>

#include <functional>
#include <variant>

namespace NetworkImage {

/// What a server answered.
struct ImageResponse {
    int statusCode = 0;
    QByteArray bytes;        // the body; empty if the status is not from 200 to 299, which is not waited for
    bool isTooLarge = false; // the body goes beyond what an image may have, and was not read to its end

    static bool isSuccess(int statusCode) { return statusCode >= 200 && statusCode <= 299; }
};

/// An answer, or the reason why there was none.
using ImageDataResult = std::variant<ImageResponse, URLError>;

/// Fetches the bytes of images. Lives on the loader's thread, with its event loop.
class ImageTransport
{
public:
    using Completion = std::function<void(const ImageDataResult &)>;

    /// Drops what is under way; nothing is called any more.
    virtual ~ImageTransport() = default;
    /// Fetches the body at `url` and calls `done` once, within the call or later on the same thread.
    virtual void data(const QUrl &url, Completion done) = 0;
    /// What is kept of `url` is of no use: it is fetched anew the next time.
    virtual void forget(const QUrl &url) = 0;
};

} // namespace NetworkImage
