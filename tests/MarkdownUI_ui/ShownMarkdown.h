#pragma once

#include "gallery/SampleImages.h"
#include "MarkdownUI/FrameListing.h"

#include <QtCore/QStringList>

namespace MarkdownUI {

/// A display of a text with the sample images, laid out whole.
struct ShownMarkdown {
    explicit ShownMarkdown(const QString &markdown, int width = 400, DisplayEnvironment environment = {});

    /// The lines of the listing that begin with a word: "paragraph 0,0 400x20 Text".
    QStringList lines(const QString &kind);
    /// The places of the leaves of a kind, from top to bottom.
    QList<QRectF> rects(const QString &kind);
    /// Everything there is, from the first character to the last.
    DisplayRange all() const { return {{}, display.endPosition()}; }

    Gallery::SampleImages images;
    MarkdownDisplay display;
};

/// "x,y widthxheight" in a line of a listing.
QRectF rectIn(const QString &line);

/// The text of every construct, which the gallery shows.
QString everyConstruct();

} // namespace MarkdownUI
