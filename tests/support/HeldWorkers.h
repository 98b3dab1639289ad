#pragma once

#include <QtCore/QSemaphore>
#include <QtCore/QThreadPool>

namespace Tessaline {

/// While this lives, all workers are busy: what is handed to them has not even begun. NOTE: the toolkit draws large
/// shapes with the same workers, so nothing may be painted meanwhile.
class HeldWorkers
{
public:
    HeldWorkers()
    {
        for (int i = 0; i < m_count; ++i)
            QThreadPool::globalInstance()->start([begun = &m_begun, released = &m_released] {
                begun->release();
                released->acquire();
            });
        m_begun.acquire(m_count);
    }
    ~HeldWorkers() { letGo(); }
    HeldWorkers(const HeldWorkers &) = delete;
    HeldWorkers &operator=(const HeldWorkers &) = delete;

    /// Returns when all that the workers were handed is done.
    void letGo()
    {
        m_released.release(m_count);
        QThreadPool::globalInstance()->waitForDone();
    }

private:
    const int m_count = QThreadPool::globalInstance()->maxThreadCount();
    QSemaphore m_begun;
    QSemaphore m_released;
};

} // namespace Tessaline
