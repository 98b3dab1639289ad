#include "editing/CaretBlinker.h"

#include <QtCore/QTimerEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QStyleHints>

namespace Tessaline {

void CaretBlinker::setVisible(bool visible)
{
    if (visible == m_isVisible)
        return;
    m_isVisible = visible;
    Q_EMIT visibilityChanged();
}

void CaretBlinker::restart()
{
    const int period = QGuiApplication::styleHints()->cursorFlashTime(); // on and off; not positive for a steady caret
    if (period > 0)
        m_timer.start(period / 2, this);
    else
        m_timer.stop();
    setVisible(true);
}

void CaretBlinker::stop()
{
    m_timer.stop();
    setVisible(false);
}

void CaretBlinker::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_timer.timerId())
        setVisible(!m_isVisible);
}

} // namespace Tessaline
