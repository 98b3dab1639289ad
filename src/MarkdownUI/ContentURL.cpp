#include "MarkdownUI/ContentURL.h"

#include "MarkdownUI/NodeWalk.h"

#include <vector>

namespace MarkdownUI {

namespace {

bool isHidden(const InlineNode &node, ColorScheme scheme)
{
    const auto *image = node.as<InlineNode::Image>();
    return image && !isVisible(image->source, scheme);
}

bool hasHiddenImages(const BlockNode &block, ColorScheme scheme)
{
    bool found = false;
    forEachInlineList(block, [&](const QList<InlineNode> &inlines) {
        forEachInline(inlines, [&](const InlineNode &node) { found = found || isHidden(node, scheme); });
    });
    return found;
}

void removeHiddenImages(QList<InlineNode> &inlines, ColorScheme scheme)
{
    std::vector<QList<InlineNode> *> pending{&inlines};
    while (!pending.empty()) {
        QList<InlineNode> &nodes = *pending.back();
        pending.pop_back();
        nodes.removeIf([scheme](const InlineNode &node) { return isHidden(node, scheme); });
        for (InlineNode &node : nodes) {
            if (QList<InlineNode> *children = node.children())
                pending.push_back(children);
        }
    }
}

} // namespace

std::optional<QString> resolvedURL(const QString &text, const QUrl &base)
{
    const QUrl url(text, QUrl::StrictMode);
    if (text.isEmpty() || !url.isValid())
        return std::nullopt;
    return base.isEmpty() ? text : base.resolved(url).toString(QUrl::FullyEncoded);
}

bool isVisible(QStringView url, ColorScheme scheme)
{
    const qsizetype hash = url.indexOf(u'#');
    if (hash < 0)
        return true;
    const QStringView fragment = url.sliced(hash + 1);
    const auto isOnlyFor = [fragment](QStringView name) { return fragment.compare(name, Qt::CaseInsensitive) == 0; };
    switch (scheme) {
    case ColorScheme::Light:
        return !isOnlyFor(u"gh-dark-mode-only");
    case ColorScheme::Dark:
        return !isOnlyFor(u"gh-light-mode-only");
    case ColorScheme::Other:
        break;
    }
    return true;
}

BlockNode visibleBlock(const BlockNode &block, ColorScheme scheme)
{
    if (!hasHiddenImages(block, scheme))
        return block;
    BlockNode visible = block;
    forEachInlineList(visible, [scheme](QList<InlineNode> &inlines) { removeHiddenImages(inlines, scheme); });
    return visible;
}

} // namespace MarkdownUI
