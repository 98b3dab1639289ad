#include "foundation_ui/Tag.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"

#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>

namespace Tessaline {

namespace {

constexpr int kSidePadding = 6;
constexpr int kVerticalPadding = 2;

} // namespace

Tag::Tag(const Theme &theme, QWidget *parent) : QLabel(parent), m_theme(theme)
{
    setTextFormat(Qt::PlainText);
    setFont(Fonts::interface(kFontSize));
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

QSize Tag::sizeHint() const
{
    const QFontMetrics metrics(font());
    return QSize(metrics.horizontalAdvance(Label::singleLine(text())) + 1 + 2 * kSidePadding,
                 metrics.height() + 2 * kVerticalPadding);
}

QSize Tag::minimumSizeHint() const
{
    const QFontMetrics metrics(font());
    return QSize(metrics.horizontalAdvance(u'…') + 2 * kSidePadding, sizeHint().height());
}

void Tag::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(m_theme.color(ColorRole::Accent), kGroundOpacity));
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);

    painter.setPen(m_theme.color(ColorRole::AccentText));
    painter.setFont(font());
    const QRect box = rect().adjusted(kSidePadding, 0, -kSidePadding, 0);
    painter.drawText(box, Qt::AlignCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(Label::singleLine(text()), Qt::ElideRight, box.width()));
}

} // namespace Tessaline
