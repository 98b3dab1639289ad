#include "MarkdownUI/MarkdownInteraction.h"

#include "MarkdownUI/SelectionText.h"

#include <QtCore/QTextBoundaryFinder>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>

#include <algorithm>
#include <utility>

namespace MarkdownUI {

MarkdownInteraction::MarkdownInteraction(MarkdownDisplay &display, QObject *parent)
    : QObject(parent), m_display(display)
{
    connect(&m_display, &MarkdownDisplay::changed, this, &MarkdownInteraction::followDisplay);
}

DisplayPaint MarkdownInteraction::paint() const
{
    DisplayPaint paint;
    paint.selection = selection();
    paint.hovered = m_hovered;
    paint.focused = m_focused;
    paint.finished = m_finished;
    paint.hoveredLeaf = m_hoveredLeaf;
    return paint;
}

/// The text may have become shorter, and a link may be gone.
void MarkdownInteraction::followDisplay()
{
    const auto exists = [this](const TargetPlace &place) {
        return place.leaf < m_display.leafCount() &&
               (place.leaf < 0 || place.index < m_display.targetCount(place.leaf));
    };
    for (TargetPlace *const place : {&m_pressed, &m_hovered, &m_focused, &m_finished})
        if (!exists(*place))
            *place = {};
    if (hasSelection()) {
        m_anchor = m_display.clamped(m_anchor);
        m_caret = m_display.clamped(m_caret);
        m_origin = {m_display.clamped(m_origin.start), m_display.clamped(m_origin.end)};
    } else if (m_caret.leaf >= m_display.leafCount()) {
        m_anchor = m_caret = {};
    }
    m_hoveredLeaf = std::min(m_hoveredLeaf, m_display.leafCount() - 1);
}

// Selection

DisplayRange MarkdownInteraction::selection() const
{
    return {std::min(m_anchor, m_caret), std::max(m_anchor, m_caret)};
}

void MarkdownInteraction::select(DisplayPosition anchor, DisplayPosition caret)
{
    if (anchor == m_anchor && caret == m_caret)
        return;
    m_anchor = anchor;
    m_caret = caret;
    Q_EMIT changed();
    Q_EMIT selectionChanged();
}

void MarkdownInteraction::selectAll()
{
    select({}, m_display.endPosition());
}

void MarkdownInteraction::clearSelection()
{
    select(m_caret, m_caret);
}

void MarkdownInteraction::copy() const
{
    if (hasSelection())
        QGuiApplication::clipboard()->setMimeData(makeTransfer(m_display, selection()).release());
}

/// What a click selects: nothing, a word, or a whole block.
DisplayRange MarkdownInteraction::unitAt(DisplayPosition position) const
{
    if (m_click == Click::Single || position.leaf >= m_display.leafCount())
        return {position, position};
    const QString text = m_display.leafText(position.leaf);
    if (m_click == Click::Triple)
        return {{position.leaf, 0}, {position.leaf, text.size()}};
    QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
    words.setPosition(position.offset);
    qsizetype start = position.offset;
    if (!words.isAtBoundary() || start == text.size())
        start = std::max<qsizetype>(words.toPreviousBoundary(), 0);
    words.setPosition(start);
    const qsizetype end = words.toNextBoundary();
    return {{position.leaf, start}, {position.leaf, end < 0 ? text.size() : end}};
}

// Mouse

void MarkdownInteraction::press(QPointF point, Click click, Qt::KeyboardModifiers modifiers)
{
    m_pressed = m_display.targetAt(point);
    if (m_pressed.isValid() && m_display.target(m_pressed).kind == BlockTarget::Kind::CopyCode)
        return;
    m_click = click;
    m_isSelecting = true;
    m_wantedX = -1;
    const DisplayPosition position = m_display.positionAt(point);
    if ((modifiers & Qt::ShiftModifier) && click == Click::Single) {
        m_origin = {m_anchor, m_anchor};
        extendTo(position);
        return;
    }
    m_origin = unitAt(position);
    select(m_origin.start, m_origin.end);
}

void MarkdownInteraction::extendTo(DisplayPosition caret)
{
    const DisplayRange unit = unitAt(caret);
    // What the press selected stays selected in whichever direction the selection grows.
    if (unit.start < m_origin.start)
        select(m_origin.end, unit.start);
    else
        select(m_origin.start, std::max(unit.end, m_origin.end));
}

void MarkdownInteraction::drag(QPointF point)
{
    if (m_isSelecting)
        extendTo(m_display.positionAt(point));
}

void MarkdownInteraction::release(QPointF point)
{
    const bool wasSelecting = std::exchange(m_isSelecting, false);
    const TargetPlace pressed = std::exchange(m_pressed, {});
    if (pressed.isValid() && pressed == m_display.targetAt(point) && !hasSelection()) {
        activate(pressed);
        return;
    }
    QClipboard *const clipboard = QGuiApplication::clipboard();
    if (wasSelecting && hasSelection() && clipboard->supportsSelection())
        clipboard->setMimeData(makeTransfer(m_display, selection()).release(), QClipboard::Selection);
}

void MarkdownInteraction::hover(QPointF point)
{
    const TargetPlace target = m_display.targetAt(point);
    qsizetype leaf = m_display.leafAtY(point.y());
    if (leaf >= 0 && !m_display.leafRect(leaf).contains(point))
        leaf = -1;
    m_isOverText = m_display.isOverText(point);
    if (target == m_hovered && leaf == m_hoveredLeaf)
        return;
    if (leaf != m_hoveredLeaf)
        m_finished = {};
    m_hovered = target;
    m_hoveredLeaf = leaf;
    Q_EMIT changed();
}

void MarkdownInteraction::leave()
{
    m_isOverText = false;
    if (m_hoveredLeaf < 0)
        return;
    m_hovered = m_finished = {};
    m_hoveredLeaf = -1;
    Q_EMIT changed();
}

Qt::CursorShape MarkdownInteraction::cursor() const
{
    if (m_hovered.isValid() && m_display.target(m_hovered).kind == BlockTarget::Kind::Link)
        return Qt::PointingHandCursor;
    return m_isOverText && !m_hovered.isValid() ? Qt::IBeamCursor : Qt::ArrowCursor;
}

// Links and buttons

void MarkdownInteraction::activate(const TargetPlace &place)
{
    const BlockTarget target = m_display.target(place);
    if (target.kind == BlockTarget::Kind::Link) {
        if (!target.url.isEmpty())
            Q_EMIT linkActivated(target.url);
        return;
    }
    QGuiApplication::clipboard()->setText(m_display.leafText(place.leaf));
    m_finished = place;
    Q_EMIT changed();
}

void MarkdownInteraction::focus(const TargetPlace &place)
{
    if (place == m_focused)
        return;
    m_focused = place;
    m_finished = {};
    Q_EMIT changed();
    if (!place.isValid())
        return;
    const auto bounds = [this, &place] {
        QRectF rect;
        for (const QRectF &part : m_display.target(place).rects)
            rect = rect.united(part);
        return rect;
    };
    if (m_display.target(place).kind == BlockTarget::Kind::Link)
        m_display.showSideways(place.leaf, bounds());
    Q_EMIT showRequested(bounds());
}

bool MarkdownInteraction::focusNext()
{
    const TargetPlace next = m_display.nextTarget(m_focused);
    focus(next);
    return next.isValid();
}

bool MarkdownInteraction::focusPrevious()
{
    const TargetPlace previous = m_display.previousTarget(m_focused);
    focus(previous);
    return previous.isValid();
}

void MarkdownInteraction::clearFocus()
{
    focus({});
}

// Keyboard

DisplayPosition MarkdownInteraction::nextCharacter(DisplayPosition from)
{
    const qsizetype next = m_display.box(from.leaf).nextCharacter(from.offset);
    if (next > from.offset)
        return {from.leaf, next};
    return from.leaf + 1 < m_display.leafCount() ? DisplayPosition{from.leaf + 1, 0} : from;
}

DisplayPosition MarkdownInteraction::previousCharacter(DisplayPosition from)
{
    const qsizetype previous = from.offset > 0 ? m_display.box(from.leaf).previousCharacter(from.offset) : from.offset;
    if (previous < from.offset)
        return {from.leaf, previous};
    return from.leaf > 0 ? DisplayPosition{from.leaf - 1, m_display.leafText(from.leaf - 1).size()} : from;
}

DisplayPosition MarkdownInteraction::moved(DisplayPosition from, Movement movement, int direction)
{
    switch (movement) {
    case Movement::Character:
        return direction > 0 ? nextCharacter(from) : previousCharacter(from);
    case Movement::Word: {
        const QString text = m_display.leafText(from.leaf);
        if (direction > 0 ? from.offset >= text.size() : from.offset <= 0)
            return direction > 0 ? nextCharacter(from) : previousCharacter(from);
        QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
        words.setPosition(from.offset);
        const auto step = [&] { return direction > 0 ? words.toNextBoundary() : words.toPreviousBoundary(); };
        const auto wanted = direction > 0 ? QTextBoundaryFinder::EndOfItem : QTextBoundaryFinder::StartOfItem;
        for (qsizetype at = step(); at >= 0; at = step())
            if (words.boundaryReasons() & wanted)
                return {from.leaf, at};
        return {from.leaf, direction > 0 ? text.size() : 0};
    }
    case Movement::Row:
        return rowBeside(from, direction);
    case Movement::RowEnd: {
        const Tessaline::TextRange row = m_display.box(from.leaf).rowAt(from.offset);
        return {from.leaf, direction > 0 ? row.end() : row.location};
    }
    case Movement::Document:
        return direction > 0 ? m_display.endPosition() : DisplayPosition();
    }
    return from;
}

/// The nearest place in the row below or above: of the same block, or over the gap in the next one.
DisplayPosition MarkdownInteraction::rowBeside(DisplayPosition from, int direction)
{
    const QRectF caret = m_display.caretRect(from);
    if (m_wantedX < 0)
        m_wantedX = caret.center().x();
    const QRectF leaf = m_display.leafRect(from.leaf);
    constexpr int kStep = 3; // points; rows stand apart, so the next one is looked for
    for (double y = direction > 0 ? caret.bottom() + 1 : caret.top() - 1; y >= leaf.top() && y < leaf.bottom();
         y += kStep * direction) {
        const DisplayPosition found = m_display.positionAt({m_wantedX, y});
        if (found.leaf == from.leaf && (m_display.caretRect(found).top() - caret.top()) * direction > 1)
            return found;
    }
    const qsizetype other = from.leaf + direction;
    if (other < 0 || other >= m_display.leafCount())
        return direction > 0 ? m_display.endPosition() : DisplayPosition();
    m_display.box(other);
    const QRectF beside = m_display.leafRect(other);
    return {other,
            m_display.box(other).positionAt({m_wantedX - beside.left(), direction > 0 ? 1 : beside.height() - 1})};
}

bool MarkdownInteraction::handleKey(const QKeyEvent &key)
{
    if (m_display.leafCount() == 0)
        return false;
    if (key.matches(QKeySequence::Copy)) {
        copy();
        return true;
    }
    if (key.matches(QKeySequence::SelectAll)) {
        selectAll();
        return true;
    }
    const bool isActivation = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter || key.key() == Qt::Key_Space;
    if (isActivation && m_focused.isValid() && key.modifiers() == Qt::NoModifier) {
        activate(m_focused);
        return true;
    }
    if (key.key() == Qt::Key_Escape && hasSelection()) {
        clearSelection();
        return true;
    }

    struct Binding {
        QKeySequence::StandardKey key;
        Movement movement;
        int direction;
    };
    static constexpr Binding kBindings[] = {
        {QKeySequence::SelectNextChar, Movement::Character, 1},
        {QKeySequence::SelectPreviousChar, Movement::Character, -1},
        {QKeySequence::SelectNextWord, Movement::Word, 1},
        {QKeySequence::SelectPreviousWord, Movement::Word, -1},
        {QKeySequence::SelectNextLine, Movement::Row, 1},
        {QKeySequence::SelectPreviousLine, Movement::Row, -1},
        {QKeySequence::SelectEndOfLine, Movement::RowEnd, 1},
        {QKeySequence::SelectStartOfLine, Movement::RowEnd, -1},
        {QKeySequence::SelectEndOfDocument, Movement::Document, 1},
        {QKeySequence::SelectStartOfDocument, Movement::Document, -1},
    };
    for (const Binding &binding : kBindings) {
        if (!key.matches(binding.key))
            continue;
        if (binding.movement != Movement::Row)
            m_wantedX = -1;
        const DisplayPosition caret =
            m_display.clamped(moved(m_display.clamped(m_caret), binding.movement, binding.direction));
        select(m_display.clamped(m_anchor), caret);
        const QRectF rect = m_display.caretRect(caret);
        m_display.showSideways(caret.leaf, rect);
        Q_EMIT showRequested(m_display.caretRect(caret));
        return true;
    }
    return false;
}

} // namespace MarkdownUI
