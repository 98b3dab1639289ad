#include "MarkdownUI/BlockOutline.h"

#include "MarkdownUI/StyledTextMaking.h"
#include "MarkdownUI/TextFonts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace MarkdownUI {

namespace {

constexpr RelativeSize kMarkerGap = em(0.4); // between a marker and its item
constexpr qsizetype kLongestText = 4000;     // units; a longer paragraph is laid out in parts
constexpr qsizetype kPartLength = 3000;
constexpr qsizetype kMostStyles = 200000; // looked up for the parts of one paragraph
constexpr qsizetype kFarthestBreak = 500; // how far before its end a part may be broken at a blank

int roundedPoints(double points)
{
    return static_cast<int>(std::lround(points));
}

/// Where the part that begins at `start` ends: behind a blank if one is near.
qsizetype partEnd(const QString &text, qsizetype start)
{
    const qsizetype limit = start + kPartLength;
    if (limit >= text.size())
        return text.size();
    for (qsizetype end = limit; end > limit - kFarthestBreak; --end)
        if (text.at(end - 1).isSpace())
            return end;
    qsizetype end = limit;
    while (end > limit - kFarthestBreak && (text.at(end).isLowSurrogate() || text.at(end).isMark()))
        --end;
    return end;
}

/// A part of a text. Runs before `firstRun` end before it. Looking styles up costs their depth, of which `budget` says
/// how much there may still be: text without end of nested emphasis is known by its looks alone from there on.
AttributedString part(const AttributedString &whole, qsizetype start, qsizetype end, qsizetype &firstRun,
                      qsizetype &budget)
{
    AttributedString result;
    for (qsizetype i = firstRun; i < whole.runs().size(); ++i) {
        const AttributedString::Run &run = whole.runs().at(i);
        if (run.location + run.length <= start) {
            firstRun = i + 1;
            continue;
        }
        if (run.location >= end)
            break;
        qsizetype styles = AttributedString::kNoStyles;
        if (run.styles != AttributedString::kNoStyles && budget > 0) {
            const QList<InlineStyle> outermostFirst = whole.stylesOf(run);
            budget -= outermostFirst.size();
            for (const InlineStyle style : outermostFirst)
                styles = result.nest(styles, style);
        }
        const qsizetype from = std::max(start, run.location);
        const qsizetype to = std::min(end, run.location + run.length);
        result.append(QStringView(whole.text()).sliced(from, to - from), run.attributes, styles);
    }
    return result;
}

/// Walks down a block and up again. Its stack is a list of its own, for text can nest a hundred thousand levels.
class OutlineMaker
{
public:
    explicit OutlineMaker(const DisplayEnvironment &environment)
        : m_environment(environment), m_theme(environment.theme)
    {}

    BlockOutline make(const BlockNode &block)
    {
        const QList<BlockNode> blocks{block};
        Frame root;
        root.blocks = &blocks;
        root.attributes = m_environment.textAttributes();
        m_stack.push_back(std::move(root));
        while (!m_stack.empty()) {
            if (m_stack.back().next < m_stack.back().count())
                enterNext();
            else
                leave();
        }
        return std::move(m_outline);
    }

private:
    /// A sequence of blocks or of items on the way down.
    struct Frame {
        const QList<BlockNode> *blocks = nullptr; // one of these three
        const QList<RawListItem> *items = nullptr;
        const QList<RawTaskListItem> *tasks = nullptr;
        qsizetype next = 0;
        MarkdownUIAttributes attributes;
        int listLevel = 0;
        BlockSpacing spacing = BlockSpacing::Loose;
        int container = -1;   // that holds the sequence
        int closes = -1;      // the container that ends with it
        BlockMargin own;      // of what the sequence is the content of
        BlockMargin before;   // of the last element: its lower margin
        bool isTight = false; // of a list
        int start = 1;        // of a numbered list
        int markerWidth = 0;
        qsizetype count() const { return blocks ? blocks->size() : items ? items->size() : tasks->size(); }
    };

    /// The space above the next leaf, as far as it is known on the way down to it.
    struct Pending {
        bool isFirst = true; // of everything so far: no space, whatever the margins
        BlockMargin before;
        BlockSpacing spacing = BlockSpacing::Loose;
        std::optional<double> top;
    };

    void enterNext()
    {
        Frame &frame = m_stack.back();
        const qsizetype index = frame.next++;
        if (index > 0)
            m_pending = {false, frame.before, frame.spacing, std::nullopt};
        frame.before = {};
        if (frame.blocks)
            enterBlock(frame.blocks->at(index), frame);
        else
            enterItem(index, frame);
    }

    void leave()
    {
        const Frame frame = std::move(m_stack.back());
        m_stack.pop_back();
        if (frame.closes >= 0) {
            OutlineContainer &container = m_outline.containers[static_cast<size_t>(frame.closes)];
            const bool isEmpty = container.firstLeaf == static_cast<qsizetype>(m_outline.leaves.size());
            if (isEmpty && std::holds_alternative<ItemPlace>(container.kind)) {
                const QFont font = fontOf(frame.attributes.fontProperties.value_or(FontProperties()));
                addLeaf(EmptyLeaf{TextEstimate::rowHeightOf(font)}, frame.closes, {});
            }
            m_outline.containers[static_cast<size_t>(frame.closes)].lastLeaf =
                static_cast<qsizetype>(m_outline.leaves.size()) - 1;
        }
        const BlockMargin margin = reportedMargin(frame.own, {}, frame.before);
        if (m_stack.empty())
            m_outline.margin.bottom = margin.bottom;
        else
            m_stack.back().before.bottom = margin.bottom;
    }

    void takeTop(const std::optional<double> &top)
    {
        if (!m_pending.top)
            m_pending.top = top;
    }

    void addLeaf(LeafContent content, int container, const BlockMargin &margin)
    {
        takeTop(margin.top);
        OutlineLeaf leaf;
        leaf.content = std::move(content);
        leaf.container = container;
        if (!m_pending.isFirst) {
            const std::optional<double> padding =
                topPadding(m_pending.before, {m_pending.top, std::nullopt}, m_pending.spacing);
            leaf.padding = roundedPoints(padding.value_or(kDefaultBlockPadding));
        } else if (m_outline.leaves.empty()) {
            m_outline.margin.top = m_pending.top;
        }
        m_pending = {};
        m_outline.leaves.push_back(std::move(leaf));
        if (!m_stack.empty())
            m_stack.back().before.bottom = margin.bottom;
    }

    int addContainer(OutlineContainer container)
    {
        container.firstLeaf = static_cast<qsizetype>(m_outline.leaves.size());
        m_outline.containers.push_back(std::move(container));
        return static_cast<int>(m_outline.containers.size()) - 1;
    }

    void enterItem(qsizetype index, const Frame &list)
    {
        const std::optional<FontProperties> font = list.attributes.fontProperties;
        const BlockMargin margin = m_theme.listItem.margin.resolved(font);
        takeTop(margin.top);

        OutlineContainer container;
        container.parent = list.container;
        container.leading = list.markerWidth + roundedPoints(kMarkerGap.points(font));
        container.kind = ItemPlace{marker(index, list), list.isTight};

        Frame frame;
        frame.blocks = list.tasks ? &list.tasks->at(index).children : &list.items->at(index).children;
        frame.attributes = list.attributes;
        frame.listLevel = list.listLevel;
        frame.spacing = list.spacing;
        frame.container = frame.closes = addContainer(std::move(container));
        frame.own = margin;
        m_stack.push_back(std::move(frame));
    }

    ListMarker marker(qsizetype index, const Frame &list) const
    {
        ListMarker marker;
        marker.font = fontOf(list.attributes.fontProperties.value_or(FontProperties()));
        marker.color = colorOf(list.attributes.foregroundColor.value_or(Palette::kText), m_environment.scheme);
        marker.width = list.markerWidth;
        if (list.tasks) {
            const bool isCompleted = list.tasks->at(index).isCompleted;
            const TaskListMarkerStyle &style = m_theme.taskListMarker;
            marker.color = colorOf(style.color, m_environment.scheme);
            marker.sign = TaskSign{isCompleted, isCompleted ? style.completedSymbol : style.openSymbol,
                                   colorOf(style.background, m_environment.scheme)};
        } else if (list.start >= 0) {
            marker.font = numberFont(list.attributes);
            marker.sign = NumberSign{decimalMarker(itemNumber(list.start, index))};
        } else {
            std::optional<double> size;
            if (list.attributes.fontProperties)
                size = list.attributes.fontProperties->scaledSize();
            marker.sign = BulletSign{discCircleSquare(list.listLevel), bulletFontSize(size)};
        }
        return marker;
    }

    QFont numberFont(const MarkdownUIAttributes &attributes) const
    {
        const MarkdownUIAttributes marked = m_theme.numberedListMarker.text.applied(attributes);
        return fontOf(marked.fontProperties.value_or(FontProperties()));
    }

    void enterList(Frame list, const Frame &outer, bool isTight)
    {
        list.attributes = outer.attributes;
        list.listLevel = outer.listLevel + 1;
        list.spacing = isTight ? BlockSpacing::Tight : BlockSpacing::Loose;
        list.isTight = isTight;
        list.container = outer.container;
        list.own = m_theme.list.margin.resolved(list.attributes.fontProperties);
        takeTop(list.own.top);
        const std::optional<FontProperties> &font = list.attributes.fontProperties;
        if (list.tasks) {
            list.markerWidth = roundedPoints(m_theme.taskListMarker.width.points(font));
        } else if (list.start >= 0) {
            // Numbers with as many digits are equally wide, so the last is the widest.
            const QString last = decimalMarker(itemNumber(list.start, std::max<qsizetype>(list.items->size() - 1, 0)));
            const double minimum = m_theme.numberedListMarker.minimumWidth.points(font);
            list.markerWidth = static_cast<int>(
                std::ceil(MarkdownUI::markerWidth({numberWidth(last, numberFont(list.attributes))}, minimum)));
        } else {
            list.markerWidth = roundedPoints(m_theme.bulletedListMarker.minimumWidth.points(font));
        }
        m_stack.push_back(std::move(list));
    }

    void enterBlock(const BlockNode &block, const Frame &outer)
    {
        std::visit([this, &outer](const auto &value) { enter(value, outer); }, block.value());
    }

    void enter(const BlockNode::Blockquote &quote, const Frame &outer)
    {
        const BlockquoteStyle &style = m_theme.blockquote;
        const std::optional<FontProperties> font = outer.attributes.fontProperties;
        OutlineContainer container;
        container.parent = outer.container;
        const int bar = roundedPoints(style.barWidth.points(font));
        const int inset = roundedPoints(style.inset.points(font));
        container.leading = bar + inset;
        container.trailing = inset;
        container.kind = QuoteBar{style.barColor, bar, style.barCornerRadius};

        Frame frame;
        frame.blocks = &quote.children;
        frame.attributes = style.text.applied(outer.attributes);
        frame.listLevel = outer.listLevel;
        frame.spacing = outer.spacing;
        frame.container = frame.closes = addContainer(std::move(container));
        frame.own = style.margin.resolved(font);
        takeTop(frame.own.top);
        m_stack.push_back(std::move(frame));
    }

    void enter(const BlockNode::BulletedList &list, const Frame &outer)
    {
        Frame frame;
        frame.items = &list.items;
        frame.start = -1;
        enterList(std::move(frame), outer, list.isTight);
    }

    void enter(const BlockNode::NumberedList &list, const Frame &outer)
    {
        Frame frame;
        frame.items = &list.items;
        frame.start = list.start;
        enterList(std::move(frame), outer, list.isTight);
    }

    void enter(const BlockNode::TaskList &list, const Frame &outer)
    {
        Frame frame;
        frame.tasks = &list.items;
        enterList(std::move(frame), outer, list.isTight);
    }

    void enter(const BlockNode::CodeBlock &code, const Frame &outer)
    {
        CodeLeaf leaf;
        leaf.content = code.content;
        leaf.language = code.fenceInfo.value_or(QString());
        leaf.attributes = m_theme.codeBlock.text.applied(outer.attributes);
        addLeaf(std::move(leaf), outer.container, m_theme.codeBlock.margin.resolved(outer.attributes.fontProperties));
    }

    void enter(const BlockNode::HtmlBlock &html, const Frame &outer)
    {
        TextLeaf leaf;
        QStringView content = html.content;
        while (content.endsWith(u'\n'))
            content.chop(1);
        leaf.isHtml = true;
        leaf.text.append(content, outer.attributes, AttributedString::kNoStyles);
        addText(std::move(leaf), outer.attributes, outer);
    }

    void enter(const BlockNode::Paragraph &paragraph, const Frame &outer)
    {
        const ParagraphForm form = paragraphForm(paragraph.content);
        if (const QList<InlineNode> *const inlines = std::get_if<QList<InlineNode>>(&form)) {
            TextLeaf leaf;
            leaf.inlines = *inlines;
            addText(std::move(leaf), outer.attributes, outer);
            return;
        }
        PictureLeaf leaf;
        if (const RawImageData *const image = std::get_if<RawImageData>(&form))
            leaf.flow.items.append(*image);
        else
            leaf.flow = std::get<ImageFlow>(form);
        leaf.attributes = outer.attributes;
        addLeaf(std::move(leaf), outer.container, m_theme.image.margin.resolved(outer.attributes.fontProperties));
    }

    void enter(const BlockNode::Heading &heading, const Frame &outer)
    {
        const auto level = static_cast<size_t>(std::clamp(heading.level, 1, 6));
        const HeadingStyle &style = m_theme.headings[level - 1];
        TextLeaf leaf;
        leaf.inlines = heading.content;
        leaf.headingLevel = static_cast<int>(level);
        leaf.divider = style.divider;
        leaf.attributes = style.text.applied(outer.attributes);
        leaf.lineSpacing = roundedPoints(style.lineSpacing.points(leaf.attributes.fontProperties));
        addParts(std::move(leaf), outer.container, style.margin.resolved(outer.attributes.fontProperties));
    }

    void enter(const BlockNode::Table &table, const Frame &outer)
    {
        const auto content =
            std::make_shared<TableContent>(m_environment, outer.attributes, table.columnAlignments, table.rows);
        const BlockMargin margin = m_theme.table.margin.resolved(outer.attributes.fontProperties);
        for (qsizetype row = 0; row < table.rows.size(); ++row) {
            addLeaf(TableRowLeaf{content, row}, outer.container, margin);
            if (row + 1 < table.rows.size())
                m_pending = {false, {std::nullopt, 0.0}, BlockSpacing::Loose, 0.0}; // rows touch each other
        }
    }

    void enter(const BlockNode::ThematicBreak &, const Frame &outer)
    {
        const std::optional<FontProperties> &font = outer.attributes.fontProperties;
        addLeaf(RuleLeaf{std::max(1, roundedPoints(m_theme.thematicBreak.height.points(font)))}, outer.container,
                m_theme.thematicBreak.margin.resolved(font));
    }

    void addText(TextLeaf leaf, const MarkdownUIAttributes &attributes, const Frame &outer)
    {
        leaf.attributes = attributes;
        leaf.lineSpacing = roundedPoints(m_theme.paragraph.lineSpacing.points(attributes.fontProperties));
        addParts(std::move(leaf), outer.container, m_theme.paragraph.margin.resolved(attributes.fontProperties));
    }

    /// Adds a text, a long one in parts.
    void addParts(TextLeaf leaf, int container, const BlockMargin &margin)
    {
        if (approximateLength(leaf.inlines) <= kLongestText && leaf.text.text().size() <= kLongestText) {
            addLeaf(std::move(leaf), container, margin);
            return;
        }
        const AttributedString whole =
            leaf.isHtml ? leaf.text
                        : renderAttributedString(leaf.inlines, m_environment.baseURL, m_theme.inlineTextStyles(),
                                                 m_environment.softBreakMode, leaf.attributes);
        leaf.inlines.clear();
        const std::optional<HeadingDivider> divider = std::exchange(leaf.divider, std::nullopt);
        qsizetype run = 0;
        qsizetype budget = kMostStyles;
        for (qsizetype start = 0; start < whole.text().size();) {
            const qsizetype end = partEnd(whole.text(), start);
            leaf.text = part(whole, start, end, run, budget);
            leaf.continuesAbove = start > 0;
            if (end == whole.text().size())
                leaf.divider = divider;
            if (start > 0)
                m_pending = {false, {std::nullopt, 0.0}, BlockSpacing::Loose, static_cast<double>(leaf.lineSpacing)};
            addLeaf(leaf, container, margin);
            start = end;
        }
    }

    const DisplayEnvironment &m_environment;
    const Theme &m_theme;
    BlockOutline m_outline;
    std::vector<Frame> m_stack;
    Pending m_pending;
};

} // namespace

bool operator==(const TableRowLeaf &left, const TableRowLeaf &right)
{
    return left.row == right.row && left.table->looksLike(*right.table) &&
           left.table->rows().at(left.row) == right.table->rows().at(right.row);
}

BlockOutline outlineOf(const BlockNode &block, const DisplayEnvironment &environment)
{
    return OutlineMaker(environment).make(block);
}

} // namespace MarkdownUI
