#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QtGlobal>

namespace Tessaline {

/// A stretch of text. Both numbers count UTF-16 units, as QString does.
struct TextRange {
    qsizetype location = 0; // from the start of the text
    qsizetype length = 0;   // never negative; 0 is a caret

    qsizetype end() const { return location + length; }
    bool isEmpty() const { return length == 0; }
    friend bool operator==(const TextRange &, const TextRange &) = default;
};

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::TextRange)
