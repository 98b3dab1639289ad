#include "editing/BlockIndex.h"

#include "editing/TextBreaks.h"

#include <algorithm>

namespace Tessaline {

namespace {

constexpr size_t kBlocksOfAPage = 512; // a search walks the pages' sums, then one page

/// The end of the line end that follows `from` within `text`, and whether there was one.
struct LineEnd {
    qsizetype end;
    bool found;
};

bool endsParagraph(char16_t unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar::ParagraphSeparator;
}

LineEnd findLineEnd(QStringView text, qsizetype from)
{
    const char16_t *const begin = text.utf16();
    const char16_t *const end = begin + text.size();
    const char16_t *at = std::find_if(begin + from, end, endsParagraph);
    if (at == end)
        return {text.size(), false};
    const bool isPair = *at == u'\r' && at + 1 != end && at[1] == u'\n';
    return {at - begin + (isPair ? 2 : 1), true};
}

/// Where a piece of a long paragraph ends: after a space if there is one near, else between two characters.
qsizetype pieceLength(QStringView paragraph, qsizetype preferred)
{
    constexpr qsizetype kLookBack = 256;
    for (qsizetype i = preferred; i > preferred - kLookBack; --i)
        if (paragraph[i - 1] == u' ')
            return i;
    // A character has no bound to its length; one that is longer than this window is cut where it is.
    const QStringView window = paragraph.sliced(preferred - kLookBack, 2 * kLookBack);
    if (TextBreaks::isBreak(TextBreaks::Kind::Character, window, kLookBack))
        return preferred;
    const qsizetype boundary = TextBreaks::preceding(TextBreaks::Kind::Character, window, kLookBack);
    if (boundary > 0)
        return preferred - kLookBack + boundary;
    const bool cutsPair = paragraph[preferred - 1].isHighSurrogate() && paragraph[preferred].isLowSurrogate();
    return cutsPair ? preferred - 1 : preferred;
}

} // namespace

BlockIndex::BlockIndex()
{
    reset(ChunkedText());
}

int BlockIndex::guessedHeight(const Block &block) const
{
    const int rows = std::max(1, (static_cast<int>(block.length) + m_metrics.columns - 1) / m_metrics.columns);
    return rows * m_metrics.rowHeight + (block.endsParagraph ? m_metrics.paragraphSpacing : 0);
}

BlockIndex::Block BlockIndex::makeBlock(qsizetype length, bool endsParagraph) const
{
    Block block;
    block.length = static_cast<quint32>(length);
    block.endsParagraph = endsParagraph;
    block.height = static_cast<quint32>(guessedHeight(block)) & 0x7fffffffu;
    return block;
}

void BlockIndex::cutParagraph(QStringView paragraph, bool endsParagraph, std::vector<Block> &blocks) const
{
    constexpr qsizetype kPreferredPiece = kLongestBlock / 2; // leaves room to type before the next cut
    while (paragraph.size() > kLongestBlock) {
        const qsizetype length = pieceLength(paragraph, kPreferredPiece);
        blocks.push_back(makeBlock(length, false));
        paragraph = paragraph.sliced(length);
    }
    blocks.push_back(makeBlock(paragraph.size(), endsParagraph));
}

/// Cuts `range` into blocks. What follows the last line end is a block of its own if it is not empty or the last one
/// of the text.
std::vector<BlockIndex::Block> BlockIndex::cut(const ChunkedText &text, const TextRange &range, RangeEnd rangeEnd) const
{
    std::vector<Block> blocks;
    QString carried; // the beginning of a paragraph that goes on in the next chunk
    qsizetype position = range.location;
    while (position < range.end()) {
        QStringView chunk = text.chunkFrom(position);
        chunk = chunk.first(std::min(chunk.size(), range.end() - position));
        position += chunk.size();
        for (qsizetype at = 0; at < chunk.size();) {
            const LineEnd line = findLineEnd(chunk, at);
            const QStringView part = chunk.sliced(at, line.end - at);
            at = line.end;
            if (!line.found || !carried.isEmpty())
                carried.append(part);
            if (!line.found)
                break;
            cutParagraph(carried.isEmpty() ? part : QStringView(carried), true, blocks);
            carried.clear();
        }
    }
    if (!carried.isEmpty() || rangeEnd == RangeEnd::LastBlock)
        cutParagraph(carried, false, blocks);
    return blocks;
}

void BlockIndex::append(const std::vector<Block> &blocks, std::vector<Page> &pages) const
{
    for (const Block &block : blocks) {
        if (pages.empty() || pages.back().blocks.size() == kBlocksOfAPage)
            pages.emplace_back().blocks.reserve(kBlocksOfAPage);
        Page &page = pages.back();
        page.blocks.push_back(block);
        page.length += block.length;
        page.height += static_cast<int>(block.height);
    }
}

void BlockIndex::reset(const ChunkedText &text)
{
    m_pages.clear();
    const std::vector<Block> blocks = cut(text, {0, text.size()}, RangeEnd::LastBlock);
    append(blocks, m_pages);
    m_count = static_cast<qsizetype>(blocks.size());
    m_height = 0;
    for (const Page &page : m_pages)
        m_height += page.height;
}

void BlockIndex::setMetrics(const BlockMetrics &metrics)
{
    if (metrics == m_metrics)
        return;
    m_metrics = metrics;
    m_height = 0;
    for (Page &page : m_pages) {
        page.height = 0;
        for (Block &block : page.blocks) {
            block.height = static_cast<quint32>(guessedHeight(block)) & 0x7fffffffu;
            page.height += static_cast<int>(block.height);
        }
        m_height += page.height;
    }
}

BlockIndex::Place BlockIndex::placeOf(qsizetype position) const
{
    Place place;
    while (place.page + 1 < m_pages.size() && position >= place.start + m_pages[place.page].length) {
        place.start += m_pages[place.page].length;
        place.top += m_pages[place.page].height;
        ++place.page;
    }
    const std::vector<Block> &blocks = m_pages[place.page].blocks;
    while (place.block + 1 < blocks.size() && position >= place.start + blocks[place.block].length) {
        place.start += blocks[place.block].length;
        place.top += static_cast<int>(blocks[place.block].height);
        ++place.block;
    }
    return place;
}

bool BlockIndex::isLast(const Place &place) const
{
    return place.page + 1 == m_pages.size() && place.block + 1 == m_pages[place.page].blocks.size();
}

bool BlockIndex::advance(Place &place) const
{
    if (isLast(place))
        return false;
    const Page &page = m_pages[place.page];
    place.start += page.blocks[place.block].length;
    place.top += static_cast<int>(page.blocks[place.block].height);
    if (++place.block == page.blocks.size()) {
        ++place.page;
        place.block = 0;
    }
    return true;
}

LayoutBlock BlockIndex::blockAt(const Place &place) const
{
    const Block &block = at(place);
    return {{place.start, block.length}, block.endsParagraph != 0, place.top, static_cast<int>(block.height)};
}

LayoutBlock BlockIndex::blockAt(qsizetype position) const
{
    return blockAt(placeOf(position));
}

LayoutBlock BlockIndex::blockAtY(int y) const
{
    Place place;
    while (place.page + 1 < m_pages.size() && y >= place.top + m_pages[place.page].height) {
        place.start += m_pages[place.page].length;
        place.top += m_pages[place.page].height;
        ++place.page;
    }
    const std::vector<Block> &blocks = m_pages[place.page].blocks;
    while (place.block + 1 < blocks.size() && y >= place.top + static_cast<int>(blocks[place.block].height)) {
        place.start += blocks[place.block].length;
        place.top += static_cast<int>(blocks[place.block].height);
        ++place.block;
    }
    return blockAt(place);
}

void BlockIndex::setHeight(qsizetype start, int height)
{
    const Place place = placeOf(start);
    Page &page = m_pages[place.page];
    Block &block = page.blocks[place.block];
    const int growth = height - static_cast<int>(block.height);
    block.height = static_cast<quint32>(height) & 0x7fffffffu;
    page.height += growth;
    m_height += growth;
}

void BlockIndex::replaceBlocks(const Place &first, size_t count, const std::vector<Block> &fresh)
{
    // FAST PATH: one block stays one block; the sums change by its growth.
    if (count == 1 && fresh.size() == 1) {
        Page &page = m_pages[first.page];
        Block &block = page.blocks[first.block];
        page.length += static_cast<qsizetype>(fresh.front().length) - static_cast<qsizetype>(block.length);
        block.length = fresh.front().length;
        block.endsParagraph = fresh.front().endsParagraph;
        return;
    }

    // The pages that are touched are made anew, together with the blocks around the replaced ones.
    size_t lastPage = first.page;
    size_t covered = m_pages[lastPage].blocks.size() - first.block;
    while (covered < count)
        covered += m_pages[++lastPage].blocks.size();
    std::vector<Block> around(m_pages[first.page].blocks.begin(),
                              m_pages[first.page].blocks.begin() + static_cast<std::ptrdiff_t>(first.block));
    around.insert(around.end(), fresh.begin(), fresh.end());
    const std::vector<Block> &tail = m_pages[lastPage].blocks;
    around.insert(around.end(), tail.end() - static_cast<std::ptrdiff_t>(covered - count), tail.end());
    // Small pages are joined with the next, so that deleting does not leave a long list of them.
    while (around.size() < kBlocksOfAPage / 4 && lastPage + 1 < m_pages.size()) {
        const std::vector<Block> &next = m_pages[++lastPage].blocks;
        around.insert(around.end(), next.begin(), next.end());
    }

    std::vector<Page> pages;
    append(around, pages);
    const auto from = m_pages.begin() + static_cast<std::ptrdiff_t>(first.page);
    for (auto page = from; page <= m_pages.begin() + static_cast<std::ptrdiff_t>(lastPage); ++page)
        m_height -= page->height;
    for (const Page &page : pages)
        m_height += page.height;
    m_count += static_cast<qsizetype>(fresh.size()) - static_cast<qsizetype>(count);
    m_pages.insert(m_pages.erase(from, m_pages.begin() + static_cast<std::ptrdiff_t>(lastPage) + 1),
                   std::make_move_iterator(pages.begin()), std::make_move_iterator(pages.end()));
}

TextRange BlockIndex::apply(const ChunkedText &text, const TextChange &change)
{
    const qsizetype growth = change.inserted - change.removed;

    // 1. The old blocks that the edit touches, with one unit more on each side: CR and LF may have met or come apart
    // there.
    const Place first = placeOf(std::max<qsizetype>(change.location - 1, 0));
    Place last = first;
    size_t count = 1;
    const qsizetype oldEnd = change.location + change.removed;
    while (last.start + at(last).length <= oldEnd && advance(last))
        ++count;

    // 2. They are cut anew. A last piece that has become short goes on with the blocks behind it in its paragraph.
    for (;;) {
        const qsizetype end = last.start + at(last).length + growth;
        const TextRange range{first.start, end - first.start};
        const std::vector<Block> fresh = cut(text, range, isLast(last) ? RangeEnd::LastBlock : RangeEnd::BetweenBlocks);
        const bool isOpen = fresh.empty() || !fresh.back().endsParagraph;
        const bool isShort = fresh.empty() || fresh.back().length < kShortestPiece;
        if (isOpen && isShort && end < text.size() && advance(last)) {
            ++count;
            continue;
        }
        replaceBlocks(first, count, fresh);
        return range;
    }
}

} // namespace Tessaline
