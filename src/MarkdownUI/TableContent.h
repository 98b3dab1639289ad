#pragma once

#include "MarkdownUI/BlockNode.h"
#include "MarkdownUI/DisplayEnvironment.h"
#include "MarkdownUI/StyledTextMaking.h"
#include "MarkdownUI/TableColumns.h"
#include "MarkdownUI/TableRowBox.h"

#include <memory>

namespace MarkdownUI {

/// A table's rows and the columns that they share. Rows are measured when the columns are placed for the first time; a
/// table that grows keeps its measures, so that only what was added is measured.
class TableContent
{
public:
    /// `environment` must outlive the table; `attributes` are those of text around.
    TableContent(const DisplayEnvironment &environment, MarkdownUIAttributes attributes,
                 const QList<RawTableColumnAlignment> &alignments, const QList<RawTableRow> &rows);

    const QList<RawTableRow> &rows() const { return m_rows; }
    bool looksLike(const TableContent &other) const;

    /// Takes over the columns of what this table was before it grew, with their measures and their place sideways. Does
    /// nothing if more than its end has changed.
    void continueFrom(const TableContent &before);
    /// Whether the rows of both stand in the same columns, so that boxes of the one can be used for the other.
    bool sharesColumns(const TableContent &other) const { return m_columns == other.m_columns; }

    /// Places the columns; boxes laid out before are right only while the revision is the same.
    void fit(int width);
    int revision() const { return m_revision; }

    std::unique_ptr<TableRowBox> makeRow(qsizetype row, const PictureLookup &pictures) const;
    /// A cell's text as its row has it.
    AttributedString renderedCell(qsizetype row, qsizetype column, const PictureLookup &pictures) const;
    const QList<RawTableColumnAlignment> &alignments() const { return m_alignments; }
    /// The height of a row, mostly right, without laying it out.
    int estimatedHeight(qsizetype row) const;

private:
    MarkdownUIAttributes cellAttributes(qsizetype row) const;
    StyledText cellText(qsizetype row, qsizetype column, const PictureLookup &pictures) const;
    void measureRow(qsizetype row);
    std::shared_ptr<const TextEstimate> estimateOf(qsizetype row) const;

    const DisplayEnvironment &m_environment;
    MarkdownUIAttributes m_attributes;
    QList<RawTableColumnAlignment> m_alignments;
    QList<RawTableRow> m_rows;
    std::shared_ptr<TableColumns> m_columns;
    std::vector<TableColumns::Demand> m_settled; // of all rows but the last, which is the one that may change
    std::shared_ptr<const TextEstimate> m_headerEstimate;
    std::shared_ptr<const TextEstimate> m_bodyEstimate;
    int m_lineSpacing = 0;
    qsizetype m_settledRows = 0; // how many of them
    bool m_isMeasured = false;
    int m_revision = 0;
};

} // namespace MarkdownUI
