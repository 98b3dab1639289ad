#include "panels/SmallButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <cmath>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr int kSidePadding = 10;
constexpr int kBareSidePadding = 6; // as the line of the status above it has
constexpr int kVerticalPadding = 4;
constexpr int kSymbolSpacing = 3;
constexpr double kDisabledOpacity = 0.4;

double groundOpacity(SmallButton::Kind kind) // of the secondary colour
{
    switch (kind) {
    case SmallButton::Kind::Reject:
        return 0.1;
    case SmallButton::Kind::Plain:
    case SmallButton::Kind::Strong:
        return 0.12;
    case SmallButton::Kind::Accept:
    case SmallButton::Kind::Bare:
        break;
    }
    return 0;
}

ColorRole textRole(SmallButton::Kind kind)
{
    if (kind == SmallButton::Kind::Accept)
        return ColorRole::AcceptText;
    return kind == SmallButton::Kind::Strong ? ColorRole::Text : ColorRole::SecondaryText;
}

} // namespace

SmallButton::SmallButton(const Theme &theme, const QString &text, Kind kind, double textSize, const QString &symbol,
                         QWidget *parent)
    : PlainButton(theme, parent), m_kind(kind), m_symbol(symbol)
{
    setText(text);
    setFont(Fonts::interface(textSize, kind == Kind::Bare ? QFont::Normal : QFont::DemiBold));
    setCornerRadius(kRadius);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

int SmallButton::sidePadding() const
{
    return m_kind == Kind::Bare ? kBareSidePadding : kSidePadding;
}

int SmallButton::symbolRoom() const
{
    return m_symbol.isEmpty() ? 0 : font().pixelSize() + kSymbolSpacing;
}

QSize SmallButton::sizeHint() const
{
    const QFontMetricsF metrics(font());
    return {static_cast<int>(std::ceil(metrics.horizontalAdvance(text()))) + symbolRoom() + 2 * sidePadding(),
            static_cast<int>(std::ceil(metrics.height())) + 2 * kVerticalPadding};
}

void SmallButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setOpacity(isEnabled() ? 1 : kDisabledOpacity);
    const QColor ground = m_kind == Kind::Accept
                              ? theme().color(ColorRole::Accept)
                              : withOpacity(theme().color(ColorRole::SecondaryText), groundOpacity(m_kind));
    for (const QColor &tone : {ground, stateTone()}) {
        painter.setBrush(tone);
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    }
    const QColor color = theme().color(textRole(m_kind));
    QRect textBox = rect();
    if (!m_symbol.isEmpty()) {
        Symbols::draw(painter, m_symbol, QRectF(sidePadding(), 0, font().pixelSize(), height()), font().pixelSize(),
                      color);
        textBox.adjust(sidePadding() + symbolRoom(), 0, -sidePadding(), 0);
    }
    painter.setFont(font());
    painter.setPen(color);
    painter.drawText(textBox, m_symbol.isEmpty() ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter, text());
}

} // namespace Tessaline
