#include "MarkdownUI/NodeConversion.h"

#include "MarkdownUI/NodeType.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm-extension_api.h>
#include <cmark-gfm.h>

#include <vector>

namespace MarkdownUI {

namespace {

NodeType typeOf(cmark_node *node)
{
    return nodeType(cmark_node_get_type_string(node));
}

QString literalOf(cmark_node *node)
{
    return QString::fromUtf8(cmark_node_get_literal(node));
}

QString urlOf(cmark_node *node)
{
    return QString::fromUtf8(cmark_node_get_url(node));
}

qsizetype childCount(cmark_node *node)
{
    qsizetype count = 0;
    for (cmark_node *child = cmark_node_first_child(node); child; child = cmark_node_next(child))
        ++count;
    return count;
}

[[noreturn]] void fail(const char *message)
{
    qFatal("Fatal error: MarkdownUI/MarkdownParser: %s", message);
}

[[noreturn]] void failFor(const char *expected, cmark_node *node)
{
    qFatal("Fatal error: MarkdownUI/MarkdownParser: Expected a %s but got a '%s' instead.", expected,
           cmark_node_get_type_string(node));
}

// --- inline nodes ---

bool holdsInlines(NodeType type)
{
    switch (type) {
    case NodeType::Emphasis:
    case NodeType::Strong:
    case NodeType::Strikethrough:
    case NodeType::Link:
    case NodeType::Image:
        return true;
    default:
        return false;
    }
}

/// Appends a node without children. One of any other kind is left out.
void appendLeaf(cmark_node *node, NodeType type, QList<InlineNode> &inlines)
{
    switch (type) {
    case NodeType::Text:
        inlines.append(InlineNode::Text{literalOf(node)});
        break;
    case NodeType::SoftBreak:
        inlines.append(InlineNode::SoftBreak());
        break;
    case NodeType::LineBreak:
        inlines.append(InlineNode::LineBreak());
        break;
    case NodeType::Code:
        inlines.append(InlineNode::Code{literalOf(node)});
        break;
    case NodeType::Html:
        inlines.append(InlineNode::Html{literalOf(node)});
        break;
    default:
        break;
    }
}

InlineNode holderOf(cmark_node *node, NodeType type, QList<InlineNode> children)
{
    switch (type) {
    case NodeType::Emphasis:
        return InlineNode::Emphasis{std::move(children)};
    case NodeType::Strong:
        return InlineNode::Strong{std::move(children)};
    case NodeType::Strikethrough:
        return InlineNode::Strikethrough{std::move(children)};
    case NodeType::Link:
        return InlineNode::Link{urlOf(node), std::move(children)};
    default:
        return InlineNode::Image{urlOf(node), std::move(children)};
    }
}

QList<InlineNode> inlinesOf(cmark_node *parent)
{
    struct Open {
        cmark_node *node;
        NodeType type;
        QList<InlineNode> before; // what stands before the node in its parent
    };
    std::vector<Open> open;
    QList<InlineNode> inlines;
    inlines.reserve(childCount(parent));
    cmark_node *node = cmark_node_first_child(parent);
    while (true) {
        if (!node) {
            if (open.empty())
                return inlines;
            Open closed = std::move(open.back());
            open.pop_back();
            closed.before.append(holderOf(closed.node, closed.type, std::move(inlines)));
            inlines = std::move(closed.before);
            node = cmark_node_next(closed.node);
            continue;
        }
        const NodeType type = typeOf(node);
        if (holdsInlines(type)) {
            open.push_back({node, type, std::move(inlines)});
            inlines = {};
            inlines.reserve(childCount(node));
            node = cmark_node_first_child(node);
        } else {
            appendLeaf(node, type, inlines);
            node = cmark_node_next(node);
        }
    }
}

// --- tables ---

QList<RawTableColumnAlignment> alignmentsOf(cmark_node *table)
{
    const int count = cmark_gfm_extensions_get_table_columns(table);
    const uint8_t *letters = cmark_gfm_extensions_get_table_alignments(table);
    QList<RawTableColumnAlignment> alignments(count, RawTableColumnAlignment::None);
    for (int i = 0; i < count; ++i) {
        if (letters[i] == 'l')
            alignments[i] = RawTableColumnAlignment::Left;
        else if (letters[i] == 'c')
            alignments[i] = RawTableColumnAlignment::Center;
        else if (letters[i] == 'r')
            alignments[i] = RawTableColumnAlignment::Right;
    }
    return alignments;
}

RawTableRow rowOf(cmark_node *node)
{
    RawTableRow row;
    row.cells.reserve(childCount(node));
    for (cmark_node *cell = cmark_node_first_child(node); cell; cell = cmark_node_next(cell)) {
        if (typeOf(cell) != NodeType::TableCell)
            failFor("table cell", cell);
        row.cells.append({inlinesOf(cell)});
    }
    return row;
}

BlockNode tableOf(cmark_node *node)
{
    BlockNode::Table table{alignmentsOf(node), {}};
    table.rows.reserve(childCount(node));
    for (cmark_node *row = cmark_node_first_child(node); row; row = cmark_node_next(row)) {
        const NodeType type = typeOf(row);
        if (type != NodeType::TableHead && type != NodeType::TableRow)
            failFor("table row", row);
        table.rows.append(rowOf(row));
    }
    return table;
}

// --- blocks ---

/// A block without blocks in it.
std::optional<BlockNode> leafBlockOf(cmark_node *node, NodeType type)
{
    switch (type) {
    case NodeType::CodeBlock: {
        const QString info = QString::fromUtf8(cmark_node_get_fence_info(node));
        return BlockNode::CodeBlock{info.isEmpty() ? std::nullopt : std::optional(info), literalOf(node)};
    }
    case NodeType::HtmlBlock:
        return BlockNode::HtmlBlock{literalOf(node)};
    case NodeType::Paragraph:
        return BlockNode::Paragraph{inlinesOf(node)};
    case NodeType::Heading:
        return BlockNode::Heading{cmark_node_get_heading_level(node), inlinesOf(node)};
    case NodeType::Table:
        return tableOf(node);
    case NodeType::ThematicBreak:
        return BlockNode::ThematicBreak();
    default:
        return std::nullopt;
    }
}

/// A quote, list or item whose children are being converted.
struct OpenBlock {
    cmark_node *node;
    NodeType type;
    QList<BlockNode> children;
    QList<RawTaskListItem> items; // of a list
    bool hasTasks = false;
};

QList<RawListItem> withoutTasks(QList<RawTaskListItem> tasks)
{
    QList<RawListItem> items;
    items.reserve(tasks.size());
    for (RawTaskListItem &task : tasks)
        items.append({std::move(task.children)});
    return items;
}

BlockNode listOf(OpenBlock list)
{
    const bool isTight = cmark_node_get_list_tight(list.node) != 0;
    switch (cmark_node_get_list_type(list.node)) {
    case CMARK_BULLET_LIST:
        if (list.hasTasks)
            return BlockNode::TaskList{isTight, std::move(list.items)};
        return BlockNode::BulletedList{isTight, withoutTasks(std::move(list.items))};
    case CMARK_ORDERED_LIST:
        return BlockNode::NumberedList{isTight, cmark_node_get_list_start(list.node),
                                       withoutTasks(std::move(list.items))};
    default:
        fail("cmark reported a list node without a list type.");
    }
}

bool isItem(NodeType type)
{
    return type == NodeType::Item || type == NodeType::TaskListItem;
}

bool holdsBlocks(NodeType type)
{
    return type == NodeType::Blockquote || type == NodeType::List || isItem(type);
}

/// Puts a block that is complete into the one around it.
void close(OpenBlock block, OpenBlock &parent)
{
    if (isItem(block.type)) {
        parent.hasTasks = parent.hasTasks || block.type == NodeType::TaskListItem;
        const bool isCompleted = cmark_gfm_extensions_get_tasklist_item_checked(block.node);
        parent.items.append({isCompleted, std::move(block.children)});
    } else if (block.type == NodeType::List) {
        parent.children.append(listOf(std::move(block)));
    } else {
        parent.children.append(BlockNode::Blockquote{std::move(block.children)});
    }
}

} // namespace

std::optional<BlockNode> blockOf(cmark_node *top)
{
    const NodeType topType = typeOf(top);
    if (!holdsBlocks(topType) || isItem(topType))
        return leafBlockOf(top, topType);

    // The first of `open` stands for the document and takes the finished block.
    std::vector<OpenBlock> open;
    open.push_back({cmark_node_parent(top), NodeType::Document, {}, {}});
    open.push_back({top, topType, {}, {}});
    cmark_node *node = cmark_node_first_child(top);
    while (true) {
        if (!node) {
            OpenBlock closed = std::move(open.back());
            open.pop_back();
            cmark_node *closedNode = closed.node;
            close(std::move(closed), open.back());
            if (open.size() == 1)
                return std::move(open.back().children.first());
            node = cmark_node_next(closedNode);
            continue;
        }
        OpenBlock &parent = open.back();
        const NodeType type = typeOf(node);
        if (parent.type == NodeType::List && !isItem(type))
            failFor("list item", node);
        if (holdsBlocks(type) && isItem(type) == (parent.type == NodeType::List)) {
            open.push_back({node, type, {}, {}});
            node = cmark_node_first_child(node);
        } else {
            if (std::optional<BlockNode> leaf = leafBlockOf(node, type))
                parent.children.append(*std::move(leaf));
            node = cmark_node_next(node);
        }
    }
}

} // namespace MarkdownUI
