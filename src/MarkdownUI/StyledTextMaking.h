#pragma once

#include "MarkdownUI/DisplayEnvironment.h"
#include "MarkdownUI/StyledText.h"

#include <functional>

namespace MarkdownUI {

/// A loaded picture for a source as written, null while there is none.
using PictureLookup = std::function<QImage(const QString &source)>;

/// A rendered text with its fonts and colours. `around` are the attributes in force around it: what differs from them
/// becomes a format. Pictures wider than `widestPicture` are scaled down.
StyledText styledText(const AttributedString &text, const MarkdownUIAttributes &around, ColorScheme scheme,
                      int lineSpacing, const PictureLookup &pictures = {}, double widestPicture = 0);

/// How many units of text the nodes make, about; without rendering them.
qsizetype approximateLength(const QList<InlineNode> &inlines);

} // namespace MarkdownUI
