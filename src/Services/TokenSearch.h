#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <bitset>
#include <vector>

namespace Tessaline {

/// Counts the occurrences of a set of tokens in one walk over a text, whatever the number of the tokens. A value; may
/// be used by several threads at once.
class TokenSearch
{
public:
    /// A token that is there twice counts once, and an empty one is never found.
    explicit TokenSearch(const QStringList &tokens);

    bool isEmpty() const { return m_tokens.empty() && m_shortTokens.isEmpty(); }

    /// How often the tokens occur, in sum: for each token the occurrences that do not overlap each other, from the
    /// left. Inside of words too ("art" in "start"); the compare is exact.
    qsizetype hits(QStringView text) const;

private:
    static constexpr qsizetype kPrefix = 3; // units that a token is first recognised by
    static constexpr size_t kFilterBits = 1 << 14;

    struct Token {
        QString text;
        quint64 prefix = 0; // its first units, one behind the other
    };

    static quint64 prefixAt(const char16_t *units);
    static size_t filterBit(quint64 prefix);

    std::vector<Token> m_tokens;
    QStringList m_shortTokens;         // those of fewer units than a prefix has
    std::bitset<kFilterBits> m_filter; // set for the prefixes of all tokens
};

} // namespace Tessaline
