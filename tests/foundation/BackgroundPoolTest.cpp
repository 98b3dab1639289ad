#include "foundation/BackgroundPool.h"

#include "tests/support/HeldWorkers.h"

#include <QtCore/QThread>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

// Would stand still for ever if painting waited for these workers.
TEST(BackgroundPoolTest, PaintingGoesOnWhileAllWorkersAreBusy)
{
    const HeldWorkers held;
    QImage image(1000, 1000, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainterPath disk;
    disk.addEllipse(image.rect());
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 1000, 1000);
    gradient.setColorAt(0, QColor(255, 0, 0, 128));
    gradient.setColorAt(1, QColor(0, 0, 255, 128));
    painter.fillPath(disk, gradient);
    painter.end();

    EXPECT_GT(image.pixelColor(500, 500).alpha(), 0);
}

TEST(BackgroundPoolTest, HasAWorkerForEachCore)
{
    EXPECT_EQ(backgroundPool().maxThreadCount(), QThread::idealThreadCount());
}

} // namespace

} // namespace Tessaline
