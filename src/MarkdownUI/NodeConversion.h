#pragma once

#include "MarkdownUI/MarkdownParser.h"

typedef struct cmark_node cmark_node;

namespace MarkdownUI {

/// A parser's top-level node as a value; absent for one that is not shown, such as a custom block. A node that no
/// parser can have made, such as a list with a child that is no item, ends the process with a message: it is a mistake
/// of the program and not of the text. Needs no stack for the depth of the tree. The node is only read.
std::optional<BlockNode> blockOf(cmark_node *node);

} // namespace MarkdownUI
