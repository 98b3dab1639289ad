#pragma once

#include <string_view>

namespace MarkdownUI {

/// The kinds of nodes that the parser makes.
enum class NodeType {
    Document,
    Blockquote,
    List,
    Item,
    CodeBlock,
    HtmlBlock,
    CustomBlock,
    Paragraph,
    Heading,
    ThematicBreak,
    Text,
    SoftBreak,
    LineBreak,
    Code,
    Html,
    CustomInline,
    Emphasis,
    Strong,
    Link,
    Image,
    InlineAttributes,
    None,
    Unknown,
    Strikethrough,
    Table,
    TableHead,
    TableRow,
    TableCell,
    TaskListItem,
};

/// By the name that the parser gives a kind, since the kinds of its extensions have no fixed numbers. Unknown for any
/// other name.
NodeType nodeType(std::string_view name);

} // namespace MarkdownUI
