#pragma once

#include "MarkdownUI/BlockNode.h"
#include "MarkdownUI/ColorScheme.h"

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <optional>

namespace MarkdownUI {

/// A link destination or image source against its base. Without a base (an empty URL) the text as it stands; absent if
/// the text is no URL: empty, or with characters that a URL cannot have, such as blanks.
std::optional<QString> resolvedURL(const QString &text, const QUrl &base);

/// Whether an image with this URL is shown: one whose fragment is "gh-dark-mode-only", in any case, is not in the light
/// scheme, and one with "gh-light-mode-only" not in the dark scheme.
bool isVisible(QStringView url, ColorScheme scheme);

/// The block without the images that the scheme hides, at any depth; the same block, sharing its memory, if it has
/// none. What stood around a hidden image stays, such as a link without children.
BlockNode visibleBlock(const BlockNode &block, ColorScheme scheme);

} // namespace MarkdownUI
