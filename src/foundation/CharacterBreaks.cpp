#include "foundation/CharacterBreaks.h"

#include <unicode/ubrk.h>

namespace Tessaline {

namespace {

struct Close {
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};
using Iterator = std::unique_ptr<UBreakIterator, Close>;

/// A new iterator over no text yet. Opening one costs much more than copying one.
Iterator freshIterator()
{
    UErrorCode status = U_ZERO_ERROR;
    thread_local const Iterator kPattern(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    Iterator copy(kPattern ? ubrk_clone(kPattern.get(), &status) : nullptr);
    if (U_FAILURE(status) || !copy)
        qFatal("The rules for breaking text are missing from the ICU library.");
    return copy;
}

/// FAST PATH: whether the two units plainly belong to different characters; if not, the rules decide.
bool plainlyApart(QChar before, QChar after)
{
    if (after == u'\n')
        return before != u'\r';
    if (before == u'\n' || before == u'\r')
        return true;
    return alwaysStandsAlone(before) && alwaysStandsAlone(after);
}

} // namespace

bool alwaysStandsAlone(QChar unit)
{
    const char16_t u = unit.unicode();
    if (u < 0x300)
        return u != u'\r' && u != u'\n';
    const bool isHangul = (u >= 0x1100 && u < 0x1200) || (u >= 0xA960 && u < 0xA980) || (u >= 0xAC00 && u < 0xD800);
    const bool joinsAsLetter = u == 0x0D4E || u == 0x0E33 || u == 0x0EB3;
    switch (unit.category()) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Other:
    case QChar::Punctuation_Other:
        return !isHangul && !joinsAsLetter;
    default:
        return false;
    }
}

struct CharacterBreaks::Rules {
    Iterator iterator = freshIterator();
};

CharacterBreaks::CharacterBreaks(QStringView text) : m_text(text) {}

CharacterBreaks::~CharacterBreaks() = default;

CharacterBreaks::Rules &CharacterBreaks::rules() const
{
    if (!m_rules) {
        m_rules = std::make_unique<Rules>();
        UErrorCode status = U_ZERO_ERROR;
        ubrk_setText(m_rules->iterator.get(), reinterpret_cast<const UChar *>(m_text.utf16()),
                     static_cast<int32_t>(m_text.size()), &status);
        Q_ASSERT(U_SUCCESS(status));
    }
    return *m_rules;
}

qsizetype CharacterBreaks::followingByRules(qsizetype position) const
{
    if (position + 1 >= m_text.size())
        return m_text.size();
    if (plainlyApart(m_text[position], m_text[position + 1]))
        return position + 1;
    const int32_t found = ubrk_following(rules().iterator.get(), static_cast<int32_t>(position));
    return found == UBRK_DONE ? m_text.size() : found;
}

bool CharacterBreaks::isBreak(qsizetype position) const
{
    if (position <= 0 || position >= m_text.size())
        return true;
    if (plainlyApart(m_text[position - 1], m_text[position]))
        return true;
    return ubrk_isBoundary(rules().iterator.get(), static_cast<int32_t>(position));
}

} // namespace Tessaline
