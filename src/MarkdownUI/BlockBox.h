#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QList>
#include <QtCore/QRectF>
#include <QtCore/QString>
#include <QtCore/QUrl>
#include <QtGui/QColor>

class QPainter;

namespace MarkdownUI {

/// Something in a block that a click acts on and the keyboard reaches.
struct BlockTarget {
    enum class Kind { Link, CopyCode };

    Kind kind = Kind::Link;
    QString name; // as it is told to assistive technology
    QUrl url;     // where a link leads
    Tessaline::TextRange range;
    QList<QRectF> rects; // in the box
};

/// What may differ from one painting of a box to the next. Nothing of it changes where anything stands.
struct BoxPaint {
    Tessaline::TextRange selection; // in the box
    QColor selectionColor;
    bool isHovered = false;  // the pointer is over the box
    int focusedTarget = -1;  // of `targets()`; negative for none
    int hoveredTarget = -1;  // the same
    int finishedTarget = -1; // what was copied a moment ago
    QRectF clip;             // in the coordinates of the painter
};

/// A block that is laid out: one class for each kind. Boxes know neither where they stand nor what is around them.
/// Coordinates are points from the box's top left corner; positions count UTF-16 units of its text.
class BlockBox
{
public:
    BlockBox() = default;
    virtual ~BlockBox() = default;
    BlockBox(const BlockBox &) = delete;
    BlockBox &operator=(const BlockBox &) = delete;

    /// Comes before everything below, and again when the width is another one.
    virtual void layOut(int width) = 0;
    virtual int height() const = 0;
    virtual void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const = 0;

    /// The text that can be selected. Empty for a box without one.
    virtual QString text() const { return {}; }
    /// Of the first row; where a list's marker stands beside it.
    virtual double firstBaseline() const { return 0; }

    virtual qsizetype positionAt(QPointF) const { return 0; }
    virtual bool isOverText(QPointF) const { return false; }
    virtual QRectF caretRect(qsizetype) const { return {0, 0, 1, static_cast<double>(height())}; }
    virtual Tessaline::TextRange rowAt(qsizetype) const { return {}; }
    virtual qsizetype nextCharacter(qsizetype position) const { return position; }
    virtual qsizetype previousCharacter(qsizetype position) const { return position; }

    /// In reading order, as many as the block was said to have.
    virtual QList<BlockTarget> targets() const { return {}; }

    /// How far the content can be moved sideways, and how far it is, in points.
    virtual double sidewaysRange() const { return 0; }
    virtual double sideways() const { return 0; }
    virtual void setSideways(double) {}
};

} // namespace MarkdownUI
