#pragma once

#include "MarkdownUI/BlockNode.h"

#include <vector>

namespace MarkdownUI {

/// Calls `visit` with every inline node in `nodes`, at any depth, a node before its children, in the order of the text.
template <class Visit>
void forEachInline(const QList<InlineNode> &nodes, Visit visit)
{
    struct Level {
        const QList<InlineNode> *nodes;
        qsizetype next = 0;
    };
    std::vector<Level> open{{&nodes}};
    while (!open.empty()) {
        Level &level = open.back();
        if (level.next == level.nodes->size()) {
            open.pop_back();
            continue;
        }
        const InlineNode &node = level.nodes->at(level.next++);
        visit(node);
        if (const QList<InlineNode> *children = node.children(); children && !children->isEmpty())
            open.push_back({children}); // `level` is gone
    }
}

/// Calls `visit` with every list of blocks that `block` holds directly: the children of a quote, of each item of a
/// list. `Block` is BlockNode or const BlockNode.
template <class Block, class Visit>
void forEachChildList(Block &block, Visit visit)
{
    std::visit(
        [&visit](auto &value) {
            if constexpr (requires { value.children; }) {
                visit(value.children);
            } else if constexpr (requires { value.items; }) {
                for (auto &item : value.items)
                    visit(item.children);
            }
        },
        block.value());
}

/// Calls `visit` with every list of inline nodes that stands in a paragraph, heading or cell of `block`, at any depth,
/// in no particular order. A block that is not const is detached from its copies on the way.
template <class Block, class Visit>
void forEachInlineList(Block &block, Visit visit)
{
    std::vector<Block *> pending{&block};
    while (!pending.empty()) {
        Block &next = *pending.back();
        pending.pop_back();
        std::visit(
            [&visit](auto &value) {
                if constexpr (requires { value.content.front().children(); }) {
                    visit(value.content);
                } else if constexpr (requires { value.rows; }) {
                    for (auto &row : value.rows) {
                        for (auto &cell : row.cells)
                            visit(cell.content);
                    }
                }
            },
            next.value());
        forEachChildList(next, [&pending](auto &children) {
            for (auto &child : children)
                pending.push_back(&child);
        });
    }
}

} // namespace MarkdownUI
