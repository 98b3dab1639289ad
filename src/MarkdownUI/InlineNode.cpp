#include "MarkdownUI/InlineNode.h"

#include "MarkdownUI/NodeWalk.h"

#include <algorithm>
#include <type_traits>
#include <vector>

namespace MarkdownUI {

namespace {

template <class Node>
auto childrenOf(Node &value)
{
    using List = std::conditional_t<std::is_const_v<Node>, const QList<InlineNode>, QList<InlineNode>>;
    return std::visit(
        [](auto &node) -> List * {
            if constexpr (requires { node.children; })
                return &node.children;
            else
                return nullptr;
        },
        value);
}

/// What a node carries beside its children: its text, destination or source.
const QString *textOf(const InlineNode &node)
{
    return std::visit(
        [](const auto &value) -> const QString * {
            if constexpr (requires { value.text; })
                return &value.text;
            else if constexpr (requires { value.destination; })
                return &value.destination;
            else if constexpr (requires { value.source; })
                return &value.source;
            else
                return nullptr;
        },
        node.value());
}

bool equalBesideChildren(const InlineNode &left, const InlineNode &right)
{
    if (left.value().index() != right.value().index())
        return false;
    const QString *text = textOf(left);
    return !text || *text == *textOf(right);
}

size_t hashBesideChildren(const InlineNode &node, size_t seed)
{
    const QString *text = textOf(node);
    const QList<InlineNode> *children = node.children();
    return qHashMulti(seed, node.value().index(), text ? QStringView(*text) : QStringView(),
                      children ? children->size() : 0);
}

bool hasGrandchildren(const QList<InlineNode> &children)
{
    return std::ranges::any_of(children, [](const InlineNode &child) {
        const QList<InlineNode> *own = child.children();
        return own && !own->isEmpty();
    });
}

} // namespace

/// Lists that nobody else holds are taken apart here, so that no destructor calls itself for what is further down.
InlineNode::~InlineNode()
{
    QList<InlineNode> *own = children();
    if (!own || !own->isDetached() || !hasGrandchildren(*own))
        return;

    std::vector<QList<InlineNode>> pending;
    pending.push_back(std::move(*own));
    while (!pending.empty()) {
        QList<InlineNode> nodes = std::move(pending.back());
        pending.pop_back();
        if (!nodes.isDetached())
            continue;
        for (InlineNode &node : nodes) {
            if (QList<InlineNode> *next = node.children(); next && !next->isEmpty())
                pending.push_back(std::move(*next));
        }
    }
}

const QList<InlineNode> *InlineNode::children() const
{
    return childrenOf(m_value);
}

QList<InlineNode> *InlineNode::children()
{
    return childrenOf(m_value);
}

bool operator==(const InlineNode &left, const InlineNode &right)
{
    if (!equalBesideChildren(left, right))
        return false;
    if (!left.children())
        return true;

    std::vector<std::pair<const QList<InlineNode> *, const QList<InlineNode> *>> pending{
        {left.children(), right.children()}};
    while (!pending.empty()) {
        const auto [first, second] = pending.back();
        pending.pop_back();
        if (first->size() != second->size())
            return false;
        if (first->constData() == second->constData())
            continue; // shared
        for (qsizetype i = 0; i < first->size(); ++i) {
            const InlineNode &one = first->at(i);
            const InlineNode &other = second->at(i);
            if (!equalBesideChildren(one, other))
                return false;
            if (one.children())
                pending.emplace_back(one.children(), other.children());
        }
    }
    return true;
}

size_t InlineNode::hash(size_t seed) const noexcept
{
    seed = hashBesideChildren(*this, seed);
    if (const QList<InlineNode> *own = children())
        forEachInline(*own, [&seed](const InlineNode &node) { seed = hashBesideChildren(node, seed); });
    return seed;
}

QString plainText(const QList<InlineNode> &nodes)
{
    QString text;
    forEachInline(nodes, [&text](const InlineNode &node) {
        if (const auto *plain = node.as<InlineNode::Text>())
            text += plain->text;
        else if (const auto *code = node.as<InlineNode::Code>())
            text += code->text;
        else if (const auto *html = node.as<InlineNode::Html>())
            text += html->text;
        else if (node.as<InlineNode::SoftBreak>())
            text += u' ';
        else if (node.as<InlineNode::LineBreak>())
            text += u'\n';
    });
    return text;
}

} // namespace MarkdownUI
