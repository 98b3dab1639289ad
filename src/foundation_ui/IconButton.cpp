#include "foundation_ui/IconButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

constexpr double kDisabledOpacity = 0.4; // Source: chosen here; fainter than any text, still to be seen.

} // namespace

IconButton::IconButton(const Theme &theme, const QString &symbol, const QString &help, QWidget *parent)
    : PlainButton(theme, parent), m_symbol(symbol)
{
    Q_ASSERT(Symbols::exists(symbol));
    setHelp(help);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconButton::setSymbol(const QString &symbol)
{
    Q_ASSERT(Symbols::exists(symbol));
    m_symbol = symbol;
    update();
}

void IconButton::setSymbolSize(double size)
{
    m_symbolSize = size;
    update();
}

void IconButton::setColorRole(ColorRole role)
{
    m_role = role;
    update();
}

void IconButton::setIsQuiet(bool isQuiet)
{
    if (m_isQuiet == isQuiet)
        return;
    m_isQuiet = isQuiet;
    update();
}

void IconButton::setSide(int width, int height)
{
    m_size = QSize(width, height);
    setFixedSize(m_size);
}

void IconButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto fill = [&](const QColor &color) {
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
    };
    if (isChecked())
        fill(theme().color(ColorRole::SelectedRow));
    if (const QColor tone = stateTone(); tone.alpha() > 0)
        fill(tone);

    if (m_isQuiet && !isHovered() && !hasFocus())
        return;
    QColor color = theme().color(isChecked() ? ColorRole::AccentText : m_role);
    if (!isEnabled())
        color = withOpacity(color, kDisabledOpacity);
    Symbols::draw(painter, m_symbol, QRectF(rect()), m_symbolSize, color);
}

} // namespace Tessaline
