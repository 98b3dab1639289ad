#include "MarkdownUI/ThematicBreakBox.h"

#include <QtGui/QPainter>

namespace MarkdownUI {

void ThematicBreakBox::paint(QPainter &painter, QPointF origin, const BoxPaint &) const
{
    painter.fillRect(QRectF(origin, QSizeF(m_width, m_height)), m_color);
}

} // namespace MarkdownUI
