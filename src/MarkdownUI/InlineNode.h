#pragma once

#include <QtCore/QHashFunctions>
#include <QtCore/QList>
#include <QtCore/QString>

#include <concepts>
#include <utility>
#include <variant>

namespace MarkdownUI {

/// A piece of a line: a closed set of cases with what each carries. A value: copies share their children until one of
/// them is changed, so a copy costs the same for a deep node as for a flat one. Comparing, hashing and destroying need
/// no stack for the depth of the tree; a text can nest a hundred thousand levels.
class InlineNode
{
public:
    struct Text {
        QString text;
    };
    struct SoftBreak {}; // the end of a source line inside a paragraph
    struct LineBreak {};
    struct Code {
        QString text;
    };
    struct Html {
        QString text; // one tag, comment or the like, as written
    };
    struct Emphasis {
        QList<InlineNode> children;
    };
    struct Strong {
        QList<InlineNode> children;
    };
    struct Strikethrough {
        QList<InlineNode> children;
    };
    struct Link {
        QString destination;
        QList<InlineNode> children;
    };
    struct Image {
        QString source;
        QList<InlineNode> children; // the alternative text
    };
    using Value = std::variant<Text, SoftBreak, LineBreak, Code, Html, Emphasis, Strong, Strikethrough, Link, Image>;

    InlineNode() = default; // an empty text
    template <class Case>
    requires(std::constructible_from<Value, Case> && !std::same_as<std::remove_cvref_t<Case>, InlineNode>)
        InlineNode(Case &&value)
        : m_value(std::forward<Case>(value))
    {}
    InlineNode(const InlineNode &) = default;
    InlineNode(InlineNode &&) noexcept = default;
    /// From anywhere, a node further down in this one too.
    InlineNode &operator=(InlineNode other) noexcept
    {
        m_value.swap(other.m_value);
        return *this;
    }
    ~InlineNode();

    /// For std::visit.
    const Value &value() const { return m_value; }

    /// What the case carries, or null if the node is another case.
    template <class Case>
    const Case *as() const
    {
        return std::get_if<Case>(&m_value);
    }

    /// Null for the cases that cannot have any.
    const QList<InlineNode> *children() const;
    QList<InlineNode> *children();

    friend bool operator==(const InlineNode &left, const InlineNode &right);
    friend size_t qHash(const InlineNode &node, size_t seed = 0) noexcept { return node.hash(seed); }

private:
    size_t hash(size_t seed) const noexcept;

    Value m_value;
};

/// The texts, code and HTML in `nodes` at any depth, joined without a separator. A soft break is a blank, a line break
/// a line feed.
QString plainText(const QList<InlineNode> &nodes);

} // namespace MarkdownUI

Q_DECLARE_TYPEINFO(MarkdownUI::InlineNode, Q_RELOCATABLE_TYPE);
