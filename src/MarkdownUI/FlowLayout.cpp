#include "MarkdownUI/FlowLayout.h"

#include <algorithm>
#include <limits>

namespace MarkdownUI {

FlowLayout::Frames FlowLayout::frames(std::optional<double> width, const QList<double> &priorities,
                                      const Measure &measure) const
{
    const double maximum = width.value_or(std::numeric_limits<double>::infinity());
    Frames result;
    result.frames.reserve(priorities.size());
    double x = 0;
    double rowHeight = 0;
    double rowTop = 0;
    double widest = 0;
    qsizetype rowStart = 0;
    const auto closeRow = [&](qsizetype rowEnd) {
        widest = std::max(widest, x - horizontalSpacing);
        for (qsizetype i = rowStart; i < rowEnd; ++i) // all of a row stand on its bottom
            result.frames[i].moveTop(rowTop + rowHeight - result.frames.at(i).height());
        result.size = QSizeF(widest, rowTop + rowHeight);
        rowTop += rowHeight + verticalSpacing;
        rowStart = rowEnd;
        x = 0;
        rowHeight = 0;
    };

    for (qsizetype i = 0; i < priorities.size(); ++i) {
        const bool takesTheRest = width && priorities.at(i) < 0;
        const QSizeF size = measure(i, takesTheRest ? *width - x : width);
        if (x > 0 && x + size.width() > maximum)
            closeRow(i);
        result.frames.append(QRectF(QPointF(x, rowTop), size));
        x += size.width() + horizontalSpacing;
        rowHeight = std::max(rowHeight, size.height());
    }
    if (rowStart < priorities.size())
        closeRow(priorities.size());
    return result;
}

QSizeF resizedToFit(const QSizeF &idealSize, std::optional<double> proposedWidth)
{
    if (!proposedWidth || *proposedWidth >= idealSize.width() || idealSize.width() <= 0)
        return idealSize;
    const double width = std::max(*proposedWidth, 0.0);
    return {width, idealSize.height() * width / idealSize.width()};
}

} // namespace MarkdownUI
