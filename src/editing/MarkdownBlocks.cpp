#include "editing/MarkdownBlocks.h"

#include "editing/BlockStyle.h"
#include "editing/Characters.h"
#include "editing/ListMarkers.h"
#include "editing/MarkdownLines.h"

namespace Tessaline {

using namespace MarkdownLines;

namespace {

constexpr QChar kHardBreak = QChar::LineSeparator; // a line break inside a paragraph

Block inlineBlock(QStringView content, const SharedText &style, const SharedText &marker = {})
{
    return {content.toString(), style, marker, true};
}

Block tableLine(QStringView line, const SharedText &style)
{
    Block block{{}, style, {}, true};
    block.content.reserve(line.size());
    bool isFirst = true;
    for (const QStringView cell : splitTableCells(line)) {
        if (!isFirst)
            block.content.append(u'\t');
        block.content.append(cell);
        isFirst = false;
    }
    return block;
}

bool endsInTwoSpaces(QStringView text)
{
    return text.endsWith(u"  ") && !Characters::drawsInNext(text, text.size() - 2);
}

} // namespace

QString horizontalRuleText()
{
    return QStringLiteral("────────────────");
}

QList<Block> parseBlocks(QStringView text)
{
    QList<Block> blocks;
    MarkdownBlockReader reader(text);
    while (!reader.atEnd())
        reader.readNext(blocks);
    return blocks;
}

MarkdownBlockReader::MarkdownBlockReader(QStringView text, qsizetype position)
    : m_text(text), m_position(position), m_carriageReturn(text.size()), m_searchedFrom(text.size())
{}

qsizetype MarkdownBlockReader::carriageReturnFrom(qsizetype start)
{
    if (start > m_carriageReturn) {
        const qsizetype found = m_text.indexOf(u'\r', start);
        m_carriageReturn = found < 0 ? m_text.size() : found;
        m_searchedFrom = start;
    } else if (start < m_searchedFrom) {
        // Only the part that was not searched yet, so that reading a line twice does not search the whole text twice.
        const qsizetype found = m_text.first(m_searchedFrom).indexOf(u'\r', start);
        if (found >= 0)
            m_carriageReturn = found;
        m_searchedFrom = start;
    }
    return m_carriageReturn;
}

MarkdownBlockReader::Line MarkdownBlockReader::lineAt(qsizetype start)
{
    const qsizetype limit = carriageReturnFrom(start);
    const QStringView rest = m_text.sliced(start, limit - start);
    const qsizetype lineFeed = rest.indexOf(u'\n');
    if (lineFeed >= 0)
        return {rest.first(lineFeed), start + lineFeed + 1};
    const bool isPair = limit + 1 < m_text.size() && m_text[limit + 1] == u'\n';
    return {rest, limit + (isPair ? 2 : 1)};
}

void MarkdownBlockReader::readNext(QList<Block> &blocks)
{
    const Line line = lineAt(m_position);
    const QStringView raw = line.text;
    const QStringView trimmed = Characters::trimmed(raw);

    // The order decides: a row of dashes is a rule before it is a list item, and part of a table before it is a rule.
    if (trimmed.isEmpty()) {
        m_position = line.next;
    } else if (isFenceLine(trimmed)) {
        readCode(fenceInfo(trimmed), line.next, blocks);
    } else if (opensTable(line)) {
        readTable(line, blocks);
    } else if (const auto heading = parseHeadingLine(raw)) {
        blocks.append(inlineBlock(heading->content, BlockStyle::heading(heading->level)));
        m_position = line.next;
    } else if (isHorizontalRuleLine(trimmed)) {
        blocks.append({horizontalRuleText(), BlockStyle::horizontalRule(), {}, false});
        m_position = line.next;
    } else if (const auto task = parseTaskLine(raw)) {
        blocks.append(inlineBlock(task->content, BlockStyle::task(task->isDone), ListMarker::task(task->isDone)));
        m_position = line.next;
    } else if (const auto item = parseNumberedLine(raw)) {
        blocks.append(inlineBlock(item->content, BlockStyle::numbered(item->number), ListMarker::number(item->number)));
        m_position = line.next;
    } else if (const auto bullet = parseBulletLine(raw)) {
        blocks.append(inlineBlock(*bullet, BlockStyle::bullet(), ListMarker::bullet()));
        m_position = line.next;
    } else if (const auto quote = parseQuoteLine(raw)) {
        blocks.append(inlineBlock(*quote, BlockStyle::quote()));
        m_position = line.next;
    } else {
        readParagraph(line, blocks);
    }
}

bool MarkdownBlockReader::opensTable(const Line &line)
{
    if (!line.text.contains(u'|') || !hasLineAt(line.next))
        return false;
    return hasTwoTableCells(line.text) && isTableDelimiterRow(lineAt(line.next).text);
}

bool MarkdownBlockReader::startsNewBlock(const Line &line, QStringView trimmed)
{
    return isFenceLine(trimmed) || parseHeadingLine(line.text) || parseNumberedLine(line.text) ||
           parseBulletLine(line.text) || // a task too
           parseQuoteLine(line.text) || isHorizontalRuleLine(trimmed) || opensTable(line);
}

void MarkdownBlockReader::readCode(QStringView info, qsizetype bodyStart, QList<Block> &blocks)
{
    const SharedText style = BlockStyle::code(info);
    const qsizetype blocksBefore = blocks.size();
    m_position = bodyStart;
    while (!atEnd()) {
        const Line line = lineAt(m_position);
        m_position = line.next;
        if (isFenceLine(Characters::trimmed(line.text)))
            break;
        blocks.append({line.text.toString(), style, {}, false});
    }
    // An empty block of code still shows as one empty line.
    if (blocks.size() == blocksBefore)
        blocks.append({QString(), style, {}, false});
}

void MarkdownBlockReader::readTable(const Line &header, QList<Block> &blocks)
{
    blocks.append(tableLine(header.text, BlockStyle::tableHeader()));
    m_position = lineAt(header.next).next; // behind the delimiter row
    while (!atEnd()) {
        const Line row = lineAt(m_position);
        if (!hasTwoTableCells(row.text))
            return;
        blocks.append(tableLine(row.text, BlockStyle::tableRow()));
        m_position = row.next;
    }
}

void MarkdownBlockReader::readParagraph(const Line &first, QList<Block> &blocks)
{
    QString content = first.text.toString();
    m_position = first.next;
    while (!atEnd()) {
        const Line line = lineAt(m_position);
        const QStringView trimmed = Characters::trimmed(line.text);
        if (trimmed.isEmpty() || startsNewBlock(line, trimmed))
            break;
        if (endsInTwoSpaces(content)) {
            // NOTE: the raw line, so that two spaces at its own end make a hard break again. Behind a soft break they
            // do not.
            content.chop(2);
            content.append(kHardBreak).append(line.text);
        } else {
            content.append(u' ').append(trimmed);
        }
        m_position = line.next;
    }
    blocks.append({content, BlockStyle::paragraph(), {}, true});
}

} // namespace Tessaline
