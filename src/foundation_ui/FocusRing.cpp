#include "foundation_ui/FocusRing.h"

#include "foundation_ui/Theme.h"

#include <QtGui/QFocusEvent>
#include <QtGui/QPainter>

namespace Tessaline {

FocusRing::FocusRing(const Theme &theme, double radius, QWidget *parent)
    : QFocusFrame(parent), m_theme(theme), m_radius(radius)
{
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

bool FocusRing::isKeyboardFocus(const QFocusEvent &event)
{
    return event.reason() == Qt::TabFocusReason || event.reason() == Qt::BacktabFocusReason ||
           event.reason() == Qt::ShortcutFocusReason;
}

void FocusRing::drawInside(QPainter &painter, const QRectF &box, double radius, const Theme &theme)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.color(ColorRole::FocusRing), kWidth));
    const double inset = kWidth / 2;
    painter.drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    painter.restore();
}

void FocusRing::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawInside(painter, QRectF(rect()), m_radius + kWidth, m_theme);
}

} // namespace Tessaline
