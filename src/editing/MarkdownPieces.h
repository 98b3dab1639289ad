#pragma once

#include "editing/MarkdownWriting.h"
#include "foundation/SummedList.h"

#include <functional>
#include <optional>

namespace Tessaline {

/// A replacement in a Markdown text: `removed` units at `location` give way to `inserted`.
struct MarkdownChange {
    qsizetype location = 0;
    qsizetype removed = 0;
    QString inserted;

    bool isEmpty() const { return removed == 0 && inserted.isEmpty(); }
    friend bool operator==(const MarkdownChange &, const MarkdownChange &) = default;
};

/// Follows the edits of a formatted text and says what they change in its Markdown, as `serializeMarkdown` would write
/// it, without writing the rest again. It remembers of each paragraph the tag and how long its piece of the Markdown
/// is: 16 bytes a paragraph. An edit costs what it touched; no more than finding the place depends on the size.
class MarkdownPieces
{
public:
    /// Gives the record of a paragraph by its number.
    using RecordSource = std::function<ParagraphRecord(qsizetype paragraph)>;

    /// Gives the records of all paragraphs one after the other, and then none.
    using RecordStream = std::function<std::optional<ParagraphRecord>()>;

    /// Begins anew with a text, given by its paragraphs or by their number and a source, and gives its Markdown.
    QString reset(const RecordStream &next);
    QString reset(qsizetype count, const RecordSource &recordAt);

    /// `removed` paragraphs from `first` on gave way to `fresh`. Where rows behind them become a table's or cease to
    /// be, they are written anew from `recordAt`, which counts paragraphs as they are after the edit.
    MarkdownChange replace(qsizetype first, qsizetype removed, const QList<ParagraphRecord> &fresh,
                           const RecordSource &recordAt);

    qsizetype paragraphCount() const { return m_pieces.count(); }
    /// The length of the Markdown.
    qsizetype length() const { return m_pieces.total().length; }
    /// Where a paragraph's piece stands in the Markdown, with what parts it from the one before.
    TextRange rangeOf(qsizetype paragraph) const;
    /// The paragraph whose piece holds this place of the Markdown; the last one for its end. There must be one.
    qsizetype paragraphAt(qsizetype location) const;

private:
    struct Sum {
        qsizetype paragraphs = 0;
        qsizetype length = 0;
        Sum &operator+=(const Sum &other);
        Sum &operator-=(const Sum &other);
    };
    struct Piece {
        Piece() = default;
        Piece(const MarkdownPiece::Neighbour &paragraph, qsizetype l)
            : tag(paragraph.tag), length(static_cast<quint32>(l) & 0x7fffffff), isInTable(paragraph.isInTable)
        {}

        SharedText tag;
        quint32 length : 31 = 0;
        quint32 isInTable : 1 = 0;

        Sum sum() const { return {1, static_cast<qsizetype>(length)}; }
        MarkdownPiece::Neighbour neighbour() const { return {tag, isInTable != 0}; }
    };
    using Pieces = SummedList<Piece, Sum>;

    Pieces::Place placeOf(qsizetype paragraph) const;

    Pieces m_pieces;
};

} // namespace Tessaline
