#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtSvg/QSvgRenderer>

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace Qt::StringLiterals;

QString iconPath()
{
    return QString::fromUtf8(TESSALINE_ICON);
}

QImage rendered(int side)
{
    QSvgRenderer renderer(iconPath());
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

} // namespace

TEST(ApplicationIcon, IsASquareDrawingThatTheToolkitReads)
{
    const QSvgRenderer renderer(iconPath());

    EXPECT_TRUE(renderer.isValid());
    EXPECT_EQ(renderer.defaultSize(), QSize(128, 128));
    EXPECT_EQ(renderer.viewBoxF(), QRectF(0, 0, 128, 128));
}

TEST(ApplicationIcon, HoldsNeitherTextNorPicturesNorLinks)
{
    QFile file(iconPath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray source = file.readAll();

    for (const char *element : {"<text", "<image", "<style", "<script", "<foreignObject", "href"})
        EXPECT_FALSE(source.contains(element)) << element;
}

TEST(ApplicationIcon, HasTransparentCornersAndAFilledMiddleAtEverySize)
{
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const QImage image = rendered(side);

        EXPECT_LT(qAlpha(image.pixel(0, 0)), 64) << side;
        EXPECT_LT(qAlpha(image.pixel(side - 1, side - 1)), 64) << side;
        EXPECT_EQ(qAlpha(image.pixel(side / 2, side / 2)), 255) << side;
    }
}

TEST(ApplicationIcon, KeepsItsThreeTonesApartAtTheSmallestSize)
{
    const QImage image = rendered(16);

    // Positions in the grid of 16: the middle of the T's bar, the gold tile, the paper between the rows.
    const int ink = qGray(image.pixel(8, 3));
    const int gold = qGray(image.pixel(12, 3));
    const int paper = qGray(image.pixel(12, 13));
    EXPECT_LT(ink, 60);
    EXPECT_GT(gold, ink + 60);
    EXPECT_GT(paper, gold + 60);
    EXPECT_GT(qRed(image.pixel(12, 3)), qBlue(image.pixel(12, 3)) + 80) << "the gold is warm";
}
