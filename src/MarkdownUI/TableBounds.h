#pragma once

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QRectF>

namespace MarkdownUI {

/// A cell by its place; both numbers from 0, and the header row is row 0.
struct TableCellIndex {
    int row = 0;
    int column = 0;
    friend bool operator==(const TableCellIndex &, const TableCellIndex &) = default;
    friend size_t qHash(const TableCellIndex &index, size_t seed = 0) noexcept
    {
        return qHashMulti(seed, index.row, index.column);
    }
};

/// Which lines of a table are drawn.
enum class TableBorderSelector { All, Outside, Inside, Horizontal, Vertical, None };

/// Where the rows and columns of a laid-out table are.
class TableBounds
{
public:
    struct Row {
        double minY = 0;
        double height = 0;
        friend bool operator==(const Row &, const Row &) = default;
    };
    struct Column {
        double minX = 0;
        double width = 0;
        friend bool operator==(const Column &, const Column &) = default;
    };

    TableBounds() = default; // no table
    /// From the frames of the cells: a row reaches over all cells in it, a column likewise. Rows and columns without a
    /// cell are empty and stand where the one before ends. `bounds` is the whole table with its outer lines.
    TableBounds(int rowCount, int columnCount, const QHash<TableCellIndex, QRectF> &cells, const QRectF &bounds);

    const QRectF &bounds() const { return m_bounds; }
    const QList<Row> &rows() const { return m_rows; }
    const QList<Column> &columns() const { return m_columns; }

    /// What a cell's background fills: its row by its column. Both must exist.
    QRectF cell(const TableCellIndex &index) const;

    /// The lines as filled rectangles of the given width, which lie in the space of that width around and between the
    /// cells. Lines that cross share their corner.
    QList<QRectF> borders(TableBorderSelector visible, double width) const;

    friend bool operator==(const TableBounds &, const TableBounds &) = default;

private:
    QRectF m_bounds;
    QList<Row> m_rows;
    QList<Column> m_columns;
};

} // namespace MarkdownUI
