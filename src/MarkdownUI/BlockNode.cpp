#include "MarkdownUI/BlockNode.h"

#include "MarkdownUI/NodeWalk.h"

#include <algorithm>
#include <vector>

namespace MarkdownUI {

namespace {

using ChildLists = std::vector<const QList<BlockNode> *>;

void appendChildLists(const BlockNode &block, ChildLists &lists)
{
    forEachChildList(block, [&lists](const QList<BlockNode> &children) { lists.push_back(&children); });
}

/// The children of everything in `block` that nobody else holds.
void takeChildLists(BlockNode &block, std::vector<QList<BlockNode>> &lists)
{
    std::visit(
        [&lists](auto &value) {
            if constexpr (requires { value.children; }) {
                if (!value.children.isEmpty())
                    lists.push_back(std::move(value.children));
            } else if constexpr (requires { value.items; }) {
                if (!value.items.isDetached())
                    return;
                for (auto &item : value.items) {
                    if (!item.children.isEmpty())
                        lists.push_back(std::move(item.children));
                }
            }
        },
        block.value());
}

// --- a block beside the blocks in it ---

struct EqualBesideBlocks {
    const BlockNode::Value &right;

    bool operator()(const BlockNode::Blockquote &) const { return true; }
    bool operator()(const BlockNode::BulletedList &left) const
    {
        const auto &other = std::get<BlockNode::BulletedList>(right);
        return left.isTight == other.isTight && left.items.size() == other.items.size();
    }
    bool operator()(const BlockNode::NumberedList &left) const
    {
        const auto &other = std::get<BlockNode::NumberedList>(right);
        return left.isTight == other.isTight && left.start == other.start && left.items.size() == other.items.size();
    }
    bool operator()(const BlockNode::TaskList &left) const
    {
        const auto &other = std::get<BlockNode::TaskList>(right);
        return left.isTight == other.isTight &&
               std::ranges::equal(left.items, other.items, {}, &RawTaskListItem::isCompleted,
                                  &RawTaskListItem::isCompleted);
    }
    bool operator()(const BlockNode::CodeBlock &left) const
    {
        const auto &other = std::get<BlockNode::CodeBlock>(right);
        return left.fenceInfo == other.fenceInfo && left.content == other.content;
    }
    bool operator()(const BlockNode::HtmlBlock &left) const
    {
        return left.content == std::get<BlockNode::HtmlBlock>(right).content;
    }
    bool operator()(const BlockNode::Paragraph &left) const
    {
        return left.content == std::get<BlockNode::Paragraph>(right).content;
    }
    bool operator()(const BlockNode::Heading &left) const
    {
        const auto &other = std::get<BlockNode::Heading>(right);
        return left.level == other.level && left.content == other.content;
    }
    bool operator()(const BlockNode::Table &left) const
    {
        const auto &other = std::get<BlockNode::Table>(right);
        return left.columnAlignments == other.columnAlignments && left.rows == other.rows;
    }
    bool operator()(const BlockNode::ThematicBreak &) const { return true; }
};

struct HashBesideBlocks {
    size_t seed;

    size_t operator()(const BlockNode::Blockquote &quote) const { return qHash(quote.children.size(), seed); }
    size_t operator()(const BlockNode::BulletedList &list) const
    {
        return qHashMulti(seed, list.isTight, list.items.size());
    }
    size_t operator()(const BlockNode::NumberedList &list) const
    {
        return qHashMulti(seed, list.isTight, list.start, list.items.size());
    }
    size_t operator()(const BlockNode::TaskList &list) const
    {
        size_t hash = qHashMulti(seed, list.isTight, list.items.size());
        for (const RawTaskListItem &item : list.items)
            hash = qHashMulti(hash, item.isCompleted);
        return hash;
    }
    size_t operator()(const BlockNode::CodeBlock &code) const
    {
        return qHashMulti(seed, code.fenceInfo.has_value(), code.fenceInfo.value_or(QString()), code.content);
    }
    size_t operator()(const BlockNode::HtmlBlock &html) const { return qHash(html.content, seed); }
    size_t operator()(const BlockNode::Paragraph &paragraph) const { return qHash(paragraph.content, seed); }
    size_t operator()(const BlockNode::Heading &heading) const
    {
        return qHashMulti(seed, heading.level, heading.content);
    }
    size_t operator()(const BlockNode::Table &table) const
    {
        size_t hash = seed;
        for (const RawTableColumnAlignment alignment : table.columnAlignments)
            hash = qHashMulti(hash, static_cast<int>(alignment));
        return qHash(table.rows, hash);
    }
    size_t operator()(const BlockNode::ThematicBreak &) const { return seed; }
};

bool equalBesideBlocks(const BlockNode &left, const BlockNode &right)
{
    return left.value().index() == right.value().index() && std::visit(EqualBesideBlocks{right.value()}, left.value());
}

size_t hashBesideBlocks(const BlockNode &block, size_t seed)
{
    return std::visit(HashBesideBlocks{qHashMulti(seed, block.value().index())}, block.value());
}

// --- whole trees, without a call for each level ---

bool equalLists(ChildLists left, ChildLists right)
{
    while (!left.empty()) {
        const QList<BlockNode> &first = *left.back();
        const QList<BlockNode> &second = *right.back();
        left.pop_back();
        right.pop_back();
        if (first.size() != second.size())
            return false;
        if (first.constData() == second.constData())
            continue; // shared
        for (qsizetype i = 0; i < first.size(); ++i) {
            if (!equalBesideBlocks(first.at(i), second.at(i)))
                return false;
            appendChildLists(first.at(i), left);
            appendChildLists(second.at(i), right);
        }
    }
    return true;
}

size_t hashLists(ChildLists lists, size_t seed)
{
    while (!lists.empty()) {
        const QList<BlockNode> &blocks = *lists.back();
        lists.pop_back();
        seed = qHashMulti(seed, blocks.size());
        for (const BlockNode &block : blocks) {
            seed = hashBesideBlocks(block, seed);
            appendChildLists(block, lists);
        }
    }
    return seed;
}

} // namespace

/// Lists that nobody else holds are taken apart here, so that no destructor calls itself for what is further down.
BlockNode::~BlockNode()
{
    std::vector<QList<BlockNode>> pending;
    takeChildLists(*this, pending);
    while (!pending.empty()) {
        QList<BlockNode> blocks = std::move(pending.back());
        pending.pop_back();
        if (!blocks.isDetached())
            continue;
        for (BlockNode &block : blocks)
            takeChildLists(block, pending);
    }
}

bool operator==(const BlockNode &left, const BlockNode &right)
{
    if (!equalBesideBlocks(left, right))
        return false;
    ChildLists first;
    ChildLists second;
    appendChildLists(left, first);
    appendChildLists(right, second);
    return equalLists(std::move(first), std::move(second));
}

size_t BlockNode::hash(size_t seed) const noexcept
{
    ChildLists lists;
    appendChildLists(*this, lists);
    return hashLists(std::move(lists), hashBesideBlocks(*this, seed));
}

bool operator==(const RawListItem &left, const RawListItem &right)
{
    return equalLists({&left.children}, {&right.children});
}

size_t RawListItem::hash(size_t seed) const noexcept
{
    return hashLists({&children}, seed);
}

bool operator==(const RawTaskListItem &left, const RawTaskListItem &right)
{
    return left.isCompleted == right.isCompleted && equalLists({&left.children}, {&right.children});
}

size_t RawTaskListItem::hash(size_t seed) const noexcept
{
    return hashLists({&children}, qHashMulti(seed, isCompleted));
}

} // namespace MarkdownUI
