#include "foundation_ui/Symbols.h"

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QStringList kNames{u"arrow.clockwise"_s,
                         u"chevron.down"_s,
                         u"chevron.left"_s,
                         u"chevron.left.forwardslash.chevron.right"_s,
                         u"chevron.right"_s,
                         u"chevron.up"_s,
                         u"doc"_s,
                         u"doc.plaintext"_s,
                         u"doc.richtext"_s,
                         u"exclamationmark.triangle"_s,
                         u"folder"_s,
                         u"folder.badge.plus"_s,
                         u"laptopcomputer"_s,
                         u"minus"_s,
                         u"moon.fill"_s,
                         u"plus"_s,
                         u"rectangle.split.2x1"_s,
                         u"square"_s,
                         u"square.and.pencil"_s,
                         u"square.on.square"_s,
                         u"sun.max.fill"_s,
                         u"text.document"_s,
                         u"xmark"_s};

/// The number of pixels that are not transparent, and whether each of them has the given colour but for its opacity.
struct Coverage {
    int pixels = 0;
    bool hasOnlyThatColour = true;
};

Coverage coverageOf(const QImage &image, const QColor &color)
{
    Coverage coverage;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() == 0)
                continue;
            ++coverage.pixels;
            if (pixel.alpha() > 200 &&
                (std::abs(pixel.red() - color.red()) > 2 || std::abs(pixel.blue() - color.blue()) > 2))
                coverage.hasOnlyThatColour = false;
        }
    }
    return coverage;
}

} // namespace

TEST(Symbols, EveryNameIsDrawnInTheColourThatIsAskedFor)
{
    for (const QString &name : kNames) {
        ASSERT_TRUE(Symbols::exists(name)) << name.toStdString();
        const QImage image = Symbols::pixmap(name, 16, Qt::red, 2).toImage();
        const Coverage coverage = coverageOf(image, Qt::red);
        EXPECT_GT(coverage.pixels, 16) << name.toStdString();
        EXPECT_TRUE(coverage.hasOnlyThatColour) << name.toStdString();
    }
}

TEST(Symbols, APictureHasAsManyPixelsAsTheDeviceShows)
{
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const QPixmap pixmap = Symbols::pixmap(u"folder", 14, Qt::black, ratio);
        EXPECT_EQ(pixmap.width(), qRound(14 * ratio));
        EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), ratio);
        EXPECT_NEAR(pixmap.deviceIndependentSize().width(), 14, 0.01);
    }
}

TEST(Symbols, ThePictureOfOneColourIsNotTakenForAnother)
{
    const QImage red = Symbols::pixmap(u"plus", 16, Qt::red, 1).toImage();
    const QImage blue = Symbols::pixmap(u"plus", 16, Qt::blue, 1).toImage();

    EXPECT_NE(red, blue);
    EXPECT_EQ(Symbols::pixmap(u"plus", 16, Qt::red, 1).toImage(), red); // from what was kept
}

TEST(Symbols, AnUnknownNameDrawsNothing)
{
    EXPECT_FALSE(Symbols::exists(u"no.such.symbol"));
    EXPECT_TRUE(Symbols::pixmap(u"no.such.symbol", 16, Qt::black, 1).isNull());

    QImage image(20, 20, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    Symbols::draw(painter, u"no.such.symbol", QRectF(0, 0, 20, 20), 16, Qt::black);
    painter.end();
    EXPECT_EQ(coverageOf(image, Qt::black).pixels, 0);
}

TEST(Symbols, AreDrawnOnWholePixelsWhereverTheirBoxStands)
{
    // A line of one pixel stays a line of one pixel: half a pixel off would make it two grey ones.
    const QImage alone = Symbols::pixmap(u"square", 16, Qt::black, 1).toImage();
    QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(3.4, 0);
    Symbols::draw(painter, u"square", QRectF(4.3, 5.5, 16, 16), 16, Qt::black);
    painter.end();

    EXPECT_EQ(coverageOf(image, Qt::black).pixels, coverageOf(alone, Qt::black).pixels);
}

} // namespace Tessaline
