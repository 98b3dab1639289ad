#include "shell/FreedMemory.h"

#include "foundation/BackgroundPool.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Tessaline {

FreedMemory::FreedMemory(std::chrono::milliseconds delay, QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(delay);
#ifdef __GLIBC__
    connect(&m_timer, &QTimer::timeout, this, [] { backgroundPool().start([] { malloc_trim(0); }); });
#endif
}

} // namespace Tessaline
