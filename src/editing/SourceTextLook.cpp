#include "editing/SourceTextLook.h"

#include "editing/PartedSigns.h"
#include "foundation_ui/Fonts.h"

#include <QtGui/QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

constexpr int kLineSpacing = 4;
constexpr int kParagraphSpacing = 6;
constexpr int kTabColumns = 4;

} // namespace

void SourceTextLook::setFontSize(double points)
{
    m_font = Fonts::code(points);
}

BlockLook SourceTextLook::lookOf(const LayoutBlock &block, bool) const
{
    BlockLook look;
    look.font = m_font;
    look.formats = formatsThatPartSigns(m_text.sliced(block.range.location, block.range.length));
    look.tabInterval = QFontMetricsF(m_font).horizontalAdvance(u'0') * kTabColumns;
    look.lineSpacing = kLineSpacing;
    look.spacingAfter = kParagraphSpacing;
    return look;
}

BlockMetrics SourceTextLook::metrics(int width) const
{
    const QFontMetricsF metrics(m_font);
    const qreal column = std::max(1.0, metrics.horizontalAdvance(u'0'));
    return {static_cast<int>(std::ceil(metrics.height())) + kLineSpacing, kParagraphSpacing,
            std::max(1, static_cast<int>(width / column))};
}

} // namespace Tessaline
