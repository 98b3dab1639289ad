#include "panels/ChatSenderPill.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <cmath>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kInitialSide = 20;
constexpr int kInset = 2; // of the initial in the capsule
constexpr int kLabelPadding = 8;
constexpr double kLabelSize = 11;

struct Look {
    QString initial;
    QFont initialFont;
    ColorRole initialRole;
    ColorRole labelRole;
    ColorRole tint;
    double capsuleOpacity;
    double initialOpacity;
    double shadowOpacity; // of the hairline below
};

Look lookOf(ChatSenderPill::Sender sender)
{
    if (sender == ChatSenderPill::Sender::User)
        return {u"U"_s,
                Fonts::interface(10, QFont::Bold),
                ColorRole::SecondaryText,
                ColorRole::SecondaryText,
                ColorRole::SecondaryText,
                0.06,
                0.15,
                0};
    QFont mark = Fonts::body(12);
    mark.setWeight(QFont::DemiBold);
    return {u"T"_s, mark, ColorRole::AccentText, ColorRole::AccentText, ColorRole::Accent, 0.04, 0.12, 0.03};
}

QFont labelFont()
{
    return Fonts::interface(kLabelSize, QFont::DemiBold);
}

} // namespace

ChatSenderPill::ChatSenderPill(const Theme &theme, Sender sender, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_sender(sender)
{
    setFixedSize(sizeHint());
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

QString ChatSenderPill::label() const
{
    return m_sender == Sender::User ? u"You"_s : u"Tessaline"_s;
}

QSize ChatSenderPill::sizeHint() const
{
    const int text = static_cast<int>(std::ceil(QFontMetricsF(labelFont()).horizontalAdvance(label())));
    return {kInset + kInitialSide + kLabelPadding + text + kLabelPadding, kHeight};
}

void ChatSenderPill::paintEvent(QPaintEvent *)
{
    const Look look = lookOf(m_sender);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF capsule(rect());
    const double radius = capsule.height() / 2;
    QPainterPath shadow;
    shadow.addRoundedRect(capsule, radius, radius);
    QPainterPath above;
    above.addRoundedRect(capsule.translated(0, -1), radius, radius);
    painter.setBrush(withOpacity(m_theme.color(ColorRole::SegmentShadow), look.shadowOpacity));
    painter.drawPath(shadow.subtracted(above));
    const QColor tint = m_theme.color(look.tint);
    painter.setBrush(withOpacity(tint, look.capsuleOpacity));
    painter.drawRoundedRect(capsule, radius, radius);
    const QRectF circle(kInset, (height() - kInitialSide) / 2.0, kInitialSide, kInitialSide);
    painter.setBrush(withOpacity(tint, look.initialOpacity));
    painter.drawEllipse(circle);
    painter.setFont(look.initialFont);
    painter.setPen(m_theme.color(look.initialRole));
    painter.drawText(circle, Qt::AlignCenter, look.initial);
    painter.setFont(labelFont());
    painter.setPen(m_theme.color(look.labelRole));
    painter.drawText(rect().adjusted(kInset + kInitialSide + kLabelPadding, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     label());
}

} // namespace Tessaline
