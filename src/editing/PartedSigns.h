#pragma once

#include <QtGui/QTextLayout>

namespace Tessaline {

/// Faces for code join signs that stand together ("--", "->", "::") into one figure, with a caret somewhere inside it.
/// Formats for every second of them that keep them apart, since text is shaped format by format. Each is `format` with
/// one property more that changes nothing to be seen; offsets count from the start of `text`.
QList<QTextLayout::FormatRange> formatsThatPartSigns(QStringView text, const QTextCharFormat &format = {});

} // namespace Tessaline
