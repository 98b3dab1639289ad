#pragma once

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <functional>

class QWidget;

namespace MarkdownUI {

/// Opens a link somewhere.
using OpenURL = std::function<void(const QUrl &url)>;

/// A link's target as a person reads it, with everything percent-encoded that is not seen or turns what follows around:
/// a target cannot pass for another one.
QString shownTarget(const QUrl &url);

/// Hands a web or mail address to `outside` at once, and everything else only after a question over `parent` that shows
/// where it leads and was answered with yes. The question does not block.
void openWithCare(const QUrl &url, QWidget *parent, const OpenURL &outside);

/// With the programs of the desktop.
void openOnDesktop(const QUrl &url);

} // namespace MarkdownUI
