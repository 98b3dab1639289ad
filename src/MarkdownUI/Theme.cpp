#include "MarkdownUI/Theme.h"

namespace MarkdownUI {

namespace {

using namespace Palette;

HeadingStyle heading(double fontSize)
{
    return {.text = {FontWeight{FontProperties::Weight::Semibold}, FontSize{em(fontSize)}},
            .lineSpacing = em(0.125),
            .divider = std::nullopt,
            .margin = {24.0, 16.0}};
}

HeadingStyle dividedHeading(double fontSize)
{
    HeadingStyle style = heading(fontSize);
    style.divider = HeadingDivider{kDivider, em(0.3)};
    return style;
}

HeadingStyle faintHeading(double fontSize)
{
    HeadingStyle style = heading(fontSize);
    style.text = style.text + TextStyle{ForegroundColor{kTertiaryText}};
    return style;
}

Theme makeDefaultTheme()
{
    using Properties = FontProperties;
    const ThemeMargin text{0.0, 16.0};
    const ThemeMargin none;
    const TextStyle semibold{FontWeight{Properties::Weight::Semibold}};
    const TextStyle monospaced{FontFamilyVariant{Properties::FamilyVariant::Monospaced}, FontSize{em(0.85)}};
    return {
        .text = {ForegroundColor{kText}, BackgroundColor{kBackground}, FontSize{16.0}},
        .code = monospaced + TextStyle{BackgroundColor{kSecondaryBackground}},
        .emphasis = {FontStyle{Properties::Style::Italic}},
        .strong = semibold,
        .strikethrough = {StrikethroughStyle{LineStyle{}}},
        .link = {ForegroundColor{kLink}},
        .headings = {dividedHeading(2), dividedHeading(1.5), heading(1.25), heading(1), heading(0.875),
                     faintHeading(0.85)},
        .paragraph = {.lineSpacing = em(0.25), .margin = text},
        .blockquote = {.barColor = kBorder,
                       .barWidth = em(0.2),
                       .barCornerRadius = 6,
                       .inset = em(1),
                       .text = {ForegroundColor{kSecondaryText}},
                       .margin = none},
        .codeBlock = {.text = monospaced,
                      .lineSpacing = em(0.225),
                      .padding = 16,
                      .background = kSecondaryBackground,
                      .cornerRadius = 6,
                      .margin = text},
        .image = {text},
        .list = {none},
        .listItem = {{em(0.25), std::nullopt}},
        .taskListMarker = {.completedSymbol = QStringLiteral("checkmark.square.fill"),
                           .openSymbol = QStringLiteral("square"),
                           .color = kCheckbox,
                           .background = kCheckboxBackground,
                           .width = em(1.5)},
        .bulletedListMarker = {.text = {}, .minimumWidth = em(1.5)},
        .numberedListMarker = {.text = {FontDigitVariant{Properties::DigitVariant::Monospaced}},
                               .minimumWidth = em(1.5)},
        .table = {.border = {TableBorderSelector::All, kBorder, 1},
                  .background = {kBackground, kSecondaryBackground},
                  .margin = text},
        .tableCell = {.headerText = semibold, .verticalPadding = 6, .horizontalPadding = 13, .lineSpacing = em(0.25)},
        .thematicBreak = {.color = kBorder, .height = em(0.25), .margin = {24.0, 24.0}},
    };
}

} // namespace

DynamicColor TableBackgroundStyle::background(int row, int) const
{
    return row > 0 && row % 2 == 0 ? alternate : plain;
}

const Theme &defaultTheme()
{
    static const Theme theme = makeDefaultTheme();
    return theme;
}

Theme embeddedTheme()
{
    Theme theme = defaultTheme();
    theme.text = {BackgroundColor{std::nullopt}};
    return theme;
}

} // namespace MarkdownUI
