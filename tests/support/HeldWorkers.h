#pragma once

#include "foundation/BackgroundPool.h"

#include <QtCore/QSemaphore>

namespace Tessaline {

/// While this lives, all workers are busy: what is handed to them has not even begun.
class HeldWorkers
{
public:
    HeldWorkers()
    {
        for (int i = 0; i < m_count; ++i)
            backgroundPool().start([begun = &m_begun, released = &m_released] {
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
        backgroundPool().waitForDone();
    }

private:
    const int m_count = backgroundPool().maxThreadCount();
    QSemaphore m_begun;
    QSemaphore m_released;
};

} // namespace Tessaline
