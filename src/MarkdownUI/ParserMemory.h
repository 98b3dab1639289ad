#pragma once

#include <cmark-gfm.h>

namespace MarkdownUI {

/// Memory for one parse at a time. The parser makes a node of some hundred bytes for every few letters and many short
/// texts beside them: here they come from large pieces, freed ones are used again at once, and all of it goes back
/// together. Belongs to whoever holds the parser's lock.
namespace ParserMemory {

/// For a parser and everything it makes.
cmark_mem *allocator();

/// Frees all that came from the allocator, whether it was freed one by one or not. Nothing of it may be used
/// afterwards.
void release();

} // namespace ParserMemory

} // namespace MarkdownUI
