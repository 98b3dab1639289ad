#include "MarkdownUI/TextBox.h"

#include <QtGui/QPainter>

#include <cmath>
#include <utility>

namespace MarkdownUI {

TextBox::TextBox(StyledText text, TextDivider divider) : m_text(std::move(text)), m_divider(std::move(divider)) {}

void TextBox::layOut(int width)
{
    m_width = width;
    m_text.layOut(width);
}

int TextBox::height() const
{
    const int text = static_cast<int>(std::ceil(m_text.height()));
    return m_divider.thickness > 0 ? text + m_divider.distance + m_divider.thickness : text;
}

void TextBox::paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const
{
    m_text.paint(painter, origin, paint.selection, paint.selectionColor, paint.clip);
    if (m_divider.thickness > 0)
        painter.fillRect(QRectF(origin.x(), origin.y() + height() - m_divider.thickness, m_width, m_divider.thickness),
                         m_divider.color);
}

QList<BlockTarget> TextBox::targets() const
{
    return linkTargets(m_text);
}

QList<BlockTarget> linkTargets(const LaidOutText &text, QPointF offset, qsizetype firstPosition)
{
    QList<BlockTarget> targets;
    for (const LinkSpan &link : text.styled().links) {
        BlockTarget target;
        target.name = text.styled().text.sliced(link.range.location, link.range.length).simplified();
        target.url = link.target;
        target.range = {firstPosition + link.range.location, link.range.length};
        for (const QRectF &rect : text.rects(link.range))
            target.rects.append(rect.translated(offset));
        targets.append(target);
    }
    return targets;
}

} // namespace MarkdownUI
