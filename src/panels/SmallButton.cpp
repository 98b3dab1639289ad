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
constexpr int kVerticalPadding = 4;
constexpr int kSymbolRoom = 15;        // the symbol and the space behind it
constexpr double kPlainOpacity = 0.12; // of the secondary colour

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

QSize SmallButton::sizeHint() const
{
    const QFontMetricsF metrics(font());
    const int symbolRoom = m_symbol.isEmpty() ? 0 : kSymbolRoom;
    return {static_cast<int>(std::ceil(metrics.horizontalAdvance(text()))) + symbolRoom + 2 * kSidePadding,
            static_cast<int>(std::ceil(metrics.height())) + 2 * kVerticalPadding};
}

void SmallButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const bool isAccept = m_kind == Kind::Accept;
    QColor ground = Qt::transparent;
    if (isAccept)
        ground = theme().color(ColorRole::Accept);
    else if (m_kind == Kind::Plain)
        ground = withOpacity(theme().color(ColorRole::SecondaryText), kPlainOpacity);
    for (const QColor &tone : {ground, stateTone()}) {
        painter.setBrush(tone);
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    }
    const QColor color = theme().color(isAccept ? ColorRole::AcceptText : ColorRole::SecondaryText);
    QRect textBox = rect();
    if (!m_symbol.isEmpty()) {
        Symbols::draw(painter, m_symbol, QRectF(kSidePadding, 0, font().pixelSize(), height()), font().pixelSize(),
                      color);
        textBox.adjust(kSidePadding + kSymbolRoom, 0, -kSidePadding, 0);
    }
    painter.setFont(font());
    painter.setPen(color);
    painter.drawText(textBox, m_symbol.isEmpty() ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter, text());
}

} // namespace Tessaline
