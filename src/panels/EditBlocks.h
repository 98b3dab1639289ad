#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Tessaline {

/// A proposed change as it stands in an answer, marker lines included:
///
///     <<<<<<< SEARCH
///     the text that is in the document
///     =======
///     the text to put there
///     >>>>>>> REPLACE
///
/// It may begin and end within a line. Both texts are what lies between their line breaks (LF or CR LF), exactly as
/// written; an empty one is written as an empty line. The positions count from the start of the answer.
struct EditBlock {
    TextRange whole; // from the first marker to the end of the last
    TextRange original;
    TextRange replacement;
    friend bool operator==(const EditBlock &, const EditBlock &) = default;
};

/// The complete blocks of an answer, in order and apart from each other. An answer that grows at its end only gains
/// blocks at the end of the list. Each text is the shortest that makes a block. Linear, whatever the answer holds.
QList<EditBlock> editBlocks(QStringView answer);

} // namespace Tessaline
