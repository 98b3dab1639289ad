#pragma once

#include "MarkdownUI/MarkdownDisplay.h"

#include <QtCore/QMimeData>

#include <memory>

namespace MarkdownUI {

/// A stretch of a display as plain text: markers of lists before their items, tabs between the cells of a table, the
/// alternative text in place of a picture.
QString plainTextOf(const MarkdownDisplay &display, const DisplayRange &range);

/// The same as Markdown that reads back as what was selected.
QString markdownOf(const MarkdownDisplay &display, const DisplayRange &range);

/// For the clipboard: both, as text/plain and text/markdown.
std::unique_ptr<QMimeData> makeTransfer(const MarkdownDisplay &display, const DisplayRange &range);

} // namespace MarkdownUI
