#pragma once

#include <QtCore/QTimer>

#include <chrono>

namespace Tessaline {

/// Gives back to the system what large texts took, a while after the last of what leaves much behind: a document was
/// opened or left, an answer has ended. The allocator by itself keeps what was freed between blocks that stay, tens of
/// megabytes after a document of 10 MB. Main thread; the work is done on a worker.
class FreedMemory final : public QObject
{
    Q_OBJECT
public:
    // Source: chosen here; by then the texts have been read and sent.
    static constexpr std::chrono::milliseconds kDelay{3000};

    explicit FreedMemory(std::chrono::milliseconds delay = kDelay, QObject *parent = nullptr);

public Q_SLOTS:
    /// Something large has been dropped, or will be in a moment. Each call puts the time off.
    void giveBackSoon() { m_timer.start(); }

private:
    QTimer m_timer;
};

} // namespace Tessaline
