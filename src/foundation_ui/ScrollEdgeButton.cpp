#include "foundation_ui/ScrollEdgeButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Symbols.h"

#include <QtCore/QEvent>
#include <QtGui/QLinearGradient>
#include <QtGui/QPainter>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kFade = 0.4; // of the width, on the side of the row
constexpr double kSymbolSize = 11;

} // namespace

ScrollEdgeButton::ScrollEdgeButton(const Theme &theme, ColorRole ground, Edge edge, const QString &help,
                                   QScrollArea &area)
    : PlainButton(theme, &area), m_ground(ground), m_edge(edge), m_area(area)
{
    setHelp(help);
    setFocusPolicy(Qt::NoFocus);
    area.installEventFilter(this);
    connect(area.horizontalScrollBar(), &QScrollBar::valueChanged, this, &ScrollEdgeButton::follow);
    connect(area.horizontalScrollBar(), &QScrollBar::rangeChanged, this, &ScrollEdgeButton::follow);
    connect(this, &QAbstractButton::clicked, this, &ScrollEdgeButton::scroll);
    follow();
}

void ScrollEdgeButton::follow()
{
    const QScrollBar &bar = *m_area.horizontalScrollBar();
    const bool isLeft = m_edge == Edge::Left;
    setGeometry(isLeft ? 0 : m_area.width() - kWidth, 0, kWidth, m_area.height());
    setVisible(isLeft ? bar.value() > bar.minimum() : bar.value() < bar.maximum());
    raise();
}

void ScrollEdgeButton::scroll()
{
    QScrollBar &bar = *m_area.horizontalScrollBar();
    const int distance = m_area.viewport()->width() - 2 * kWidth; // what was cut is whole then
    bar.setValue(bar.value() + (m_edge == Edge::Left ? -distance : distance));
}

bool ScrollEdgeButton::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        follow();
    return PlainButton::eventFilter(watched, event);
}

void ScrollEdgeButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool isLeft = m_edge == Edge::Left;
    const QColor ground = theme().color(m_ground);
    QLinearGradient fade(isLeft ? width() : 0, 0, isLeft ? 0 : width(), 0);
    fade.setColorAt(0, withOpacity(ground, 0));
    fade.setColorAt(kFade, ground);
    painter.fillRect(rect(), fade);

    painter.setRenderHint(QPainter::Antialiasing);
    const double solid = width() * (1 - kFade);
    const QRectF place(isLeft ? 0 : width() - solid, 0, solid, height());
    if (isHovered()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(stateTone());
        painter.drawRect(place);
    }
    Symbols::draw(painter, isLeft ? u"chevron.left"_s : u"chevron.right"_s, place, kSymbolSize,
                  theme().color(ColorRole::SecondaryText));
}

} // namespace Tessaline
