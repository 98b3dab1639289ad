#include "editing/TextPresentation.h"

#include "editing/BlockStyle.h"

#include <algorithm>

namespace Tessaline {

using BlockStyle::Kind;

namespace {

constexpr double kSmallestCode = 10; // points

PresentedFont codeFont(double fontSize)
{
    return {PresentedFont::Face::Monospaced, std::max(fontSize - 1, kSmallestCode), false, false, false};
}

double headingSize(qint64 level, double fontSize)
{
    switch (level) {
    case 1:
        return fontSize + 9;
    case 2:
        return fontSize + 5;
    case 3:
        return fontSize + 2;
    default:
        return fontSize;
    }
}

} // namespace

TextPresentation presentation(const TextAttributes &attributes, double fontSize)
{
    const QStringView tag = attributes.blockStyle.view();
    const bool isQuote = BlockStyle::read(tag).kind == Kind::Quote;
    TextPresentation result;
    result.paragraph = paragraphStyleForBlockStyle(tag);
    result.font = baseFontForBlockStyle(tag, fontSize);

    // Later steps override earlier ones, so the order is the rule.
    if (attributes.bold)
        result.font.bold = true;
    if (attributes.italic || isQuote)
        result.font.italic = true;
    if (isQuote)
        result.foreground = PresentedColor::SecondaryLabel;
    if (attributes.inlineCode) {
        result.font = codeFont(fontSize);
        result.background = PresentedColor::QuaternaryLabel;
        result.foreground = PresentedColor::Orange;
    }
    if (attributes.linkDestination.isPresent()) {
        result.foreground = PresentedColor::Link;
        result.underline = true;
        result.link = attributes.linkDestination;
    }
    if (attributes.imageSource.isPresent()) {
        result.foreground = PresentedColor::SecondaryLabel;
        result.background = PresentedColor::ControlBackground;
    }
    if (attributes.generatedMarker) {
        result.foreground = PresentedColor::Marker;
        result.font = {PresentedFont::Face::System, fontSize, false, true, false};
    } else if (BlockStyle::isDoneTask(tag)) {
        result.strikethrough = true;
        result.foreground = PresentedColor::SecondaryLabel;
    }
    return result;
}

PresentedFont baseFontForBlockStyle(QStringView tag, double fontSize)
{
    const BlockStyle::Tag parts = BlockStyle::read(tag);
    switch (parts.kind) {
    case Kind::Heading:
        return {PresentedFont::Face::System, headingSize(BlockStyle::headingLevel(parts.argument), fontSize), true,
                false, false};
    case Kind::Code:
        return codeFont(fontSize);
    case Kind::TableHeader:
        return {PresentedFont::Face::System, fontSize, true, false, false};
    default:
        return {PresentedFont::Face::Body, fontSize, false, false, false};
    }
}

PresentedParagraph paragraphStyleForBlockStyle(QStringView tag)
{
    static const QList<double> kTaskStops{30};
    static const QList<double> kItemStops{32}; // not the head indent, so the first line is set a little to the left
    static const QList<double> kTableStops{150, 300, 450, 600, 750};

    PresentedParagraph style;
    switch (BlockStyle::read(tag).kind) {
    case Kind::Heading:
        style.paragraphSpacing = 8;
        style.paragraphSpacingBefore = 20;
        break;
    case Kind::Quote:
        style.firstLineHeadIndent = style.headIndent = 24;
        break;
    case Kind::Task:
        style.lineSpacing = 4;
        style.paragraphSpacing = 2;
        style.firstLineHeadIndent = 2;
        style.headIndent = 30;
        style.defaultTabInterval = 30;
        style.tabStops = kTaskStops;
        break;
    case Kind::Bullet:
    case Kind::Numbered:
        style.paragraphSpacing = 3;
        style.firstLineHeadIndent = 18;
        style.headIndent = 38;
        style.tabStops = kItemStops;
        break;
    case Kind::Code:
        style.lineSpacing = 5;
        style.paragraphSpacing = 0;
        style.firstLineHeadIndent = style.headIndent = 20;
        break;
    case Kind::TableHeader:
    case Kind::TableRow:
        style.paragraphSpacing = 3;
        style.tabStops = kTableStops;
        break;
    case Kind::Paragraph:
    case Kind::HorizontalRule:
        break;
    }
    return style;
}

} // namespace Tessaline
