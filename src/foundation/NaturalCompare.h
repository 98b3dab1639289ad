#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <array>
#include <memory>
#include <vector>

struct UCollator;

namespace Tessaline {

/// Orders names as a person expects of a list of files: by the collation of the user's locale, digits by their value
/// ("File2" before "File10"), case and width looked at only where nothing else differs. -1, 0 or 1; 0 only for equal
/// texts. Safe from any thread.
int localizedStandardCompare(QStringView left, QStringView right);

/// The indices of `names` in the order of localizedStandardCompare, equal names in the order in which they stand. For
/// whole lists: it looks at each name once, where sorting by comparisons would do so for every comparison. Safe from
/// any thread.
std::vector<qsizetype> localizedStandardOrder(const QList<QStringView> &names);

/// The order above for one locale. It does not change once made, so threads share it.
class NaturalCollator
{
public:
    /// `locale` as ICU names it ("de", "da_DK"); empty for the order of no language in particular.
    explicit NaturalCollator(const QByteArray &locale);
    ~NaturalCollator();

    int compare(QStringView left, QStringView right) const;
    std::vector<qsizetype> order(const QList<QStringView> &names) const;

    /// The same as `compare` without its fast path; tests hold the two against each other.
    int compareByCollator(QStringView left, QStringView right) const;
    /// Whether names of printable ASCII characters are ordered without ICU. Not so where letters join ("aa" in Danish).
    bool hasAsciiKeys() const { return m_hasAsciiKeys; }

    /// The locale whose order the user has chosen by LC_ALL, LC_COLLATE or LANG; empty where that is "C", "POSIX" or
    /// nothing.
    static QByteArray userLocale();

private:
    using Key = std::vector<unsigned char>; // keys compare as bytes do

    void makeAsciiRanks();
    bool appendAsciiKey(QStringView name, Key &key) const;
    bool appendCollationKey(QStringView name, Key &key) const;

    struct Close {
        void operator()(UCollator *collator) const;
    };
    std::unique_ptr<UCollator, Close>
        m_collator; // null if ICU has no data at all; names then compare by their code units

    // The place of each printable ASCII character among all of them, from 1 on; equal for characters that differ by
    // case only, and one for all digits. `m_caseRank` tells those apart.
    std::array<unsigned char, 128> m_letterRank = {};
    std::array<unsigned char, 128> m_caseRank = {};
    bool m_hasAsciiKeys = false;
};

} // namespace Tessaline
