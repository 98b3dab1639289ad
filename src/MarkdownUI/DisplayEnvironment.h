#pragma once

#include "MarkdownUI/CodeBlockBox.h"
#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/Theme.h"

namespace NetworkImage {
class NetworkImageLoader;
}

namespace MarkdownUI {

/// What the views of blocks take from the place they stand in.
struct DisplayEnvironment {
    Theme theme = defaultTheme();
    MarkdownUIAttributes attributes; // of the text around; the theme's own text style comes on top
    ColorScheme scheme = ColorScheme::Light;
    QUrl baseURL;      // what link destinations are resolved against; empty: they stand as written
    QUrl imageBaseURL; // the same for image sources
    SoftBreak::Mode softBreakMode = SoftBreak::Mode::Space;
    CodeSyntaxHighlighter codeSyntaxHighlighter;             // null for plain text
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // must outlive the display; null: no image is loaded

    /// The attributes of ordinary text, which always have a font.
    MarkdownUIAttributes textAttributes() const
    {
        MarkdownUIAttributes text = attributes;
        if (!text.fontProperties)
            text.fontProperties = FontProperties();
        theme.text.apply(text);
        return text;
    }
};

} // namespace MarkdownUI
