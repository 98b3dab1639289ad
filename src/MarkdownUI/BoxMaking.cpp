#include "MarkdownUI/BoxMaking.h"

#include "MarkdownUI/CodeBlockBox.h"
#include "MarkdownUI/Overloaded.h"
#include "MarkdownUI/PictureBox.h"
#include "MarkdownUI/PictureStore.h"
#include "MarkdownUI/StyledTextMaking.h"
#include "MarkdownUI/TextBox.h"
#include "MarkdownUI/TextFonts.h"
#include "MarkdownUI/ThematicBreakBox.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace MarkdownUI {

namespace {

constexpr double kPictureGap = 0.25; // rem, between the pictures of a flow

/// Whether any node at any depth is of one of these cases.
template <class... Cases>
bool contains(const QList<InlineNode> &inlines)
{
    QList<const QList<InlineNode> *> waiting{&inlines};
    while (!waiting.isEmpty())
        for (const InlineNode &node : *waiting.takeLast()) {
            if ((node.as<Cases>() || ...))
                return true;
            if (const QList<InlineNode> *const children = node.children())
                waiting.append(children);
        }
    return false;
}

template <class... Cases>
bool contains(const TableRowLeaf &leaf)
{
    const QList<RawTableCell> &cells = leaf.table->rows().at(leaf.row).cells;
    return std::any_of(cells.begin(), cells.end(),
                       [](const RawTableCell &cell) { return contains<Cases...>(cell.content); });
}

QFont fontIn(const MarkdownUIAttributes &attributes)
{
    return fontOf(attributes.fontProperties.value_or(FontProperties()));
}

CodeLook codeLook(const CodeLeaf &leaf, const DisplayEnvironment &environment)
{
    const CodeBlockStyle &style = environment.theme.codeBlock;
    CodeLook look;
    look.font = fontIn(leaf.attributes);
    look.color = colorOf(leaf.attributes.foregroundColor.value_or(Palette::kText), environment.scheme);
    look.background = colorOf(style.background, environment.scheme);
    look.border = colorOf(Palette::kBorder, environment.scheme);
    look.symbol = colorOf(Palette::kSecondaryText, environment.scheme);
    look.lineSpacing = static_cast<int>(style.lineSpacing.points(leaf.attributes.fontProperties));
    look.padding = static_cast<int>(std::lround(style.padding));
    look.radius = static_cast<int>(std::lround(style.cornerRadius));
    return look;
}

class Maker
{
public:
    Maker(const DisplayEnvironment &environment, PictureStore &pictures, int width)
        : m_environment(environment), m_pictures(pictures), m_width(width)
    {}

    std::unique_ptr<BlockBox> operator()(const TextLeaf &leaf) const
    {
        StyledText text = styledText(renderedText(leaf, m_environment, m_pictures), leaf.attributes,
                                     m_environment.scheme, leaf.lineSpacing, lookup(), m_width);
        TextDivider divider;
        if (leaf.divider)
            divider = {static_cast<int>(leaf.divider->padding.points(leaf.attributes.fontProperties)), 1,
                       colorOf(leaf.divider->color, m_environment.scheme)};
        return std::make_unique<TextBox>(std::move(text), divider);
    }

    std::unique_ptr<BlockBox> operator()(const CodeLeaf &leaf) const
    {
        return std::make_unique<CodeBlockBox>(leaf.content, leaf.language, codeLook(leaf, m_environment),
                                              m_environment.codeSyntaxHighlighter);
    }

    std::unique_ptr<BlockBox> operator()(const TableRowLeaf &leaf) const
    {
        return leaf.table->makeRow(leaf.row, contains<InlineNode::Image>(leaf) ? lookup() : PictureLookup());
    }

    std::unique_ptr<BlockBox> operator()(const PictureLeaf &leaf) const
    {
        std::vector<Picture> pictures;
        for (const ImageFlow::Item &item : leaf.flow.items) {
            Picture picture;
            if (const RawImageData *const data = std::get_if<RawImageData>(&item))
                picture = pictureOf(*data, leaf.attributes);
            else
                picture.isBreak = true;
            pictures.push_back(std::move(picture));
        }
        const double gap = rem(kPictureGap).points(leaf.attributes.fontProperties);
        return std::make_unique<PictureBox>(std::move(pictures), gap,
                                            colorOf(Palette::kSecondaryBackground, m_environment.scheme),
                                            colorOf(Palette::kTertiaryText, m_environment.scheme));
    }

    std::unique_ptr<BlockBox> operator()(const RuleLeaf &leaf) const
    {
        return std::make_unique<ThematicBreakBox>(
            leaf.height, colorOf(m_environment.theme.thematicBreak.color, m_environment.scheme));
    }

    std::unique_ptr<BlockBox> operator()(const EmptyLeaf &leaf) const
    {
        return std::make_unique<ThematicBreakBox>(leaf.height, QColor(Qt::transparent));
    }

private:
    PictureLookup lookup() const
    {
        return [this](const QString &source) { return m_pictures.image(source); };
    }

    Picture pictureOf(const RawImageData &data, const MarkdownUIAttributes &around) const
    {
        Picture picture;
        const NetworkImage::NetworkImageState state = m_pictures.state(data.source);
        if (const auto *const success = std::get_if<NetworkImage::Success>(&state)) {
            picture.image = success->image;
            picture.idealSize = success->idealSize;
        }
        MarkdownUIAttributes attributes = around;
        attributes.foregroundColor = Palette::kSecondaryText;
        AttributedString label;
        label.append(data.alt.isEmpty() && picture.image.isNull() ? data.source : data.alt, attributes,
                     AttributedString::kNoStyles);
        picture.label = styledText(label, attributes, m_environment.scheme, 0);
        if (data.destination)
            if (const std::optional<QString> url = resolvedURL(*data.destination, m_environment.baseURL))
                picture.target = QUrl(*url);
        return picture;
    }

    const DisplayEnvironment &m_environment;
    PictureStore &m_pictures;
    int m_width;
};

} // namespace

AttributedString renderedText(const TextLeaf &leaf, const DisplayEnvironment &environment, PictureStore &pictures)
{
    if (leaf.inlines.isEmpty())
        return leaf.text;
    QSet<QString> loaded;
    for (const QString &source : imageSources(leaf.inlines))
        if (!pictures.image(source).isNull())
            loaded.insert(source);
    return renderText(leaf.inlines, environment.baseURL, environment.theme.inlineTextStyles(), loaded,
                      environment.softBreakMode, leaf.attributes);
}

std::unique_ptr<BlockBox> makeBox(const LeafContent &content, const DisplayEnvironment &environment,
                                  PictureStore &pictures, int width)
{
    return std::visit(Maker(environment, pictures, width), content);
}

int estimatedHeight(const LeafContent &content, const DisplayEnvironment &environment, int width)
{
    // One font after the other is asked for the same guess many times.
    static QHash<FontProperties, std::shared_ptr<const TextEstimate>> known;
    const auto estimateOf = [](const MarkdownUIAttributes &attributes) {
        const FontProperties font = attributes.fontProperties.value_or(FontProperties());
        constexpr qsizetype kMostKept = 50;
        if (known.size() > kMostKept)
            known.clear();
        std::shared_ptr<const TextEstimate> &estimate = known[font];
        if (!estimate)
            estimate = std::make_shared<const TextEstimate>(fontOf(font));
        return estimate;
    };
    return std::visit(
        Overloaded{
            [&](const TextLeaf &leaf) {
                const qsizetype length =
                    leaf.inlines.isEmpty() ? leaf.text.text().size() : approximateLength(leaf.inlines);
                const int text = estimateOf(leaf.attributes)->height(length, width, leaf.lineSpacing);
                const int divider =
                    leaf.divider ? 1 + static_cast<int>(leaf.divider->padding.points(leaf.attributes.fontProperties))
                                 : 0;
                return text + divider;
            },
            [&](const CodeLeaf &leaf) { return CodeBlockBox::heightOf(leaf.content, codeLook(leaf, environment)); },
            [&](const TableRowLeaf &leaf) { return leaf.table->estimatedHeight(leaf.row); },
            [&](const PictureLeaf &leaf) { return 2 * estimateOf(leaf.attributes)->rowHeight(); },
            [&](const RuleLeaf &leaf) { return leaf.height; },
            [&](const EmptyLeaf &leaf) { return leaf.height; },
        },
        content);
}

bool hasPictures(const LeafContent &content)
{
    if (const TextLeaf *const text = std::get_if<TextLeaf>(&content))
        return contains<InlineNode::Image>(text->inlines);
    if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&content))
        return contains<InlineNode::Image>(*row);
    return std::holds_alternative<PictureLeaf>(content);
}

bool mayHaveTargets(const LeafContent &content)
{
    if (const TextLeaf *const text = std::get_if<TextLeaf>(&content))
        return text->inlines.isEmpty() || contains<InlineNode::Link>(text->inlines);
    if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&content))
        return contains<InlineNode::Link>(*row);
    return std::holds_alternative<CodeLeaf>(content) || std::holds_alternative<PictureLeaf>(content);
}

} // namespace MarkdownUI
