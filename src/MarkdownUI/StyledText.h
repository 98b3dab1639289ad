#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QUrl>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QImage>
#include <QtGui/QTextLayout>

namespace MarkdownUI {

/// A part of a text that leads somewhere.
struct LinkSpan {
    Tessaline::TextRange range;
    QUrl target;
};

/// A picture that stands in a line like a character, on the base line.
struct InlinePicture {
    qsizetype position = 0; // of the character that keeps its place
    QImage image;
    QSizeF size; // in points
};

/// One paragraph's text ready to be laid out: characters, and what they look like. Offsets count UTF-16 units from its
/// start. A line feed begins a new row.
struct StyledText {
    struct Ground {
        Tessaline::TextRange range;
        QColor color;
        double ascent = 0; // of the range's own font, points
        double descent = 0;
    };

    /// What is laid out at the place of a picture: a sign that rows may be broken before and behind.
    static constexpr QChar kPlaceOfPicture{0x4E00};

    QString text; // with an object replacement character for each picture
    QFont font;   // of what no format changes
    QColor color; // the same
    QList<QTextLayout::FormatRange> formats;
    QList<Ground> grounds; // coloured areas under inline code
    QList<LinkSpan> links; // in order
    QList<InlinePicture> pictures;
    int lineSpacing = 0; // points between two rows
};

} // namespace MarkdownUI
