#pragma once

#include <QtCore/QString>

namespace Tessaline {

/// Prints `line` and a line break on standard output, at once and in one piece, so that lines of several threads do not
/// mix. For what a developer should see and a person at the screen need not. Safe from any thread.
void printConsoleLine(const QString &line);

} // namespace Tessaline
