#pragma once

#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// What a format command puts in place of the selection, and where the caret stands then, in UTF-16 units from the
/// selection's start.
struct SourceFormat {
    QString replacement;
    qsizetype caretOffset = 0;
    friend bool operator==(const SourceFormat &, const SourceFormat &) = default;
};

/// The format command `type` ("bold", "h1", "link" ...) on the selected Markdown source. Absent for an unknown type.
/// Only the start of the selection gets a prefix, even if it has several lines.
std::optional<SourceFormat> sourceFormat(const QString &type, const QString &selection);

} // namespace Tessaline
