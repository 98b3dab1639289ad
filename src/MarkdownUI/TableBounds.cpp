#include "MarkdownUI/TableBounds.h"

namespace MarkdownUI {

TableBounds::TableBounds(int rowCount, int columnCount, const QHash<TableCellIndex, QRectF> &cells,
                         const QRectF &bounds)
    : m_bounds(bounds), m_rows(rowCount), m_columns(columnCount)
{
    QList<bool> hasRow(rowCount);
    QList<bool> hasColumn(columnCount);
    for (auto cell = cells.begin(); cell != cells.end(); ++cell) {
        const auto [row, column] = cell.key();
        if (row < 0 || row >= rowCount || column < 0 || column >= columnCount)
            continue;
        const QRectF &frame = cell.value();
        Row &y = m_rows[row];
        const double maxY = hasRow.at(row) ? std::max(y.minY + y.height, frame.bottom()) : frame.bottom();
        y.minY = hasRow.at(row) ? std::min(y.minY, frame.top()) : frame.top();
        y.height = maxY - y.minY;
        hasRow[row] = true;
        Column &x = m_columns[column];
        const double maxX = hasColumn.at(column) ? std::max(x.minX + x.width, frame.right()) : frame.right();
        x.minX = hasColumn.at(column) ? std::min(x.minX, frame.left()) : frame.left();
        x.width = maxX - x.minX;
        hasColumn[column] = true;
    }
    for (int row = 0; row < rowCount; ++row) {
        if (!hasRow.at(row))
            m_rows[row].minY = row > 0 ? m_rows.at(row - 1).minY + m_rows.at(row - 1).height : bounds.top();
    }
    for (int column = 0; column < columnCount; ++column) {
        if (!hasColumn.at(column))
            m_columns[column].minX =
                column > 0 ? m_columns.at(column - 1).minX + m_columns.at(column - 1).width : bounds.left();
    }
}

QRectF TableBounds::cell(const TableCellIndex &index) const
{
    const Row &row = m_rows.at(index.row);
    const Column &column = m_columns.at(index.column);
    return {column.minX, row.minY, column.width, row.height};
}

QList<QRectF> TableBounds::borders(TableBorderSelector visible, double width) const
{
    using enum TableBorderSelector;
    const bool outside = visible == All || visible == Outside || visible == Horizontal || visible == Vertical;
    const bool inside = visible == All || visible == Inside || visible == Horizontal || visible == Vertical;
    QList<QRectF> lines;
    if (m_rows.isEmpty() || m_columns.isEmpty() || visible == None)
        return lines;

    if (visible != Vertical) {
        const auto line = [&](double y) { lines.append({m_bounds.left(), y, m_bounds.width(), width}); };
        if (outside)
            line(m_bounds.top());
        for (qsizetype row = 1; inside && row < m_rows.size(); ++row)
            line(m_rows.at(row).minY - width);
        if (outside)
            line(m_bounds.bottom() - width);
    }
    if (visible != Horizontal) {
        const auto line = [&](double x) { lines.append({x, m_bounds.top(), width, m_bounds.height()}); };
        if (outside)
            line(m_bounds.left());
        for (qsizetype column = 1; inside && column < m_columns.size(); ++column)
            line(m_columns.at(column).minX - width);
        if (outside)
            line(m_bounds.right() - width);
    }
    return lines;
}

} // namespace MarkdownUI
