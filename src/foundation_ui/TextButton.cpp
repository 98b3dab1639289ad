#include "foundation_ui/TextButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <cmath>

namespace Tessaline {

namespace {

constexpr int kSidePadding = 12;
constexpr double kDisabledOpacity = 0.4;

} // namespace

TextButton::TextButton(const Theme &theme, const QString &text, Kind kind, QWidget *parent)
    : PlainButton(theme, parent), m_kind(kind)
{
    setText(text);
    setFont(Fonts::interface(Fonts::kInterfaceSize, kind == Kind::Prominent ? QFont::DemiBold : QFont::Medium));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize TextButton::sizeHint() const
{
    const double width = QFontMetricsF(font()).horizontalAdvance(text());
    return QSize(static_cast<int>(std::ceil(width)) + 2 * kSidePadding, kHeight);
}

void TextButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);

    QRectF ground(rect());
    painter.setPen(Qt::NoPen);
    QColor textColor = theme().color(ColorRole::Text);
    switch (m_kind) {
    case Kind::Prominent:
        painter.setBrush(theme().color(ColorRole::Accent));
        textColor = theme().color(ColorRole::OnAccent);
        break;
    case Kind::Destructive:
        textColor = theme().color(ColorRole::RemovedText);
        [[fallthrough]];
    case Kind::Bordered:
        ground.adjust(0.5, 0.5, -0.5, -0.5);
        painter.setPen(theme().color(ColorRole::BubbleBorder));
        painter.setBrush(theme().color(ColorRole::Control));
        break;
    case Kind::Plain:
        painter.setBrush(isChecked() ? theme().color(ColorRole::SelectedRow) : QColor(Qt::transparent));
        if (isChecked())
            textColor = theme().color(ColorRole::AccentText);
        break;
    }
    painter.drawRoundedRect(ground, cornerRadius(), cornerRadius());
    if (const QColor tone = stateTone(); tone.alpha() > 0) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(tone);
        painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
    }

    painter.setPen(textColor);
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextHideMnemonic, text());
}

} // namespace Tessaline
