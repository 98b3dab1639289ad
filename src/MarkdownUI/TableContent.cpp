#include "MarkdownUI/TableContent.h"

#include "MarkdownUI/TextFonts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace MarkdownUI {

namespace {

LaidOutText::Alignment alignmentOf(RawTableColumnAlignment alignment)
{
    switch (alignment) {
    case RawTableColumnAlignment::Center:
        return LaidOutText::Alignment::Center;
    case RawTableColumnAlignment::Right:
        return LaidOutText::Alignment::Trailing;
    case RawTableColumnAlignment::None:
    case RawTableColumnAlignment::Left:
        break;
    }
    return LaidOutText::Alignment::Leading;
}

TableLook lookOf(const DisplayEnvironment &environment)
{
    const Theme &theme = environment.theme;
    return {theme.table.border.visibleBorders, colorOf(theme.table.border.color, environment.scheme),
            static_cast<int>(std::lround(theme.table.border.width)),
            static_cast<int>(std::lround(theme.tableCell.horizontalPadding)),
            static_cast<int>(std::lround(theme.tableCell.verticalPadding))};
}

} // namespace

TableContent::TableContent(const DisplayEnvironment &environment, MarkdownUIAttributes attributes,
                           const QList<RawTableColumnAlignment> &alignments, const QList<RawTableRow> &rows)
    : m_environment(environment), m_attributes(std::move(attributes)), m_alignments(alignments), m_rows(rows)
{
    QList<LaidOutText::Alignment> columns;
    for (const RawTableColumnAlignment alignment : alignments)
        columns.append(alignmentOf(alignment));
    m_columns = std::make_shared<TableColumns>(lookOf(environment), columns);
    m_settled = m_columns->demands();
    const auto estimate = [this](qsizetype row) {
        const std::optional<FontProperties> font = cellAttributes(row).fontProperties;
        return std::make_shared<const TextEstimate>(fontOf(font.value_or(FontProperties())));
    };
    m_headerEstimate = estimate(0);
    m_bodyEstimate = estimate(1);
    m_lineSpacing = static_cast<int>(environment.theme.tableCell.lineSpacing.points(m_attributes.fontProperties));
}

MarkdownUIAttributes TableContent::cellAttributes(qsizetype row) const
{
    return row == 0 ? m_environment.theme.tableCell.headerText.applied(m_attributes) : m_attributes;
}

std::shared_ptr<const TextEstimate> TableContent::estimateOf(qsizetype row) const
{
    return row == 0 ? m_headerEstimate : m_bodyEstimate;
}

AttributedString TableContent::renderedCell(qsizetype row, qsizetype column, const PictureLookup &pictures) const
{
    const QList<InlineNode> &content = m_rows.at(row).cells.at(column).content;
    QSet<QString> loaded;
    if (pictures)
        for (const QString &source : imageSources(content))
            if (!pictures(source).isNull())
                loaded.insert(source);
    return renderText(content, m_environment.baseURL, m_environment.theme.inlineTextStyles(), loaded,
                      m_environment.softBreakMode, cellAttributes(row));
}

StyledText TableContent::cellText(qsizetype row, qsizetype column, const PictureLookup &pictures) const
{
    constexpr double kWidestPicture = 240; // in a cell
    return styledText(renderedCell(row, column, pictures), cellAttributes(row), m_environment.scheme, m_lineSpacing,
                      pictures, kWidestPicture);
}

void TableContent::measureRow(qsizetype row)
{
    const QList<RawTableCell> &cells = m_rows.at(row).cells;
    for (qsizetype column = 0; column < cells.size(); ++column) {
        const RawTableCell &cell = cells.at(column);
        // FAST PATH: a cell of plain text need not be rendered to be measured.
        const InlineNode::Text *const only =
            cell.content.size() == 1 ? cell.content.first().as<InlineNode::Text>() : nullptr;
        const QString text = only ? only->text : plainText(cell.content);
        m_columns->take(column, text, *estimateOf(row), [&] { return cellText(row, column, {}); });
    }
}

bool TableContent::looksLike(const TableContent &other) const
{
    return m_alignments == other.m_alignments && m_attributes == other.m_attributes;
}

void TableContent::continueFrom(const TableContent &before)
{
    const qsizetype settled = before.m_rows.size() - 1;
    if (!before.m_isMeasured || !looksLike(before) || settled > m_rows.size() - 1 ||
        !std::equal(before.m_rows.begin(), before.m_rows.begin() + settled, m_rows.begin()))
        return;
    m_columns = before.m_columns;
    m_settled = before.m_settled;
    m_settledRows = settled;
    m_revision = before.m_revision;
}

void TableContent::fit(int width)
{
    if (!m_isMeasured) {
        m_columns->setRowCount(m_rows.size());
        m_columns->setDemands(m_settled);
        for (qsizetype row = m_settledRows; row < m_rows.size(); ++row) {
            if (row + 1 == m_rows.size())
                m_settled = m_columns->demands();
            measureRow(row);
        }
        m_settledRows = m_rows.size() - 1;
        m_isMeasured = true;
    }
    if (m_columns->fit(width))
        ++m_revision;
}

std::unique_ptr<TableRowBox> TableContent::makeRow(qsizetype row, const PictureLookup &pictures) const
{
    std::vector<StyledText> cells;
    cells.reserve(static_cast<size_t>(m_rows.at(row).cells.size()));
    for (qsizetype column = 0; column < m_rows.at(row).cells.size(); ++column)
        cells.push_back(cellText(row, column, pictures));
    const QColor background =
        colorOf(m_environment.theme.table.background.background(static_cast<int>(row), 0), m_environment.scheme);
    return std::make_unique<TableRowBox>(m_columns, estimateOf(row), std::move(cells), background, row);
}

int TableContent::estimatedHeight(qsizetype row) const
{
    const TextEstimate &estimate = *estimateOf(row);
    int highest = estimate.rowHeight();
    if (m_isMeasured && !m_columns->isRoomy()) {
        const QList<RawTableCell> &cells = m_rows.at(row).cells;
        for (qsizetype i = 0; i < std::min(cells.size(), m_columns->count()); ++i)
            highest = std::max(highest, estimate.height(approximateLength(cells.at(i).content),
                                                        m_columns->column(i).width, m_lineSpacing));
    }
    const TableLook &look = m_columns->look();
    return highest + 2 * look.verticalPadding + (row == 0 ? 2 : 1) * look.borderWidth;
}

} // namespace MarkdownUI
