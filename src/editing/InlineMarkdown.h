#pragma once

#include "editing/AttributedText.h"

namespace Tessaline {

/// Inline Markdown as attributed text: escapes, images, links, emphasis with asterisks and code. What is no closed
/// construct stays as it was written; nothing fails. Takes time linear in the text.
AttributedText parseInlineMarkdown(QStringView markdown);

/// The same, appended to `text` with `attributes` added to all of it.
void appendInlineMarkdown(QStringView markdown, const TextAttributes &attributes, AttributedText &text);

/// The text that stands for an image: a picture and its description.
QString imagePlaceholder(QStringView description);

} // namespace Tessaline
