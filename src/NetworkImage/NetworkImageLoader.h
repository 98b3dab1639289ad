#pragma once

#include <QtCore/QFuture>
#include <QtCore/QUrl>
#include <QtGui/QImage>

#include <variant>

namespace NetworkImage {

/// Why there is no image.
enum class URLError {
    BadServerResponse,       // the server answered, with a status outside of 200 to 299
    CannotDecodeContentData, // the bytes are no image that can be decoded, or cost more than an image may
    UnsupportedURL,          // neither http nor https, or led to what is neither
    TimedOut,                // nothing came for too long
    ConnectionFailed,        // no connection, a broken one, or no such host
    Cancelled,               // the loader is gone
};

/// A decoded image, never a null one, or the reason why there is none.
using ImageResult = std::variant<QImage, URLError>;

/// Gives images by their URLs.
class NetworkImageLoader
{
public:
    virtual ~NetworkImageLoader() = default;

    /// The image at `url`, fully decoded. Returns at once, and the future always comes to its end with one result; if
    /// the loader goes first, with Cancelled. Dropping the future stops nothing: others may wait for the same image.
    /// Safe from any thread.
    virtual QFuture<ImageResult> image(const QUrl &url) = 0;
};

} // namespace NetworkImage
