#pragma once

#include "editing/AttributedText.h"
#include "editing/ListMarkers.h"

#include <optional>

namespace Tessaline {

/// A formatted text and what is selected in it.
struct FormattedText {
    AttributedText text;
    TextRange selection;
    friend bool operator==(const FormattedText &, const FormattedText &) = default;
};

/// The format command `type` ("bold", "h1", "link" ...) on a formatted text; absent for an unknown type. A selection
/// that reaches behind the text is cut.
///
/// - "bold", "italic" and "codeInline" set their attribute on the whole selection, or take it away if all of it has it.
///   With nothing selected they change nothing.
/// - "h1" to "h3", "quote", "codeBlock", "bullet", "numbered" and "task" give all selected paragraphs one tag, or make
///   them plain paragraphs if the first has exactly that tag. Old markers go, new ones come; the selection stays with
///   its text. NOTE: numbered items show 1, 2, 3 but are all tagged as the first.
/// - "link" gives the selection the destination "url", or puts the word "link" there and selects it. "image" puts an
///   image of the source "url" in place of the selection, which becomes its description.
/// - "hr" and "table" put a rule or a small table in place of the selection, without a line break of their own.
///
/// What a command does depends on the selected paragraphs and the one unit before them alone, so an editor of a large
/// document can pass just these.
std::optional<FormattedText> applyFormat(const FormattedText &formatted, QStringView type);

/// What Return puts in at `location`, with nothing selected: a line break and the marker of the next list item. Absent
/// where it does not continue a list. The caret goes behind it.
std::optional<AttributedText> listContinuation(const AttributedText &text, qsizetype location);

} // namespace Tessaline
