#pragma once

#include <QtCore/QBasicTimer>
#include <QtCore/QObject>

namespace Tessaline {

/// Whether the caret shows at this moment. It blinks at the desktop's rate while it runs, shows steadily where the
/// desktop sets no rate, and starts anew with each restart, so that it stays visible while someone types. The only
/// timer of an idle window.
class CaretBlinker final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    bool isVisible() const { return m_isVisible; }
    void restart();
    void stop(); // hidden until the next restart

Q_SIGNALS:
    void visibilityChanged();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void setVisible(bool visible);

    QBasicTimer m_timer;
    bool m_isVisible = false;
};

} // namespace Tessaline
