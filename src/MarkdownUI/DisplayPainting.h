#pragma once

#include "MarkdownUI/MarkdownDisplay.h"

#include <QtGui/QColor>

class QPainter;

namespace MarkdownUI {

/// What may differ from one painting of a display to the next.
struct DisplayPaint {
    DisplayRange selection;
    QColor selectionColor;
    TargetPlace hovered;
    TargetPlace focused;  // is drawn with a ring around
    TargetPlace finished; // a button that has done its work
    qsizetype hoveredLeaf = -1;
    QColor focusColor;
};

/// Paints what touches `clip`, with the display's top left corner at `origin`; both in the painter's coordinates. What
/// is painted is laid out.
void paintDisplay(QPainter &painter, MarkdownDisplay &display, QPointF origin, const QRectF &clip,
                  const DisplayPaint &paint);

} // namespace MarkdownUI
