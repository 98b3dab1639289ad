#include "foundation_ui/SymbolView.h"

#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

#include <cmath>

namespace Tessaline {

SymbolView::SymbolView(const Theme &theme, ColorRole role, double size, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_role(role), m_size(size)
{
    const int side = static_cast<int>(std::ceil(size));
    setFixedSize(side, side);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void SymbolView::setSymbol(const QString &symbol)
{
    m_symbol = symbol;
    update();
}

void SymbolView::setColorRole(ColorRole role)
{
    m_role = role;
    update();
}

void SymbolView::setSymbolSize(double size)
{
    m_size = size;
    update();
}

void SymbolView::setOpacity(double opacity)
{
    m_opacity = opacity;
    update();
}

void SymbolView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(m_opacity);
    Symbols::draw(painter, m_symbol, QRectF(rect()), m_size, m_theme.color(m_role));
}

} // namespace Tessaline
