#include "MarkdownUI/MarkdownDisplay.h"

#include "MarkdownUI/BoxMaking.h"
#include "MarkdownUI/PictureStore.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace MarkdownUI {

namespace {

constexpr int kNarrowestText = 96; // points; containers that would leave less for their content are not indented
constexpr int kLowest = std::numeric_limits<int>::max() / 2; // heights of hostile texts end here

int revisionOf(const LeafContent &content)
{
    const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&content);
    return row ? row->table->revision() : 0;
}

} // namespace

MarkdownDisplay::MarkdownDisplay(QObject *parent)
    : QObject(parent), m_pictures(std::make_unique<PictureStore>(m_environment))
{
    connect(m_pictures.get(), &PictureStore::changed, this, &MarkdownDisplay::forgetPictures);
}

MarkdownDisplay::~MarkdownDisplay() = default;

// Content

void MarkdownDisplay::setEnvironment(DisplayEnvironment environment)
{
    const bool keepsPictures =
        environment.imageLoader == m_environment.imageLoader && environment.imageBaseURL == m_environment.imageBaseURL;
    m_environment = std::move(environment);
    if (!keepsPictures)
        m_pictures->clear();
    QList<BlockNode> blocks;
    for (const Block &block : m_blocks)
        blocks.append(block.source);
    m_leaves.clear();
    m_blocks.clear();
    setBlocks(blocks, 0);
}

void MarkdownDisplay::setMarkdown(const QString &markdown)
{
    const qsizetype firstChanged = m_growing.update(markdown);
    setBlocks(m_growing.blocks(), std::min(firstChanged, static_cast<qsizetype>(m_blocks.size())));
}

void MarkdownDisplay::setContent(const MarkdownContent &content)
{
    m_growing = {};
    qsizetype same = 0;
    while (same < content.blocks.size() && same < static_cast<qsizetype>(m_blocks.size()) &&
           content.blocks.at(same) == m_blocks[static_cast<size_t>(same)].source)
        ++same;
    setBlocks(content.blocks, same);
}

void MarkdownDisplay::setBlocks(const QList<BlockNode> &blocks, qsizetype firstChanged)
{
    if (firstChanged == blocks.size() && blocks.size() == static_cast<qsizetype>(m_blocks.size()))
        return;

    // 1. What comes behind the blocks that stay is set aside.
    const auto firstBlock = m_blocks.begin() + firstChanged;
    const qsizetype oldFirst = firstBlock == m_blocks.end() ? leafCount() : firstBlock->firstLeaf;
    std::vector<Leaf> old(std::make_move_iterator(m_leaves.begin() + oldFirst),
                          std::make_move_iterator(m_leaves.end()));
    m_leaves.resize(static_cast<size_t>(oldFirst));
    m_blocks.erase(firstBlock, m_blocks.end());
    m_validTops = std::min(m_validTops, m_leaves.size());

    // 2. The new blocks take over what is the same in them.
    for (qsizetype i = firstChanged; i < blocks.size(); ++i)
        appendBlock(blocks.at(i), old, oldFirst);
    announceChange();
}

void MarkdownDisplay::appendBlock(const BlockNode &source, std::vector<Leaf> &old, qsizetype oldFirst)
{
    BlockOutline outline = outlineOf(visibleBlock(source, m_environment.scheme), m_environment);
    Block block;
    block.source = source;
    block.containers = std::move(outline.containers);
    block.margin = outline.margin;
    block.firstLeaf = leafCount();
    block.leafCount = static_cast<qsizetype>(outline.leaves.size());
    placeContainers(block);

    double above = 0;
    if (!m_blocks.empty())
        above = topPadding(m_blocks.back().margin, block.margin, BlockSpacing::Loose).value_or(kDefaultBlockPadding);
    m_blocks.push_back(std::move(block));

    for (OutlineLeaf &outlined : outline.leaves) {
        Leaf leaf;
        leaf.outline = std::move(outlined);
        leaf.block = static_cast<qsizetype>(m_blocks.size()) - 1;
        leaf.padding = leaf.outline.padding + static_cast<int>(std::lround(std::exchange(above, 0.0)));
        m_leaves.push_back(std::move(leaf));
        const size_t place = m_leaves.size() - 1 - static_cast<size_t>(oldFirst);
        if (place < old.size())
            reuse(m_leaves.back(), old[place]);
        if (!m_leaves.back().isExact)
            guess(m_leaves.back());
    }
}

/// Takes over the laid-out form of the leaf that stood in the same place, if it is still the same.
void MarkdownDisplay::reuse(Leaf &leaf, Leaf &old)
{
    leaf.sideways = old.sideways;
    const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&leaf.outline.content);
    const TableRowLeaf *const oldRow = std::get_if<TableRowLeaf>(&old.outline.content);
    const bool isSame = leaf.outline.content == old.outline.content;
    if (row && oldRow && row->row == 0)
        row->table->continueFrom(*oldRow->table);
    if (!isSame || (row && !row->table->sharesColumns(*oldRow->table)))
        return;
    leaf.targetCount = old.targetCount;
    leaf.box = std::move(old.box);
    leaf.boxWidth = old.boxWidth;
    leaf.boxRevision = old.boxRevision;
    if (old.isExact && old.boxWidth == placeOf(leaf).width) {
        leaf.height = old.height;
        leaf.isExact = true;
    }
}

void MarkdownDisplay::announceChange()
{
    ++m_revision;
    Q_EMIT changed();
}

// Places

void MarkdownDisplay::placeContainers(Block &block) const
{
    const int narrowest = std::min(kNarrowestText, m_width / 2);
    block.places.resize(block.containers.size());
    for (size_t i = 0; i < block.containers.size(); ++i) {
        const OutlineContainer &container = block.containers[i];
        Place parent{0, m_width, false, -1};
        if (container.parent >= 0)
            parent = block.places[static_cast<size_t>(container.parent)];
        Place place = parent;
        place.shownParent = parent.isShown ? container.parent : parent.shownParent;
        place.isShown = parent.width - container.leading - container.trailing >= narrowest;
        if (place.isShown) {
            place.x += container.leading;
            place.width -= container.leading + container.trailing;
        }
        block.places[i] = place;
    }
}

MarkdownDisplay::Place MarkdownDisplay::placeOf(const Leaf &leaf) const
{
    if (leaf.outline.container < 0)
        return {0, m_width, false, -1};
    return m_blocks[static_cast<size_t>(leaf.block)].places[static_cast<size_t>(leaf.outline.container)];
}

void MarkdownDisplay::guess(Leaf &leaf) const
{
    leaf.height = estimatedHeight(leaf.outline.content, m_environment, placeOf(leaf).width);
    leaf.isExact = false;
}

void MarkdownDisplay::guessAll()
{
    for (Block &block : m_blocks)
        placeContainers(block);
    for (Leaf &leaf : m_leaves)
        guess(leaf);
    m_validTops = 0;
}

void MarkdownDisplay::setWidth(int width)
{
    width = std::max(width, 1);
    if (width == m_width)
        return;
    m_width = width;
    guessAll();
    announceChange();
}

int MarkdownDisplay::topOf(qsizetype index) const
{
    const auto wanted = static_cast<size_t>(index);
    if (m_tops.size() != m_leaves.size() + 1)
        m_tops.resize(m_leaves.size() + 1);
    if (m_validTops == 0) {
        m_tops[0] = 0;
        m_validTops = 1;
    }
    for (; m_validTops <= wanted; ++m_validTops) {
        const Leaf &before = m_leaves[m_validTops - 1];
        const qsizetype top = qsizetype(m_tops[m_validTops - 1]) + before.padding + before.height;
        m_tops[m_validTops] = static_cast<int>(std::min<qsizetype>(top, kLowest));
    }
    return m_tops[wanted];
}

int MarkdownDisplay::height() const
{
    return topOf(leafCount());
}

qsizetype MarkdownDisplay::leafAtY(double y) const
{
    if (m_leaves.empty())
        return -1;
    topOf(leafCount());
    const auto after =
        std::upper_bound(m_tops.begin(), m_tops.end() - 1, y, [](double wanted, int top) { return wanted < top; });
    return std::max<qsizetype>(after - m_tops.begin() - 1, 0);
}

MarkdownDisplay::Anchor MarkdownDisplay::anchorAt(int y) const
{
    const qsizetype leaf = std::max<qsizetype>(leafAtY(y), 0);
    return {leaf, y - topOf(leaf)};
}

int MarkdownDisplay::yOf(const Anchor &anchor) const
{
    return topOf(std::clamp<qsizetype>(anchor.leaf, 0, leafCount())) + anchor.offset;
}

MarkdownDisplay::Anchor MarkdownDisplay::moved(Anchor anchor, int points)
{
    if (m_leaves.empty())
        return {0, anchor.offset + points};
    anchor.leaf = std::clamp<qsizetype>(anchor.leaf, 0, leafCount() - 1);
    anchor.offset += points;
    const auto heightOf = [this](qsizetype index) {
        layOut(index);
        return leafAt(index).padding + leafAt(index).height;
    };
    while (anchor.offset < 0 && anchor.leaf > 0)
        anchor.offset += heightOf(--anchor.leaf);
    while (anchor.leaf + 1 < leafCount() && anchor.offset >= heightOf(anchor.leaf))
        anchor.offset -= heightOf(anchor.leaf++);
    return anchor;
}

void MarkdownDisplay::prepareEnd(int height)
{
    for (qsizetype index = leafCount() - 1; index >= 0 && height > 0; --index) {
        layOut(index);
        height -= leafAt(index).padding + leafAt(index).height;
    }
}

// Layout

void MarkdownDisplay::layOut(qsizetype index)
{
    Leaf &leaf = leafAt(index);
    const int width = placeOf(leaf).width;
    if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&leaf.outline.content))
        row->table->fit(width);
    const int revision = revisionOf(leaf.outline.content);
    if (leaf.box && leaf.boxWidth == width && leaf.boxRevision == revision && leaf.isExact)
        return;
    if (!leaf.box)
        leaf.box = makeBox(leaf.outline.content, m_environment, *m_pictures, width);
    leaf.box->layOut(width);
    if (!std::holds_alternative<TableRowLeaf>(leaf.outline.content)) // a table keeps that itself
        leaf.box->setSideways(leaf.sideways);
    leaf.boxWidth = width;
    leaf.boxRevision = revision;
    leaf.isExact = true;
    if (leaf.height != leaf.box->height()) {
        leaf.height = leaf.box->height();
        m_validTops = std::min(m_validTops, static_cast<size_t>(index) + 1);
    }
}

void MarkdownDisplay::prepare(int top, int bottom)
{
    for (qsizetype index = std::max<qsizetype>(leafAtY(top), 0); index < leafCount() && topOf(index) < bottom; ++index)
        layOut(index);
}

void MarkdownDisplay::layOutAll()
{
    for (qsizetype index = 0; index < leafCount(); ++index)
        layOut(index);
}

void MarkdownDisplay::keepOnly(int top, int bottom)
{
    const qsizetype first = leafAtY(top);
    const qsizetype last = leafAtY(bottom);
    for (qsizetype index = 0; index < leafCount(); ++index)
        if (index < first || index > last)
            leafAt(index).box.reset();
}

const BlockBox &MarkdownDisplay::box(qsizetype index)
{
    layOut(index);
    return *leafAt(index).box;
}

void MarkdownDisplay::forgetPictures()
{
    for (Leaf &leaf : m_leaves) {
        if (!hasPictures(leaf.outline.content))
            continue;
        leaf.box.reset();
        leaf.isExact = false;
        leaf.targetCount = -1;
    }
    announceChange();
}

QRectF MarkdownDisplay::leafRect(qsizetype index) const
{
    const Leaf &leaf = leafAt(index);
    const Place place = placeOf(leaf);
    return QRectF(place.x, topOf(index) + leaf.padding, place.width, leaf.height);
}

std::vector<const OutlineContainer *> MarkdownDisplay::containersOf(qsizetype index) const
{
    std::vector<const OutlineContainer *> containers;
    const Block &block = m_blocks[static_cast<size_t>(leafAt(index).block)];
    for (int i = leafAt(index).outline.container; i >= 0; i = block.containers[static_cast<size_t>(i)].parent)
        containers.push_back(&block.containers[static_cast<size_t>(i)]);
    return containers;
}

std::vector<MarkdownDisplay::ShownContainer> MarkdownDisplay::shownContainersOf(qsizetype index) const
{
    std::vector<ShownContainer> shown;
    const Leaf &leaf = leafAt(index);
    if (leaf.outline.container < 0)
        return shown;
    const Block &block = m_blocks[static_cast<size_t>(leaf.block)];
    const Place innermost = placeOf(leaf);
    for (int i = innermost.isShown ? leaf.outline.container : innermost.shownParent; i >= 0;
         i = block.places[static_cast<size_t>(i)].shownParent) {
        const OutlineContainer &container = block.containers[static_cast<size_t>(i)];
        const Place &place = block.places[static_cast<size_t>(i)];
        shown.push_back({&container, place.x - container.leading, block.firstLeaf + container.firstLeaf,
                         block.firstLeaf + container.lastLeaf});
    }
    return shown;
}

bool MarkdownDisplay::isFirstOf(qsizetype index, const OutlineContainer &container) const
{
    return m_blocks[static_cast<size_t>(leafAt(index).block)].firstLeaf + container.firstLeaf == index;
}

QString MarkdownDisplay::leafText(qsizetype index) const
{
    const Leaf &leaf = leafAt(index);
    return leaf.box ? leaf.box->text() : makeBox(leaf.outline.content, m_environment, *m_pictures, m_width)->text();
}

AttributedString MarkdownDisplay::styledLeafText(qsizetype index, qsizetype cell) const
{
    const LeafContent &content = leafAt(index).outline.content;
    if (const TextLeaf *const text = std::get_if<TextLeaf>(&content))
        return renderedText(*text, m_environment, *m_pictures);
    if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&content))
        return row->table->renderedCell(row->row, cell,
                                        [this](const QString &source) { return m_pictures->image(source); });
    return {};
}

// Text

DisplayPosition MarkdownDisplay::positionAt(QPointF point)
{
    qsizetype index = leafAtY(point.y());
    if (index < 0)
        return {};
    layOut(index);
    QRectF rect = leafRect(index);
    // A gap belongs to the block that is nearer.
    if (point.y() < rect.top() && index > 0 && rect.top() - point.y() > leafAt(index).padding / 2.0) {
        layOut(--index);
        rect = leafRect(index);
    }
    return {index, box(index).positionAt(point - rect.topLeft())};
}

bool MarkdownDisplay::isOverText(QPointF point)
{
    const qsizetype index = leafAtY(point.y());
    return index >= 0 && box(index).isOverText(point - leafRect(index).topLeft());
}

QRectF MarkdownDisplay::caretRect(DisplayPosition position)
{
    if (m_leaves.empty())
        return {};
    position = clamped(position);
    const QRectF rect = box(position.leaf).caretRect(position.offset);
    return rect.translated(leafRect(position.leaf).topLeft());
}

DisplayPosition MarkdownDisplay::endPosition() const
{
    if (m_leaves.empty())
        return {};
    return {leafCount() - 1, leafText(leafCount() - 1).size()};
}

DisplayPosition MarkdownDisplay::clamped(DisplayPosition position) const
{
    if (m_leaves.empty() || position.leaf < 0)
        return {};
    if (position.leaf >= leafCount())
        return endPosition();
    return {position.leaf, std::clamp<qsizetype>(position.offset, 0, leafText(position.leaf).size())};
}

// Links and buttons

int MarkdownDisplay::targetCount(qsizetype index) const
{
    const Leaf &leaf = leafAt(index);
    if (leaf.targetCount < 0) {
        leaf.targetCount = 0;
        if (mayHaveTargets(leaf.outline.content)) {
            const auto box = makeBox(leaf.outline.content, m_environment, *m_pictures, m_width);
            box->layOut(m_width);
            leaf.targetCount = static_cast<int>(box->targets().size());
        }
    }
    return leaf.targetCount;
}

TargetPlace MarkdownDisplay::targetAt(QPointF point)
{
    const qsizetype index = leafAtY(point.y());
    if (index < 0 || targetCount(index) == 0)
        return {};
    const QList<BlockTarget> targets = box(index).targets();
    const QRectF leaf = leafRect(index);
    if (!leaf.contains(point))
        return {};
    for (qsizetype i = 0; i < targets.size(); ++i)
        for (const QRectF &rect : targets.at(i).rects)
            if (rect.contains(point - leaf.topLeft()))
                return {index, static_cast<int>(i)};
    return {};
}

BlockTarget MarkdownDisplay::target(const TargetPlace &place)
{
    if (place.leaf < 0 || place.leaf >= leafCount())
        return {};
    BlockTarget target = box(place.leaf).targets().value(place.index);
    const QPointF corner = leafRect(place.leaf).topLeft();
    for (QRectF &rect : target.rects)
        rect.translate(corner);
    return target;
}

TargetPlace MarkdownDisplay::nextTarget(const TargetPlace &place) const
{
    if (place.isValid() && place.leaf < leafCount() && place.index + 1 < targetCount(place.leaf))
        return {place.leaf, place.index + 1};
    for (qsizetype index = place.leaf + 1; index < leafCount(); ++index)
        if (targetCount(index) > 0)
            return {index, 0};
    return {};
}

TargetPlace MarkdownDisplay::previousTarget(const TargetPlace &place) const
{
    if (place.isValid() && place.index > 0)
        return {place.leaf, place.index - 1};
    for (qsizetype index = (place.isValid() ? std::min(place.leaf, leafCount()) : leafCount()) - 1; index >= 0; --index)
        if (targetCount(index) > 0)
            return {index, targetCount(index) - 1};
    return {};
}

// Sideways

bool MarkdownDisplay::scrollSideways(QPointF point, double points)
{
    const qsizetype index = leafAtY(point.y());
    if (index < 0)
        return false;
    layOut(index);
    Leaf &leaf = leafAt(index);
    const double before = leaf.box->sideways();
    leaf.box->setSideways(before + points);
    leaf.sideways = leaf.box->sideways();
    return leaf.sideways != before;
}

void MarkdownDisplay::showSideways(qsizetype index, const QRectF &rect)
{
    layOut(index);
    Leaf &leaf = leafAt(index);
    if (leaf.box->sidewaysRange() <= 0)
        return;
    const QRectF seen = leafRect(index);
    constexpr double kMargin = 16; // that is seen beside
    double distance = 0;
    if (rect.right() + kMargin > seen.right())
        distance = rect.right() + kMargin - seen.right();
    else if (rect.left() - kMargin < seen.left())
        distance = rect.left() - kMargin - seen.left();
    leaf.box->setSideways(leaf.box->sideways() + distance);
    leaf.sideways = leaf.box->sideways();
}

} // namespace MarkdownUI
