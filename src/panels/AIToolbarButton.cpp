#include "panels/AIToolbarButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QAccessible>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <cmath>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr int kSidePadding = 5;
constexpr int kIconArea = 12;
constexpr double kIconSize = 10;
constexpr double kTextSize = 10;
constexpr int kSpacing = 3;
constexpr double kGroundOpacity = 0.1; // of the accent
constexpr double kBorderOpacity = 0.3;
constexpr double kDisabledOpacity = 0.6; // of the secondary colour

} // namespace

AIToolbarButton::AIToolbarButton(const Theme &theme, const QString &icon, const QString &label, QWidget *parent)
    : PlainButton(theme, parent), m_icon(icon), m_progress(new ProgressIndicator(theme, this))
{
    setText(label);
    setFont(Fonts::interface(kTextSize, QFont::DemiBold));
    setCornerRadius(kRadius);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_progress->setFixedSize(kIconArea, kIconArea);
    m_progress->move(kSidePadding, (kHeight - kIconArea) / 2);
    m_progress->hide();
}

void AIToolbarButton::setLoading(bool isLoading)
{
    if (isLoading == m_progress->isVisibleTo(this))
        return;
    m_progress->setVisible(isLoading);
    QAccessibleEvent event(this, QAccessible::DescriptionChanged); // the help text says what goes on
    QAccessible::updateAccessibility(&event);
    update();
}

QSize AIToolbarButton::sizeHint() const
{
    const double width = QFontMetricsF(font()).horizontalAdvance(text());
    return {kSidePadding + kIconArea + kSpacing + static_cast<int>(std::ceil(width)) + kSidePadding, kHeight};
}

void AIToolbarButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = withOpacity(theme().color(ColorRole::SecondaryText), kDisabledOpacity);
    if (isEnabled()) {
        const QColor accent = theme().color(ColorRole::Accent);
        painter.setPen(withOpacity(accent, kBorderOpacity));
        painter.setBrush(withOpacity(accent, kGroundOpacity));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
        painter.setPen(Qt::NoPen);
        painter.setBrush(stateTone());
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
        color = theme().color(ColorRole::AccentText);
    }
    if (m_progress->isHidden())
        Symbols::draw(painter, m_icon, QRectF(kSidePadding, 0, kIconArea, height()), kIconSize, color);
    painter.setFont(font());
    painter.setPen(color);
    painter.drawText(rect().adjusted(kSidePadding + kIconArea + kSpacing, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     text());
}

} // namespace Tessaline
