#pragma once

#include "editing/MarkdownPieces.h"
#include "foundation/ChunkedText.h"

#include <memory>
#include <stop_token>

namespace Tessaline {

/// A Markdown document in the form in which it is written: what `serializeMarkdown` gives for the text that
/// `renderMarkdown` makes of it.
struct NormalForm {
    ChunkedText markdown; // shares with the document what both have alike at their ends
    TextChange change;    // what makes the document into it; nothing removed and inserted if it is in this form already
    MarkdownPieces pieces; // of this form; one for each paragraph of the text
};

/// Reads and writes all of `markdown`, construct by construct. Null if it was asked to stop. Safe on any thread.
std::shared_ptr<NormalForm> normalFormOf(const ChunkedText &markdown, const std::stop_token &stop = {});

/// What `first` and then `second` change, as one change. `second` counts positions as they are after `first`.
TextChange inOne(const TextChange &first, const TextChange &second);

} // namespace Tessaline
