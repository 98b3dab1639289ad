#pragma once

#include <QtCore/QString>

namespace Tessaline {

/// `text` for a tool tip that is to show it as it stands. The toolkit takes what looks like markup for markup, and a
/// file may have any name.
QString plainToolTip(const QString &text);

} // namespace Tessaline
