#pragma once

#include <QtCore/QStringView>

namespace MarkdownUI {

/// Whether inline HTML breaks the line: the first thing in it that looks like a tag, by the pattern
/// "<\/?([a-zA-Z0-9]+)[^>]*>", is named "br" in any case. All other HTML is drawn as it is written.
bool isLineBreakTag(QStringView html);

} // namespace MarkdownUI
