#include "editing/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tessaline {

namespace {

qsizetype lineEndLength(const QString &block)
{
    if (block.endsWith(QStringLiteral("\r\n")))
        return 2;
    return block.endsWith(u'\n') || block.endsWith(u'\r') || block.endsWith(QChar(QChar::ParagraphSeparator)) ? 1 : 0;
}

/// The row of a caret that stands between two rows belongs to the second, but at the end of the block.
QTextLine rowAt(const TextLayout::Block &block, qsizetype position)
{
    const QTextLine row = block.layout->lineForTextPosition(block.offsetOf(position));
    return row.isValid() ? row : block.layout->lineAt(block.layout->lineCount() - 1);
}

qreal rowBottom(const QTextLine &row, int lineSpacing)
{
    return row.y() + std::ceil(row.height()) + lineSpacing;
}

/// The last caret that is drawn in this row: the end of the block, or before the character at which the next row
/// begins.
int lastCaretOf(const QTextLayout &layout, const QTextLine &row)
{
    const int end = row.textStart() + row.textLength();
    const bool isLast = row.lineNumber() + 1 == layout.lineCount();
    return isLast ? end : layout.previousCursorPosition(end);
}

} // namespace

int TextLayout::Block::offsetOf(qsizetype position) const
{
    const int offset = static_cast<int>(std::min(position - place.range.location, contentLength));
    if (preeditLength == 0 || offset < preeditOffset)
        return offset;
    return offset == preeditOffset ? preeditOffset + preeditCaret : offset + preeditLength;
}

qsizetype TextLayout::Block::positionOf(int offset) const
{
    if (offset > preeditOffset)
        offset = std::max(preeditOffset, offset - preeditLength);
    return place.range.location + std::min<qsizetype>(offset, contentLength);
}

TextLayout::TextLayout(const ChunkedText &text, const TextLook &look) : m_text(text), m_look(look)
{
    updateMetrics();
    reset();
}

void TextLayout::updateMetrics()
{
    m_index.setMetrics(m_look.metrics(m_width));
}

void TextLayout::forgetAll()
{
    m_entries.clear();
}

void TextLayout::lookChanged()
{
    forgetAll();
    updateMetrics();
}

void TextLayout::setWidth(int width)
{
    width = std::max(width, 1);
    if (width == m_width)
        return;
    m_width = width;
    forgetAll();
    updateMetrics();
}

void TextLayout::reset()
{
    forgetAll();
    m_preedit = {};
    m_index.reset(m_text);
}

TextLayout::Entries::iterator TextLayout::find(qsizetype start)
{
    return std::lower_bound(m_entries.begin(), m_entries.end(), start,
                            [](const Entry &entry, qsizetype at) { return entry.start < at; });
}

TextLayout::Damage TextLayout::apply(const TextChange &change)
{
    const qsizetype growth = change.inserted - change.removed;
    const LayoutBlock before = m_index.blockAt(change.location);
    const qsizetype oldCount = m_index.count();
    const TextRange touched = m_index.apply(m_text, change);
    if (change.location + change.removed <= m_preedit.position)
        m_preedit.position += growth;
    else
        m_preedit.position = std::min(m_preedit.position, change.location);

    // 1. Layouts of touched blocks go, those behind move along. The one that still begins where it began may be used
    // again.
    std::unique_ptr<QTextLayout> reusable;
    std::erase_if(m_entries, [&](Entry &entry) {
        const bool isTouched = entry.start + entry.length > touched.location && entry.start < touched.end() - growth;
        const bool isEmptyAtEnd = entry.length == 0 && entry.start >= touched.location;
        if (isTouched && entry.start == before.range.location)
            reusable = std::move(entry.layout);
        return isTouched || isEmptyAtEnd;
    });
    for (Entry &entry : m_entries)
        if (entry.start >= touched.end() - growth)
            entry.start += growth;

    // 2. The paragraph before may be another distance away from what follows it now.
    const bool isMoved = respaceBefore(touched.location);

    // 3. Where one block stayed one block, and as high as it was, nothing else moved.
    const LayoutBlock after = m_index.blockAt(touched.location);
    const bool isOneBlock = oldCount == m_index.count() && after.range == touched;
    if (isMoved)
        return {m_index.blockAt(touched.location - 1).top, 0, true};
    if (!isOneBlock)
        return {after.top, 0, true};
    if (reusable) {
        Entry entry;
        entry.start = after.range.location;
        entry.layout = std::move(reusable);
        layOut(entry, after);
        m_entries.insert(find(entry.start), std::move(entry));
    }
    const Block block = blockFor(after);
    if (block.place.height != after.height)
        return {after.top, 0, true};
    // A word that became shorter may jump up into the row before.
    const QTextLine row = rowAt(block, change.location);
    const QTextLine first = block.layout->lineAt(std::max(0, row.lineNumber() - 1));
    return {after.top + static_cast<int>(first.y()), after.bottom(), false};
}

/// Takes the distance below the block before a position anew, if it was laid out; true if that is another one.
bool TextLayout::respaceBefore(qsizetype position)
{
    if (position == 0)
        return false;
    const LayoutBlock place = m_index.blockAt(position - 1);
    const auto entry = find(place.range.location);
    if (!place.endsParagraph || entry == m_entries.end() || entry->start != place.range.location)
        return false;
    const int spacing = m_look.lookOf(place, beginsParagraph(place)).spacingAfter;
    if (spacing == entry->spacingAfter)
        return false;
    entry->height += spacing - entry->spacingAfter;
    entry->spacingAfter = spacing;
    m_index.setHeight(place.range.location, entry->height);
    return true;
}

void TextLayout::setPreedit(const Preedit &preedit)
{
    const auto forget = [this] {
        const LayoutBlock place = m_index.blockAt(m_preedit.position);
        const auto entry = find(place.range.location);
        if (!m_preedit.text.isEmpty() && entry != m_entries.end() && entry->start == place.range.location)
            m_entries.erase(entry);
    };
    forget();
    m_preedit = preedit;
    forget();
}

bool TextLayout::holdsPreedit(const LayoutBlock &place) const
{
    return !m_preedit.text.isEmpty() && m_index.blockAt(m_preedit.position).range == place.range;
}

bool TextLayout::beginsParagraph(const LayoutBlock &place) const
{
    return place.range.location == 0 || m_index.blockAt(place.range.location - 1).endsParagraph;
}

/// The formats of a block make room for the composed text, which has its own.
QList<QTextLayout::FormatRange> TextLayout::withPreedit(QList<QTextLayout::FormatRange> formats, int offset) const
{
    const int length = static_cast<int>(m_preedit.text.size());
    for (QTextLayout::FormatRange &format : formats) {
        if (format.start >= offset)
            format.start += length;
        else if (format.start + format.length > offset)
            format.length += length;
    }
    for (QTextLayout::FormatRange format : m_preedit.formats) {
        format.start += offset;
        formats.append(format);
    }
    return formats;
}

void TextLayout::layOut(Entry &entry, const LayoutBlock &place)
{
    QString content = m_text.sliced(place.range.location, place.range.length);
    content.chop(lineEndLength(content));
    entry.length = place.range.length;
    entry.contentLength = content.size();

    if (!entry.layout) {
        entry.layout = std::make_unique<QTextLayout>();
        entry.layout->setCacheEnabled(true);
    }
    QTextLayout &layout = *entry.layout;
    const bool isParagraphStart = beginsParagraph(place);
    const BlockLook look = m_look.lookOf(place, isParagraphStart);
    // Text that runs from right to left begins on the right.
    const bool isRightToLeft = (content.isEmpty() && holdsPreedit(place) ? m_preedit.text : content).isRightToLeft();
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setAlignment(isRightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setTabStopDistance(look.tabInterval);
    option.setTabs(look.tabStops);
    option.setFlags(QTextOption::IncludeTrailingSpaces); // or no point would lead to the places between them
    layout.setFont(look.font);
    layout.setTextOption(option);
    // The place of an embedded object, which there are none of, would have no width.
    layout.setText(content.replace(QChar(QChar::ObjectReplacementCharacter), QChar(QChar::ReplacementCharacter)));
    if (holdsPreedit(place)) {
        const auto offset = static_cast<int>(std::min(m_preedit.position - place.range.location, entry.contentLength));
        layout.setPreeditArea(offset, m_preedit.text);
        layout.setFormats(withPreedit(look.formats, offset));
    } else {
        layout.setPreeditArea(-1, QString());
        layout.setFormats(look.formats);
    }

    entry.lineSpacing = look.lineSpacing;
    qreal y = isParagraphStart && place.range.location > 0 ? look.spacingBefore : 0;
    qreal indent = isParagraphStart ? look.firstLineIndent : look.headIndent;
    layout.beginLayout();
    for (QTextLine row = layout.createLine(); row.isValid(); row = layout.createLine()) {
        row.setLineWidth(std::max<qreal>(m_width - indent, 1));
        row.setPosition({isRightToLeft ? 0 : indent, y});
        y = rowBottom(row, look.lineSpacing);
        indent = look.headIndent;
    }
    layout.endLayout();
    entry.spacingAfter = look.spacingAfter;
    entry.height = static_cast<int>(y) + (place.endsParagraph ? look.spacingAfter : 0);
    if (entry.height != place.height)
        m_index.setHeight(place.range.location, entry.height);
}

TextLayout::Entry &TextLayout::laidOut(const LayoutBlock &place)
{
    auto entry = find(place.range.location);
    if (entry == m_entries.end() || entry->start != place.range.location) {
        entry = m_entries.insert(entry, Entry());
        entry->start = place.range.location;
        layOut(*entry, place);
    } else if (entry->height != place.height) {
        m_index.setHeight(place.range.location, entry->height); // the metrics changed and the guess came back
    }
    return *entry;
}

TextLayout::Block TextLayout::blockFor(const LayoutBlock &place)
{
    const Entry &entry = laidOut(place);
    Block block{place, entry.layout.get(), entry.contentLength, entry.lineSpacing};
    block.place.height = entry.height;
    if (holdsPreedit(place)) {
        block.preeditOffset = entry.layout->preeditAreaPosition();
        block.preeditLength = static_cast<int>(m_preedit.text.size());
        block.preeditCaret = m_preedit.caret;
    }
    return block;
}

TextLayout::Block TextLayout::blockAt(qsizetype position)
{
    return blockFor(m_index.blockAt(position));
}

TextLayout::Block TextLayout::blockAtY(int y)
{
    return blockFor(m_index.blockAtY(y));
}

std::optional<TextLayout::Block> TextLayout::blockAfter(const Block &block)
{
    const qsizetype end = block.place.range.end();
    // An empty last block begins where the one before it ends, which ends a paragraph.
    if (end > m_text.size() || (end == m_text.size() && !block.place.endsParagraph))
        return std::nullopt;
    return blockAt(end);
}

std::optional<TextLayout::Block> TextLayout::blockBefore(const Block &block)
{
    if (block.place.range.location == 0)
        return std::nullopt;
    return blockAt(block.place.range.location - 1);
}

void TextLayout::keepOnly(const TextRange &first, const TextRange &second)
{
    std::erase_if(m_entries, [&](const Entry &entry) {
        const auto isOutside = [&entry](const TextRange &range) {
            return entry.start + entry.length < range.location || entry.start > range.end();
        };
        return isOutside(first) && isOutside(second);
    });
}

QRectF TextLayout::caretRect(qsizetype position)
{
    const Block block = blockAt(position);
    const QTextLine row = rowAt(block, position);
    int offset = block.offsetOf(position);
    const qreal x = row.cursorToX(&offset);
    return {x, block.place.top + row.y(), 1, std::ceil(row.height())};
}

/// WORKAROUND: Qt 6.4: QTextLine::xToCursor leads from behind a joiner after a space to the end of the row.
qsizetype TextLayout::positionInRow(const Block &block, const QTextLine &row, qreal x) const
{
    const int last = lastCaretOf(*block.layout, row);
    int nearest = row.textStart();
    qreal distance = std::numeric_limits<qreal>::max();
    for (int offset = nearest; offset <= last;) {
        int cursor = offset;
        if (const qreal away = std::abs(row.cursorToX(&cursor) - x); away < distance) {
            nearest = offset;
            distance = away;
        }
        const int next = block.layout->nextCursorPosition(offset);
        if (next <= offset)
            break;
        offset = next;
    }
    return block.positionOf(nearest);
}

qsizetype TextLayout::positionAt(QPointF point)
{
    const Block block = blockAtY(static_cast<int>(std::floor(point.y())));
    const qreal y = point.y() - block.place.top;
    int row = 0;
    while (row + 1 < block.layout->lineCount() && y >= rowBottom(block.layout->lineAt(row), block.lineSpacing))
        ++row;
    return positionInRow(block, block.layout->lineAt(row), point.x());
}

qsizetype TextLayout::positionRowsAway(qsizetype position, int rows, qreal x)
{
    Block block = blockAt(position);
    int row = rowAt(block, position).lineNumber() + rows;
    while (row < 0) {
        const std::optional<Block> before = blockBefore(block);
        if (!before)
            return 0;
        block = *before;
        row += block.layout->lineCount();
    }
    while (row >= block.layout->lineCount()) {
        row -= block.layout->lineCount();
        const std::optional<Block> after = blockAfter(block);
        if (!after)
            return m_text.size();
        block = *after;
    }
    return positionInRow(block, block.layout->lineAt(row), x);
}

qsizetype TextLayout::rowStart(qsizetype position)
{
    const Block block = blockAt(position);
    return block.positionOf(rowAt(block, position).textStart());
}

qsizetype TextLayout::rowEnd(qsizetype position)
{
    const Block block = blockAt(position);
    return block.positionOf(lastCaretOf(*block.layout, rowAt(block, position)));
}

QRectF TextLayout::boundingRect(const TextRange &range)
{
    const QRectF first = caretRect(range.location);
    const QRectF last = caretRect(range.end());
    if (first.top() == last.top())
        return first.united(last);
    return {0, first.top(), static_cast<qreal>(m_width), last.bottom() - first.top()};
}

} // namespace Tessaline
