#include "MarkdownUI/PictureBox.h"

#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace MarkdownUI {

using Tessaline::TextRange;

namespace {

// What stands for a picture that cannot be shown: a symbol and the alternative text on a ground.
constexpr double kPadding = 8;
constexpr double kSymbolSize = 16;
constexpr double kGap = 6;
constexpr double kRadius = 4;
constexpr double kTextLeft = kPadding + kSymbolSize + kGap;

} // namespace

PictureBox::PictureBox(std::vector<Picture> pictures, double spacing, QColor ground, QColor symbol)
    : m_spacing(spacing), m_ground(ground), m_symbol(symbol)
{
    qsizetype start = 0;
    for (Picture &picture : pictures) {
        Item item;
        item.range = {start, picture.label.text.size()};
        if (!picture.isBreak)
            start = item.range.end() + 1; // a blank
        item.picture = std::move(picture);
        m_items.push_back(std::move(item));
    }
}

QSizeF PictureBox::measure(Item &item, std::optional<double> proposedWidth) const
{
    if (item.picture.isBreak)
        return {proposedWidth.value_or(0), 0};
    if (!item.picture.image.isNull())
        return resizedToFit(item.picture.idealSize, proposedWidth);
    const double widest = proposedWidth.value_or(1e6);
    item.label = std::make_unique<LaidOutText>(item.picture.label);
    item.label->layOut(std::max(widest - kTextLeft - kPadding, 1.0));
    const double width = kTextLeft + std::ceil(item.label->widestRow()) + kPadding;
    return {std::min(width, widest), std::max(item.label->height(), kSymbolSize) + 2 * kPadding};
}

void PictureBox::layOut(int width)
{
    QList<double> priorities;
    for (const Item &item : m_items)
        priorities.append(item.picture.isBreak ? -1 : 0);
    const FlowLayout flow{m_spacing, m_spacing};
    const FlowLayout::Frames frames =
        flow.frames(width, priorities, [this](qsizetype index, std::optional<double> proposed) {
            return measure(m_items[static_cast<size_t>(index)], proposed);
        });
    for (size_t i = 0; i < m_items.size(); ++i)
        m_items[i].frame = frames.frames.at(static_cast<qsizetype>(i));
    m_height = static_cast<int>(std::ceil(frames.size.height()));
}

/// The image in a size that the painter can bring to the frame without leaving pixels out: at most twice as large.
const QImage &PictureBox::imageFor(const Item &item, double pixelRatio)
{
    const QImage &image = item.picture.image;
    int reduction = 1;
    while (image.width() >= 2 * reduction * item.frame.width() * pixelRatio && image.width() >= 2 * reduction)
        reduction *= 2;
    if (reduction == 1)
        return image;
    if (item.reduction != reduction) {
        const QSize size(image.width() / reduction, std::max(image.height() / reduction, 1));
        item.reduced = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        item.reduction = reduction;
    }
    return item.reduced;
}

void PictureBox::paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const
{
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    for (const Item &item : m_items) {
        const QRectF frame = item.frame.translated(origin);
        if (item.picture.isBreak || (!paint.clip.isNull() && !frame.intersects(paint.clip)))
            continue;
        if (item.picture.image.isNull()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(m_ground);
            painter.drawRoundedRect(frame, kRadius, kRadius);
            const QRectF symbol(frame.left() + kPadding, frame.top() + kPadding, kSymbolSize, kSymbolSize);
            Tessaline::Symbols::draw(painter, u"photo", symbol, kSymbolSize, m_symbol);
            const qsizetype from = std::max(paint.selection.location, item.range.location);
            const qsizetype to = std::min(paint.selection.end(), item.range.end());
            const TextRange selected = from < to ? TextRange{from - item.range.location, to - from} : TextRange();
            item.label->paint(painter, frame.topLeft() + QPointF(kTextLeft, kPadding), selected, paint.selectionColor,
                              paint.clip);
            continue;
        }
        painter.drawImage(frame, imageFor(item, painter.device()->devicePixelRatio()));
        const bool isSelected = paint.selection.location <= item.range.location &&
                                paint.selection.end() >= item.range.end() && !paint.selection.isEmpty();
        if (isSelected)
            painter.fillRect(frame, paint.selectionColor);
    }
    painter.restore();
}

QString PictureBox::text() const
{
    QString text;
    bool isFirst = true;
    for (const Item &item : m_items) {
        if (item.picture.isBreak)
            continue;
        if (!isFirst)
            text.append(u' ');
        text.append(item.picture.label.text);
        isFirst = false;
    }
    return text;
}

const PictureBox::Item *PictureBox::itemAt(qsizetype position) const
{
    for (const Item &item : m_items)
        if (!item.picture.isBreak && position <= item.range.end())
            return &item;
    return nullptr;
}

qsizetype PictureBox::positionAt(QPointF point) const
{
    qsizetype nearest = 0;
    for (const Item &item : m_items) {
        if (item.picture.isBreak || point.y() < item.frame.top())
            continue;
        if (point.y() > item.frame.bottom() || point.x() > item.frame.center().x())
            nearest = item.range.end();
        else if (point.x() >= item.frame.left())
            nearest = item.range.location;
    }
    return nearest;
}

QRectF PictureBox::caretRect(qsizetype position) const
{
    const Item *const item = itemAt(position);
    if (!item)
        return BlockBox::caretRect(position);
    const bool isAtEnd = position >= item->range.end() && !item->range.isEmpty();
    return {isAtEnd ? item->frame.right() : item->frame.left(), item->frame.top(), 1, item->frame.height()};
}

TextRange PictureBox::rowAt(qsizetype position) const
{
    const Item *const item = itemAt(position);
    return item ? item->range : TextRange();
}

/// A picture counts as one character.
qsizetype PictureBox::nextCharacter(qsizetype position) const
{
    const Item *const item = itemAt(position + 1);
    return item ? item->range.end() : position;
}

qsizetype PictureBox::previousCharacter(qsizetype position) const
{
    const Item *const item = itemAt(std::max<qsizetype>(position - 1, 0));
    return item ? item->range.location : 0;
}

QList<BlockTarget> PictureBox::targets() const
{
    QList<BlockTarget> targets;
    for (const Item &item : m_items) {
        if (!item.picture.target)
            continue;
        BlockTarget target;
        target.name = item.picture.label.text.isEmpty() ? item.picture.target->toString() : item.picture.label.text;
        target.url = *item.picture.target;
        target.range = item.range;
        target.rects = {item.frame};
        targets.append(target);
    }
    return targets;
}

} // namespace MarkdownUI
