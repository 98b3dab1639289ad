#include "MarkdownUI/ListMarker.h"

#include "foundation_ui/Symbols.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

namespace {

constexpr double kTaskSize = 0.85;   // of the font beside
constexpr double kTaskRadius = 0.14; // of the symbol: the corners of the filled square under it

double widestDigit(const QFontMetricsF &metrics)
{
    double widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

void paintBullet(QPainter &painter, const BulletSign &bullet, const QRectF &square, const QColor &color)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    switch (bullet.sign) {
    case ListBullet::Disc:
        painter.drawEllipse(square);
        break;
    case ListBullet::Circle: {
        const double line = std::max(1.0, square.width() / 6);
        painter.setPen(QPen(color, line));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(square.adjusted(line / 2, line / 2, -line / 2, -line / 2));
        break;
    }
    case ListBullet::Square:
        painter.drawRect(square);
        break;
    }
}

void paintNumber(QPainter &painter, const QString &text, const QFont &font, double right, double baseline)
{
    // Each digit in the middle of a place as wide as the widest one, so that numbers stand exactly below each other.
    const QFontMetricsF metrics(font);
    const double place = widestDigit(metrics);
    painter.setFont(font);
    double x = right - numberWidth(text, font);
    for (const QChar character : text) {
        const double advance = metrics.horizontalAdvance(character);
        const double width = character.isDigit() ? place : advance;
        painter.drawText(QPointF(x + (width - advance) / 2, baseline), QString(character));
        x += width;
    }
}

} // namespace

double numberWidth(const QString &number, const QFont &font)
{
    const QFontMetricsF metrics(font);
    const double place = widestDigit(metrics);
    double width = 0;
    for (const QChar character : number)
        width += character.isDigit() ? place : metrics.horizontalAdvance(character);
    return width;
}

QString ListMarker::plainText() const
{
    if (const NumberSign *const number = std::get_if<NumberSign>(&sign))
        return number->text;
    if (const TaskSign *const task = std::get_if<TaskSign>(&sign))
        return task->isCompleted ? u"[x]"_s : u"[ ]"_s;
    return u"•"_s;
}

void ListMarker::paint(QPainter &painter, double left, double baseline) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color);
    const double right = left + width;
    const QFontMetricsF metrics(font);
    if (const BulletSign *const bullet = std::get_if<BulletSign>(&sign)) {
        const double middle = baseline - metrics.xHeight() / 2;
        const QRectF square(right - bullet->size, std::round(middle - bullet->size / 2), bullet->size, bullet->size);
        paintBullet(painter, *bullet, square, color);
    } else if (const NumberSign *const number = std::get_if<NumberSign>(&sign)) {
        paintNumber(painter, number->text, font, right, baseline);
    } else if (const TaskSign *const task = std::get_if<TaskSign>(&sign)) {
        const double size = std::round(font.pixelSize() * kTaskSize);
        const double middle = baseline - metrics.capHeight() / 2;
        const QRectF square(right - size, std::round(middle - size / 2), size, size);
        if (task->isCompleted) {
            // The tick is a hole in the filled square; what shines through is the inner layer.
            painter.setPen(Qt::NoPen);
            painter.setBrush(task->inside);
            painter.drawRoundedRect(square.adjusted(1, 1, -1, -1), size * kTaskRadius, size * kTaskRadius);
        }
        Tessaline::Symbols::draw(painter, task->symbol, square, size, color);
    }
    painter.restore();
}

} // namespace MarkdownUI
