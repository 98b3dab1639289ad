#pragma once

#include "MarkdownUI/BlockBox.h"
#include "MarkdownUI/TableColumns.h"

#include <memory>
#include <vector>

namespace MarkdownUI {

/// One row of a table. A table is a box for each of its rows, so that a long one is laid out only where it is seen.
class TableRowBox final : public BlockBox
{
public:
    /// `columns` have to be placed before this is laid out, and `estimate` is that of the cells' font.
    TableRowBox(std::shared_ptr<TableColumns> columns, std::shared_ptr<const TextEstimate> estimate,
                std::vector<StyledText> cells, QColor background, qsizetype row);

    void layOut(int width) override;
    int height() const override { return m_height; }
    void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const override;

    QString text() const override; // the cells with tabs between them
    double firstBaseline() const override;
    qsizetype positionAt(QPointF point) const override;
    bool isOverText(QPointF point) const override;
    QRectF caretRect(qsizetype position) const override;
    Tessaline::TextRange rowAt(qsizetype position) const override;
    qsizetype nextCharacter(qsizetype position) const override;
    qsizetype previousCharacter(qsizetype position) const override;
    QList<BlockTarget> targets() const override;

    double sidewaysRange() const override { return m_columns->sidewaysRange(); }
    double sideways() const override { return m_columns->sideways(); }
    void setSideways(double points) override { m_columns->setSideways(points); }

private:
    struct Cell {
        qsizetype start = 0; // of its text in the row's
        StyledText styled;
        mutable std::unique_ptr<LaidOutText> text; // made when it is needed
        qsizetype end() const { return start + styled.text.size(); }
    };

    qsizetype count() const { return static_cast<qsizetype>(m_cells.size()); }
    const Cell &cell(qsizetype index) const { return m_cells[static_cast<size_t>(index)]; }
    const LaidOutText &laidOut(qsizetype index) const;
    QPointF origin(qsizetype index) const; // of a cell's text
    qsizetype cellOf(qsizetype position) const;
    qsizetype cellAt(double x) const;
    int topBorder() const;
    void paintBorders(QPainter &painter, double left, double top, const QRectF &clip) const;

    std::shared_ptr<TableColumns> m_columns;
    std::shared_ptr<const TextEstimate> m_estimate;
    std::vector<Cell> m_cells;
    QColor m_background;
    qsizetype m_row; // of the table; the first one has a border above too
    int m_width = 0;
    int m_height = 0;
};

} // namespace MarkdownUI
