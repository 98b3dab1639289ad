#pragma once

#include <QtCore/QTimer>

#include <chrono>

namespace Tessaline {

/// Gives back to the system what large texts took, a while after the last of what leaves much behind: a document was
/// opened or left, an answer has ended. The allocator by itself keeps what was freed between blocks that stay, tens of
/// megabytes after a document of 10 MB. Main thread; the work is done on a worker, in a millisecond.
class FreedMemory final : public QObject
{
    Q_OBJECT
public:
    // Source: chosen here; by the first the texts have been read and sent, by the second what is prepared of a document
    // in the background is there.
    static constexpr std::chrono::milliseconds kSoon{1000};
    static constexpr std::chrono::milliseconds kLater{4000};

    explicit FreedMemory(std::chrono::milliseconds soon = kSoon, std::chrono::milliseconds later = kLater,
                         QObject *parent = nullptr);

public Q_SLOTS:
    /// Something large has been dropped, or will be in a moment. Each call puts both times off.
    void giveBackSoon();

private:
    QTimer m_soon;
    QTimer m_later;
};

} // namespace Tessaline
