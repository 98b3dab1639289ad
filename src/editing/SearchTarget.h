#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

#include <QtCore/QList>

namespace Tessaline {

/// What find and replace needs of an editor. Positions are those of the text as the editor shows it.
class SearchTarget
{
public:
    virtual ~SearchTarget() = default;

    virtual ChunkedText shownText() const = 0;
    virtual TextRange selection() const = 0;
    /// Selects and brings into view.
    virtual void select(const TextRange &range) = 0;
    /// Replaces all ranges (ascending, apart) by `replacement` as one step of undo.
    virtual void replaceRanges(const QList<TextRange> &ranges, const QString &replacement) = 0;
    /// Marks the occurrences of what is searched for; empty for none.
    virtual void setHighlights(const QList<TextRange> &ranges) = 0;
};

} // namespace Tessaline
