#include "MarkdownUI/InlineRenderer.h"

#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/InlineHtml.h"
#include "MarkdownUI/NodeWalk.h"

#include <QtCore/QHash>

#include <algorithm>
#include <vector>

namespace MarkdownUI {

namespace {

QStringView withoutLeadingSpace(QStringView text)
{
    const auto first = std::ranges::find_if_not(text, [](QChar sign) { return sign.isSpace(); });
    return text.sliced(first - text.begin());
}

/// One rendering. Nodes are taken one after the other, with a list of open ones in place of calls for their children.
class AttributedStringInlineRenderer
{
public:
    AttributedStringInlineRenderer(const QUrl &baseURL, const InlineTextStyles &textStyles,
                                   SoftBreak::Mode softBreakMode, const MarkdownUIAttributes &attributes)
        : m_baseURL(baseURL), m_textStyles(textStyles), m_softBreakMode(softBreakMode), m_attributes(attributes)
    {}

    AttributedString result;

    const MarkdownUIAttributes &attributes() const { return m_attributes; }

    void render(const InlineNode &node)
    {
        enter(node);
        while (!m_open.empty()) {
            Open &open = m_open.back();
            if (open.next < open.children->size())
                enter(open.children->at(open.next++)); // `open` is gone
            else
                leave();
        }
    }

private:
    /// A node whose children are being rendered, and what holds again after it.
    struct Open {
        const QList<InlineNode> *children;
        MarkdownUIAttributes attributes;
        qsizetype styles;
        qsizetype next = 0;
    };

    void enter(const InlineNode &node)
    {
        std::visit([this](const auto &value) { renderNode(value); }, node.value());
    }

    void leave()
    {
        m_attributes = std::move(m_open.back().attributes);
        m_styles = m_open.back().styles;
        m_open.pop_back();
    }

    void renderNode(const InlineNode::Text &text) { renderText(text.text); }

    void renderNode(const InlineNode::SoftBreak &)
    {
        if (m_softBreakMode == SoftBreak::Mode::LineBreak) {
            m_shouldSkipNextWhitespace = true;
            append(u"\n");
        } else if (!m_shouldSkipNextWhitespace) {
            append(u" ");
        } else {
            m_shouldSkipNextWhitespace = false;
        }
    }

    void renderNode(const InlineNode::LineBreak &) { append(u"\n"); }

    void renderNode(const InlineNode::Code &code)
    {
        result.append(code.text, m_textStyles.code.applied(m_attributes), nested(InlineStyle::Code));
    }

    void renderNode(const InlineNode::Html &html)
    {
        if (isLineBreakTag(html.text)) {
            append(u"\n");
            m_shouldSkipNextWhitespace = true;
        } else {
            renderText(html.text);
        }
    }

    void renderNode(const InlineNode::Emphasis &emphasis)
    {
        open(emphasis.children, InlineStyle::Emphasis, m_textStyles.emphasis);
    }

    void renderNode(const InlineNode::Strong &strong)
    {
        open(strong.children, InlineStyle::Strong, m_textStyles.strong);
    }

    void renderNode(const InlineNode::Strikethrough &strikethrough)
    {
        open(strikethrough.children, InlineStyle::Strikethrough, m_textStyles.strikethrough);
    }

    void renderNode(const InlineNode::Link &link)
    {
        open(link.children, InlineStyle::Link, m_textStyles.link);
        if (std::optional<QString> url = resolvedURL(link.destination, m_baseURL))
            m_attributes.link = *std::move(url);
    }

    void renderNode(const InlineNode::Image &) {}

    void open(const QList<InlineNode> &children, InlineStyle style, const TextStyle &textStyle)
    {
        m_open.push_back({&children, m_attributes, m_styles});
        textStyle.apply(m_attributes);
        m_styles = nested(style);
    }

    void renderText(QStringView text)
    {
        append(m_shouldSkipNextWhitespace ? withoutLeadingSpace(text) : text);
        m_shouldSkipNextWhitespace = false;
    }

    void append(QStringView text) { result.append(text, m_attributes, m_styles); }

    /// The same number for the same styles, so that neighbours with equal looks become one run.
    qsizetype nested(InlineStyle style)
    {
        const std::pair key(m_styles, static_cast<int>(style));
        const auto known = m_nestings.constFind(key);
        if (known != m_nestings.constEnd())
            return *known;
        return *m_nestings.insert(key, result.nest(m_styles, style));
    }

    const QUrl &m_baseURL;
    const InlineTextStyles &m_textStyles;
    SoftBreak::Mode m_softBreakMode;
    MarkdownUIAttributes m_attributes; // those in force at this point
    qsizetype m_styles = AttributedString::kNoStyles;
    bool m_shouldSkipNextWhitespace = false; // the next text loses its leading white space
    std::vector<Open> m_open;
    QHash<std::pair<qsizetype, int>, qsizetype> m_nestings;
};

/// The same with the images at the top level that are loaded.
class TextInlineRenderer
{
public:
    TextInlineRenderer(AttributedStringInlineRenderer renderer, const QSet<QString> &images)
        : m_renderer(std::move(renderer)), m_images(images)
    {}

    void render(const InlineNode &node)
    {
        const auto *image = node.as<InlineNode::Image>();
        if (!image)
            m_renderer.render(node);
        else if (m_images.contains(image->source))
            m_renderer.result.appendImage(*RawImageData::of(node), m_renderer.attributes());
    }

    AttributedString result() && { return std::move(m_renderer.result); }

private:
    AttributedStringInlineRenderer m_renderer;
    const QSet<QString> &m_images;
};

} // namespace

AttributedString renderAttributedString(const QList<InlineNode> &inlines, const QUrl &baseURL,
                                        const InlineTextStyles &textStyles, SoftBreak::Mode softBreakMode,
                                        const MarkdownUIAttributes &attributes)
{
    AttributedStringInlineRenderer renderer(baseURL, textStyles, softBreakMode, attributes);
    for (const InlineNode &node : inlines)
        renderer.render(node);
    return std::move(renderer.result);
}

AttributedString renderText(const QList<InlineNode> &inlines, const QUrl &baseURL, const InlineTextStyles &textStyles,
                            const QSet<QString> &images, SoftBreak::Mode softBreakMode,
                            const MarkdownUIAttributes &attributes)
{
    TextInlineRenderer renderer({baseURL, textStyles, softBreakMode, attributes}, images);
    for (const InlineNode &node : inlines)
        renderer.render(node);
    return std::move(renderer).result();
}

QStringList imageSources(const QList<InlineNode> &inlines)
{
    QStringList sources;
    QSet<QString> seen;
    forEachInline(inlines, [&](const InlineNode &node) {
        const auto *image = node.as<InlineNode::Image>();
        if (image && !seen.contains(image->source)) {
            seen.insert(image->source);
            sources.append(image->source);
        }
    });
    return sources;
}

} // namespace MarkdownUI
