#include "MarkdownUI/GrowingContent.h"

#include "MarkdownUI/MarkdownParser.h"

#include <algorithm>

namespace MarkdownUI {

namespace {

constexpr QChar kByteOrderMark = u'\ufeff';

qsizetype commonPrefix(QStringView one, QStringView other)
{
    const qsizetype shorter = std::min(one.size(), other.size());
    if (one.first(shorter) == other.first(shorter))
        return shorter; // FAST PATH: a text that grows, compared many units at a time
    return std::ranges::mismatch(one, other).in1 - one.begin();
}

bool isLineEnd(QChar sign)
{
    return sign == u'\n' || sign == u'\r';
}

/// Whether the line at `location` ends within the first `length` units of the text, with its whole line break.
bool hasCompleteLine(QStringView text, qsizetype location, qsizetype length)
{
    const QStringView known = text.first(length);
    for (qsizetype i = location; i < known.size(); ++i) {
        if (known.at(i) == u'\n')
            return true;
        if (known.at(i) == u'\r')
            return i + 1 < known.size();
    }
    return false;
}

/// What can stand before a definition in its line: white space and the signs of the quotes and lists around it.
bool canPrecedeDefinition(QChar sign)
{
    return sign == kByteOrderMark || QStringView(u" \t\v\f>-+*.)0123456789").contains(sign);
}

/// The bracket that ends the label which begins at `location`, or the one that shows that it is none. The length of the
/// text if there is neither.
qsizetype labelEnd(QStringView text, qsizetype location)
{
    while (location < text.size() && text.at(location) != u'[' && text.at(location) != u']')
        location += text.at(location) == u'\\' ? 2 : 1;
    return std::min(location, text.size());
}

bool beginsDefinition(QStringView text, qsizetype location)
{
    while (true) {
        while (location < text.size() && canPrecedeDefinition(text.at(location)))
            ++location;
        if (location == text.size() || text.at(location) != u'[')
            return false;
        const qsizetype end = labelEnd(text, location + 1);
        if (end + 1 >= text.size() || text.at(end) != u']')
            return false;
        if (text.at(end + 1) == u':')
            return true;
        if (end != location + 2)
            return false;
        location = end + 1; // the box of a task; the definition can follow it
    }
}

/// Whether the text may define links, "[label]: target" at the start of a paragraph. Says so of some texts that do not,
/// and never misses one. `text` begins with a line.
bool mayDefineLinks(QStringView text)
{
    if (!text.contains(u"]:"))
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if ((i == 0 || isLineEnd(text.at(i - 1))) && beginsDefinition(text, i))
            return true;
    }
    return false;
}

} // namespace

/// The number of blocks that a text with the same first `sharedPrefix` units has too. Blocks are made line by line, and
/// are closed by the line that begins the next one at the top: up to a block whose first line is complete, nothing that
/// follows changes anything, and reading can begin at that line as if the text did.
qsizetype GrowingContent::reusableBlocks(qsizetype sharedPrefix) const
{
    for (qsizetype i = m_blocks.size() - 1; i > 0; --i) {
        const qsizetype location = m_locations.at(i);
        // A paragraph and the table that took its last line begin at the same place. A byte order mark is skipped
        // only where a text begins.
        if (location > m_locations.at(i - 1) && m_markdown.at(location) != kByteOrderMark &&
            hasCompleteLine(m_markdown, location, sharedPrefix))
            return i;
    }
    return 0;
}

qsizetype GrowingContent::update(const QString &markdown)
{
    // 1. What the old blocks and the new text have in common.
    const qsizetype sharedPrefix = commonPrefix(m_markdown, markdown);
    qsizetype kept = m_hasDefinitions ? 0 : reusableBlocks(sharedPrefix);
    qsizetype start = kept > 0 ? m_locations.at(kept) : 0;
    m_hasDefinitions = mayDefineLinks(QStringView(markdown).sliced(start));
    if (m_hasDefinitions) {
        kept = 0;
        start = 0;
    }

    // 2. The rest anew. What comes out the same is not replaced.
    m_markdown = markdown;
    QList<PlacedBlock> parsed = parsePlacedBlocks(QStringView(markdown).sliced(start));
    m_locations.resize(kept);
    qsizetype firstChanged = kept;
    for (PlacedBlock &placed : parsed) {
        m_locations.append(start + placed.location);
        const qsizetype index = m_locations.size() - 1;
        const bool isSame = index < m_blocks.size() && m_blocks.at(index) == placed.block;
        if (isSame && firstChanged == index)
            ++firstChanged;
        if (index == m_blocks.size())
            m_blocks.append(std::move(placed.block));
        else if (!isSame)
            m_blocks[index] = std::move(placed.block);
    }
    m_blocks.resize(m_locations.size());
    return firstChanged;
}

} // namespace MarkdownUI
