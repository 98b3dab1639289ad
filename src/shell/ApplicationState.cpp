#include "shell/ApplicationState.h"

#include <QtGui/QGuiApplication>

#include <utility>

namespace Tessaline {

ApplicationState::ApplicationState(std::chrono::milliseconds start, QObject *parent) : QObject(parent), m_start(start)
{
    m_sinceStart.start();
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &ApplicationState::follow);
}

void ApplicationState::follow(Qt::ApplicationState state)
{
    if (state == Qt::ApplicationActive) {
        const Phase before = std::exchange(m_phase, Phase::Active);
        if (before == Phase::Away || (before == Phase::Starting && m_sinceStart.elapsed() >= m_start.count()))
            Q_EMIT cameBack();
    } else if (m_phase == Phase::Active) {
        m_phase = Phase::Away;
        Q_EMIT left();
    }
}

} // namespace Tessaline
