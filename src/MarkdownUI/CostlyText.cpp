#include "MarkdownUI/CostlyText.h"

#include <algorithm>

namespace MarkdownUI {

namespace {

// In nanoseconds, measured on the parser with texts of 10 to 40 kB; each is the factor of a product of two lengths.
constexpr qint64 kBudget = 100'000'000;
constexpr qint64 kDelimiterRowPerUnitAbove = 40; // the paragraph above is split into cells again
constexpr qint64 kContainerPerBlankLine = 40;    // a blank line continues each open list and ends the last only
constexpr qint64 kAddressStartPerUnit = 4;       // each "www." or "://" is followed to the end of its word

bool isLineEnd(QChar sign)
{
    return sign == u'\n' || sign == u'\r';
}

bool isBlank(QChar sign)
{
    return sign == u' ' || sign == u'\t';
}

/// Takes the next line off the text; its line break is dropped.
QStringView takeLine(QStringView &text)
{
    const qsizetype length = std::ranges::find_if(text, isLineEnd) - text.begin();
    const QStringView line = text.first(length);
    const bool isPair = text.sliced(length).startsWith(u"\r\n");
    text = text.sliced(std::min(text.size(), length + (isPair ? 2 : 1)));
    return line;
}

/// At most this many quotes and lists can be open in the line: each of them takes a '>' or white space before its text.
qint64 containersOf(QStringView line)
{
    qint64 count = 0;
    for (const QChar sign : line) {
        if (sign == u'>' || sign == u' ')
            ++count;
        else if (sign == u'\t')
            count += 4;
        else if (!QStringView(u"-+*.)0123456789").contains(sign))
            break;
    }
    return count;
}

/// Whether the line can part the header of a table from its rows. One of dashes alone underlines a heading instead.
bool isDelimiterRow(QStringView line)
{
    return std::ranges::all_of(line, [](QChar sign) { return QStringView(u"|:->").contains(sign) || isBlank(sign); }) &&
           line.contains(u'-') && (line.contains(u'|') || line.contains(u':'));
}

/// The declarations and instructions in the line that it leaves open. Comments are found faster and do not count.
qint64 openDeclarationsOf(QStringView line)
{
    const auto countOpen = [line](QStringView opening, QStringView closing) {
        const qsizetype lastEnd = line.lastIndexOf(closing);
        const QStringView open = line.sliced(lastEnd < 0 ? 0 : lastEnd + closing.size());
        return open.count(opening);
    };
    return countOpen(u"<?", u"?>") + countOpen(u"<![CDATA[", u"]]>") + countOpen(u"<!", u">") -
           countOpen(u"<!--", u">");
}

/// Following the web addresses in the line. Taking closing brackets off the end of one counts its brackets each time.
qint64 addressCost(QStringView line)
{
    if (!line.contains(u"www.") && !line.contains(u"://"))
        return 0;
    qint64 cost = 0;
    while (!line.isEmpty()) {
        const qsizetype length = std::ranges::find_if(line, isBlank) - line.begin();
        const QStringView word = line.first(length);
        if (const qint64 starts = word.count(u"www.") + word.count(u"://"); starts > 0)
            cost += word.size() * (starts * kAddressStartPerUnit + word.count(u')') / 3);
        line = line.sliced(std::min(line.size(), length + 1));
    }
    return cost;
}

} // namespace

bool isCostlyToParse(QStringView markdown)
{
    qint64 cost = 0;
    qint64 containers = 0;
    qint64 paragraphLength = 0;
    qint64 pipes = 0;
    qint64 declarations = 0;
    while (!markdown.isEmpty()) {
        const QStringView line = takeLine(markdown);
        if (std::ranges::all_of(line, isBlank)) {
            cost += containers * kContainerPerBlankLine;
            paragraphLength = pipes = declarations = 0;
        } else {
            // A line that continues a paragraph leaves open what it does not repeat.
            const qint64 containersHere = containersOf(line);
            containers = paragraphLength == 0 ? containersHere : std::max(containers, containersHere);
            cost += addressCost(line);
            // The end of a declaration is looked for up to the end of the paragraph.
            declarations += openDeclarationsOf(line);
            cost += declarations * line.size();
            paragraphLength += line.size() + 1;
            pipes += line.count(u'|');
            if (isDelimiterRow(line))
                cost += paragraphLength * (kDelimiterRowPerUnitAbove + pipes);
        }
        if (cost > kBudget)
            return true;
    }
    return false;
}

QList<PlacedBlock> plainParagraphs(QStringView markdown)
{
    QList<PlacedBlock> paragraphs;
    QList<InlineNode> content;
    qsizetype start = 0;
    const auto endParagraph = [&] {
        if (!content.isEmpty())
            paragraphs.append({BlockNode::Paragraph{std::exchange(content, {})}, start});
    };
    QStringView rest = markdown;
    while (!rest.isEmpty()) {
        const qsizetype location = markdown.size() - rest.size();
        const QStringView line = takeLine(rest).trimmed();
        if (line.isEmpty()) {
            endParagraph();
            continue;
        }
        if (content.isEmpty())
            start = location;
        else
            content.append(InlineNode::SoftBreak{});
        content.append(InlineNode::Text{line.toString()});
    }
    endParagraph();
    return paragraphs;
}

} // namespace MarkdownUI
