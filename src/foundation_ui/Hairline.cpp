#include "foundation_ui/Hairline.h"

#include "foundation_ui/Theme.h"

#include <QtGui/QPainter>

namespace Tessaline {

Hairline::Hairline(const Theme &theme, Qt::Orientation orientation, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    if (orientation == Qt::Horizontal)
        setFixedHeight(1);
    else
        setFixedWidth(1);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Hairline::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), m_theme.color(ColorRole::Hairline));
}

} // namespace Tessaline
