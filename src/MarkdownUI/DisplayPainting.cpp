#include "MarkdownUI/DisplayPainting.h"

#include "foundation_ui/FocusRing.h"
#include "MarkdownUI/TextFonts.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace MarkdownUI {

using Tessaline::TextRange;

namespace {

constexpr double kFocusRadius = 3;
constexpr double kFocusDistance = 1; // between a target and the ring around it

TextRange selectionIn(const DisplayRange &selection, qsizetype leaf)
{
    if (selection.isEmpty() || leaf < selection.start.leaf || leaf > selection.end.leaf)
        return {};
    const qsizetype start = leaf == selection.start.leaf ? selection.start.offset : 0;
    const qsizetype end = leaf == selection.end.leaf ? selection.end.offset : std::numeric_limits<int>::max() / 2;
    return {start, std::max<qsizetype>(end - start, 0)};
}

class DisplayPainter
{
public:
    DisplayPainter(QPainter &painter, MarkdownDisplay &display, QPointF origin, const QRectF &clip,
                   const DisplayPaint &paint)
        : m_painter(painter), m_display(display), m_origin(origin), m_clip(clip), m_paint(paint)
    {}

    void paint()
    {
        const double top = m_clip.top() - m_origin.y();
        const double bottom = m_clip.bottom() - m_origin.y();
        m_display.prepare(static_cast<int>(std::floor(top)), static_cast<int>(std::ceil(bottom)));
        for (qsizetype leaf = std::max<qsizetype>(m_display.leafAtY(top), 0); leaf < m_display.leafCount(); ++leaf) {
            if (m_display.leafRect(leaf).top() > bottom)
                break;
            paintContainers(leaf);
            paintLeaf(leaf);
        }
    }

private:
    void paintLeaf(qsizetype leaf)
    {
        const auto indexIn = [leaf](const TargetPlace &place) { return place.leaf == leaf ? place.index : -1; };
        BoxPaint paint;
        paint.selection = selectionIn(m_paint.selection, leaf);
        paint.selectionColor = m_paint.selectionColor;
        paint.isHovered = m_paint.hoveredLeaf == leaf;
        paint.focusedTarget = indexIn(m_paint.focused);
        paint.hoveredTarget = indexIn(m_paint.hovered);
        paint.finishedTarget = indexIn(m_paint.finished);
        paint.clip = m_clip;
        m_display.box(leaf).paint(m_painter, m_origin + m_display.leafRect(leaf).topLeft(), paint);
        if (paint.focusedTarget >= 0)
            paintRing();
    }

    void paintRing()
    {
        m_painter.save();
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_painter.setPen(QPen(m_paint.focusColor, Tessaline::FocusRing::kWidth));
        constexpr double kOut = kFocusDistance + Tessaline::FocusRing::kWidth / 2;
        for (const QRectF &rect : m_display.target(m_paint.focused).rects)
            m_painter.drawRoundedRect(rect.translated(m_origin).adjusted(-kOut, -kOut, kOut, kOut), kFocusRadius,
                                      kFocusRadius);
        m_painter.restore();
    }

    /// Bars of quotes, each once, and the markers of the items that begin with a leaf.
    void paintContainers(qsizetype leaf)
    {
        for (const MarkdownDisplay::ShownContainer &shown : m_display.shownContainersOf(leaf)) {
            if (const ItemPlace *const item = std::get_if<ItemPlace>(&shown.container->kind)) {
                if (shown.firstLeaf == leaf)
                    paintMarker(leaf, shown, item->marker);
            } else if (std::find(m_bars.begin(), m_bars.end(), shown.container) == m_bars.end()) {
                m_bars.push_back(shown.container);
                paintBar(shown, std::get<QuoteBar>(shown.container->kind));
            }
        }
    }

    void paintMarker(qsizetype leaf, const MarkdownDisplay::ShownContainer &shown, const ListMarker &marker)
    {
        double baseline = m_display.box(leaf).firstBaseline();
        if (baseline <= 0) // beside a picture or an empty item
            baseline = QFontMetricsF(marker.font).ascent();
        const double y = m_origin.y() + std::round(m_display.leafRect(leaf).top() + baseline);
        marker.paint(m_painter, m_origin.x() + shown.left, y);
    }

    void paintBar(const MarkdownDisplay::ShownContainer &shown, const QuoteBar &bar)
    {
        const double top = m_display.leafRect(shown.firstLeaf).top();
        const double bottom = m_display.leafRect(shown.lastLeaf).bottom();
        const double radius = std::min(bar.radius, bar.width / 2.0);
        m_painter.save();
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(colorOf(bar.color, m_display.environment().scheme));
        m_painter.drawRoundedRect(QRectF(m_origin.x() + shown.left, m_origin.y() + top, bar.width, bottom - top),
                                  radius, radius);
        m_painter.restore();
    }

    QPainter &m_painter;
    MarkdownDisplay &m_display;
    QPointF m_origin;
    QRectF m_clip;
    const DisplayPaint &m_paint;
    std::vector<const OutlineContainer *> m_bars; // that are painted
};

} // namespace

void paintDisplay(QPainter &painter, MarkdownDisplay &display, QPointF origin, const QRectF &clip,
                  const DisplayPaint &paint)
{
    DisplayPainter(painter, display, origin, clip, paint).paint();
}

} // namespace MarkdownUI
