#pragma once

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <array>
#include <csignal>

namespace Tessaline {

/// Turns SIGTERM, SIGINT and SIGHUP into a Qt signal on the main thread, so that they end the application in good
/// order. As long as this object lives they do nothing else, however often they come; one that came before the event
/// loop runs is delivered when it does. There is one such object at a time, and it needs the application object.
class TerminationSignals final : public QObject
{
    Q_OBJECT
public:
    static constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override; // puts back what was in force before

Q_SIGNALS:
    /// At least once after any of the signals.
    void terminationRequested();

private:
    void drain();

    std::array<int, 2> m_pipe{-1, -1}; // read end, write end
    std::array<struct sigaction, kSignals.size()> m_previous{};
    QSocketNotifier m_notifier{QSocketNotifier::Read};
};

} // namespace Tessaline
