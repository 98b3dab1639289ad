#include "foundation_ui/ProgressIndicator.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Contrast.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QPainter>
#include <QtWidgets/QStyle>

namespace Tessaline {

namespace {

constexpr int kSteps = 12; // in one turn
constexpr int kMillisecondsAStep = 80;
constexpr double kLineWidth = 2;
constexpr int kArc = 100 * 16; // in sixteenths of a degree, as QPainter counts

} // namespace

ProgressIndicator::ProgressIndicator(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    setAccessibleRole(*this, QAccessible::ProgressBar);
    setFixedSize(kSide, kSide);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ProgressIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ring = QRectF(rect()).adjusted(kLineWidth, kLineWidth, -kLineWidth, -kLineWidth);
    const QColor color = m_theme.color(ColorRole::SecondaryText);
    painter.setPen(QPen(withOpacity(color, 0.2), kLineWidth));
    painter.drawEllipse(ring);
    painter.setPen(QPen(color, kLineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, -m_step * 360 * 16 / kSteps, kArc);
}

void ProgressIndicator::showEvent(QShowEvent *)
{
    if (style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0)
        m_timer.start(kMillisecondsAStep, this);
}

void ProgressIndicator::hideEvent(QHideEvent *)
{
    m_timer.stop();
}

void ProgressIndicator::timerEvent(QTimerEvent *)
{
    m_step = (m_step + 1) % kSteps;
    update();
}

} // namespace Tessaline
