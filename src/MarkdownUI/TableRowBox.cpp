#include "MarkdownUI/TableRowBox.h"

#include "MarkdownUI/TextBox.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace MarkdownUI {

using Tessaline::TextRange;

namespace {

constexpr double kCertain = 1.1; // a guess that leaves a tenth of the column free needs no second look

} // namespace

TableRowBox::TableRowBox(std::shared_ptr<TableColumns> columns, std::shared_ptr<const TextEstimate> estimate,
                         std::vector<StyledText> cells, QColor background, qsizetype row)
    : m_columns(std::move(columns)), m_estimate(std::move(estimate)), m_background(background), m_row(row)
{
    qsizetype start = 0;
    const size_t count = std::min(cells.size(), static_cast<size_t>(m_columns->count()));
    m_cells.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        Cell cell;
        cell.start = start;
        cell.styled = std::move(cells[i]);
        start = cell.end() + 1; // the tab
        m_cells.push_back(std::move(cell));
    }
}

int TableRowBox::topBorder() const
{
    return m_row == 0 ? m_columns->look().borderWidth : 0;
}

void TableRowBox::layOut(int width)
{
    m_width = width;
    double highest = m_estimate->rowHeight();
    for (qsizetype i = 0; i < count(); ++i) {
        const Cell &current = cell(i);
        current.text.reset();
        // FAST PATH: text that surely fits into one row is as high as that row.
        const bool isPlain = current.styled.formats.isEmpty() && current.styled.pictures.isEmpty() &&
                             !current.styled.text.contains(u'\n');
        if (isPlain && m_estimate->width(current.styled.text) * kCertain < m_columns->column(i).width)
            continue;
        highest = std::max(highest, laidOut(i).height());
    }
    const TableLook &look = m_columns->look();
    m_height = topBorder() + 2 * look.verticalPadding + static_cast<int>(std::ceil(highest)) + look.borderWidth;
}

const LaidOutText &TableRowBox::laidOut(qsizetype index) const
{
    const Cell &current = cell(index);
    if (!current.text) {
        current.text = std::make_unique<LaidOutText>(current.styled);
        current.text->layOut(m_columns->column(index).width, m_columns->column(index).alignment);
    }
    return *current.text;
}

QPointF TableRowBox::origin(qsizetype index) const
{
    return {m_columns->column(index).x - m_columns->sideways(),
            static_cast<double>(topBorder() + m_columns->look().verticalPadding)};
}

void TableRowBox::paint(QPainter &painter, QPointF at, const BoxPaint &paint) const
{
    const TableLook &look = m_columns->look();
    const double left = at.x() - m_columns->sideways();
    const QRectF seen(at.x(), at.y(), std::min(m_width, m_columns->width()), m_height);
    const QRectF clip = paint.clip.isNull() ? seen : paint.clip.intersected(seen);
    painter.save();
    painter.setClipRect(seen, Qt::IntersectClip);
    painter.fillRect(QRectF(left, at.y(), m_columns->width(), m_height), m_background);

    // 1. The cells that are seen.
    for (qsizetype i = 0; i < m_columns->count(); ++i) {
        const TableColumns::Column &column = m_columns->column(i);
        const double start = left + column.x - look.horizontalPadding - look.borderWidth;
        const double end = left + column.x + column.width + look.horizontalPadding;
        if (end < clip.left() || start > clip.right())
            continue;
        if (i >= count() || cell(i).styled.text.isEmpty())
            continue;
        const qsizetype from = std::max(paint.selection.location, cell(i).start);
        const qsizetype to = std::min(paint.selection.end(), cell(i).end());
        const TextRange selected = from < to ? TextRange{from - cell(i).start, to - from} : TextRange();
        laidOut(i).paint(painter, at + origin(i), selected, paint.selectionColor, clip);
    }

    // 2. The lines around.
    paintBorders(painter, left, at.y(), clip);
    painter.restore();
}

void TableRowBox::paintBorders(QPainter &painter, double left, double top, const QRectF &clip) const
{
    const TableLook &look = m_columns->look();
    const auto has = [&look](std::initializer_list<TableBorderSelector> selectors) {
        return std::find(selectors.begin(), selectors.end(), look.borders) != selectors.end();
    };
    using Selector = TableBorderSelector;
    const bool hasOuterColumns = has({Selector::All, Selector::Outside, Selector::Vertical});
    const bool hasInnerColumns = has({Selector::All, Selector::Inside, Selector::Vertical});
    const bool hasOuterRows = has({Selector::All, Selector::Outside, Selector::Horizontal});
    const bool hasInnerRows = has({Selector::All, Selector::Inside, Selector::Horizontal});

    // 1. Before each column, and behind the last.
    for (qsizetype i = 0; i <= m_columns->count(); ++i) {
        const bool isOuter = i == 0 || i == m_columns->count();
        if (!(isOuter ? hasOuterColumns : hasInnerColumns))
            continue;
        const double x = i == m_columns->count()
                             ? left + m_columns->width() - look.borderWidth
                             : left + m_columns->column(i).x - look.horizontalPadding - look.borderWidth;
        if (x + look.borderWidth >= clip.left() && x <= clip.right())
            painter.fillRect(QRectF(x, top, look.borderWidth, m_height), look.border);
    }

    // 2. Above the first row, and below each.
    if (m_row == 0 && hasOuterRows)
        painter.fillRect(QRectF(left, top, m_columns->width(), look.borderWidth), look.border);
    if (m_row + 1 < m_columns->rowCount() ? hasInnerRows : hasOuterRows)
        painter.fillRect(QRectF(left, top + m_height - look.borderWidth, m_columns->width(), look.borderWidth),
                         look.border);
}

QString TableRowBox::text() const
{
    QString text;
    for (const Cell &current : m_cells) {
        if (current.start > 0)
            text.append(u'\t');
        text.append(current.styled.text);
    }
    return text;
}

double TableRowBox::firstBaseline() const
{
    return count() == 0 ? 0 : origin(0).y() + laidOut(0).firstBaseline();
}

/// The cell whose text, or the tab behind it, holds a position.
qsizetype TableRowBox::cellOf(qsizetype position) const
{
    const auto after = std::upper_bound(m_cells.begin(), m_cells.end(), position,
                                        [](qsizetype at, const Cell &current) { return at < current.start; });
    return std::max<qsizetype>(after - m_cells.begin() - 1, 0);
}

qsizetype TableRowBox::cellAt(double x) const
{
    const double inTable = x + m_columns->sideways();
    for (qsizetype i = 0; i + 1 < count(); ++i)
        if (inTable < m_columns->column(i + 1).x - m_columns->look().horizontalPadding)
            return i;
    return std::max<qsizetype>(count() - 1, 0);
}

qsizetype TableRowBox::positionAt(QPointF point) const
{
    if (count() == 0)
        return 0;
    const qsizetype index = cellAt(point.x());
    return cell(index).start + laidOut(index).positionAt(point - origin(index));
}

bool TableRowBox::isOverText(QPointF point) const
{
    if (count() == 0)
        return false;
    const qsizetype index = cellAt(point.x());
    return laidOut(index).isOverText(point - origin(index));
}

QRectF TableRowBox::caretRect(qsizetype position) const
{
    if (count() == 0)
        return BlockBox::caretRect(position);
    const qsizetype index = cellOf(position);
    return laidOut(index).caretRect(position - cell(index).start).translated(origin(index));
}

TextRange TableRowBox::rowAt(qsizetype position) const
{
    if (count() == 0)
        return {};
    const qsizetype index = cellOf(position);
    const TextRange row = laidOut(index).rowAt(position - cell(index).start);
    return {row.location + cell(index).start, row.length};
}

qsizetype TableRowBox::nextCharacter(qsizetype position) const
{
    if (count() == 0)
        return position;
    const qsizetype index = cellOf(position);
    if (position >= cell(index).end())
        return std::min(position + 1, m_cells.back().end());
    return cell(index).start + laidOut(index).nextCharacter(position - cell(index).start);
}

qsizetype TableRowBox::previousCharacter(qsizetype position) const
{
    if (count() == 0)
        return position;
    const qsizetype index = cellOf(position);
    if (position == cell(index).start)
        return std::max<qsizetype>(position - 1, 0);
    return cell(index).start + laidOut(index).previousCharacter(position - cell(index).start);
}

QList<BlockTarget> TableRowBox::targets() const
{
    QList<BlockTarget> targets;
    for (qsizetype i = 0; i < count(); ++i)
        if (!cell(i).styled.links.isEmpty())
            targets.append(linkTargets(laidOut(i), origin(i), cell(i).start));
    return targets;
}

} // namespace MarkdownUI
