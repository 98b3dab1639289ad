#include "shell/ApplicationState.h"

#include <QtGui/QGuiApplication>

#include <utility>

namespace Tessaline {

ApplicationState::ApplicationState(QObject *parent) : QObject(parent)
{
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &ApplicationState::follow);
}

void ApplicationState::follow(Qt::ApplicationState state)
{
    if (state == Qt::ApplicationActive) {
        m_wasActive = true;
        if (std::exchange(m_hasLeft, false))
            Q_EMIT cameBack();
    } else if (std::exchange(m_wasActive, false)) {
        m_hasLeft = true;
        Q_EMIT left();
    }
}

} // namespace Tessaline
