#pragma once

#include <QtCore/QString>

namespace Tessaline {

/// What a widget that lays out a whole text at once shows of it: the text, or, if it is longer than `most` UTF-16
/// units, its beginning and a last line that says how much more there is. No character is cut in two.
QString shownPart(const QString &text, qsizetype most);

} // namespace Tessaline
