#include "editing/MarkdownLines.h"

#include "editing/Characters.h"

#include <algorithm>
#include <array>

namespace Tessaline::MarkdownLines {

namespace {

constexpr QStringView kFence = u"```";
constexpr int kDeepestHeading = 6;
constexpr qsizetype kShortestDelimiter = 3; // signs "-" in a cell of the delimiter row

bool isDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

bool isBulletSign(QChar unit)
{
    return unit == u'-' || unit == u'*' || unit == u'+';
}

/// Calls `each(cell)` for each cell, not yet trimmed, until it returns false.
template <class Each>
void forEachTableCell(QStringView line, Each each)
{
    line = Characters::trimmed(line);
    if (Characters::startsWith(line, u"|"))
        line = line.sliced(1);
    if (line.endsWith(u'|') && !Characters::drawsInNext(line, line.size() - 1))
        line.chop(1);
    for (;;) {
        const qsizetype pipe = Characters::indexOf(line, u'|');
        if (!each(pipe < 0 ? line : line.first(pipe)) || pipe < 0)
            return;
        line = line.sliced(pipe + 1);
    }
}

bool isDelimiterCell(QStringView cell)
{
    const qsizetype dashes = std::ranges::count(cell, QChar(u'-'));
    const qsizetype colons = std::ranges::count(cell, QChar(u':'));
    return dashes >= kShortestDelimiter && dashes + colons == cell.size();
}

} // namespace

std::optional<HeadingLine> parseHeadingLine(QStringView line)
{
    int level = 0;
    while (level < line.size() && level <= kDeepestHeading && line[level] == u'#')
        ++level;
    if (level < 1 || level > kDeepestHeading || !Characters::startsWith(line.sliced(level), u" "))
        return std::nullopt;
    return HeadingLine{level, line.sliced(level + 1)};
}

std::optional<TaskLine> parseTaskLine(QStringView line)
{
    constexpr qsizetype kPrefix = 6; // "- [ ] "
    if (line.size() < kPrefix || !isBulletSign(line[0]))
        return std::nullopt;
    const QStringView box = line.sliced(1, kPrefix - 1);
    const bool isDone = box == u" [x] " || box == u" [X] ";
    if ((!isDone && box != u" [ ] ") || Characters::extendsPrevious(line, kPrefix))
        return std::nullopt;
    return TaskLine{isDone, line.sliced(kPrefix)};
}

std::optional<NumberedLine> parseNumberedLine(QStringView line)
{
    // Whatever stands before the first dot of the line and is an integer begins with a sign or a digit.
    if (line.isEmpty() || (!isDigit(line[0]) && line[0] != u'-' && line[0] != u'+'))
        return std::nullopt;
    qsizetype dot = 1;
    while (dot < line.size() && isDigit(line[dot]))
        ++dot;
    if (!Characters::startsWith(line.sliced(dot), u". "))
        return std::nullopt;
    const std::optional<qint64> number = Characters::integer(line.first(dot));
    if (!number)
        return std::nullopt;
    return NumberedLine{*number, line.sliced(dot + 2)};
}

std::optional<QStringView> parseBulletLine(QStringView line)
{
    if (line.isEmpty() || !isBulletSign(line[0]) || !Characters::startsWith(line.sliced(1), u" "))
        return std::nullopt;
    return line.sliced(2);
}

std::optional<QStringView> parseQuoteLine(QStringView line)
{
    if (!Characters::startsWith(line, u"> "))
        return std::nullopt;
    return line.sliced(2);
}

bool isHorizontalRuleLine(QStringView trimmedLine)
{
    if (trimmedLine.isEmpty())
        return false;
    const QChar sign = trimmedLine[0];
    if (sign != u'-' && sign != u'*' && sign != u'_')
        return false;
    qsizetype signs = 0;
    for (const QChar unit : trimmedLine) {
        if (unit == sign)
            ++signs;
        else if (unit != u' ')
            return false;
    }
    return signs >= 3;
}

bool isFenceLine(QStringView trimmedLine)
{
    return Characters::startsWith(trimmedLine, kFence);
}

QStringView fenceInfo(QStringView trimmedLine)
{
    return Characters::trimmed(trimmedLine.sliced(kFence.size()));
}

QList<QStringView> splitTableCells(QStringView line)
{
    QList<QStringView> cells;
    forEachTableCell(line, [&cells](QStringView cell) {
        cells.append(Characters::trimmed(cell));
        return true;
    });
    return cells;
}

bool hasTwoTableCells(QStringView line)
{
    int cells = 0;
    forEachTableCell(line, [&cells](QStringView) { return ++cells < 2; });
    return cells == 2;
}

bool isTableDelimiterRow(QStringView line)
{
    bool isDelimiter = true;
    forEachTableCell(line, [&isDelimiter](QStringView cell) {
        isDelimiter = isDelimiterCell(Characters::trimmed(cell));
        return isDelimiter;
    });
    return isDelimiter;
}

} // namespace Tessaline::MarkdownLines
