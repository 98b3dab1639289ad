#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QString>

#include <vector>

namespace Tessaline {

/// When two characters count as equal: each way takes for equal what the one before does.
enum class Likeness {
    Exact,       // canonically equivalent
    CaseIgnored, // so once their case is folded
    Normalized,  // so once signs are written in one way, see `normalizedForMatching`
};

/// How often a text stands in another, as far as it matters.
struct UniqueRange {
    enum class Kind { Absent, Unique, Ambiguous };
    Kind kind = Kind::Absent;
    TextRange range; // of `Unique` only
    friend bool operator==(const UniqueRange &, const UniqueRange &) = default;
};

/// A text made ready to be searched by characters (extended grapheme clusters). What is found begins and ends between
/// characters, so that a letter is never found in front of its own accent. Making one and each search take time linear
/// in the text, whatever it holds. The text itself need not outlive it. Fewer than 2^31 units.
class SearchableText
{
public:
    SearchableText(QStringView text, Likeness likeness);

    /// `Ambiguous` if the needle stands in the text a second time behind the end of the first. An empty needle is
    /// absent.
    UniqueRange uniqueRange(QStringView needle) const;

private:
    qsizetype find(const QString &needle, const std::vector<qint32> &fallback, qsizetype from) const;

    Likeness m_likeness;
    QString m_units; // as they are compared
    std::vector<qint32>
        m_origin; // for each unit, and for the end: where its character begins in the text; -1 inside one
};

/// The text with curly double and single quotes written as straight ones, the em dash as a hyphen, and CR and CR LF as
/// LF, if `character` is one of these; itself if it is any other, such as the en dash. One character.
QStringView normalizedCharacter(QStringView character);

/// One search in a text that is not searched again.
UniqueRange uniqueRange(QStringView needle, QStringView haystack, Likeness likeness);

} // namespace Tessaline
