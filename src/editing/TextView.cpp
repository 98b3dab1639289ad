#include "editing/TextView.h"

#include "editing/TextViewAccessible.h"
#include "editing/TextViewDelegate.h"
#include "editing/TextViewInputMethod.h"
#include "editing/TextViewKeys.h"
#include "editing/TextViewMouse.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QPaintEvent>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

constexpr int kInset = 28;      // around the text, unless the editor sets another
constexpr int kCaretWidth = 2;  // drawn over the left edge of its character
constexpr int kLineEndMark = 6; // how far a selected line end shows

} // namespace

TextView::TextView(EditableText &text, const TextLook &look, TextViewDelegate &delegate, const Theme &theme,
                   QWidget *parent)
    : QAbstractScrollArea(parent), m_text(text), m_delegate(delegate), m_theme(theme), m_layout(text.text(), look),
      m_mouse(std::make_unique<TextViewMouse>(*this)), m_keys(std::make_unique<TextViewKeys>(*this)),
      m_inputMethod(std::make_unique<TextViewInputMethod>(*this)), m_inset(kInset, kInset), m_top{0, -kInset}
{
    TextViewAccessible::install();
    new TextViewAnnouncer(*this); // belongs to the view
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAcceptDrops(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // every pixel is painted here, so Qt need not clear
    viewport()->setCursor(Qt::IBeamCursor);

    connect(&m_text, &EditableText::changed, this, &TextView::followChange);
    connect(&m_text, &EditableText::wasReset, this, &TextView::followReset);
    connect(&m_text, &EditableText::selectionChanged, this, &TextView::followSelection);
    connect(&m_theme, &Theme::changed, viewport(), qOverload<>(&QWidget::update));
    connect(&m_blinker, &CaretBlinker::visibilityChanged, this, &TextView::updateCaret);
}

TextView::~TextView() = default;

void TextView::lookChanged()
{
    m_layout.lookChanged();
    m_top.offset = std::min(m_top.offset, 0); // at the very top the inset stays in view
    syncScrollBar();
    viewport()->update();
}

void TextView::setTextInset(QSizeF inset)
{
    if (inset == m_inset)
        return;
    const bool wasAtTop = m_top.offset < 0;
    m_inset = inset;
    if (wasAtTop)
        m_top.offset = -topInset();
    m_layout.setWidth(static_cast<int>(viewport()->width() - 2 * m_inset.width()));
    syncScrollBar();
    viewport()->update();
}

int TextView::topInset() const
{
    return static_cast<int>(m_inset.height());
}

void TextView::setHighlights(const QList<TextRange> &ranges)
{
    if (ranges == m_highlights)
        return;
    m_highlights = ranges;
    viewport()->update();
}

// What is in view

int TextView::textTop()
{
    return m_layout.placeAt(m_top.block).top + m_top.offset;
}

int TextView::lowestTextTop()
{
    // The blocks of the last screen are laid out first, so that the end is where it is said to be.
    TextLayout::Block block = m_layout.blockAt(m_text.text().size());
    for (int covered = block.place.height; covered < viewport()->height();) {
        const std::optional<TextLayout::Block> before = m_layout.blockBefore(block);
        if (!before)
            break;
        block = *before;
        covered += block.place.height;
    }
    m_lastScreen = block.place.range.location;
    return std::max(-topInset(), m_layout.height() + topInset() - viewport()->height());
}

void TextView::showFrom(const TextLayout::Block &block, int offset)
{
    m_top.block = block.place.range.location;
    m_top.offset = offset;
}

void TextView::setTextTop(int top)
{
    top = std::clamp(top, -topInset(), lowestTextTop());
    const TextLayout::Block block = m_layout.blockAtY(top);
    showFrom(block, top - m_layout.placeAt(block.place.range.location).top);
}

void TextView::scrollBy(int pixels)
{
    const Top before = m_top;
    moveBy(pixels);
    followTop(before);
}

/// Steps from block to block, laying each out, so that what is in view moves by exactly these pixels.
void TextView::moveBy(int pixels)
{
    TextLayout::Block block = m_layout.blockAt(m_top.block);
    int offset = m_top.offset + pixels;
    while (offset < 0) {
        const std::optional<TextLayout::Block> before = m_layout.blockBefore(block);
        if (!before)
            break;
        block = *before;
        offset += block.place.height;
    }
    while (offset >= block.place.height) {
        const std::optional<TextLayout::Block> after = m_layout.blockAfter(block);
        if (!after)
            break;
        offset -= block.place.height;
        block = *after;
    }
    showFrom(block, std::max(offset, block.place.range.location == 0 ? -topInset() : 0));
    if (const int lowest = lowestTextTop(); textTop() > lowest)
        setTextTop(lowest);
}

void TextView::followTop(const Top &before)
{
    syncScrollBar();
    if (m_top == before)
        return;
    viewport()->update();
    Q_EMIT scrolled();
}

void TextView::syncScrollBar()
{
    const int lowest = lowestTextTop();
    if (textTop() > lowest)
        setTextTop(lowest);
    m_isSyncing = true;
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(m_layout.rowHeight());
    verticalScrollBar()->setRange(0, lowest + topInset());
    verticalScrollBar()->setValue(textTop() + topInset());
    m_isSyncing = false;
}

void TextView::scrollContentsBy(int, int)
{
    if (m_isSyncing)
        return;
    const Top before = m_top;
    const int target = verticalScrollBar()->value() - topInset();
    const int distance = target - textTop();
    // Short ways go step by step and keep the picture steady; long ones go by the guessed heights.
    if (std::abs(distance) <= 2 * viewport()->height())
        moveBy(distance);
    else
        setTextTop(target);
    followTop(before);
}

void TextView::resizeEvent(QResizeEvent *)
{
    const int offset = std::min(m_top.offset, 0);
    const int width = m_layout.width();
    m_layout.setWidth(static_cast<int>(viewport()->width() - 2 * m_inset.width()));
    if (m_layout.width() != width)
        m_top.offset = offset; // the rows are others now; the block at the top stays
    syncScrollBar();
}

void TextView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        // Touch pads and fine wheels send a step in pieces.
        m_zoomAngle += event->angleDelta().y();
        for (; m_zoomAngle >= QWheelEvent::DefaultDeltasPerStep; m_zoomAngle -= QWheelEvent::DefaultDeltasPerStep)
            Q_EMIT zoomRequested(1);
        for (; m_zoomAngle <= -QWheelEvent::DefaultDeltasPerStep; m_zoomAngle += QWheelEvent::DefaultDeltasPerStep)
            Q_EMIT zoomRequested(-1);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

qsizetype TextView::positionAt(QPoint viewportPoint)
{
    return m_layout.positionAt(QPointF(viewportPoint.x() - m_inset.width(), viewportPoint.y() + textTop()));
}

QRect TextView::caretRectInViewport(qsizetype position)
{
    const QRectF caret = m_layout.caretRect(position).translated(m_inset.width(), -textTop());
    return {static_cast<int>(std::floor(caret.x())), static_cast<int>(caret.y()), kCaretWidth,
            static_cast<int>(std::ceil(caret.height()))};
}

QRectF TextView::rangeRect(const TextRange &range)
{
    const QRectF rect = m_layout.boundingRect(range).translated(m_inset.width(), -textTop());
    return rect.translated(viewport()->pos());
}

void TextView::ensureVisible(const TextRange &range)
{
    const Top before = m_top;
    // Far away: jump first, so that the blocks between are not laid out one by one.
    const int guess = m_layout.placeAt(range.location).top;
    if (std::abs(guess - textTop()) > 3 * viewport()->height())
        setTextTop(guess - viewport()->height() / 2);
    // Blocks that are laid out on the way turn out higher or lower than was guessed: then look again.
    constexpr int kMostLooks = 4;
    for (int i = 0; i < kMostLooks; ++i) {
        const int distance = distanceTo(range);
        if (distance == 0)
            break;
        moveBy(distance);
    }
    followTop(before);
}

/// By how much to scroll to show a range.
int TextView::distanceTo(const TextRange &range)
{
    const int height = viewport()->height();
    const int margin = std::min(m_layout.rowHeight(), height / 4);
    const QRectF start = m_layout.caretRect(range.location);
    const QRectF end = m_layout.caretRect(range.end());
    const int top = textTop();
    const int highest = static_cast<int>(std::floor(start.top())) - margin - top;
    const int lowest = static_cast<int>(std::ceil(end.bottom())) + margin - top - height;
    if (end.bottom() - start.top() > height)
        return lowest;
    return lowest > 0 ? std::min(lowest, highest) : std::min(highest, 0);
}

void TextView::ensureCaretVisible()
{
    ensureVisible({m_text.selection().caret, 0});
}

// Following the text

void TextView::followChange(const TextChange &change)
{
    // The block at the top stays where it is when the edit is above it.
    if (change.location + change.removed <= m_top.block && change.location < m_top.block)
        m_top.block += change.inserted - change.removed;
    const int oldHeight = m_layout.height();
    const TextLayout::Damage damage = m_layout.apply(change);
    m_top.block = std::min(m_top.block, m_text.text().size());
    const LayoutBlock topBlock = m_layout.placeAt(m_top.block);
    if (topBlock.range.location != m_top.block) // it was joined to the one before
        m_top.offset += static_cast<int>(m_layout.caretRect(m_top.block).top()) - topBlock.top;
    m_top.block = topBlock.range.location;
    m_top.offset = std::clamp(m_top.offset, m_top.block == 0 ? -topInset() : 0,
                              std::max(m_layout.placeAt(m_top.block).height - 1, 0));
    moveHighlights(change);
    if (m_layout.height() != oldHeight) {
        const Top before = m_top;
        followTop(before); // the text may end above what was in view
    }

    const int top = damage.top - textTop();
    const int bottom = damage.movesRest ? viewport()->height() : damage.bottom - textTop();
    viewport()->update(0, top, viewport()->width(), bottom - top);
}

/// Marks stay with their text until whoever set them has searched again; those in the changed text go.
void TextView::moveHighlights(const TextChange &change)
{
    if (m_highlights.isEmpty())
        return;
    const qsizetype oldEnd = change.location + change.removed;
    m_highlights.removeIf(
        [&](const TextRange &range) { return range.location < oldEnd && range.end() > change.location; });
    for (TextRange &range : m_highlights)
        if (range.location >= oldEnd)
            range.location += change.inserted - change.removed;
}

void TextView::followReset()
{
    m_layout.reset();
    const LayoutBlock block = m_layout.placeAt(std::min(m_top.block, m_text.text().size()));
    m_top.block = block.range.location;
    m_top.offset = m_top.block == 0 ? -topInset() : 0;
    m_highlights.clear();
    m_shownSelection = m_text.selection().range();
    m_shownCaret = m_text.selection().caret;
    syncScrollBar();
    viewport()->update();
    updateMicroFocus();
}

void TextView::followSelection()
{
    const TextRange selection = m_text.selection().range();
    const qsizetype caret = m_text.selection().caret;
    if (selection != m_shownSelection && !(selection.isEmpty() && m_shownSelection.isEmpty())) {
        viewport()->update(); // selections are rare beside typing: no need to find the rows that differ
    } else {
        if (m_shownCaret <= m_text.text().size())
            viewport()->update(caretRectInViewport(m_shownCaret));
        viewport()->update(caretRectInViewport(caret));
    }
    m_shownSelection = selection;
    m_shownCaret = caret;
    if (hasFocus())
        m_blinker.restart();
    updateMicroFocus();
}

void TextView::updateCaret()
{
    viewport()->update(caretRectInViewport(m_text.selection().caret));
}

void TextView::setDropCaret(qsizetype position)
{
    m_dropCaret = position;
    viewport()->update();
}

// Painting

QList<QTextLayout::FormatRange> TextView::decorations(const TextLayout::Block &block) const
{
    QList<QTextLayout::FormatRange> decorations;
    const TextRange shown = block.place.range;
    const auto add = [&](const TextRange &range, const QColor &background) {
        const qsizetype start = std::max(range.location, shown.location);
        const qsizetype end = std::min(range.end(), block.contentEnd());
        if (start >= end)
            return;
        QTextLayout::FormatRange decoration;
        decoration.start = block.offsetOf(start);
        decoration.length = block.offsetOf(end) - decoration.start;
        decoration.format.setBackground(background);
        decorations.append(decoration);
    };
    QColor highlight = m_theme.color(ColorRole::Accent);
    highlight.setAlphaF(0.22f);
    const auto first = std::partition_point(m_highlights.begin(), m_highlights.end(),
                                            [&shown](const TextRange &range) { return range.end() <= shown.location; });
    for (auto range = first; range != m_highlights.end() && range->location < shown.end(); ++range)
        add(*range, highlight);
    add(m_text.selection().range(), m_theme.color(ColorRole::TextSelection));
    return decorations;
}

void TextView::paintBlock(QPainter &painter, const TextLayout::Block &block, int top, const QRect &clip)
{
    const TextRange selection = m_text.selection().range();
    if (block.place.endsParagraph && selection.location <= block.contentEnd() && selection.end() > block.contentEnd()) {
        const QTextLine row = block.layout->lineAt(block.layout->lineCount() - 1);
        const bool isRightToLeft = block.layout->text().isRightToLeft();
        const qreal x =
            isRightToLeft ? m_layout.width() - row.naturalTextWidth() - kLineEndMark : row.naturalTextWidth();
        painter.fillRect(QRectF(m_inset.width() + x, top + row.y(), kLineEndMark, std::ceil(row.height())),
                         m_theme.color(ColorRole::TextSelection));
    }
    block.layout->draw(&painter, QPointF(m_inset.width(), top), decorations(block), clip);
}

void TextView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    const QRect clip = event->rect();
    painter.fillRect(clip, m_theme.color(ColorRole::EditorBackground));
    painter.setPen(m_theme.color(ColorRole::Text));

    const int oldHeight = m_layout.height();
    int top = -m_top.offset;
    std::optional<TextLayout::Block> block = m_layout.blockAt(m_top.block);
    TextRange inView = block->place.range;
    while (block && top < viewport()->height()) {
        if (top <= clip.bottom() && top + block->place.height >= clip.top())
            paintBlock(painter, *block, top, clip);
        top += block->place.height;
        inView.length = block->place.range.end() - inView.location;
        block = top < viewport()->height() ? m_layout.blockAfter(*block) : std::nullopt;
    }
    m_layout.keepOnly(inView, {m_lastScreen, m_text.text().size()});

    const qsizetype caret = m_dropCaret >= 0 ? m_dropCaret : m_text.selection().caret;
    if (m_dropCaret >= 0 || m_blinker.isVisible()) {
        const QRect rect = caretRectInViewport(caret);
        if (rect.intersects(clip))
            painter.fillRect(rect, m_theme.color(ColorRole::Accent));
    }
    if (m_layout.height() != oldHeight)
        QMetaObject::invokeMethod(this, &TextView::syncScrollBar, Qt::QueuedConnection);
}

// Keys

bool TextView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && TextViewKeys::isOurs(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

void TextView::keyPressEvent(QKeyEvent *event)
{
    if (m_keys->handle(event))
        event->accept();
    else
        QAbstractScrollArea::keyPressEvent(event);
}

// Commands

void TextView::undo()
{
    m_text.undo();
    ensureCaretVisible();
}

void TextView::redo()
{
    m_text.redo();
    ensureCaretVisible();
}

void TextView::copy()
{
    if (!m_text.selection().isEmpty())
        QGuiApplication::clipboard()->setMimeData(m_delegate.makeTransfer(m_text.selection().range()).release());
}

void TextView::cut()
{
    copy();
    deleteSelection();
}

void TextView::deleteSelection()
{
    if (m_text.selection().isEmpty())
        return;
    m_text.replace(m_text.selection().range(), {}, EditKind::Other);
    ensureCaretVisible();
}

void TextView::paste()
{
    const QMimeData *const transfer = QGuiApplication::clipboard()->mimeData();
    if (transfer && m_delegate.insertTransfer(*transfer, m_text.selection().range()))
        ensureCaretVisible();
}

void TextView::selectAll()
{
    m_text.selectAll();
}

std::unique_ptr<QMenu> TextView::makeContextMenu()
{
    auto menu = std::make_unique<QMenu>(this);
    const auto add = [&](const QString &title, QKeySequence::StandardKey key, bool isEnabled, auto slot) {
        QAction *const action = menu->addAction(title, this, slot);
        action->setShortcut(key);
        action->setEnabled(isEnabled);
    };
    const bool hasSelection = !m_text.selection().isEmpty();
    const QMimeData *const transfer = QGuiApplication::clipboard()->mimeData();
    add(tr("Undo"), QKeySequence::Undo, m_text.canUndo(), &TextView::undo);
    add(tr("Redo"), QKeySequence::Redo, m_text.canRedo(), &TextView::redo);
    menu->addSeparator();
    add(tr("Cut"), QKeySequence::Cut, hasSelection, &TextView::cut);
    add(tr("Copy"), QKeySequence::Copy, hasSelection, &TextView::copy);
    add(tr("Paste"), QKeySequence::Paste, transfer && m_delegate.canInsert(*transfer), &TextView::paste);
    add(tr("Delete"), QKeySequence::UnknownKey, hasSelection, &TextView::deleteSelection);
    menu->addSeparator();
    add(tr("Select All"), QKeySequence::SelectAll, !m_text.text().isEmpty(), &TextView::selectAll);
    return menu;
}

// Input methods

void TextView::inputMethodEvent(QInputMethodEvent *event)
{
    m_inputMethod->handle(event);
    viewport()->update();
    ensureCaretVisible();
    updateMicroFocus();
    event->accept();
}

QVariant TextView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    const QVariant answer = m_inputMethod->answer(query);
    return answer.isValid() ? answer : QAbstractScrollArea::inputMethodQuery(query);
}

// Focus and mouse

void TextView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    m_blinker.restart();
}

void TextView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    m_blinker.stop();
}

void TextView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange)
        viewport()->update();
}

/// Tab is a character of the text; the way out by keyboard is Shift+Tab.
bool TextView::focusNextPrevChild(bool next)
{
    return !next && QAbstractScrollArea::focusNextPrevChild(next);
}

bool TextView::viewportEvent(QEvent *event)
{
    return m_mouse->handle(event) || QAbstractScrollArea::viewportEvent(event);
}

} // namespace Tessaline
