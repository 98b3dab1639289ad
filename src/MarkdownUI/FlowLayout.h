#pragma once

#include <QtCore/QList>
#include <QtCore/QRectF>

#include <functional>
#include <optional>

namespace MarkdownUI {

/// Places items side by side in rows, as words in a line, those of a row on a common bottom.
struct FlowLayout {
    double horizontalSpacing = 0;
    double verticalSpacing = 0;

    /// Asks item `index` for its size, given the width that is proposed to it, if one is.
    /// NOTE: an item of negative priority can be proposed less than 0, when the row before it is full to the spacing.
    /// It should take what it is proposed even then: the row then ends where the item before it does.
    using Measure = std::function<QSizeF(qsizetype index, std::optional<double> proposedWidth)>;

    struct Frames {
        QSizeF size{0, 0};    // the widest row by all rows
        QList<QRectF> frames; // one for each item
        friend bool operator==(const Frames &, const Frames &) = default;
    };

    /// `priorities` has one number for each item. Every item is proposed `width`, but one of negative priority what is
    /// left of it in its row. An item opens a new row if it does not fit and is not the first of its row; without a
    /// width there is one row.
    Frames frames(std::optional<double> width, const QList<double> &priorities, const Measure &measure) const;
};

/// The size of something that is scaled down to fit and never enlarged, with its proportions kept. `proposedWidth`
/// absent: the ideal size.
QSizeF resizedToFit(const QSizeF &idealSize, std::optional<double> proposedWidth);

} // namespace MarkdownUI
