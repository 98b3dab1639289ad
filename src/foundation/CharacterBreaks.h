#pragma once

#include <QtCore/QStringView>

#include <memory>

namespace Tessaline {

/// Whether there is a boundary between characters wherever two such units meet. True of most units of most texts, so
/// that the rules of Unicode need to be asked about the others only.
bool alwaysStandsAlone(QChar unit);

/// Where the characters (extended grapheme clusters; CR LF is one) of a text begin and end. A walk over the whole text
/// is linear. The text must outlive it and have fewer than 2^31 units. One thread at a time.
class CharacterBreaks
{
public:
    explicit CharacterBreaks(QStringView text);
    ~CharacterBreaks();
    CharacterBreaks(const CharacterBreaks &) = delete;
    CharacterBreaks &operator=(const CharacterBreaks &) = delete;

    /// The end of the character that holds the unit at `position`, which is before the end of the text.
    qsizetype following(qsizetype position) const
    {
        // FAST PATH: equals what the rules say, without a call, for the signs of which most texts consist.
        const bool isPlain = position + 1 < m_text.size() && isAlone(m_text[position]) && isAlone(m_text[position + 1]);
        return isPlain ? position + 1 : followingByRules(position);
    }
    /// Whether a character begins or ends here; the ends of the text count.
    bool isBreak(qsizetype position) const;

private:
    /// Below U+0300 only CR is ever part of a longer character, with the LF behind it.
    static bool isAlone(QChar unit) { return unit.unicode() < 0x300 && unit != u'\r'; }
    qsizetype followingByRules(qsizetype position) const;

    struct Rules;
    Rules &rules() const; // made when they are first asked

    QStringView m_text;
    mutable std::unique_ptr<Rules> m_rules;
};

} // namespace Tessaline
