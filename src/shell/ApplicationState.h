#pragma once

#include <QtCore/QObject>

namespace Tessaline {

/// Tells when the person leaves the application for another one and comes back. The start is no coming back.
class ApplicationState final : public QObject
{
    Q_OBJECT
public:
    explicit ApplicationState(QObject *parent = nullptr);

Q_SIGNALS:
    void left();
    void cameBack();

private:
    void follow(Qt::ApplicationState state);

    bool m_wasActive = false; // at some time since the start or since it was left
    bool m_hasLeft = false;
};

} // namespace Tessaline
