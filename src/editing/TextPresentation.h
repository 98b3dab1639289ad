#pragma once

#include "editing/TextAttributes.h"

#include <QtCore/QList>

#include <optional>

namespace Tessaline {

/// How formatted text looks, computed from what it is. Nothing here is a part of the document: it can be thrown away
/// and computed again at any time. Sizes and distances are in points; a view gives the roles their faces and colours.

struct PresentedFont {
    enum class Face { Body, System, Monospaced };
    Face face = Face::Body;
    double size = 0;
    bool bold = false;
    bool semibold = false;
    bool italic = false;
    friend bool operator==(const PresentedFont &, const PresentedFont &) = default;
};

enum class PresentedColor { Text, SecondaryLabel, QuaternaryLabel, Orange, Link, ControlBackground, Marker };

struct PresentedParagraph {
    double lineSpacing = 8;
    double paragraphSpacing = 10;
    double paragraphSpacingBefore = 0;
    double firstLineHeadIndent = 0;
    double headIndent = 0;                    // of all lines but the first
    std::optional<double> defaultTabInterval; // absent: the view's own
    QList<double> tabStops;                   // left stops; empty: the view's own
    friend bool operator==(const PresentedParagraph &, const PresentedParagraph &) = default;
};

struct TextPresentation {
    PresentedFont font;
    PresentedColor foreground = PresentedColor::Text;
    std::optional<PresentedColor> background;
    bool underline = false;
    bool strikethrough = false;
    SharedText link; // where a click leads
    PresentedParagraph paragraph;
    friend bool operator==(const TextPresentation &, const TextPresentation &) = default;
};

/// `fontSize` is that of body text.
TextPresentation presentation(const TextAttributes &attributes, double fontSize);

/// The font and the paragraph of a tag, before anything inside the paragraph changes them.
PresentedFont baseFontForBlockStyle(QStringView tag, double fontSize);
PresentedParagraph paragraphStyleForBlockStyle(QStringView tag);

} // namespace Tessaline
