#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QString>

#include <optional>
#include <vector>

namespace Tessaline {

/// A text with the signs that models like to exchange written in one way, and the way back.
struct NormalizedText {
    QString text;
    /// For each character (extended grapheme cluster) of `text`: where the character that it was made from begins in
    /// the source. The source's end stands behind the last.
    std::vector<qsizetype> positions;
    friend bool operator==(const NormalizedText &, const NormalizedText &) = default;
};

/// The text with each of its characters as `normalizedCharacter` writes it.
NormalizedText normalizedForMatching(QStringView text);

/// Where `original` stands in `document`, if it stands there once. It is looked for exactly, then without regard to
/// case; several occurrences end the search there and then. Only then follow the normalised forms, and last the
/// normalised form of `original` without the white space at its ends. Nothing else is tolerated: a wrong place is worse
/// than none. Linear in both texts.
std::optional<TextRange> robustMatchRange(QStringView original, QStringView document);

/// The text with the range replaced.
QString replacing(const QString &text, const TextRange &range, QStringView replacement);

} // namespace Tessaline
