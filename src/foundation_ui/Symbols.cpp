#include "foundation_ui/Symbols.h"

#include <QtCore/QHash>
#include <QtGui/QPainter>
#include <QtGui/QPixmapCache>
#include <QtSvg/QSvgRenderer>

#include <array>
#include <cmath>
#include <utility>

namespace Tessaline::Symbols {

namespace {

using namespace Qt::StringLiterals;

struct Entry {
    QStringView name;
    QLatin1StringView outline; // a file of resources/CMakeLists.txt, without its folder and extension
};

// The outlines come from the Debian package bootstrap-icons.
constexpr std::array kSymbols{
    Entry{u"arrow.clockwise", "arrow-clockwise"_L1},
    Entry{u"bold", "type-bold"_L1},
    Entry{u"checklist", "list-check"_L1},
    Entry{u"checkmark", "check2"_L1},
    Entry{u"checkmark.square.fill", "check-square-fill"_L1},
    Entry{u"chevron.down", "chevron-down"_L1},
    Entry{u"chevron.left", "chevron-left"_L1},
    Entry{u"chevron.left.forwardslash.chevron.right", "code-slash"_L1},
    Entry{u"chevron.right", "chevron-right"_L1},
    Entry{u"chevron.up", "chevron-up"_L1},
    Entry{u"curlybraces", "braces"_L1},
    Entry{u"doc", "file-earmark"_L1},
    Entry{u"doc.badge.plus", "file-earmark-plus"_L1},
    Entry{u"doc.on.doc", "files"_L1},
    Entry{u"doc.plaintext", "file-text"_L1},
    Entry{u"doc.richtext", "file-earmark-richtext"_L1},
    Entry{u"exclamationmark.triangle", "exclamation-triangle"_L1},
    Entry{u"exclamationmark.triangle.fill", "exclamation-triangle-fill"_L1},
    Entry{u"folder", "folder"_L1},
    Entry{u"folder.badge.plus", "folder-plus"_L1},
    Entry{u"italic", "type-italic"_L1},
    Entry{u"laptopcomputer", "laptop"_L1},
    Entry{u"link", "link-45deg"_L1},
    Entry{u"list.bullet", "list-ul"_L1},
    Entry{u"list.number", "list-ol"_L1},
    Entry{u"minus", "dash"_L1},
    Entry{u"moon.fill", "moon-fill"_L1},
    Entry{u"photo", "image"_L1},
    Entry{u"plus", "plus"_L1},
    Entry{u"plus.rectangle.on.rectangle", "plus-square"_L1},
    Entry{u"questionmark.circle", "question-circle"_L1},
    Entry{u"rectangle.split.2x1", "layout-split"_L1},
    Entry{u"return", "arrow-return-left"_L1},
    Entry{u"sparkles", "stars"_L1},
    Entry{u"square", "square"_L1},
    Entry{u"square.and.pencil", "pencil-square"_L1},
    Entry{u"square.on.square", "window-stack"_L1},
    Entry{u"stop.fill", "stop-fill"_L1},
    Entry{u"sun.max.fill", "sun-fill"_L1},
    Entry{u"tablecells", "table"_L1},
    Entry{u"text.alignleft", "text-left"_L1},
    Entry{u"text.document", "file-earmark-richtext"_L1},
    Entry{u"text.quote", "quote"_L1},
    Entry{u"textformat", "type"_L1},
    Entry{u"textformat.word", "textarea-t"_L1},
    Entry{u"trash", "trash"_L1},
    Entry{u"wand.and.stars", "magic"_L1},
    Entry{u"xmark", "x"_L1},
};

QLatin1StringView outlineOf(QStringView name)
{
    for (const Entry &entry : kSymbols)
        if (entry.name == name)
            return entry.outline;
    return {};
}

} // namespace

bool exists(QStringView name)
{
    return !outlineOf(name).isEmpty();
}

QPixmap pixmap(QStringView name, double size, const QColor &color, double devicePixelRatio)
{
    const int side = static_cast<int>(std::lround(size * devicePixelRatio)); // in the device's pixels
    const QString key = "Tessaline symbol %1 %2 %3"_L1.arg(name).arg(side).arg(color.rgba(), 8, 16);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) {
        pixmap.setDevicePixelRatio(devicePixelRatio);
        return pixmap;
    }

    const QLatin1StringView outline = outlineOf(name);
    if (outline.isEmpty() || side <= 0)
        return QPixmap();
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    QSvgRenderer renderer(u":/symbols/%1.svg"_s.arg(outline));
    renderer.render(&painter, QRectF(0, 0, side, side));
    // The outlines are black; only their coverage counts.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();

    pixmap = QPixmap::fromImage(std::move(image), Qt::NoFormatConversion);
    QPixmapCache::insert(key, pixmap);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

void draw(QPainter &painter, QStringView name, const QRectF &box, double size, const QColor &color)
{
    const double ratio = painter.device()->devicePixelRatioF();
    const QPixmap picture = pixmap(name, size, color, ratio);
    if (picture.isNull())
        return;
    const double side = picture.width() / ratio;
    // Half a pixel off would blur every edge.
    const QTransform toDevice = painter.deviceTransform();
    const QPointF corner = toDevice.map(box.center() - QPointF(side / 2, side / 2));
    const QPointF snapped(std::round(corner.x()), std::round(corner.y()));
    painter.drawPixmap(toDevice.inverted().map(snapped), picture);
}

} // namespace Tessaline::Symbols
