#include "shell/FreedMemory.h"

#include "foundation/BackgroundPool.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Tessaline {

FreedMemory::FreedMemory(std::chrono::milliseconds soon, std::chrono::milliseconds later, QObject *parent)
    : QObject(parent)
{
    m_soon.setInterval(soon);
    m_later.setInterval(later);
    for (QTimer *timer : {&m_soon, &m_later}) {
        timer->setSingleShot(true);
#ifdef __GLIBC__
        connect(timer, &QTimer::timeout, this, [] { backgroundPool().start([] { malloc_trim(0); }); });
#endif
    }
}

void FreedMemory::giveBackSoon()
{
    m_soon.start();
    m_later.start();
}

} // namespace Tessaline
