#pragma once

#include "MarkdownUI/LaidOutText.h"
#include "MarkdownUI/TableBounds.h"
#include "MarkdownUI/TextEstimate.h"

#include <QtCore/QList>

#include <functional>
#include <utility>
#include <vector>

namespace MarkdownUI {

/// How a table is set. Lengths are points.
struct TableLook {
    TableBorderSelector borders = TableBorderSelector::All;
    QColor border;
    int borderWidth = 1;
    int horizontalPadding = 0; // of each cell, on both sides
    int verticalPadding = 0;
};

/// How wide the columns of a table are, which all of its rows share: as wide as their widest cells where there is room,
/// narrower in proportion where there is not, and never narrower than their longest words. What is wider than the view
/// even so is moved sideways, all rows together.
class TableColumns
{
public:
    struct Column {
        LaidOutText::Alignment alignment = LaidOutText::Alignment::Leading;
        int x = 0;     // of the content, from the left edge of the table
        int width = 0; // of the content, without padding
    };

    /// What the cells taken so far ask of a column, in points.
    struct Demand {
        double natural = 0;        // of the widest cell in one row
        double narrowest = 0;      // of the longest word
        double guessedNatural = 0; // the same as it was guessed
        double guessedNarrowest = 0;
        friend bool operator==(const Demand &, const Demand &) = default;
    };

    TableColumns(TableLook look, QList<LaidOutText::Alignment> alignments);

    const TableLook &look() const { return m_look; }
    qsizetype count() const { return static_cast<qsizetype>(m_columns.size()); }
    const Column &column(qsizetype index) const { return m_columns[static_cast<size_t>(index)]; }

    /// Makes a column wide enough for a cell. `estimate` is that of the cell's font; `styled` makes the cell's text and
    /// is called only for cells that may be the widest of their columns.
    void take(qsizetype index, QStringView text, const TextEstimate &estimate,
              const std::function<StyledText()> &styled);
    void setRowCount(qsizetype count) { m_rowCount = count; }
    qsizetype rowCount() const { return m_rowCount; }

    /// What the columns are placed by, to go back to it.
    const std::vector<Demand> &demands() const { return m_demands; }
    void setDemands(std::vector<Demand> demands) { m_demands = std::move(demands); }
    /// Places the columns for a view of this width; true if any of them moved or changed.
    bool fit(int width);
    /// Whether every cell that was taken fits into one row of its column.
    bool isRoomy() const { return m_isRoomy; }

    int width() const { return m_width; } // of the whole table, with its borders
    double sidewaysRange() const;
    double sideways() const { return m_sideways; }
    void setSideways(double points);

private:
    TableLook m_look;
    std::vector<Column> m_columns;
    std::vector<Demand> m_demands; // one for each column
    qsizetype m_rowCount = 0;
    int m_width = 0;
    int m_viewWidth = 0;
    bool m_isRoomy = false;
    double m_sideways = 0;
};

} // namespace MarkdownUI
