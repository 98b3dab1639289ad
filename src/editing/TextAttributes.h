#pragma once

#include "editing/SharedText.h"

namespace Tessaline {

/// What a piece of a formatted document is. Fonts and colours are computed from this (TextPresentation.h) and are never
/// a part of it; the Markdown is written from this alone. 40 bytes; copies share the texts.
struct TextAttributes {
    bool bold = false;
    bool italic = false;
    bool inlineCode = false;
    bool generatedMarker = false; // a list marker with its tab: shown, but no content of the document
    SharedText blockStyle;        // the tag (BlockStyle.h), on the whole paragraph with its line break
    SharedText linkDestination;   // as it stands in the Markdown
    SharedText imageSource;       // likewise; on the text that stands for the image
    SharedText imageAlt;

    friend bool operator==(const TextAttributes &, const TextAttributes &) = default;
    friend size_t qHash(const TextAttributes &a, size_t seed = 0)
    {
        return qHashMulti(seed, a.bold, a.italic, a.inlineCode, a.generatedMarker, a.blockStyle, a.linkDestination,
                          a.imageSource, a.imageAlt);
    }
};

/// What text takes over that is typed where `attributes` stand: it joins a bold run, a link and the paragraph's kind,
/// but it is never part of a marker or of an image.
inline TextAttributes typingAttributes(TextAttributes attributes)
{
    attributes.generatedMarker = false;
    attributes.imageSource = SharedText();
    attributes.imageAlt = SharedText();
    return attributes;
}

} // namespace Tessaline

Q_DECLARE_TYPEINFO(Tessaline::TextAttributes, Q_RELOCATABLE_TYPE);
