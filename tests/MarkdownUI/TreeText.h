#pragma once

#include "MarkdownUI/BlockNode.h"

#include <ostream>

namespace MarkdownUI {

/// A tree as one line, such as `heading1("a" em("b")) tight-bullets[item(paragraph("c"))]`. For trees of modest depth.
QString treeText(const QList<BlockNode> &blocks);
QString treeText(const QList<InlineNode> &inlines);

/// That of what parseBlocks makes of `markdown`.
std::string parsed(QStringView markdown);

inline void PrintTo(const BlockNode &block, std::ostream *out)
{
    *out << treeText(QList<BlockNode>{block}).toStdString();
}

inline void PrintTo(const InlineNode &node, std::ostream *out)
{
    *out << treeText(QList<InlineNode>{node}).toStdString();
}

} // namespace MarkdownUI
