#include "NetworkImage/ImageDecoding.h"

#include "tests/NetworkImage/ImageServer.h"

#include <gtest/gtest.h>

#include <QtCore/QBuffer>
#include <QtCore/QtEndian>
#include <QtGui/QColorSpace>

using namespace NetworkImage;

namespace {

constexpr QRgb kRed = 0xFFFF0000;

QImage decoded(const QByteArray &bytes, qint64 mostPixels = kMostPixels)
{
    const ImageResult result = decodedImage(bytes, mostPixels);
    if (const URLError *const error = std::get_if<URLError>(&result)) {
        EXPECT_EQ(*error, URLError::CannotDecodeContentData);
        return QImage();
    }
    return std::get<QImage>(result);
}

QByteArray fileOf(const QImage &image, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return buffer.data();
}

/// Two frames of one pixel: a red one and a blue one.
const QByteArray kAnimation = QByteArray::fromHex("474946383961010001008001"
                                                  "00ff00000000ff"
                                                  "21f90400010000002c00000000010001000002024401"
                                                  "00"
                                                  "21f90400010000002c0000000001000100000202"
                                                  "4c0100"
                                                  "3b");

/// What a file of PNG begins with, of the given size, without any pixel behind it.
QByteArray pngHeader(quint32 width, quint32 height)
{
    QByteArray file = imageFile(kRed, {1, 1});
    qToBigEndian(width, file.data() + 16);
    qToBigEndian(height, file.data() + 20);
    quint32 sum = 0xFFFFFFFF; // the check sum over the chunk's name and content
    for (int i = 12; i < 29; ++i) {
        sum ^= quint8(file.at(i));
        for (int bit = 0; bit < 8; ++bit)
            sum = sum & 1 ? sum >> 1 ^ 0xEDB88320 : sum >> 1;
    }
    qToBigEndian(~sum, file.data() + 29);
    return file;
}

/// A JPEG of 16 x 8 pixels, with a tag that says that it stands on its side.
QByteArray turnedJpeg()
{
    QByteArray file = imageFile(kRed, {16, 8}, "JPEG");
    const QByteArray exif = QByteArray::fromHex("ffe1002245786966000049492a00080000000100120103000100000006000000"
                                                "00000000");
    return file.first(2) + exif + file.sliced(2);
}

} // namespace

TEST(ImageDecoding, DecodesTheUsualFormats)
{
    for (const char *format : {"PNG", "JPEG", "BMP", "ICO"}) {
        const QImage image = decoded(imageFile(kRed, {8, 8}, format));
        EXPECT_EQ(image.size(), QSize(8, 8)) << format;
        EXPECT_NEAR(qRed(image.pixel(4, 4)), 255, 3) << format;
        EXPECT_NEAR(qBlue(image.pixel(4, 4)), 0, 3) << format;
    }
}

TEST(ImageDecoding, TakesTheFirstFrameOnly)
{
    const QImage image = decoded(kAnimation);
    ASSERT_EQ(image.size(), QSize(1, 1));
    EXPECT_EQ(image.pixel(0, 0), kRed);
}

TEST(ImageDecoding, GivesAFormatThatIsDrawnWithoutConversion)
{
    QImage source(2, 2, QImage::Format_RGBA64);
    source.fill(Qt::red);
    EXPECT_EQ(decoded(fileOf(source, "PNG")).format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(decoded(fileOf(source.convertToFormat(QImage::Format_Grayscale8), "PNG")).format(), QImage::Format_RGB32);
    EXPECT_EQ(decoded(kAnimation).devicePixelRatio(), 1);
}

TEST(ImageDecoding, TurnsAnImageUpright)
{
    EXPECT_EQ(decoded(turnedJpeg()).size(), QSize(8, 16));
}

TEST(ImageDecoding, BringsColoursToTheUsualSpace)
{
    QImage source(2, 2, QImage::Format_RGB32);
    source.fill(qRgb(120, 200, 40));
    source.setColorSpace(QColorSpace::AdobeRgb);
    const QImage image = decoded(fileOf(source, "PNG"));
    ASSERT_FALSE(image.isNull());
    EXPECT_NE(image.pixel(0, 0), source.pixel(0, 0));
    EXPECT_EQ(image.pixel(0, 0), source.convertedToColorSpace(QColorSpace::SRgb).pixel(0, 0));
}

TEST(ImageDecoding, RefusesMorePixelsThanTheLimit)
{
    EXPECT_FALSE(decoded(imageFile(kRed, {20, 5}), 100).isNull());
    EXPECT_TRUE(decoded(imageFile(kRed, {20, 5}), 99).isNull());
    EXPECT_TRUE(decoded(pngHeader(8001, 8000)).isNull());
    EXPECT_TRUE(decoded(pngHeader(0x7FFFFFFF, 0x7FFFFFFF)).isNull());
}

TEST(ImageDecoding, RefusesWhatIsNoPicture)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("x"), QByteArray("<html></html>"), QByteArray(1000, '\0'),
          QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><rect width='9' height='9'/></svg>"),
          QByteArray("P1 1 1 1"), QByteArray("/* XPM */ static char *a[] = {\"1 1 1 1\", \"a c red\", \"a\"};")})
        EXPECT_TRUE(decoded(bytes).isNull()) << bytes.toStdString();
}

TEST(ImageDecoding, SurvivesFilesThatAreCutOrSpoilt)
{
    // What the decoders say of them is not of interest.
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    for (const QByteArray &file : {imageFile(kRed, {40, 40}), imageFile(kRed, {40, 40}, "JPEG"), turnedJpeg(),
                                   kAnimation, imageFile(kRed, {16, 16}, "BMP"), imageFile(kRed, {16, 16}, "ICO")}) {
        for (qsizetype length = 0; length < file.size(); length += 17)
            decoded(file.first(length));
        for (qsizetype at = 0; at < file.size(); at += 7) {
            QByteArray spoilt = file;
            spoilt[at] = char(spoilt.at(at) ^ 0xFF);
            decoded(spoilt, 1'000'000);
        }
    }
    qInstallMessageHandler(previous);
}
