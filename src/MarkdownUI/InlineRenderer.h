#pragma once

#include "MarkdownUI/AttributedString.h"

#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

namespace MarkdownUI {

struct SoftBreak {
    /// What the end of a source line becomes.
    enum class Mode { Space, LineBreak };
};

/// The styles of inline nodes, from the theme.
struct InlineTextStyles {
    TextStyle code;
    TextStyle emphasis;
    TextStyle strong;
    TextStyle strikethrough;
    TextStyle link;
    friend bool operator==(const InlineTextStyles &, const InlineTextStyles &) = default;
};

/// The nodes as styled text, without images. Lines end with U+000A. `attributes` are those in force around the text.
/// A break tag ("<br>") ends the line and takes the white space at the start of the text that follows; so does a soft
/// break in the mode LineBreak.
AttributedString renderAttributedString(const QList<InlineNode> &inlines, const QUrl &baseURL,
                                        const InlineTextStyles &textStyles, SoftBreak::Mode softBreakMode,
                                        const MarkdownUIAttributes &attributes);

/// The same with those images in the line that are loaded: `images` has their sources as written. Only images that
/// stand directly in `inlines` are drawn; one that is missing leaves nothing.
AttributedString renderText(const QList<InlineNode> &inlines, const QUrl &baseURL, const InlineTextStyles &textStyles,
                            const QSet<QString> &images, SoftBreak::Mode softBreakMode,
                            const MarkdownUIAttributes &attributes);

/// The sources of all images in `inlines`, at any depth, each once, in order: what has to be loaded for renderText.
QStringList imageSources(const QList<InlineNode> &inlines);

} // namespace MarkdownUI
