#include "MarkdownUI/MarkdownParser.h"

#include "MarkdownUI/CostlyText.h"
#include "MarkdownUI/NodeConversion.h"
#include "MarkdownUI/ParserMemory.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm-extension_api.h>
#include <cmark-gfm.h>

#include <mutex>

namespace MarkdownUI {

namespace {

/// The parser's extensions, registered by whoever parses first. They add their letters to tables of the library while
/// it reads inline nodes, and take them away again; and the parser's memory serves one parse at a time.
std::mutex parseMutex;

/// The parser's tree of a text. Holds the lock as long as it lives, and frees everything the parser made at its end.
class Document
{
public:
    explicit Document(QStringView markdown) : m_lock(parseMutex)
    {
        static std::once_flag registered;
        std::call_once(registered, cmark_gfm_core_extensions_ensure_registered);

        const QByteArray bytes = markdown.toUtf8();
        cmark_parser *parser = cmark_parser_new_with_mem(CMARK_OPT_DEFAULT, ParserMemory::allocator());
        if (!parser)
            return;
        for (const char *name : {"autolink", "strikethrough", "tagfilter", "tasklist", "table"}) {
            if (cmark_syntax_extension *extension = cmark_find_syntax_extension(name))
                cmark_parser_attach_syntax_extension(parser, extension);
        }
        cmark_parser_feed(parser, bytes.constData(), static_cast<size_t>(bytes.size()));
        m_document = cmark_parser_finish(parser);
    }
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;
    ~Document() { ParserMemory::release(); }

    cmark_node *firstBlock() const { return m_document ? cmark_node_first_child(m_document) : nullptr; }

private:
    std::lock_guard<std::mutex> m_lock;
    cmark_node *m_document = nullptr;
};

/// Finds the starts of lines, numbered from 1, in ascending order.
class LineStarts
{
public:
    explicit LineStarts(QStringView text) : m_text(text) {}

    /// Never before an earlier answer.
    qsizetype location(int line)
    {
        while (m_line < line && m_location < m_text.size()) {
            const QChar sign = m_text.at(m_location++);
            if (sign == u'\r' && m_location < m_text.size() && m_text.at(m_location) == u'\n')
                ++m_location;
            if (sign == u'\r' || sign == u'\n')
                ++m_line;
        }
        return m_location;
    }

private:
    QStringView m_text;
    int m_line = 1;
    qsizetype m_location = 0;
};

/// NOTE: the parser gives no line to a paragraph whose last line has become the header of a table, and the paragraph's
/// line to the table.
int firstLineOf(cmark_node *node)
{
    const int line = cmark_node_get_start_line(node);
    cmark_node *table = cmark_node_next(node);
    return line > 0 || !table ? line : cmark_node_get_start_line(table);
}

} // namespace

QList<PlacedBlock> parsePlacedBlocks(QStringView markdown)
{
    if (isCostlyToParse(markdown))
        return plainParagraphs(markdown);
    const Document document(markdown);
    LineStarts lines(markdown);
    QList<PlacedBlock> blocks;
    for (cmark_node *node = document.firstBlock(); node; node = cmark_node_next(node)) {
        if (std::optional<BlockNode> block = blockOf(node))
            blocks.append({*std::move(block), lines.location(firstLineOf(node))});
    }
    return blocks;
}

QList<BlockNode> parseBlocks(QStringView markdown)
{
    QList<BlockNode> blocks;
    if (isCostlyToParse(markdown)) {
        for (PlacedBlock &placed : plainParagraphs(markdown))
            blocks.append(std::move(placed.block));
        return blocks;
    }
    const Document document(markdown);
    for (cmark_node *node = document.firstBlock(); node; node = cmark_node_next(node)) {
        if (std::optional<BlockNode> block = blockOf(node))
            blocks.append(*std::move(block));
    }
    return blocks;
}

} // namespace MarkdownUI
