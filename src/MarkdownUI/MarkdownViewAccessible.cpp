#include "MarkdownUI/MarkdownViewAccessible.h"

#include "MarkdownUI/MarkdownTargetAccessible.h"
#include "MarkdownUI/MarkdownView.h"

#include <algorithm>

namespace MarkdownUI {

namespace {

QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    auto *const view = qobject_cast<MarkdownView *>(object);
    return view ? new MarkdownViewAccessible(*view) : nullptr;
}

} // namespace

MarkdownViewAccessible::MarkdownViewAccessible(MarkdownView &view)
    : QAccessibleWidget(&view, QAccessible::Document), m_view(view)
{}

MarkdownViewAccessible::~MarkdownViewAccessible()
{
    forget();
}

void MarkdownViewAccessible::install()
{
    QAccessible::installFactory(makeInterface); // the same factory twice counts once
}

void MarkdownViewAccessible::refresh() const
{
    if (m_revision == m_view.display().revision())
        return;
    m_revision = m_view.display().revision();
    forget();
}

void MarkdownViewAccessible::forget() const
{
    m_text.reset();
    m_places.reset();
    for (const QAccessible::Id id : m_children)
        if (id != 0)
            QAccessible::deleteAccessibleInterface(id);
    m_children.clear();
}

const DisplayText &MarkdownViewAccessible::displayText() const
{
    refresh();
    if (!m_text)
        m_text.emplace(m_view.display());
    return *m_text;
}

const std::vector<TargetPlace> &MarkdownViewAccessible::places() const
{
    refresh();
    if (!m_places) {
        m_places.emplace();
        const MarkdownDisplay &display = m_view.display();
        for (TargetPlace place = display.nextTarget({}); place.isValid(); place = display.nextTarget(place))
            m_places->push_back(place);
        m_children.assign(m_places->size(), 0);
    }
    return *m_places;
}

void *MarkdownViewAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State MarkdownViewAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString MarkdownViewAccessible::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Value ? displayText().text() : QAccessibleWidget::text(kind);
}

// Children

int MarkdownViewAccessible::childCount() const
{
    return static_cast<int>(places().size());
}

QAccessibleInterface *MarkdownViewAccessible::child(int index) const
{
    if (index < 0 || index >= childCount())
        return nullptr;
    QAccessible::Id &id = m_children[static_cast<size_t>(index)];
    if (id == 0)
        id = QAccessible::registerAccessibleInterface(
            new MarkdownTargetAccessible(m_view, places()[static_cast<size_t>(index)]));
    return QAccessible::accessibleInterface(id);
}

int MarkdownViewAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    for (int i = 0; i < childCount(); ++i)
        if (m_children[static_cast<size_t>(i)] != 0 &&
            QAccessible::accessibleInterface(m_children[static_cast<size_t>(i)]) == child)
            return i;
    return -1;
}

QAccessibleInterface *MarkdownViewAccessible::childAt(int x, int y) const
{
    const QPoint point = m_view.viewport()->mapFromGlobal(QPoint(x, y));
    const TargetPlace place = m_view.display().targetAt(m_view.toDisplay(point));
    const auto found = std::find(places().begin(), places().end(), place);
    return place.isValid() && found != places().end() ? child(static_cast<int>(found - places().begin())) : nullptr;
}

QAccessibleInterface *MarkdownViewAccessible::focusChild() const
{
    const auto found = std::find(places().begin(), places().end(), m_view.interaction().focused());
    return m_view.hasFocus() && found != places().end() ? child(static_cast<int>(found - places().begin())) : nullptr;
}

// Text

void MarkdownViewAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    const DisplayRange range = selectionIndex == 0 ? m_view.interaction().selection() : DisplayRange();
    *startOffset = static_cast<int>(displayText().offsetOf(range.start));
    *endOffset = static_cast<int>(displayText().offsetOf(range.end));
}

int MarkdownViewAccessible::selectionCount() const
{
    return m_view.interaction().hasSelection() ? 1 : 0;
}

void MarkdownViewAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void MarkdownViewAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex == 0)
        m_view.interaction().clearSelection();
}

void MarkdownViewAccessible::setSelection(int selectionIndex, int startOffset, int endOffset)
{
    if (selectionIndex != 0)
        return;
    const qsizetype end = endOffset < 0 ? displayText().text().size() : endOffset; // -1 is the end of the text
    m_view.interaction().select(displayText().positionOf(startOffset), displayText().positionOf(end));
}

int MarkdownViewAccessible::cursorPosition() const
{
    return static_cast<int>(displayText().offsetOf(m_view.interaction().caret()));
}

void MarkdownViewAccessible::setCursorPosition(int position)
{
    const DisplayPosition caret = displayText().positionOf(position);
    m_view.interaction().select(caret, caret);
}

QString MarkdownViewAccessible::text(int startOffset, int endOffset) const
{
    const QString &whole = displayText().text();
    const qsizetype start = std::clamp<qsizetype>(startOffset, 0, whole.size());
    const qsizetype end = endOffset < 0 ? whole.size() : std::clamp<qsizetype>(endOffset, start, whole.size());
    return whole.sliced(start, end - start);
}

int MarkdownViewAccessible::characterCount() const
{
    return static_cast<int>(displayText().text().size());
}

QRect MarkdownViewAccessible::characterRect(int offset) const
{
    MarkdownDisplay &display = m_view.display();
    const DisplayPosition position = displayText().positionOf(offset);
    if (position.leaf >= display.leafCount())
        return {};
    const QRectF start = display.caretRect(position);
    const QRectF end = display.caretRect({position.leaf, display.box(position.leaf).nextCharacter(position.offset)});
    QRectF rect = end.top() == start.top() ? start.united(end) : start;
    rect.moveTopLeft(m_view.toViewport(rect.topLeft()));
    const QRect inView = rect.toAlignedRect();
    return {m_view.viewport()->mapToGlobal(inView.topLeft()), inView.size()};
}

int MarkdownViewAccessible::offsetAtPoint(const QPoint &point) const
{
    const QPoint inViewport = m_view.viewport()->mapFromGlobal(point);
    if (!m_view.viewport()->rect().contains(inViewport))
        return -1;
    return static_cast<int>(displayText().offsetOf(m_view.display().positionAt(m_view.toDisplay(inViewport))));
}

void MarkdownViewAccessible::scrollToSubstring(int startIndex, int)
{
    m_view.ensureVisible(m_view.display().caretRect(displayText().positionOf(startIndex)));
}

QString MarkdownViewAccessible::attributes(int, int *startOffset, int *endOffset) const
{
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

// Changes

MarkdownViewAnnouncer::MarkdownViewAnnouncer(MarkdownView &view) : QObject(&view), m_view(view)
{
    connect(&view.display(), &MarkdownDisplay::changed, this, &MarkdownViewAnnouncer::announceText);
    connect(&view.interaction(), &MarkdownInteraction::selectionChanged, this,
            &MarkdownViewAnnouncer::announceSelection);
}

void MarkdownViewAnnouncer::announceText()
{
    if (!QAccessible::isActive()) {
        m_known.clear();
        return;
    }
    const QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(&m_view);
    if (!interface)
        return;
    const QString text = interface->text(QAccessible::Value);
    if (text == m_known)
        return; // only where it stands has changed
    const auto [known, now] = std::mismatch(m_known.cbegin(), m_known.cend(), text.cbegin(), text.cend());
    const auto same = static_cast<int>(now - text.cbegin());
    QAccessibleTextUpdateEvent event(&m_view, same, m_known.sliced(same), text.sliced(same));
    m_known = text;
    QAccessible::updateAccessibility(&event);
}

void MarkdownViewAnnouncer::announceSelection()
{
    if (!QAccessible::isActive())
        return;
    QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(&m_view);
    QAccessibleTextInterface *const text = interface ? interface->textInterface() : nullptr;
    if (!text)
        return;
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    QAccessibleTextSelectionEvent event(&m_view, start, end);
    event.setCursorPosition(text->cursorPosition());
    QAccessible::updateAccessibility(&event);
}

} // namespace MarkdownUI
