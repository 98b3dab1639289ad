#pragma once

#include "editing/AttributedText.h"
#include "editing/MarkdownBlocks.h"
#include "editing/MarkdownWriting.h"

namespace Tessaline::PlainCodec {

/// The codec in its plainest form, to compare the real one with: rule by rule on lists of characters, which a break
/// iterator cuts, searching to the end whenever there is something to search. Slow, and not to be made faster.

/// The text cut into extended grapheme clusters.
QStringList characters(const QString &text);
QString trimmed(const QString &text);

QList<Block> parseBlocks(QString text);
AttributedText parseInlineMarkdown(const QString &text);
AttributedText renderMarkdown(const QString &text);
QString serializeMarkdown(const AttributedText &text);
QString serializeSelection(const AttributedText &text);

} // namespace Tessaline::PlainCodec
