#include "MarkdownUI/StyledTextMaking.h"

#include "MarkdownUI/FlowLayout.h"
#include "MarkdownUI/TextFonts.h"

#include <QtGui/QFontMetricsF>

namespace MarkdownUI {

namespace {

QTextCharFormat::UnderlineStyle patternOf(LinePattern pattern)
{
    switch (pattern) {
    case LinePattern::Solid:
        return QTextCharFormat::SingleUnderline;
    case LinePattern::Dash:
        return QTextCharFormat::DashUnderline;
    case LinePattern::Dot:
        return QTextCharFormat::DotLine;
    case LinePattern::DashDot:
        return QTextCharFormat::DashDotLine;
    case LinePattern::DashDotDot:
        return QTextCharFormat::DashDotDotLine;
    }
    return QTextCharFormat::SingleUnderline;
}

QTextCharFormat formatOf(const MarkdownUIAttributes &attributes, ColorScheme scheme)
{
    QTextCharFormat format;
    QFont font = fontOf(attributes.fontProperties.value_or(FontProperties()));
    if (const std::optional<double> spacing = attributes.tracking ? attributes.tracking : attributes.kerning)
        font.setLetterSpacing(QFont::AbsoluteSpacing, *spacing);
    if (attributes.strikethroughStyle)
        font.setStrikeOut(true);
    format.setFont(font);
    if (attributes.foregroundColor)
        format.setForeground(colorOf(*attributes.foregroundColor, scheme));
    if (attributes.underlineStyle) {
        format.setUnderlineStyle(patternOf(attributes.underlineStyle->pattern));
        if (attributes.underlineStyle->color)
            format.setUnderlineColor(colorOf(*attributes.underlineStyle->color, scheme));
    }
    return format;
}

/// A format that makes the sign at a picture's place as wide as the picture, as flat as can be, and not to be seen.
QTextCharFormat placeFormat(double width)
{
    QTextCharFormat format;
    QFont font = fontOf({});
    font.setPixelSize(1);
    font.setLetterSpacing(QFont::AbsoluteSpacing,
                          width - QFontMetricsF(font).horizontalAdvance(StyledText::kPlaceOfPicture));
    format.setFont(font);
    format.setForeground(QColor(Qt::transparent));
    return format;
}

} // namespace

StyledText styledText(const AttributedString &text, const MarkdownUIAttributes &around, ColorScheme scheme,
                      int lineSpacing, const PictureLookup &pictures, double widestPicture)
{
    StyledText styled;
    styled.text = text.text();
    styled.font = fontOf(around.fontProperties.value_or(FontProperties()));
    styled.color = colorOf(around.foregroundColor.value_or(Palette::kText), scheme);
    styled.lineSpacing = lineSpacing;
    for (const AttributedString::Run &run : text.runs()) {
        // 1. Links, whatever else changes inside them.
        if (run.attributes.link) {
            const QUrl target(*run.attributes.link);
            LinkSpan *const last = styled.links.isEmpty() ? nullptr : &styled.links.last();
            if (last && last->range.end() == run.location && last->target == target)
                last->range.length += run.length;
            else
                styled.links.append({{run.location, run.length}, target});
        }

        // 2. Pictures.
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(run.location);
        range.length = static_cast<int>(run.length);
        if (run.image) {
            const QImage image = pictures ? pictures(run.image->source) : QImage();
            const QSizeF size = resizedToFit(image.deviceIndependentSize(), widestPicture);
            styled.pictures.append({run.location, image, size});
            range.format = placeFormat(size.width());
            styled.formats.append(range);
            continue;
        }

        // 3. Letters.
        if (run.attributes == around)
            continue;
        range.format = formatOf(run.attributes, scheme);
        styled.formats.append(range);
        if (run.attributes.backgroundColor && run.attributes.backgroundColor != around.backgroundColor) {
            const QFontMetricsF metrics(range.format.font());
            styled.grounds.append({{run.location, run.length},
                                   colorOf(*run.attributes.backgroundColor, scheme),
                                   metrics.ascent(),
                                   metrics.descent()});
        }
    }
    return styled;
}

qsizetype approximateLength(const QList<InlineNode> &inlines)
{
    qsizetype length = 0;
    QList<const QList<InlineNode> *> waiting{&inlines}; // a list in place of the stack: text can nest without end
    while (!waiting.isEmpty()) {
        for (const InlineNode &node : *waiting.takeLast()) {
            if (const auto *const text = node.as<InlineNode::Text>())
                length += text->text.size();
            else if (const auto *const code = node.as<InlineNode::Code>())
                length += code->text.size();
            else if (const auto *const html = node.as<InlineNode::Html>())
                length += html->text.size();
            else if (const QList<InlineNode> *const children = node.children();
                     children && !node.as<InlineNode::Image>())
                waiting.append(children);
            else
                ++length;
        }
    }
    return length;
}

} // namespace MarkdownUI
