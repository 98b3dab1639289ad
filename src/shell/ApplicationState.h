#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>

#include <chrono>

namespace Tessaline {

/// Tells when the person leaves the application for another one and comes back. A start in the foreground is no coming
/// back, since everything has just been read; the first look at one that started behind other windows is.
class ApplicationState final : public QObject
{
    Q_OBJECT
public:
    // Source: chosen here; longer than a window needs to get the focus, shorter than anybody needs to change a file.
    static constexpr std::chrono::milliseconds kStart{2000};

    /// A first activation within `start` from here belongs to the start.
    explicit ApplicationState(std::chrono::milliseconds start = kStart, QObject *parent = nullptr);

Q_SIGNALS:
    void left();
    void cameBack();

private:
    void follow(Qt::ApplicationState state);

    enum class Phase { Starting, Active, Away };
    Phase m_phase = Phase::Starting;
    std::chrono::milliseconds m_start;
    QElapsedTimer m_sinceStart;
};

} // namespace Tessaline
