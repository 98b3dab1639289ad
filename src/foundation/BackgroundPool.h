#pragma once

#include <QtCore/QThreadPool>

namespace Tessaline {

/// The workers for what takes longer than a moment: as many as there are cores. Any thread may hand them work. What was
/// begun is waited for when the application object goes.
///
/// Not Qt's global pool, because painting waits for that one: Qt hands it parts of large shapes, and a window would
/// stand still behind a search.
QThreadPool &backgroundPool();

} // namespace Tessaline
