#include "foundation_ui/Ground.h"

#include <QtGui/QPainter>
#include <QtGui/QPaintEvent>

namespace Tessaline {

Ground::Ground(const Theme &theme, ColorRole role, QWidget *parent) : QWidget(parent), m_theme(theme), m_role(role)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Ground::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), m_theme.color(m_role));
}

} // namespace Tessaline
