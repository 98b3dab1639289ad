#include "MarkdownUI/MarkdownParser.h"

#include "MarkdownUI/NodeConversion.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm-extension_api.h>
#include <cmark-gfm.h>

#include <memory>
#include <mutex>

namespace MarkdownUI {

namespace {

struct FreeNode {
    void operator()(cmark_node *node) const { cmark_node_free(node); }
};
struct FreeParser {
    void operator()(cmark_parser *parser) const { cmark_parser_free(parser); }
};
using Document = std::unique_ptr<cmark_node, FreeNode>;
using Parser = std::unique_ptr<cmark_parser, FreeParser>;

/// The parser's extensions, registered by whoever parses first. They add their letters to tables of the library while
/// it reads inline nodes, and take them away again: hence the lock around every parse.
std::mutex parseMutex;

Document documentOf(QStringView markdown)
{
    static std::once_flag registered;
    std::call_once(registered, cmark_gfm_core_extensions_ensure_registered);

    const QByteArray bytes = markdown.toUtf8();
    const std::lock_guard lock(parseMutex);
    const Parser parser(cmark_parser_new(CMARK_OPT_DEFAULT));
    if (!parser)
        return nullptr;
    for (const char *name : {"autolink", "strikethrough", "tagfilter", "tasklist", "table"}) {
        if (cmark_syntax_extension *extension = cmark_find_syntax_extension(name))
            cmark_parser_attach_syntax_extension(parser.get(), extension);
    }
    cmark_parser_feed(parser.get(), bytes.constData(), static_cast<size_t>(bytes.size()));
    return Document(cmark_parser_finish(parser.get()));
}

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
    const Document document = documentOf(markdown);
    QList<PlacedBlock> blocks;
    if (!document)
        return blocks;
    LineStarts lines(markdown);
    for (cmark_node *node = cmark_node_first_child(document.get()); node; node = cmark_node_next(node)) {
        if (std::optional<BlockNode> block = blockOf(node))
            blocks.append({*std::move(block), lines.location(firstLineOf(node))});
    }
    return blocks;
}

QList<BlockNode> parseBlocks(QStringView markdown)
{
    const Document document = documentOf(markdown);
    QList<BlockNode> blocks;
    if (!document)
        return blocks;
    for (cmark_node *node = cmark_node_first_child(document.get()); node; node = cmark_node_next(node)) {
        if (std::optional<BlockNode> block = blockOf(node))
            blocks.append(*std::move(block));
    }
    return blocks;
}

} // namespace MarkdownUI
