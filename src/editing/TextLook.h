#pragma once

#include "editing/BlockIndex.h"

#include <QtGui/QFont>
#include <QtGui/QTextLayout>

namespace Tessaline {

/// How one block of a text is set. Distances are pixels.
struct BlockLook {
    QFont font;                              // of what no format changes
    QList<QTextLayout::FormatRange> formats; // offsets count from the start of the block
    QList<QTextOption::Tab> tabStops;        // none: the interval alone
    qreal tabInterval = 32;
    int lineSpacing = 0;   // below each row
    int spacingBefore = 0; // above the first row of a paragraph that is not the first of the text
    int spacingAfter = 0; // below the last row of a paragraph; may depend on the one that follows, and nothing else may
    qreal firstLineIndent = 0;
    qreal headIndent = 0; // of all rows but a paragraph's first
};

/// What a text looks like, asked block by block when one is laid out.
class TextLook
{
public:
    virtual ~TextLook() = default;

    /// `beginsParagraph` is false for a later piece of a long paragraph.
    virtual BlockLook lookOf(const LayoutBlock &block, bool beginsParagraph) const = 0;
    /// Sizes of an ordinary block, from which heights are guessed; `width` is that of the text.
    virtual BlockMetrics metrics(int width) const = 0;
    /// The font of ordinary text, for input methods.
    virtual QFont font() const = 0;
};

} // namespace Tessaline
