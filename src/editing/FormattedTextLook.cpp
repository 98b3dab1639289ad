#include "editing/FormattedTextLook.h"

#include "editing/BlockStyle.h"
#include "editing/PartedSigns.h"
#include "editing/TextPresentation.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tessaline {

namespace {

constexpr qreal kTabInterval = 28; // where a paragraph sets none

QFont fontOf(const PresentedFont &presented)
{
    QFont font;
    switch (presented.face) {
    case PresentedFont::Face::Body:
        font = Fonts::body(presented.size);
        break;
    case PresentedFont::Face::System:
        font = Fonts::interface(presented.size);
        break;
    case PresentedFont::Face::Monospaced:
        font = Fonts::code(presented.size);
        break;
    }
    if (presented.semibold)
        font.setWeight(QFont::DemiBold);
    if (presented.bold)
        font.setWeight(QFont::Bold);
    font.setItalic(presented.italic);
    return font;
}

ColorRole roleOf(PresentedColor color)
{
    switch (color) {
    case PresentedColor::Text:
        break;
    case PresentedColor::SecondaryLabel:
        return ColorRole::SecondaryText;
    case PresentedColor::QuaternaryLabel:
        return ColorRole::InlineCodeBackground;
    case PresentedColor::Orange:
        return ColorRole::InlineCode;
    case PresentedColor::Link:
        return ColorRole::Link;
    case PresentedColor::ControlBackground:
        return ColorRole::Field;
    case PresentedColor::Marker:
        return ColorRole::Accent;
    }
    return ColorRole::Text;
}

int rounded(double points)
{
    return static_cast<int>(std::lround(points));
}

/// Faces for books bring very different line heights. What a face has above that of an ordinary one counts as part of
/// the spacing below its rows, so that a page looks the same in each.
int spacingBelow(const QFont &font, double size, double spacing)
{
    constexpr double kOrdinaryHeight = 1.14; // of the size
    const double excess = std::ceil(QFontMetricsF(font).height()) - kOrdinaryHeight * size;
    return std::max(0, rounded(spacing - std::max(0.0, excess)));
}

bool isItem(BlockStyle::Kind kind)
{
    return kind == BlockStyle::Kind::Bullet || kind == BlockStyle::Kind::Numbered || kind == BlockStyle::Kind::Task;
}

/// Whether a list, a table or a block of code ends between two neighbours.
bool endsGroup(const SharedText &above, const SharedText &below)
{
    using Kind = BlockStyle::Kind;
    const Kind kind = BlockStyle::read(above.view()).kind;
    const Kind next = BlockStyle::read(below.view()).kind;
    if (kind == Kind::Code)
        return above != below;
    if (kind == Kind::TableHeader || kind == Kind::TableRow)
        return next != Kind::TableRow;
    return isItem(kind) && !isItem(next);
}

} // namespace

QTextCharFormat FormattedTextLook::formatOf(const TextPresentation &presentation, bool isHeading) const
{
    QTextCharFormat format;
    format.setFont(fontOf(presentation.font));
    const bool isPlain = presentation.foreground == PresentedColor::Text;
    format.setForeground(m_theme.color(isPlain && isHeading ? ColorRole::Heading : roleOf(presentation.foreground)));
    if (presentation.background)
        format.setBackground(m_theme.color(roleOf(*presentation.background)));
    format.setFontUnderline(presentation.underline);
    format.setFontStrikeOut(presentation.strikethrough);
    return format;
}

BlockLook FormattedTextLook::lookOf(const LayoutBlock &block, bool beginsParagraph) const
{
    // The paragraph's first character decides how it is set, its runs how they look. An empty last block looks like
    // what would be typed there.
    const bool isEmptyEnd = block.range.isEmpty();
    const qsizetype index = isEmptyEnd ? block.range.location - 1 : block.range.location;
    const TextAttributes first = index >= 0 ? m_document.attributesAt(index) : TextAttributes();
    const PresentedParagraph paragraph = paragraphStyleForBlockStyle(first.blockStyle.view());

    BlockLook look;
    const PresentedFont base = baseFontForBlockStyle(first.blockStyle.view(), m_fontSize);
    look.font = fontOf(base);
    look.lineSpacing = spacingBelow(look.font, base.size, paragraph.lineSpacing);
    look.spacingBefore = rounded(paragraph.paragraphSpacingBefore);
    look.spacingAfter = rounded(spacingBehind(block, first.blockStyle, paragraph.paragraphSpacing));
    look.firstLineIndent = paragraph.firstLineHeadIndent;
    look.headIndent = paragraph.headIndent;
    look.tabInterval = paragraph.defaultTabInterval.value_or(kTabInterval);
    if (isEmptyEnd)
        return look;

    const AttributedText text = m_document.sliced(block.range);
    setTabStops(look, paragraph, text, beginsParagraph);
    for (const AttributeRun &run : text.runs()) {
        const TextPresentation presented = presentation(run.attributes, m_fontSize);
        const bool isHeading = BlockStyle::read(run.attributes.blockStyle.view()).kind == BlockStyle::Kind::Heading;
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(run.range.location);
        range.length = static_cast<int>(run.range.length);
        range.format = formatOf(presented, isHeading);
        look.formats.append(range);
        if (presented.font.face != PresentedFont::Face::Monospaced)
            continue;
        const QStringView characters = QStringView(text.text()).sliced(run.range.location, run.range.length);
        for (QTextLayout::FormatRange apart : formatsThatPartSigns(characters, range.format)) {
            apart.start += range.start;
            look.formats.append(apart);
        }
    }
    return look;
}

/// What belongs together stands close; where a list, a table or a block of code ends, the next paragraph is as far away
/// as from any other.
double FormattedTextLook::spacingBehind(const LayoutBlock &block, const SharedText &style, double spacing) const
{
    const SharedText next =
        block.range.end() < m_document.size() ? m_document.attributesAt(block.range.end()).blockStyle : SharedText();
    const PresentedParagraph ordinary = paragraphStyleForBlockStyle(BlockStyle::paragraph().view());
    return endsGroup(style, next) ? ordinary.paragraphSpacing : spacing;
}

/// Tab stops of a row count from its indent.
void FormattedTextLook::setTabStops(BlockLook &look, const PresentedParagraph &paragraph, const AttributedText &text,
                                    bool beginsParagraph) const
{
    if (paragraph.tabStops.isEmpty())
        return;
    const qreal indent = beginsParagraph ? look.firstLineIndent : look.headIndent;
    QList<double> stops = paragraph.tabStops;
    if (beginsParagraph && !text.isEmpty() && text.attributesAt(0).generatedMarker)
        stops.first() = itemStart(paragraph, text);
    // WORKAROUND: Qt 6.4: stops of text that runs from right to left are not counted from where it begins; intervals
    // are.
    if (text.text().isRightToLeft()) {
        if (stops.constFirst() > indent)
            look.tabInterval = stops.constFirst() - indent;
        return;
    }
    for (const double stop : std::as_const(stops))
        look.tabStops.append(QTextOption::Tab(stop - indent, QTextOption::LeftTab));
}

/// Where the text of an item begins: at its tab stop; if the marker reaches too near, where its other rows begin; and
/// behind a marker that is longer still, in steps.
double FormattedTextLook::itemStart(const PresentedParagraph &paragraph, const AttributedText &text) const
{
    constexpr double kGap = 4;
    constexpr double kStep = 8;
    const AttributeRun &run = text.runs().constFirst();
    QString marker = text.text().first(run.range.length);
    marker.truncate(marker.indexOf(u'\t') < 0 ? marker.size() : marker.indexOf(u'\t'));
    const QFontMetricsF metrics(fontOf(presentation(run.attributes, m_fontSize).font));
    const double free = paragraph.firstLineHeadIndent + metrics.horizontalAdvance(marker) + kGap;
    if (free <= paragraph.tabStops.constFirst())
        return paragraph.tabStops.constFirst();
    return paragraph.headIndent + std::max(0.0, std::ceil((free - paragraph.headIndent) / kStep)) * kStep;
}

BlockMetrics FormattedTextLook::metrics(int width) const
{
    const PresentedParagraph paragraph = paragraphStyleForBlockStyle(BlockStyle::paragraph().view());
    const QFontMetricsF metrics(font());
    const qreal column = std::max(1.0, metrics.averageCharWidth());
    return {static_cast<int>(std::ceil(metrics.height())) + spacingBelow(font(), m_fontSize, paragraph.lineSpacing),
            rounded(paragraph.paragraphSpacing), std::max(1, static_cast<int>(width / column))};
}

QFont FormattedTextLook::font() const
{
    return Fonts::body(m_fontSize);
}

} // namespace Tessaline
