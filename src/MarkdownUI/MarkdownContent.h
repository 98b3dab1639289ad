#pragma once

#include "MarkdownUI/BlockNode.h"

#include <QtCore/QUrl>

namespace MarkdownUI {

/// A Markdown text as blocks.
struct MarkdownContent {
    QList<BlockNode> blocks;
    friend bool operator==(const MarkdownContent &, const MarkdownContent &) = default;
    friend size_t qHash(const MarkdownContent &content, size_t seed = 0) noexcept
    {
        return qHash(content.blocks, seed);
    }
};

/// What a view is asked to show.
struct Markdown {
    MarkdownContent content;
    QUrl baseURL;      // what link destinations are resolved against; empty: they stand as written
    QUrl imageBaseURL; // the same for image sources
    friend bool operator==(const Markdown &, const Markdown &) = default;
    friend size_t qHash(const Markdown &markdown, size_t seed = 0) noexcept
    {
        return qHashMulti(seed, markdown.content, markdown.baseURL, markdown.imageBaseURL);
    }
};

} // namespace MarkdownUI
