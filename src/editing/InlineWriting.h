#pragma once

#include "editing/AttributedText.h"

namespace Tessaline {

/// Appends the inline Markdown of one run, or of the part of it that lies inside `limits`. The limits enclose what is
/// written together: a run that continues an image which began inside them adds nothing. A generated marker adds
/// nothing.
void serializeInlineRun(const AttributedText &text, qsizetype runIndex, TextRange limits, QString &markdown);

/// Appends the characters of one run, likewise, but a marker's.
void collectPlainRun(const AttributedText &text, qsizetype runIndex, TextRange limits, QString &plain);

/// The same for all runs of a range, which is not empty; `firstRun` is the one that it begins in.
void serializeInline(const AttributedText &text, qsizetype firstRun, TextRange range, QString &markdown);
void collectPlain(const AttributedText &text, qsizetype firstRun, TextRange range, QString &plain);

/// The inline Markdown of a range of the text, its line breaks as they are and without the signs of blocks.
QString serializeInline(const AttributedText &text, TextRange range);

/// The characters of a range of the text that are content.
QString plainText(const AttributedText &text, TextRange range);

} // namespace Tessaline
