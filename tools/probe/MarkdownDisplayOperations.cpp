#include "probe/Operations.h"

#include "MarkdownUI/BlockMargin.h"
#include "MarkdownUI/ContentURL.h"
#include "MarkdownUI/FlowLayout.h"
#include "MarkdownUI/ImageFlow.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/NodeWalk.h"
#include "MarkdownUI/Theme.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace Tessaline::Probe {

namespace {

using namespace MarkdownUI;

Json jsonOf(const std::optional<QString> &text)
{
    return text ? jsonFrom(*text) : Json();
}

// --- trees ---

/// Nodes in an order in which all that a node holds comes after it, and that of one node side by side. Made into JSON
/// from the end, every node finds what it holds ready, and no depth of a text needs a stack.
template <class Node>
struct Waiting {
    const Node *node;
    size_t firstChild = 0;
    Json json = {};
};

/// The ready children from `next` on, which moves past them.
template <class Node>
Json takeChildren(std::vector<Waiting<Node>> &nodes, size_t &next, qsizetype count)
{
    Json list = Json::array();
    for (; count > 0; --count)
        list.push_back(std::move(nodes[next++].json));
    return list;
}

/// An inline node as an object with what its children became, if it can have any.
struct InlineObject {
    Json children;

    Json operator()(const InlineNode::Text &node) const { return withText("text", node.text); }
    Json operator()(const InlineNode::SoftBreak &) const { return {{"type", "softBreak"}}; }
    Json operator()(const InlineNode::LineBreak &) const { return {{"type", "lineBreak"}}; }
    Json operator()(const InlineNode::Code &node) const { return withText("code", node.text); }
    Json operator()(const InlineNode::Html &node) const { return withText("html", node.text); }
    Json operator()(const InlineNode::Emphasis &) { return holder("emphasis"); }
    Json operator()(const InlineNode::Strong &) { return holder("strong"); }
    Json operator()(const InlineNode::Strikethrough &) { return holder("strikethrough"); }
    Json operator()(const InlineNode::Link &node) { return holder("link", "destination", &node.destination); }
    Json operator()(const InlineNode::Image &node) { return holder("image", "source", &node.source); }

private:
    static Json withText(const char *type, const QString &text) { return {{"type", type}, {"text", jsonFrom(text)}}; }

    Json holder(const char *type, const char *key = nullptr, const QString *text = nullptr)
    {
        Json object{{"type", type}};
        if (key)
            object[key] = jsonFrom(*text);
        object["children"] = std::move(children);
        return object;
    }
};

Json jsonOf(const QList<InlineNode> &inlines)
{
    std::vector<Waiting<InlineNode>> nodes;
    for (const InlineNode &node : inlines)
        nodes.push_back({&node});
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].firstChild = nodes.size();
        if (const QList<InlineNode> *children = nodes[i].node->children()) {
            for (const InlineNode &child : *children)
                nodes.push_back({&child});
        }
    }
    for (size_t i = nodes.size(); i-- > 0;) {
        const QList<InlineNode> *children = nodes[i].node->children();
        InlineObject object;
        if (children)
            object.children = takeChildren(nodes, nodes[i].firstChild, children->size());
        nodes[i].json = std::visit(object, nodes[i].node->value());
    }
    size_t first = 0;
    return takeChildren(nodes, first, inlines.size());
}

const char *nameOf(RawTableColumnAlignment alignment)
{
    constexpr const char *kNames[] = {"none", "left", "center", "right"};
    return kNames[static_cast<int>(alignment)];
}

/// A block as an object; what stands in it is taken from the nodes that are ready.
struct BlockObject {
    std::vector<Waiting<BlockNode>> &nodes;
    size_t next; // of the children in `nodes`

    Json operator()(const BlockNode::Blockquote &quote)
    {
        Json object{{"type", "blockquote"}};
        object["children"] = takeChildren(nodes, next, quote.children.size());
        return object;
    }
    Json operator()(const BlockNode::BulletedList &list)
    {
        Json object{{"type", "bulletedList"}, {"isTight", list.isTight}};
        object["items"] = items(list.items);
        return object;
    }
    Json operator()(const BlockNode::NumberedList &list)
    {
        Json object{{"type", "numberedList"}, {"isTight", list.isTight}, {"start", list.start}};
        object["items"] = items(list.items);
        return object;
    }
    Json operator()(const BlockNode::TaskList &list)
    {
        Json object{{"type", "taskList"}, {"isTight", list.isTight}};
        object["items"] = items(list.items);
        return object;
    }
    Json operator()(const BlockNode::CodeBlock &code) const
    {
        return {{"type", "codeBlock"}, {"fenceInfo", jsonOf(code.fenceInfo)}, {"content", jsonFrom(code.content)}};
    }
    Json operator()(const BlockNode::HtmlBlock &html) const
    {
        return {{"type", "htmlBlock"}, {"content", jsonFrom(html.content)}};
    }
    Json operator()(const BlockNode::Paragraph &paragraph) const
    {
        Json object{{"type", "paragraph"}};
        object["content"] = jsonOf(paragraph.content);
        return object;
    }
    Json operator()(const BlockNode::Heading &heading) const
    {
        Json object{{"type", "heading"}, {"level", heading.level}};
        object["content"] = jsonOf(heading.content);
        return object;
    }
    Json operator()(const BlockNode::Table &table) const
    {
        Json alignments = Json::array();
        for (const RawTableColumnAlignment alignment : table.columnAlignments)
            alignments.push_back(nameOf(alignment));
        Json rows = Json::array();
        for (const RawTableRow &row : table.rows) {
            Json cells = Json::array();
            for (const RawTableCell &cell : row.cells) {
                cells.push_back(Json::object());
                cells.back()["content"] = jsonOf(cell.content);
            }
            rows.push_back(Json::object());
            rows.back()["cells"] = std::move(cells);
        }
        Json object{{"type", "table"}};
        object["columnAlignments"] = std::move(alignments);
        object["rows"] = std::move(rows);
        return object;
    }
    Json operator()(const BlockNode::ThematicBreak &) const { return {{"type", "thematicBreak"}}; }

private:
    template <class Item>
    Json items(const QList<Item> &items)
    {
        Json list = Json::array();
        for (const Item &item : items) {
            Json object = Json::object();
            if constexpr (requires { item.isCompleted; })
                object["isCompleted"] = item.isCompleted;
            object["children"] = takeChildren(nodes, next, item.children.size());
            list.push_back(std::move(object));
        }
        return list;
    }
};

Json jsonOf(const QList<BlockNode> &blocks)
{
    std::vector<Waiting<BlockNode>> nodes;
    for (const BlockNode &block : blocks)
        nodes.push_back({&block});
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].firstChild = nodes.size();
        forEachChildList(*nodes[i].node, [&nodes](const QList<BlockNode> &children) {
            for (const BlockNode &child : children)
                nodes.push_back({&child});
        });
    }
    for (size_t i = nodes.size(); i-- > 0;)
        nodes[i].json = std::visit(BlockObject{nodes, nodes[i].firstChild}, nodes[i].node->value());
    size_t first = 0;
    return takeChildren(nodes, first, blocks.size());
}

// --- lines ---

/// The content of the first paragraph at the top; empty without one.
QList<InlineNode> firstParagraph(const Arguments &arguments)
{
    for (const BlockNode &block : MarkdownUI::parseBlocks(arguments.text("markdown"))) {
        if (const auto *paragraph = block.as<BlockNode::Paragraph>())
            return paragraph->content;
    }
    return {};
}

SoftBreak::Mode softBreakMode(const QString &name)
{
    if (name == u"space")
        return SoftBreak::Mode::Space;
    if (name == u"lineBreak")
        return SoftBreak::Mode::LineBreak;
    throw BadArgument("The soft break mode is neither \"space\" nor \"lineBreak\".");
}

const char *nameOf(InlineStyle style)
{
    constexpr const char *kNames[] = {"code", "emphasis", "strong", "strikethrough", "link"};
    return kNames[static_cast<int>(style)];
}

Json renderedInlines(const Arguments &arguments)
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties();
    const AttributedString string =
        renderAttributedString(firstParagraph(arguments), {}, defaultTheme().inlineTextStyles(),
                               softBreakMode(arguments.text("softBreakMode")), attributes);
    Json list = Json::array();
    for (const AttributedString::Run &run : string.runs()) {
        Json styles = Json::array();
        for (const InlineStyle style : string.stylesOf(run))
            styles.push_back(nameOf(style));
        list.push_back({{"text", jsonFrom(string.text().sliced(run.location, run.length))},
                        {"styles", std::move(styles)},
                        {"link", jsonOf(run.attributes.link)}});
    }
    return list;
}

Json imageFlow(const Arguments &arguments)
{
    const std::optional<ImageFlow> flow = ImageFlow::of(firstParagraph(arguments));
    if (!flow)
        return {};
    Json list = Json::array();
    for (const ImageFlow::Item &item : flow->items) {
        if (const auto *image = std::get_if<RawImageData>(&item)) {
            list.push_back({{"kind", "image"},
                            {"source", jsonFrom(image->source)},
                            {"alt", jsonFrom(image->alt)},
                            {"destination", jsonOf(image->destination)}});
        } else {
            list.push_back({{"kind", "lineBreak"}});
        }
    }
    return list;
}

// --- sizes ---

ColorScheme colorScheme(const QString &name)
{
    return name == u"light" ? ColorScheme::Light : name == u"dark" ? ColorScheme::Dark : ColorScheme::Other;
}

const Json &objectOf(const Json &value)
{
    if (!value.is_object())
        throw BadArgument("An element of the list is not an object.");
    return value;
}

Json spacing(const Arguments &arguments)
{
    QList<BlockMargin> margins;
    for (const Json &element : arguments.list("margins")) {
        const Arguments margin(objectOf(element));
        margins.append({margin.optionalNumber("top"), margin.optionalNumber("bottom")});
    }
    Json list = Json::array();
    for (const std::optional<double> &padding :
         topPaddings(margins, arguments.flag("tight") ? BlockSpacing::Tight : BlockSpacing::Loose))
        list.push_back(padding ? Json(*padding) : Json());
    return list;
}

Json relativeSize(const Arguments &arguments)
{
    const QString unit = arguments.text("unit");
    if (unit != u"em" && unit != u"rem")
        throw BadArgument("The unit is neither \"em\" nor \"rem\".");
    FontProperties font;
    font.size = arguments.number("size");
    font.scale = arguments.number("scale");
    const double value = arguments.number("value");
    return (unit == u"em" ? em(value) : rem(value)).points(font);
}

/// An item of negative priority takes all that it is proposed.
Json flow(const Arguments &arguments)
{
    QList<QSizeF> sizes;
    QList<double> priorities;
    for (const Json &element : arguments.list("items")) {
        const Arguments item(objectOf(element));
        sizes.append({item.number("width"), item.number("height")});
        priorities.append(item.number("priority"));
    }
    const FlowLayout layout{arguments.number("horizontalSpacing"), arguments.number("verticalSpacing")};
    const FlowLayout::Frames flow = layout.frames(
        arguments.optionalNumber("width"), priorities, [&](qsizetype index, std::optional<double> proposed) {
            const QSizeF &size = sizes.at(index);
            return priorities.at(index) < 0 && proposed ? QSizeF(*proposed, size.height()) : size;
        });
    Json frames = Json::array();
    for (const QRectF &frame : flow.frames)
        frames.push_back({{"x", frame.x()}, {"y", frame.y()}, {"width", frame.width()}, {"height", frame.height()}});
    return {{"width", flow.size.width()}, {"height", flow.size.height()}, {"frames", std::move(frames)}};
}

constexpr Operation kOperations[] = {
    {"parseContent",
     [](const Arguments &arguments) { return jsonOf(MarkdownUI::parseBlocks(arguments.text("markdown"))); }},
    {"renderInlines", renderedInlines},
    {"visibleInScheme",
     [](const Arguments &arguments) {
         return Json(isVisible(arguments.text("url"), colorScheme(arguments.text("scheme"))));
     }},
    {"blockSpacing", spacing},
    {"relativeSize", relativeSize},
    {"flowLayout", flow},
    {"imageFlow", imageFlow},
};

} // namespace

std::span<const Operation> markdownDisplayOperations()
{
    return kOperations;
}

} // namespace Tessaline::Probe
