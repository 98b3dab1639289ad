#pragma once

#include "editing/TextLook.h"

#include <QtCore/QRectF>
#include <QtGui/QTextLayout>

#include <memory>
#include <optional>
#include <vector>

namespace Tessaline {

/// The geometry of a plain text wrapped to a width: where each character stands. Only blocks that are asked for are
/// laid out, the heights of the others are guessed from their lengths, so that nothing here grows with the text but the
/// index of blocks.
///
/// Coordinates are pixels from the top left corner of the text. A guess that turns out wrong moves everything below it;
/// who scrolls holds on to a block, not to a height.
class TextLayout
{
public:
    /// A laid out block. Valid until the next call that is not const.
    struct Block {
        LayoutBlock place;
        const QTextLayout *layout = nullptr;
        qsizetype contentLength = 0; // without the line end
        int lineSpacing = 0;         // below each row
        int preeditOffset = 0;       // where composed text stands in the layout, and
        int preeditLength = 0;       // how much of it; mostly none
        int preeditCaret = 0;        // where the caret stands in it

        qsizetype contentEnd() const { return place.range.location + contentLength; }
        /// Between positions of the text and offsets in the layout, where composed text takes room.
        int offsetOf(qsizetype position) const;
        qsizetype positionOf(int offset) const;
    };

    /// What an edit changed on the screen: from `top` down to `bottom`, or all that follows if it moved.
    struct Damage {
        int top = 0;
        int bottom = 0;
        bool movesRest = false;
    };

    /// `text` is the text that is shown, as it is at each call, and `look` how; both must outlive the layout.
    TextLayout(const ChunkedText &text, const TextLook &look);

    const TextLook &look() const { return m_look; }
    /// The look is another one now: everything is laid out anew.
    void lookChanged();
    void setWidth(int width);
    int width() const { return m_width; }
    int rowHeight() const { return m_index.metrics().rowHeight; } // of a row of ordinary text

    /// Begins anew; for a text that was exchanged.
    void reset();
    /// Follows an edit that the text has already taken.
    Damage apply(const TextChange &change);

    /// Text of an input method that is shown at `position` but not part of the document yet.
    struct Preedit {
        qsizetype position = 0;
        QString text; // empty for none
        int caret = 0;
        QList<QTextLayout::FormatRange> formats; // offsets count from the start of the text
    };
    void setPreedit(const Preedit &preedit);
    const Preedit &preedit() const { return m_preedit; }

    int height() const { return m_index.height(); }
    Block blockAt(qsizetype position);
    Block blockAtY(int y);
    std::optional<Block> blockAfter(const Block &block);
    std::optional<Block> blockBefore(const Block &block);
    /// Where a block stands, without laying it out.
    LayoutBlock placeAt(qsizetype position) const { return m_index.blockAt(position); }
    LayoutBlock placeAtY(int y) const { return m_index.blockAtY(y); }

    /// Frees the laid out blocks outside these two ranges of the text.
    void keepOnly(const TextRange &first, const TextRange &second);

    /// The place of the caret before the character at `position`: one pixel wide, as high as its row.
    QRectF caretRect(qsizetype position);
    /// The caret nearest to a point; points outside the text count as inside.
    qsizetype positionAt(QPointF point);
    /// The caret `rows` rows further down (or up) at the height `x`. Beyond the first and the last row it is the start
    /// or end of the text.
    qsizetype positionRowsAway(qsizetype position, int rows, qreal x);
    qsizetype rowStart(qsizetype position);
    qsizetype rowEnd(qsizetype position);
    /// The smallest rectangle around the characters of a range.
    QRectF boundingRect(const TextRange &range);

private:
    struct Entry {
        qsizetype start = 0;
        qsizetype length = 0; // with the line end
        qsizetype contentLength = 0;
        int lineSpacing = 0;
        int spacingAfter = 0;
        int height = 0;
        std::unique_ptr<QTextLayout> layout;
    };
    using Entries = std::vector<Entry>; // by start

    Entries::iterator find(qsizetype start);
    Entry &laidOut(const LayoutBlock &place);
    void layOut(Entry &entry, const LayoutBlock &place);
    Block blockFor(const LayoutBlock &place);
    qsizetype positionInRow(const Block &block, const QTextLine &row, qreal x) const;
    bool holdsPreedit(const LayoutBlock &place) const;
    QList<QTextLayout::FormatRange> withPreedit(QList<QTextLayout::FormatRange> formats, int offset) const;
    bool respaceBefore(qsizetype position);
    void updateMetrics();
    bool beginsParagraph(const LayoutBlock &place) const;
    void forgetAll();

    const ChunkedText &m_text;
    const TextLook &m_look;
    BlockIndex m_index;
    Entries m_entries;
    int m_width = 600;
    Preedit m_preedit;
};

} // namespace Tessaline
