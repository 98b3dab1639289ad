#include "MarkdownUI/CostlyText.h"

#include <algorithm>

namespace MarkdownUI {

namespace {

// In nanoseconds, measured on the parser with texts of 10 to 100 kB; each is the factor of a product of two lengths.
constexpr qint64 kBudget = 100'000'000;
constexpr qint64 kDelimiterRowPerUnitAbove = 40; // the paragraph above is split into cells again
constexpr qint64 kContainerPerBlankLine = 40;    // a blank line continues each open list and ends the last only
constexpr qint64 kContainerPerInline = 5;        // each piece of a line is added by way of all that is around it
constexpr qint64 kSignPerLink = 7;               // each link looks back over all signs of emphasis before it
constexpr qint64 kSignPerTilde = 3;              // and so does what may end struck text
constexpr qint64 kAddressStartPerUnit = 4;       // each "www." or "://" is followed to the end of its word
constexpr qint64 kMailSignPerUnit = 7;           // each "@" is followed over some of its word
constexpr qint64 kCellPerCell = 5;               // each cell is added behind all others of its row
constexpr qint64 kMissingCell = 300;             // rows are filled up, with half a kilobyte for a cell

constexpr qint64 kOrdinaryDepth = 8;   // of quotes and lists
constexpr qint64 kOrdinaryCells = 256; // in a row
constexpr qint64 kFarthestMail = 1000; // units that are followed

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

/// What stands before the text of a line.
struct LineStart {
    qint64 markers = 0; // at most so many quotes and lists begin or go on with a sign
    qint64 blanks = 0;  // at most so many lists go on without one
    qsizetype length = 0;
    bool isItem = false; // surely: an item begins in the line
};

LineStart startOf(QStringView line)
{
    LineStart start;
    for (; start.length < line.size(); ++start.length) {
        const QChar sign = line.at(start.length);
        if (sign == u' ') {
            ++start.blanks;
        } else if (sign == u'\t') {
            start.blanks += 4;
        } else if (sign == u'>') {
            ++start.markers;
        } else if (QStringView(u"-+*.)").contains(sign)) {
            if (start.length + 1 < line.size() && !isBlank(line.at(start.length + 1)))
                break;
            ++start.markers;
            // Deeper ones may go on with a paragraph, and so may empty ones and numbers.
            if (start.length <= 3 && start.length == start.blanks && QStringView(u"-+*").contains(sign) &&
                !line.sliced(start.length + 1).trimmed().isEmpty())
                start.isItem = true;
        } else if (sign < u'0' || sign > u'9') {
            break;
        }
    }
    return start;
}

/// At most this many pieces become of the text of a line.
qint64 inlinesOf(QStringView text)
{
    const auto isSpecial = [](QChar sign) { return QStringView(u"*_`[]!<&\\:w~|@\"'-.").contains(sign); };
    return 2 + 2 * std::ranges::count_if(text, isSpecial);
}

/// The runs of tildes in a text.
qint64 tildesOf(QStringView text)
{
    qint64 count = 0;
    for (qsizetype i = text.indexOf(u'~'); i >= 0; i = text.indexOf(u'~', i + 1))
        count += i == 0 || text.at(i - 1) != u'~' ? 1 : 0;
    return count;
}

/// Whether the line can part the header of a table from its rows. One of dashes alone underlines a heading instead.
bool isDelimiterRow(QStringView line)
{
    return std::ranges::all_of(line, [](QChar sign) { return QStringView(u"|:-> \t\v\f").contains(sign); }) &&
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

/// Following the addresses in the line. Taking closing brackets off the end of one counts its brackets each time.
qint64 addressCost(QStringView line)
{
    if (!line.contains(u"www.") && !line.contains(u"://") && !line.contains(u'@'))
        return 0;
    qint64 cost = 0;
    while (!line.isEmpty()) {
        const qsizetype length = std::ranges::find_if(line, isBlank) - line.begin();
        const QStringView word = line.first(length);
        if (const qint64 starts = word.count(u"www.") + word.count(u"://"); starts > 0)
            cost += word.size() * (starts * kAddressStartPerUnit + word.count(u')') / 3);
        cost += word.count(u'@') * std::min<qint64>(word.size(), kFarthestMail) * kMailSignPerUnit;
        line = line.sliced(std::min(line.size(), length + 1));
    }
    return cost;
}

/// The definitions of links in a text. Each use of one copies its target and title.
class Definitions
{
public:
    /// `text` is what comes behind the signs of quotes and lists.
    void takeLine(QStringView text)
    {
        m_uses += text.count(u'[');
        if (m_openSigns == 0 && text.trimmed().startsWith(u'['))
            m_length = m_labels = 0;
        else if (m_length == 0)
            return;
        m_length += text.size() + 1;
        m_labels += text.count(u"]:");
        if (m_labels > 0)
            m_longest = std::max(m_longest, m_length);
        // A title can go on over lines that look like definitions.
        for (const QChar sign : {u'"', u'\'', u'(', u')'})
            m_openSigns ^= text.count(sign) % 2;
    }
    void takeBlankLine() { m_length = m_labels = m_openSigns = 0; }

    qint64 cost() const { return m_longest * m_uses; }
    bool exist() const { return m_longest > 0; }

private:
    qint64 m_length = 0; // of the one that the line may belong to; 0 for none
    qint64 m_labels = 0; // in it
    qint64 m_longest = 0;
    qint64 m_uses = 0;
    qint64 m_openSigns = 0;
};

/// What the lines of a text cost, taken one after the other.
class ParsingCost
{
public:
    void takeLine(QStringView line)
    {
        if (std::ranges::all_of(line, isBlank)) {
            m_cost += m_containers * kContainerPerBlankLine;
            m_paragraphLength = m_paragraphLines = m_pipes = m_declarations = m_columns = m_signs = 0;
            m_definitions.takeBlankLine();
            return;
        }
        const LineStart start = startOf(line);
        const QStringView text = line.sliced(start.length);
        takeContainers(start, text);
        takeEmphasis(start, text);
        m_cost += addressCost(text);
        m_definitions.takeLine(text);
        // The end of a declaration is looked for up to the end of the paragraph.
        if (line.contains(u'<'))
            m_declarations += openDeclarationsOf(line);
        m_cost += m_declarations * line.size();
        m_paragraphLength += line.size() + 1;
        ++m_paragraphLines;
        takeCells(line);
    }

    qint64 total() const { return m_cost + m_definitions.cost() + (m_definitions.exist() ? m_shortLinkCost : 0); }

private:
    void takeContainers(const LineStart &start, QStringView text)
    {
        // A line that continues a paragraph leaves open what it does not repeat.
        const qint64 here = std::min(m_containers, start.blanks) + start.markers;
        m_containers = m_paragraphLength == 0 ? here : std::max(m_containers, here);
        if (m_containers > kOrdinaryDepth)
            m_cost += m_containers * inlinesOf(text) * kContainerPerInline;
    }

    void takeEmphasis(const LineStart &start, QStringView text)
    {
        if (start.isItem)
            m_signs = 0;
        const auto isSign = [](QChar sign) { return sign == u'*' || sign == u'_' || sign == u'~'; };
        m_signs += std::ranges::count_if(text, isSign);
        if (const qint64 tildes = tildesOf(text); tildes > 0)
            m_cost += m_signs * tildes * kSignPerTilde;
        const qint64 ends = text.count(u']');
        if (ends == 0)
            return;
        m_cost += m_signs * (text.count(u"](") + text.count(u"][")) * kSignPerLink;
        m_shortLinkCost += m_signs * ends * kSignPerLink;
    }

    void takeCells(QStringView line)
    {
        const qint64 pipes = line.count(u'|');
        m_pipes += pipes;
        if (isDelimiterRow(line)) {
            // The last cell of each line of the paragraph above is followed back to the one before it.
            m_cost += m_paragraphLength * (kDelimiterRowPerUnitAbove + m_pipes + m_paragraphLines);
            m_columns = std::max(m_columns, pipes + 1);
        } else if (m_columns > 0) {
            const qint64 cells = pipes + 1;
            m_cost += std::max<qint64>(m_columns - cells, 0) * kMissingCell;
            m_cost += cells * std::max<qint64>(cells - kOrdinaryCells, 0) * kCellPerCell;
        }
    }

    qint64 m_cost = 0;
    qint64 m_containers = 0; // that can be open, at most
    qint64 m_paragraphLength = 0;
    qint64 m_paragraphLines = 0;
    qint64 m_pipes = 0; // in the paragraph
    qint64 m_declarations = 0;
    qint64 m_signs = 0;         // of emphasis, in the paragraph
    qint64 m_shortLinkCost = 0; // of links that need a definition
    qint64 m_columns = 0;       // of the table that the line may belong to; 0 for none
    Definitions m_definitions;
};

} // namespace

bool isCostlyToParse(QStringView markdown)
{
    ParsingCost cost;
    while (!markdown.isEmpty()) {
        cost.takeLine(takeLine(markdown));
        if (cost.total() > kBudget)
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
