#include "editing/MarkdownWriting.h"

#include "editing/BlockStyle.h"
#include "editing/Characters.h"
#include "editing/InlineWriting.h"
#include "editing/Paragraphs.h"

#include <algorithm>

namespace Tessaline {

using BlockStyle::Kind;

namespace {

using namespace Qt::StringLiterals;

constexpr qint64 kDeepestHeading = 6;
constexpr QStringView kClosingFence = u"\n```";

enum class Family { None, List, Quote };

/// Neighbours of one family stand on neighbouring lines; all others have an empty line between them.
Family familyOf(Kind kind)
{
    switch (kind) {
    case Kind::Bullet:
    case Kind::Numbered:
    case Kind::Task:
        return Family::List;
    case Kind::Quote:
        return Family::Quote;
    default:
        return Family::None;
    }
}

Kind kindOf(const SharedText &tag)
{
    return BlockStyle::read(tag.view()).kind;
}

QList<QStringView> cellsOf(QStringView content)
{
    return content.split(u'\t');
}

void appendTableRow(const QList<QStringView> &cells, QString &markdown)
{
    markdown.append(u"| "_s);
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0)
            markdown.append(u" | "_s);
        QStringView cell = cells.at(i);
        for (qsizetype pipe; (pipe = Characters::indexOf(cell, u'|')) >= 0; cell = cell.sliced(pipe + 1))
            markdown.append(cell.first(pipe)).append(u"\\|"_s);
        markdown.append(cell);
    }
    markdown.append(u" |"_s);
}

void appendDelimiterRow(qsizetype cells, QString &markdown)
{
    markdown.append(u"| "_s);
    for (qsizetype i = 0; i < cells; ++i)
        markdown.append(i > 0 ? u" | ---"_s : u"---"_s);
    markdown.append(u" |"_s);
}

/// The paragraphs of a text, in order, with the runs that they begin in.
class ParagraphWalk
{
public:
    explicit ParagraphWalk(const AttributedText &text) : m_text(text) { moveTo(0); }

    bool atEnd() const { return m_paragraph.location == m_text.size(); }
    TextRange paragraph() const { return m_paragraph; }
    const SharedText &tag() const
    {
        static const SharedText kNone = BlockStyle::paragraph();
        const SharedText &tag = m_text.runs().at(m_run).attributes.blockStyle;
        return tag.isPresent() ? tag : kNone;
    }

    /// Appends what the paragraph's record has as its content.
    void appendContent(QString &content) const
    {
        const TextRange range = Paragraphs::contentOf(m_text.text(), m_paragraph);
        if (range.isEmpty())
            return;
        if (kindOf(tag()) == Kind::Code)
            collectPlain(m_text, m_run, range, content);
        else
            serializeInline(m_text, m_run, range, content);
    }

    void advance() { moveTo(m_paragraph.end()); }

    /// To the paragraph that begins at `location`, which lies behind this one.
    void moveTo(qsizetype location)
    {
        m_paragraph = {location, Paragraphs::endOf(m_text.text(), location) - location};
        while (m_run < m_text.runs().size() && m_text.runs().at(m_run).range.end() <= location)
            ++m_run;
    }

private:
    const AttributedText &m_text;
    TextRange m_paragraph;
    qsizetype m_run = 0; // the run at the paragraph's first unit
};

} // namespace

ParagraphRecord paragraphRecord(const AttributedText &text, TextRange paragraph)
{
    const SharedText &tag = text.attributesAt(paragraph.location).blockStyle;
    ParagraphRecord record{tag.isPresent() ? tag : BlockStyle::paragraph(), {}};
    const TextRange content = Paragraphs::contentOf(text.text(), paragraph);
    record.content = kindOf(record.tag) == Kind::Code ? plainText(text, content) : serializeInline(text, content);
    return record;
}

QString serializeMarkdown(const AttributedText &text)
{
    QString markdown;
    markdown.reserve(text.size() + text.size() / 8);
    QString content;
    MarkdownPiece::Neighbour before;
    ParagraphWalk walk(text);
    while (!walk.atEnd()) {
        const MarkdownPiece::Neighbour *previous = before.tag.isPresent() ? &before : nullptr;
        const MarkdownPiece::Neighbour paragraph = MarkdownPiece::follow(previous, walk.tag());
        content.resize(0); // keeps its memory for the next one
        walk.appendContent(content);
        markdown.append(MarkdownPiece::opening(previous, paragraph));
        MarkdownPiece::appendContent(paragraph, content, markdown);
        walk.advance();
        markdown.append(MarkdownPiece::closing(paragraph.tag, walk.atEnd() ? nullptr : &walk.tag()));
        before = paragraph;
    }
    return markdown;
}

QString formatTableRow(const QList<QStringView> &cells)
{
    QString row;
    appendTableRow(cells, row);
    return row;
}

MarkdownPiece::Neighbour MarkdownPiece::follow(const Neighbour *before, const SharedText &tag)
{
    const Kind kind = kindOf(tag);
    return {tag, kind == Kind::TableHeader || (kind == Kind::TableRow && before && before->isInTable)};
}

QString MarkdownPiece::opening(const Neighbour *before, const Neighbour &paragraph)
{
    const BlockStyle::Tag tag = BlockStyle::read(paragraph.tag.view());
    const bool isCode = tag.kind == Kind::Code;
    const bool continuesCode = isCode && before && before->tag == paragraph.tag;
    const bool continuesTable = tag.kind == Kind::TableRow && paragraph.isInTable;
    if (continuesCode || continuesTable)
        return u"\n"_s;

    QString opening;
    if (before) {
        const Family family = familyOf(tag.kind);
        const bool isClose = family != Family::None && family == familyOf(kindOf(before->tag));
        opening = isClose ? u"\n"_s : u"\n\n"_s;
    }
    if (isCode)
        opening.append(u"```"_s).append(tag.argument).append(u'\n');
    return opening;
}

void MarkdownPiece::appendContent(const Neighbour &paragraph, QStringView content, QString &markdown)
{
    const BlockStyle::Tag tag = BlockStyle::read(paragraph.tag.view());
    switch (tag.kind) {
    case Kind::Heading: {
        const qint64 level = std::clamp(BlockStyle::headingLevel(tag.argument), qint64(1), kDeepestHeading);
        markdown.append(QStringView(u"######").first(level)).append(u' ');
        break;
    }
    case Kind::Quote:
        markdown.append(u"> "_s);
        break;
    case Kind::Bullet:
        markdown.append(u"- "_s);
        break;
    case Kind::Numbered:
        markdown.append(tag.argument).append(u". "_s);
        break;
    case Kind::Task:
        if (BlockStyle::isDoneTask(paragraph.tag.view()))
            markdown.append(u"- [x] "_s);
        else if (BlockStyle::isOpenTask(paragraph.tag.view()))
            markdown.append(u"- [ ] "_s);
        break;
    case Kind::TableHeader: {
        const QList<QStringView> cells = cellsOf(content);
        appendTableRow(cells, markdown);
        markdown.append(u'\n');
        appendDelimiterRow(cells.size(), markdown);
        return;
    }
    case Kind::TableRow:
        if (paragraph.isInTable) {
            appendTableRow(cellsOf(content), markdown);
            return;
        }
        break;
    case Kind::HorizontalRule:
        markdown.append(u"---"_s);
        return;
    case Kind::Paragraph:
    case Kind::Code:
        break;
    }
    markdown.append(content);
}

QStringView MarkdownPiece::closing(const SharedText &tag, const SharedText *next)
{
    if (kindOf(tag) != Kind::Code || (next && *next == tag))
        return {};
    return kClosingFence;
}

} // namespace Tessaline
