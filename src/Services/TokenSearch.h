#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <vector>

namespace Tessaline {

/// The text in lower case, exactly as QString::toLower has it, several times as fast for letters of one unit.
QString lowered(QStringView text);

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
    static constexpr size_t kSlots = 1 << 12;
    static constexpr qint32 kNone = -1;

    struct Token {
        QString text;
        quint64 prefix = 0;  // its first units, one behind the other
        qint32 next = kNone; // another token of the same slot
    };

    static quint64 prefixAt(const char16_t *units);
    static size_t slotOf(quint64 prefix);

    std::vector<Token> m_tokens;
    QStringList m_shortTokens;          // those of fewer units than a prefix has
    std::array<qint32, kSlots> m_slots; // the first token whose prefix falls there
};

} // namespace Tessaline
