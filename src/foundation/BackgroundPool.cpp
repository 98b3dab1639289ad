#include "foundation/BackgroundPool.h"

#include <QtCore/QCoreApplication>

namespace Tessaline {

QThreadPool &backgroundPool()
{
    static QThreadPool pool;
    // What runs may use what goes with the application, as long as nobody has said that it is going.
    static const bool isWaitedFor = (qAddPostRoutine([] { pool.waitForDone(); }), true);
    Q_UNUSED(isWaitedFor);
    return pool;
}

} // namespace Tessaline
