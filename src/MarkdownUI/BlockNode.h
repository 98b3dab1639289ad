#pragma once

#include "MarkdownUI/InlineNode.h"

#include <optional>

namespace MarkdownUI {

class BlockNode;

struct RawListItem {
    QList<BlockNode> children;
    size_t hash(size_t seed) const noexcept;
    friend bool operator==(const RawListItem &left, const RawListItem &right);
    friend size_t qHash(const RawListItem &item, size_t seed = 0) noexcept { return item.hash(seed); }
};

struct RawTaskListItem {
    bool isCompleted = false;
    QList<BlockNode> children;
    size_t hash(size_t seed) const noexcept;
    friend bool operator==(const RawTaskListItem &left, const RawTaskListItem &right);
    friend size_t qHash(const RawTaskListItem &item, size_t seed = 0) noexcept { return item.hash(seed); }
};

struct RawTableCell {
    QList<InlineNode> content;
    friend bool operator==(const RawTableCell &, const RawTableCell &) = default;
    friend size_t qHash(const RawTableCell &cell, size_t seed = 0) noexcept { return qHash(cell.content, seed); }
};

struct RawTableRow {
    QList<RawTableCell> cells;
    friend bool operator==(const RawTableRow &, const RawTableRow &) = default;
    friend size_t qHash(const RawTableRow &row, size_t seed = 0) noexcept { return qHash(row.cells, seed); }
};

enum class RawTableColumnAlignment { None, Left, Center, Right };

/// A block: a closed set of cases with what each carries. A value, with the same promises as InlineNode: cheap copies,
/// and no stack for the depth of the tree.
class BlockNode
{
public:
    struct Blockquote {
        QList<BlockNode> children;
    };
    struct BulletedList {
        bool isTight = false;
        QList<RawListItem> items;
    };
    struct NumberedList {
        bool isTight = false;
        int start = 1; // the number of the first item, 0 to 999,999,999
        QList<RawListItem> items;
    };
    struct TaskList {
        bool isTight = false;
        QList<RawTaskListItem> items;
    };
    struct CodeBlock {
        std::optional<QString> fenceInfo; // absent for indented code and for a fence without a word behind it
        QString content;                  // with its line endings, the last one too
    };
    struct HtmlBlock {
        QString content;
    };
    struct Paragraph {
        QList<InlineNode> content;
    };
    struct Heading {
        int level = 1; // 1 to 6
        QList<InlineNode> content;
    };
    struct Table {
        QList<RawTableColumnAlignment> columnAlignments;
        QList<RawTableRow> rows; // the header row is the first; all have as many cells as there are columns
    };
    struct ThematicBreak {};
    using Value = std::variant<Blockquote, BulletedList, NumberedList, TaskList, CodeBlock, HtmlBlock, Paragraph,
                               Heading, Table, ThematicBreak>;

    BlockNode() = default; // an empty quote
    template <class Case>
    requires(std::constructible_from<Value, Case> && !std::same_as<std::remove_cvref_t<Case>, BlockNode>)
        BlockNode(Case &&value)
        : m_value(std::forward<Case>(value))
    {}
    BlockNode(const BlockNode &) = default;
    BlockNode(BlockNode &&) noexcept = default;
    /// From anywhere, a node further down in this one too.
    BlockNode &operator=(BlockNode other) noexcept
    {
        m_value.swap(other.m_value);
        return *this;
    }
    ~BlockNode();

    /// For std::visit.
    const Value &value() const { return m_value; }
    Value &value() { return m_value; }

    /// What the case carries, or null if the node is another case.
    template <class Case>
    const Case *as() const
    {
        return std::get_if<Case>(&m_value);
    }

    friend bool operator==(const BlockNode &left, const BlockNode &right);
    friend size_t qHash(const BlockNode &node, size_t seed = 0) noexcept { return node.hash(seed); }

private:
    size_t hash(size_t seed) const noexcept;

    Value m_value;
};

} // namespace MarkdownUI

Q_DECLARE_TYPEINFO(MarkdownUI::BlockNode, Q_RELOCATABLE_TYPE);
