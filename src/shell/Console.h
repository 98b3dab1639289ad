#pragma once

#include <QtCore/QString>

#include <functional>

namespace Tessaline::Console {

/// Writes `text`, whole lines, in UTF-8.
void print(const QString &text);  // to standard output
void report(const QString &text); // to standard error

/// Lets the toolkit's warnings through to standard error, but for those known to mean nothing to anybody. Where the
/// toolkit cannot open a window at all, one sentence says so and the process ends with status 1 instead of being
/// aborted.
void filterToolkitMessages();

/// Has `lastAct` called when the connection to the display has gone, be it that the desktop crashed or that it ended
/// without asking: the toolkit, or the library below it, ends the process where it stands, and nothing else is run.
/// Empty for nothing, which it has to be before a normal end. Needs `filterToolkitMessages`; main thread only.
void setDisplayLossHandler(std::function<void()> lastAct);

/// Whether a message of the toolkit is noise.
bool isNoise(const QString &message);

/// Whether a message of the toolkit tells that the connection to the display has gone.
bool isLossOfDisplay(const QString &message);

} // namespace Tessaline::Console
