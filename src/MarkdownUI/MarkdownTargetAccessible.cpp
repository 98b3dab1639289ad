#include "MarkdownUI/MarkdownTargetAccessible.h"

#include "MarkdownUI/MarkdownView.h"

namespace MarkdownUI {

bool MarkdownTargetAccessible::isValid() const
{
    const MarkdownDisplay &display = m_view.display();
    return m_place.leaf < display.leafCount() && m_place.index < display.targetCount(m_place.leaf);
}

QAccessibleInterface *MarkdownTargetAccessible::parent() const
{
    return QAccessible::queryAccessibleInterface(&m_view);
}

QString MarkdownTargetAccessible::text(QAccessible::Text kind) const
{
    const BlockTarget target = m_view.display().target(m_place);
    switch (kind) {
    case QAccessible::Name:
        return target.name;
    case QAccessible::Value:
    case QAccessible::Description:
        return target.kind == BlockTarget::Kind::Link ? target.url.toString() : QString();
    default:
        return {};
    }
}

QRect MarkdownTargetAccessible::rect() const
{
    QRectF bounds;
    for (const QRectF &rect : m_view.display().target(m_place).rects)
        bounds = bounds.united(rect);
    bounds.moveTopLeft(m_view.toViewport(bounds.topLeft()));
    const QRect inView = bounds.toAlignedRect();
    return {m_view.viewport()->mapToGlobal(inView.topLeft()), inView.size()};
}

QAccessible::Role MarkdownTargetAccessible::role() const
{
    return m_view.display().target(m_place).kind == BlockTarget::Kind::Link ? QAccessible::Link : QAccessible::Button;
}

QAccessible::State MarkdownTargetAccessible::state() const
{
    QAccessible::State state;
    state.focusable = true;
    state.focused = m_view.hasFocus() && m_view.interaction().focused() == m_place;
    state.linked = role() == QAccessible::Link;
    state.offscreen =
        !m_view.viewport()->rect().intersects(QRect(m_view.viewport()->mapFromGlobal(rect().topLeft()), rect().size()));
    return state;
}

void *MarkdownTargetAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
}

void MarkdownTargetAccessible::doAction(const QString &name)
{
    if (name == pressAction() && isValid())
        m_view.interaction().activate(m_place);
}

} // namespace MarkdownUI
