#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

#include <vector>

namespace Tessaline {

/// Sizes from which the height of a block that was never laid out is guessed. Pixels, but for the columns.
struct BlockMetrics {
    int rowHeight = 20;
    int paragraphSpacing = 6; // below the last row of a paragraph
    int columns = 80;         // characters in a full row
    friend bool operator==(const BlockMetrics &, const BlockMetrics &) = default;
};

/// A stretch of text that is laid out as one: a paragraph with its line end or, of a very long paragraph, a piece.
struct LayoutBlock {
    TextRange range;            // with the line end
    bool endsParagraph = false; // false for a piece that is followed by another, and for the last block of the text
    int top = 0;                // pixels from the top of the text
    int height = 0;             // as laid out, or as guessed

    int bottom() const { return top + height; }
    friend bool operator==(const LayoutBlock &, const LayoutBlock &) = default;
};

/// The blocks of a text with their lengths and heights, so that a position and a height on the screen find each other
/// without looking at the text, and an edit costs the blocks it touches. 8 bytes a block.
///
/// A paragraph ends with LF, CR, CR LF or U+2029. A paragraph of more than `kLongestBlock` units is cut into pieces,
/// after a space where there is one. The last block of a text ends no paragraph and may be empty: there is always at
/// least one block.
class BlockIndex
{
public:
    static constexpr qsizetype kLongestBlock = 4096; // UTF-16 units; bounds the layout work of one key press to 2 ms
    static constexpr qsizetype kShortestPiece = 256; // a shorter piece is joined with the one behind it

    BlockIndex();

    /// Begins anew with this text.
    void reset(const ChunkedText &text);

    /// Follows an edit; `text` is the text after it. The blocks that it touched are returned as one range of the text
    /// as it is now; theirs are the only heights that were guessed anew, unless exactly one block stayed one block,
    /// which keeps its height.
    TextRange apply(const ChunkedText &text, const TextChange &change);

    /// Other metrics: every height is guessed anew.
    void setMetrics(const BlockMetrics &metrics);
    const BlockMetrics &metrics() const { return m_metrics; }

    qsizetype count() const { return m_count; }
    int height() const { return m_height; }

    /// The block that holds the position; the last block for the end of the text.
    LayoutBlock blockAt(qsizetype position) const;
    /// The block that covers this height; the first or the last one outside the text.
    LayoutBlock blockAtY(int y) const;

    /// Notes how high a block really is. `start` is where it begins.
    void setHeight(qsizetype start, int height);

private:
    struct Block {
        quint32 length = 0;
        quint32 height : 31 = 0;
        quint32 endsParagraph : 1 = 0;
    };
    struct Page {
        std::vector<Block> blocks;
        qsizetype length = 0; // sums over the blocks
        int height = 0;
    };
    struct Place {
        size_t page = 0;
        size_t block = 0;
        qsizetype start = 0; // of the block
        int top = 0;
    };

    int guessedHeight(const Block &block) const;
    Block makeBlock(qsizetype length, bool endsParagraph) const;
    enum class RangeEnd { BetweenBlocks, LastBlock };
    std::vector<Block> cut(const ChunkedText &text, const TextRange &range, RangeEnd rangeEnd) const;
    void cutParagraph(QStringView paragraph, bool endsParagraph, std::vector<Block> &blocks) const;
    Place placeOf(qsizetype position) const;
    LayoutBlock blockAt(const Place &place) const;
    const Block &at(const Place &place) const { return m_pages[place.page].blocks[place.block]; }
    bool isLast(const Place &place) const;
    bool advance(Place &place) const;
    void replaceBlocks(const Place &first, size_t count, const std::vector<Block> &fresh);
    void append(const std::vector<Block> &blocks, std::vector<Page> &pages) const;

    std::vector<Page> m_pages;
    BlockMetrics m_metrics;
    qsizetype m_count = 0;
    int m_height = 0;
};

} // namespace Tessaline
