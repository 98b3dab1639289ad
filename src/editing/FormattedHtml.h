#pragma once

#include "editing/AttributedText.h"

namespace Tessaline {

/// A formatted text as HTML for other programs: headings, lists, quotes, code, tables, rules, images and the inline
/// attributes. Markers are left out, the elements stand for them.
QString htmlOf(const AttributedText &text);

} // namespace Tessaline
