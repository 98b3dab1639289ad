#include "shell/ApplicationIcon.h"

#include <QtGui/QImageReader>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

QPixmap applicationIcon(int side, double devicePixelRatio)
{
    QImageReader reader(u":/tessaline/com.orlenth.tessaline.svg"_s);
    reader.setScaledSize(QSize(side, side) * devicePixelRatio);
    QPixmap icon = QPixmap::fromImageReader(&reader);
    icon.setDevicePixelRatio(devicePixelRatio);
    return icon;
}

} // namespace Tessaline
