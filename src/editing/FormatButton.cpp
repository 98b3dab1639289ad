#include "editing/FormatButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr double kSymbolSize = 11;
constexpr double kTextSize = 10;
constexpr double kGroundOpacity = 0.06; // of the secondary colour

} // namespace

FormatButton::FormatButton(const Theme &theme, const QString &type, Face face, const QString &content,
                           const QString &help, QWidget *parent)
    : PlainButton(theme, parent), m_type(type), m_face(face), m_content(content)
{
    setHelp(help);
    setCornerRadius(kRadius);
    setFixedSize(kSide, kSide);
}

void FormatButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QColor color = theme().color(ColorRole::SecondaryText);
    for (const QColor &ground : {withOpacity(color, kGroundOpacity), stateTone()}) {
        painter.setBrush(ground);
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    }
    if (m_face == Face::Symbol) {
        Symbols::draw(painter, m_content, QRectF(rect()), kSymbolSize, color);
        return;
    }
    painter.setFont(Fonts::interface(kTextSize, QFont::Black));
    painter.setPen(color);
    painter.drawText(rect(), Qt::AlignCenter, m_content);
}

} // namespace Tessaline
