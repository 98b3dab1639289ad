#include "NetworkImage/ImageDecoding.h"

#include <QtCore/QBuffer>
#include <QtCore/QByteArrayView>
#include <QtGui/QColorSpace>
#include <QtGui/QImageReader>

namespace NetworkImage {

namespace {

struct Signature {
    const char *format; // as the toolkit calls it
    QByteArrayView beginning;
};

constexpr Signature kSignatures[] = {
    {"png", "\x89PNG\r\n\x1A\n"}, {"jpeg", "\xFF\xD8\xFF"}, {"gif", "GIF87a"},      {"gif", "GIF89a"}, {"bmp", "BM"},
    {"ico", {"\0\0\1\0", 4}},     {"tiff", {"II*\0", 4}},   {"tiff", {"MM\0*", 4}},
};

/// The format of the bytes; null if it is none that is decoded. The toolkit is not asked: it would try every decoder
/// that is installed, among them those of formats that can name other files.
const char *formatOf(QByteArrayView bytes)
{
    for (const Signature &signature : kSignatures)
        if (bytes.startsWith(signature.beginning))
            return signature.format;
    const bool isWebP = bytes.size() >= 12 && bytes.startsWith("RIFF") && bytes.sliced(8).startsWith("WEBP");
    return isWebP ? "webp" : nullptr;
}

} // namespace

void prepareDecoding()
{
    constexpr qint64 kMostBytesOfAPixel = 8;
    QImageReader::setAllocationLimit(static_cast<int>((kMostPixels * kMostBytesOfAPixel >> 20) + 1)); // MB
}

ImageResult decodedImage(const QByteArray &bytes, qint64 mostPixels)
{
    const char *const format = formatOf(bytes);
    if (!format)
        return URLError::CannotDecodeContentData;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);

    // The size stands at the beginning of each of these formats; memory is taken only behind this.
    const QSize size = reader.size();
    if (size.isEmpty() || qint64(size.width()) * size.height() > mostPixels)
        return URLError::CannotDecodeContentData;
    QImage image = reader.read();
    if (image.isNull() || qint64(image.width()) * image.height() > mostPixels)
        return URLError::CannotDecodeContentData;

    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb))
        image.convertToColorSpace(QColorSpace::SRgb);
    if (image.isNull())
        return URLError::CannotDecodeContentData;
    image.setDevicePixelRatio(1);
    return image;
}

} // namespace NetworkImage
