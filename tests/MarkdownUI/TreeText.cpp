#include "TreeText.h"

#include "MarkdownUI/MarkdownParser.h"

#include <QtCore/QStringList>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

namespace {

QString quoted(QString text)
{
    return u'"' + text.replace(u'\n', u'~') + u'"';
}

struct InlineText {
    QString operator()(const InlineNode::Text &node) const { return quoted(node.text); }
    QString operator()(const InlineNode::SoftBreak &) const { return u"soft"_s; }
    QString operator()(const InlineNode::LineBreak &) const { return u"hard"_s; }
    QString operator()(const InlineNode::Code &node) const { return u"code"_s + quoted(node.text); }
    QString operator()(const InlineNode::Html &node) const { return u"html"_s + quoted(node.text); }
    QString operator()(const InlineNode::Emphasis &node) const { return u"em("_s + treeText(node.children) + u')'; }
    QString operator()(const InlineNode::Strong &node) const { return u"strong("_s + treeText(node.children) + u')'; }
    QString operator()(const InlineNode::Strikethrough &node) const
    {
        return u"del("_s + treeText(node.children) + u')';
    }
    QString operator()(const InlineNode::Link &node) const
    {
        return u"link<"_s + node.destination + u">("_s + treeText(node.children) + u')';
    }
    QString operator()(const InlineNode::Image &node) const
    {
        return u"image<"_s + node.source + u">("_s + treeText(node.children) + u')';
    }
};

struct BlockText {
    QString operator()(const BlockNode::Blockquote &node) const { return u"quote("_s + treeText(node.children) + u')'; }
    QString operator()(const BlockNode::BulletedList &node) const
    {
        return tightness(node.isTight) + u"bullets["_s + items(node.items) + u']';
    }
    QString operator()(const BlockNode::NumberedList &node) const
    {
        return tightness(node.isTight) + u"numbers%1["_s.arg(node.start) + items(node.items) + u']';
    }
    QString operator()(const BlockNode::TaskList &node) const
    {
        QStringList texts;
        for (const RawTaskListItem &item : node.items)
            texts.append((item.isCompleted ? u"done("_s : u"open("_s) + treeText(item.children) + u')');
        return tightness(node.isTight) + u"tasks["_s + texts.join(u' ') + u']';
    }
    QString operator()(const BlockNode::CodeBlock &node) const
    {
        return (node.fenceInfo ? u"code<"_s + *node.fenceInfo + u'>' : u"code"_s) + quoted(node.content);
    }
    QString operator()(const BlockNode::HtmlBlock &node) const { return u"html"_s + quoted(node.content); }
    QString operator()(const BlockNode::Paragraph &node) const { return u"p("_s + treeText(node.content) + u')'; }
    QString operator()(const BlockNode::Heading &node) const
    {
        return u"h%1("_s.arg(node.level) + treeText(node.content) + u')';
    }
    QString operator()(const BlockNode::Table &node) const
    {
        QString text = u"table<"_s;
        for (const RawTableColumnAlignment alignment : node.columnAlignments)
            text += u"-lcr"[static_cast<int>(alignment)];
        text += u'>';
        for (const RawTableRow &row : node.rows) {
            QStringList cells;
            for (const RawTableCell &cell : row.cells)
                cells.append(treeText(cell.content));
            text += u'[' + cells.join(u'|') + u']';
        }
        return text;
    }
    QString operator()(const BlockNode::ThematicBreak &) const { return u"rule"_s; }

private:
    static QString tightness(bool isTight) { return isTight ? u"tight-"_s : u"loose-"_s; }
    static QString items(const QList<RawListItem> &items)
    {
        QStringList texts;
        for (const RawListItem &item : items)
            texts.append(u"item("_s + treeText(item.children) + u')');
        return texts.join(u' ');
    }
};

} // namespace

QString treeText(const QList<BlockNode> &blocks)
{
    QStringList texts;
    for (const BlockNode &block : blocks)
        texts.append(std::visit(BlockText(), block.value()));
    return texts.join(u' ');
}

QString treeText(const QList<InlineNode> &inlines)
{
    QStringList texts;
    for (const InlineNode &node : inlines)
        texts.append(std::visit(InlineText(), node.value()));
    return texts.join(u' ');
}

std::string parsed(QStringView markdown)
{
    return treeText(parseBlocks(markdown)).toStdString();
}

} // namespace MarkdownUI
