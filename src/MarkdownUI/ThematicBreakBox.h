#pragma once

#include "MarkdownUI/BlockBox.h"

namespace MarkdownUI {

/// A line across, or, with a colour that is not valid, an empty place of this height.
class ThematicBreakBox final : public BlockBox
{
public:
    ThematicBreakBox(int height, QColor color) : m_height(height), m_color(color) {}

    void layOut(int width) override { m_width = width; }
    int height() const override { return m_height; }
    void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const override;

private:
    int m_height;
    QColor m_color;
    int m_width = 0;
};

} // namespace MarkdownUI
