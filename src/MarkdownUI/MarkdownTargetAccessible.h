#pragma once

#include "MarkdownUI/MarkdownDisplay.h"

#include <QtGui/QAccessible>

namespace MarkdownUI {

class MarkdownView;

/// A link or a button inside of a Markdown view as assistive technology sees it. Valid until the view's text changes.
class MarkdownTargetAccessible final : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    MarkdownTargetAccessible(MarkdownView &view, const TargetPlace &place) : m_view(view), m_place(place) {}

    const TargetPlace &place() const { return m_place; }

    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    // QAccessibleActionInterface
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &name) override;
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    MarkdownView &m_view;
    TargetPlace m_place;
};

} // namespace MarkdownUI
