#pragma once

#include "editing/UndoHistory.h"
#include "foundation/TextRange.h"

#include "tests/support/Printers.h"
#include "tests/support/TemporaryFiles.h"

/// How the values of the editors look in a failed comparison.
namespace Tessaline {

inline void PrintTo(const TextRange &range, std::ostream *out)
{
    *out << range.location << " to " << range.end();
}

inline void PrintTo(const TextSelection &selection, std::ostream *out)
{
    *out << "from " << selection.anchor << " with the caret at " << selection.caret;
}

} // namespace Tessaline
