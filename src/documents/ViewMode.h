#pragma once

#include "documents/DocumentType.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// How a document is presented in the editor area.
enum class ViewMode { Editor, RawMarkdown, Split, PlainText };

QString rawValue(ViewMode mode); // as stored: "editor", "rawMarkdown", "split", "plainText"
std::optional<ViewMode> viewModeFromRaw(const QString &text);
QString symbol(ViewMode mode);
QString label(ViewMode mode);
QString helpText(ViewMode mode);

/// The modes a document of this type can be shown in, the default first. A file without a type counts as plain text.
QList<ViewMode> availableViewModes(std::optional<DocumentType> type);

/// The stored mode if it is available, otherwise the first that is.
ViewMode effectiveViewMode(ViewMode stored, const QList<ViewMode> &available);

} // namespace Tessaline
