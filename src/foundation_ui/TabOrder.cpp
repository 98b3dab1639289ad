#include "foundation_ui/TabOrder.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

void placeInTabOrder(QWidget *before, QWidget *widget)
{
    const Qt::FocusPolicy beforePolicy = before->focusPolicy();
    const Qt::FocusPolicy policy = widget->focusPolicy();
    before->setFocusPolicy(Qt::TabFocus);
    widget->setFocusPolicy(Qt::TabFocus);
    QWidget::setTabOrder(before, widget);
    before->setFocusPolicy(beforePolicy);
    widget->setFocusPolicy(policy);
}

} // namespace Tessaline
