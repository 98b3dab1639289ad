#pragma once

#include "foundation/TextRange.h"
#include "MarkdownUI/AttributedString.h"

namespace MarkdownUI {

/// Where a piece of text is going to stand in a Markdown text.
enum class WrittenPlace { Paragraph, Heading, TableCell };

/// A part of a styled text as Markdown that reads back as the same text with the same styles. White space at the edge
/// of a style comes to stand outside of it.
QString inlineMarkdown(const AttributedString &text, const Tessaline::TextRange &range, WrittenPlace place);

/// Code between as many backticks as it takes.
QString codeSpan(QStringView code);

} // namespace MarkdownUI
