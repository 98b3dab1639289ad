#include "MarkdownUI/SelectionText.h"

#include "MarkdownUI/InlineWriting.h"
#include "MarkdownUI/Overloaded.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace MarkdownUI {

using namespace Qt::StringLiterals;
using Tessaline::TextRange;

namespace {

enum class Form { Plain, Markdown };

constexpr qsizetype kDeepest = 50; // containers that are written around a leaf; deeper ones are left out

QString markdownMarker(const ListMarker &marker)
{
    if (const NumberSign *const number = std::get_if<NumberSign>(&marker.sign))
        return number->text;
    return std::holds_alternative<TaskSign>(marker.sign) ? u"- "_s + marker.plainText() : u"-"_s;
}

QString alignmentRow(const TableContent &table)
{
    QString row = u"|"_s;
    for (const RawTableColumnAlignment alignment : table.alignments()) {
        switch (alignment) {
        case RawTableColumnAlignment::None:
            row.append(u" --- |"_s);
            break;
        case RawTableColumnAlignment::Left:
            row.append(u" :-- |"_s);
            break;
        case RawTableColumnAlignment::Center:
            row.append(u" :-: |"_s);
            break;
        case RawTableColumnAlignment::Right:
            row.append(u" --: |"_s);
            break;
        }
    }
    return row;
}

class SelectionWriter
{
public:
    SelectionWriter(const MarkdownDisplay &display, const DisplayRange &range, Form form)
        : m_display(display), m_range(range), m_form(form)
    {}

    QString write()
    {
        if (m_range.isEmpty())
            return {};
        for (qsizetype leaf = m_range.start.leaf; leaf <= m_range.end.leaf; ++leaf) {
            // A selection that ends before the first character of a block does not hold the block.
            if (leaf == m_range.end.leaf && m_range.end.offset == 0 && leaf > m_range.start.leaf)
                break;
            writeLeaf(leaf);
        }
        return std::move(m_out);
    }

private:
    /// What stands before the first and before the other lines of a leaf.
    struct Prefix {
        QString first;
        QString others;
    };

    TextRange rangeIn(qsizetype leaf, qsizetype length) const
    {
        const qsizetype start = leaf == m_range.start.leaf ? std::min(m_range.start.offset, length) : 0;
        const qsizetype end = leaf == m_range.end.leaf ? std::min(m_range.end.offset, length) : length;
        return {start, std::max<qsizetype>(end - start, 0)};
    }

    Prefix prefixOf(qsizetype leaf, bool isFromItsStart) const
    {
        Prefix prefix;
        std::vector<const OutlineContainer *> containers = m_display.containersOf(leaf);
        std::reverse(containers.begin(), containers.end()); // the outermost first
        if (containers.size() > kDeepest)
            containers.resize(kDeepest);
        for (const OutlineContainer *const container : containers) {
            const ItemPlace *const item = std::get_if<ItemPlace>(&container->kind);
            if (!item) {
                const QString bar = m_form == Form::Markdown ? u"> "_s : QString();
                prefix.first.append(bar);
                prefix.others.append(bar);
                continue;
            }
            const QString marker =
                (m_form == Form::Markdown ? markdownMarker(item->marker) : item->marker.plainText()) + u' ';
            const qsizetype width = m_form == Form::Markdown ? markdownWidth(item->marker) : marker.size();
            const QString blanks(width, u' ');
            prefix.first.append(isFromItsStart && m_display.isFirstOf(leaf, *container) ? marker : blanks);
            prefix.others.append(blanks);
        }
        return prefix;
    }

    void writeLeaf(qsizetype leaf)
    {
        const OutlineLeaf &outline = m_display.leaf(leaf);
        if (m_form == Form::Plain && std::holds_alternative<RuleLeaf>(outline.content))
            return; // a line without letters
        const QString text = m_display.leafText(leaf);
        const TextRange range = rangeIn(leaf, text.size());
        const TextLeaf *const paragraph = std::get_if<TextLeaf>(&outline.content);
        const bool isContinued = paragraph && paragraph->continuesAbove && leaf > m_range.start.leaf;
        QString content =
            m_form == Form::Markdown ? markdownIn(leaf, outline, text, range) : plainIn(leaf, text, range);
        if (isContinued) {
            m_out.append(content);
            return;
        }
        const Prefix prefix = prefixOf(leaf, range.location == 0);
        if (!m_out.isEmpty()) {
            m_out.append(isSetClose(leaf) ? u"\n"_s : u"\n%1\n"_s.arg(betweenPrefix(leaf)));
        }
        content.replace(u"\n"_s, u'\n' + prefix.others);
        m_out.append(prefix.first + content);
    }

    /// The text of a leaf with the alternative texts of the pictures in its lines.
    QString plainIn(qsizetype leaf, const QString &text, const TextRange &range) const
    {
        if (!std::holds_alternative<TextLeaf>(m_display.leaf(leaf).content))
            return text.sliced(range.location, range.length);
        QString plain;
        const AttributedString styled = m_display.styledLeafText(leaf);
        for (const AttributedString::Run &run : styled.runs()) {
            const qsizetype from = std::max(run.location, range.location);
            const qsizetype to = std::min(run.location + run.length, range.end());
            if (from < to)
                plain.append(run.image ? run.image->alt : text.sliced(from, to - from));
        }
        return plain;
    }

    /// What stands on the empty line between a leaf and the one before: the bars of the quotes that hold both.
    QString betweenPrefix(qsizetype leaf) const
    {
        if (m_form == Form::Plain || m_display.blockOf(leaf) != m_display.blockOf(leaf - 1))
            return {};
        const std::vector<const OutlineContainer *> below = m_display.containersOf(leaf);
        const std::vector<const OutlineContainer *> above = m_display.containersOf(leaf - 1);
        QString prefix;
        for (size_t i = 1; i <= std::min({below.size(), above.size(), static_cast<size_t>(kDeepest)}); ++i) {
            const OutlineContainer *const container = below[below.size() - i]; // the outermost first
            if (container != above[above.size() - i])
                break;
            const ItemPlace *const item = std::get_if<ItemPlace>(&container->kind);
            prefix.append(item ? QString(markdownWidth(item->marker), u' ') : u"> "_s);
        }
        return withoutBlanks(prefix);
    }

    /// How far the text of an item is indented in Markdown. A task's stands below the sign of the list, not below the
    /// box.
    static qsizetype markdownWidth(const ListMarker &marker)
    {
        return std::holds_alternative<TaskSign>(marker.sign) ? 2 : markdownMarker(marker).size() + 1;
    }

    static QString withoutBlanks(QString text)
    {
        while (text.endsWith(u' '))
            text.chop(1);
        return text;
    }

    /// Whether no empty line stands between a leaf and the one before.
    bool isSetClose(qsizetype leaf) const
    {
        const OutlineLeaf &outline = m_display.leaf(leaf);
        if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&outline.content); row && row->row > 0)
            return true;
        // The items of a tight list, and the list inside of an item.
        const std::vector<const OutlineContainer *> around = m_display.containersOf(leaf);
        if (around.empty() || m_display.blockOf(leaf) != m_display.blockOf(leaf - 1))
            return false;
        const ItemPlace *const item = std::get_if<ItemPlace>(&around.front()->kind);
        if (!item || !item->isTight || !m_display.isFirstOf(leaf, *around.front()))
            return false;
        const std::vector<const OutlineContainer *> before = m_display.containersOf(leaf - 1);
        return std::any_of(before.begin(), before.end(), [&around](const OutlineContainer *container) {
            return std::holds_alternative<ItemPlace>(container->kind) &&
                   (container->parent == around.front()->parent || (around.size() > 1 && container == around[1]));
        });
    }

    QString markdownIn(qsizetype leaf, const OutlineLeaf &outline, const QString &text, const TextRange &range) const
    {
        return std::visit(Overloaded{
                              [&](const TextLeaf &content) {
                                  if (content.isHtml)
                                      return text.sliced(range.location, range.length);
                                  const bool isHeading = content.headingLevel > 0;
                                  const QString inlines =
                                      inlineMarkdown(m_display.styledLeafText(leaf), range,
                                                     isHeading ? WrittenPlace::Heading : WrittenPlace::Paragraph);
                                  return isHeading ? QString(content.headingLevel, u'#') + u' ' + inlines : inlines;
                              },
                              [&](const CodeLeaf &content) {
                                  const QString code = text.sliced(range.location, range.length);
                                  QString fence = u"```"_s;
                                  while (code.contains(fence))
                                      fence.append(u'`');
                                  return fence + content.language + u'\n' + code + u'\n' + fence;
                              },
                              [&](const TableRowLeaf &content) { return tableRow(leaf, content, range); },
                              [&](const PictureLeaf &content) { return pictures(content); },
                              [&](const RuleLeaf &) { return u"---"_s; },
                              [&](const EmptyLeaf &) { return QString(); },
                          },
                          outline.content);
    }

    QString tableRow(qsizetype leaf, const TableRowLeaf &content, const TextRange &range) const
    {
        QString row = u"|"_s;
        qsizetype start = 0;
        for (qsizetype cell = 0; cell < content.table->rows().at(content.row).cells.size(); ++cell) {
            const AttributedString text = m_display.styledLeafText(leaf, cell);
            const qsizetype from = std::clamp<qsizetype>(range.location - start, 0, text.text().size());
            const qsizetype to = std::clamp<qsizetype>(range.end() - start, 0, text.text().size());
            row.append(u" %1 |"_s.arg(inlineMarkdown(text, {from, to - from}, WrittenPlace::TableCell)));
            start += text.text().size() + 1;
        }
        // Every table needs a header: the first row that is selected.
        const bool isHeader = content.row == 0 || leaf == m_range.start.leaf;
        return isHeader ? row + u'\n' + alignmentRow(*content.table) : row;
    }

    static QString pictures(const PictureLeaf &content)
    {
        QString text;
        for (const ImageFlow::Item &item : content.flow.items) {
            const RawImageData *const image = std::get_if<RawImageData>(&item);
            if (!image) {
                text.append(u"\\\n"_s);
                continue;
            }
            const QString written = u"![%1](<%2>)"_s.arg(image->alt, image->source);
            if (!text.isEmpty() && !text.endsWith(u'\n'))
                text.append(u'\n');
            text.append(image->destination ? u"[%1](<%2>)"_s.arg(written, *image->destination) : written);
        }
        return text;
    }

    const MarkdownDisplay &m_display;
    DisplayRange m_range;
    Form m_form;
    QString m_out;
};

} // namespace

QString plainTextOf(const MarkdownDisplay &display, const DisplayRange &range)
{
    return SelectionWriter(display, range, Form::Plain).write();
}

QString markdownOf(const MarkdownDisplay &display, const DisplayRange &range)
{
    return SelectionWriter(display, range, Form::Markdown).write();
}

std::unique_ptr<QMimeData> makeTransfer(const MarkdownDisplay &display, const DisplayRange &range)
{
    auto transfer = std::make_unique<QMimeData>();
    transfer->setText(plainTextOf(display, range));
    transfer->setData(u"text/markdown"_s, markdownOf(display, range).toUtf8());
    return transfer;
}

} // namespace MarkdownUI
