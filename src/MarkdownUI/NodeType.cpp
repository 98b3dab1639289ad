#include "MarkdownUI/NodeType.h"

namespace MarkdownUI {

namespace {

struct NamedType {
    std::string_view name;
    NodeType type;
};

/// The more frequent ones first.
constexpr NamedType kTypes[] = {
    {"text", NodeType::Text},
    {"softbreak", NodeType::SoftBreak},
    {"paragraph", NodeType::Paragraph},
    {"table_cell", NodeType::TableCell},
    {"code", NodeType::Code},
    {"strong", NodeType::Strong},
    {"emph", NodeType::Emphasis},
    {"link", NodeType::Link},
    {"item", NodeType::Item},
    {"list", NodeType::List},
    {"table_row", NodeType::TableRow},
    {"heading", NodeType::Heading},
    {"block_quote", NodeType::Blockquote},
    {"code_block", NodeType::CodeBlock},
    {"tasklist", NodeType::TaskListItem},
    {"linebreak", NodeType::LineBreak},
    {"html_inline", NodeType::Html},
    {"strikethrough", NodeType::Strikethrough},
    {"image", NodeType::Image},
    {"thematic_break", NodeType::ThematicBreak},
    {"html_block", NodeType::HtmlBlock},
    {"table", NodeType::Table},
    {"table_header", NodeType::TableHead},
    {"document", NodeType::Document},
    {"custom_block", NodeType::CustomBlock},
    {"custom_inline", NodeType::CustomInline},
    {"attribute", NodeType::InlineAttributes},
    {"NONE", NodeType::None},
};

} // namespace

NodeType nodeType(std::string_view name)
{
    for (const NamedType &named : kTypes) {
        if (named.name == name)
            return named.type;
    }
    return NodeType::Unknown; // "<unknown>" too
}

} // namespace MarkdownUI
