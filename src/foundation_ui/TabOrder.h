#pragma once

class QWidget;

namespace Tessaline {

/// Puts `widget` right behind `before` in the order in which Tab walks through their window. Either may take no focus
/// at the moment, or never, and then only marks a place: QWidget::setTabOrder does nothing for such widgets.
void placeInTabOrder(QWidget *before, QWidget *widget);

} // namespace Tessaline
