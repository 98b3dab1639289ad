#include "foundation_ui/AccessibleRole.h"

#include <QtCore/QVariant>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QWidget>

namespace Tessaline {

namespace {

constexpr const char *kRole = "tessalineAccessibleRole"; // the property in which a widget keeps it

QAccessibleInterface *makeAccessible(const QString &, QObject *object)
{
    const QVariant role = object->property(kRole);
    return role.isValid()
               ? new QAccessibleWidget(static_cast<QWidget *>(object), static_cast<QAccessible::Role>(role.toInt()))
               : nullptr;
}

} // namespace

void setAccessibleRole(QWidget &widget, QAccessible::Role role)
{
    [[maybe_unused]] static const bool kKnown = (QAccessible::installFactory(makeAccessible), true);
    widget.setProperty(kRole, static_cast<int>(role));
}

} // namespace Tessaline
