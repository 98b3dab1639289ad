#pragma once

#include <QtGui/QAccessible>

class QWidget;

namespace Tessaline {

/// What a widget is to assistive technology when its class says nothing: a plain widget would be a filler between
/// others. Its name, description, children and place are the widget's own. For widgets without a text, value or press
/// of their own, since those are not passed on; to be called when the widget is made, before anybody has asked for it.
void setAccessibleRole(QWidget &widget, QAccessible::Role role);

} // namespace Tessaline
