#include "gallery/SampleImages.h"

#include <QtCore/QRegularExpression>
#include <QtGui/QPainter>

namespace Gallery {

using namespace Qt::StringLiterals;

namespace {

constexpr int kLargest = 4000; // pixels

/// Stripes and a frame, so that an image that is cut or stretched is seen to be.
QImage sample(const QSize &size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(Qt::lightGray));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(Qt::darkCyan), 2));
    painter.drawRect(QRectF(image.rect()).adjusted(1, 1, -1, -1));
    painter.drawLine(QPointF(0, 0), QPointF(size.width(), size.height()));
    painter.drawEllipse(QRectF(image.rect()).adjusted(4, 4, -4, -4));
    return image;
}

} // namespace

QFuture<NetworkImage::ImageResult> SampleImages::image(const QUrl &url)
{
    static const QRegularExpression kSize(u"^/(\\d{1,4})x(\\d{1,4})$"_s);
    const QRegularExpressionMatch match = kSize.match(url.path());
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    QPromise<NetworkImage::ImageResult> promise;
    const QFuture<NetworkImage::ImageResult> future = promise.future();
    promise.start();
    const bool isSample = url.host() == u"gallery.invalid" && match.hasMatch() && !size.isEmpty();
    if (isSample)
        promise.addResult(sample(size.boundedTo({kLargest, kLargest})));
    else
        promise.addResult(NetworkImage::URLError::ConnectionFailed);
    promise.finish();
    return future;
}

} // namespace Gallery
