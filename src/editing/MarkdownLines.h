#pragma once

#include <QtCore/QList>
#include <QtCore/QStringView>

#include <optional>

/// What one line of Markdown is, looked at by itself. A line has no line break in it. Unless a name says otherwise the
/// raw line is meant: headings and list items are none behind even one space, so lists do not nest.
namespace Tessaline::MarkdownLines {

struct HeadingLine {
    int level = 1; // 1 to 6
    QStringView content;
    friend bool operator==(const HeadingLine &, const HeadingLine &) = default;
};
/// One to six signs "#", one space, and the content, from which nothing is trimmed.
std::optional<HeadingLine> parseHeadingLine(QStringView line);

struct TaskLine {
    bool isDone = false;
    QStringView content;
    friend bool operator==(const TaskLine &, const TaskLine &) = default;
};
/// "- [ ] ", or with "*" or "+", or with "x" or "X" in the box.
std::optional<TaskLine> parseTaskLine(QStringView line);

struct NumberedLine {
    qint64 number = 0;
    QStringView content;
    friend bool operator==(const NumberedLine &, const NumberedLine &) = default;
};
/// An integer of 64 bits, with or without a sign, a dot and a space.
std::optional<NumberedLine> parseNumberedLine(QStringView line);

/// The content behind "- ", "* " or "+ ", and behind "> ". Tasks are bullets too.
std::optional<QStringView> parseBulletLine(QStringView line);
std::optional<QStringView> parseQuoteLine(QStringView line);

/// At least three "-", "*" or "_", all alike, with any number of spaces (no tabs) between them.
bool isHorizontalRuleLine(QStringView trimmedLine);

/// Three backticks open and close a block of code. The info text is what follows them, trimmed.
bool isFenceLine(QStringView trimmedLine);
QStringView fenceInfo(QStringView trimmedLine);

/// The cells of a line of a table, trimmed. One pipe at either end is taken off; a backslash protects none. A line
/// without a pipe is one cell.
QList<QStringView> splitTableCells(QStringView line);
/// Whether that gives at least two. Costs no list.
bool hasTwoTableCells(QStringView line);
/// Whether each cell is at least three "-" with any ":" among them. One cell without a pipe is enough.
bool isTableDelimiterRow(QStringView line);

} // namespace Tessaline::MarkdownLines
