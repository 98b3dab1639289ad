#include "panels/ScrolledContent.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

namespace {

constexpr int kClear = 12; // around what has the focus

} // namespace

ScrolledContent::ScrolledContent(QWidget *content, Direction direction, QWidget *parent)
    : QScrollArea(parent), m_direction(direction)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    if (direction == Direction::Sideways)
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *focus) { reveal(focus); });
}

void ScrolledContent::reveal(QWidget *focus)
{
    if (!focus || !widget()->isAncestorOf(focus))
        return;
    // What was just made has its place only after the layout, which comes first.
    QTimer::singleShot(0, this, [this, target = QPointer(focus)] {
        if (target && target->hasFocus() && widget()->isAncestorOf(target))
            ensureWidgetVisible(target, kClear, kClear);
    });
}

void ScrolledContent::wheelEvent(QWheelEvent *event)
{
    if (m_direction == Direction::Down) {
        QScrollArea::wheelEvent(event);
        return;
    }
    const QPoint delta = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - (delta.x() != 0 ? delta.x() : delta.y()));
    event->accept();
}

} // namespace Tessaline
