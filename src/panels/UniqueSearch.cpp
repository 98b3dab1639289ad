#include "panels/UniqueSearch.h"

#include "foundation/CharacterBreaks.h"

#include <QtCore/QHash>

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace Tessaline {

namespace {

constexpr qint32 kInside = -1;

/// Full folding, which may give more units than it was given; QString folds to one character only.
QString caseFolded(const QString &text)
{
    constexpr qsizetype kMostPerUnit = 3;
    QString folded(text.size() * kMostPerUnit, Qt::Uninitialized);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t size = u_strFoldCase(reinterpret_cast<UChar *>(folded.data()), int32_t(folded.size()),
                                       reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()),
                                       U_FOLD_CASE_DEFAULT, &status);
    Q_ASSERT(U_SUCCESS(status));
    folded.truncate(size);
    return folded;
}

/// Turns characters into the units by which they are compared. Those of one unit, which are most, are looked up.
class Comparer
{
public:
    explicit Comparer(Likeness likeness) : m_likeness(likeness) {}

    /// Appends the characters of a text to `units`. Before each stretch of them `begin` is told where it begins in the
    /// text, how many characters of one unit each it is, or 1 for a character of any size.
    template <class Begin>
    void append(QStringView text, QString &units, Begin begin)
    {
        const CharacterBreaks breaks(text);
        for (qsizetype position = 0; position < text.size();) {
            if (const qsizetype length = plainLength(text.sliced(position)); length > 0) {
                begin(position, length);
                appendPlain(text.sliced(position, length), units);
                position += length;
                continue;
            }
            const qsizetype end = breaks.following(position);
            begin(position, 1);
            units += compared(text.sliced(position, end - position));
            position = end;
        }
    }

private:
    /// FAST PATH: how many units at the start are a character each, and compared as they are but for their case.
    static qsizetype plainLength(QStringView text)
    {
        qsizetype length = 0;
        while (length < text.size() && text[length].unicode() < 0x80 && text[length] != u'\r')
            ++length;
        const bool mayBeExtended = length > 0 && length < text.size() && text[length] != u'\r';
        return mayBeExtended ? length - 1 : length;
    }

    void appendPlain(QStringView text, QString &units) const
    {
        const qsizetype from = units.size();
        units += text;
        if (m_likeness == Likeness::Exact)
            return;
        char16_t *const unit = reinterpret_cast<char16_t *>(units.data());
        for (qsizetype i = from; i < units.size(); ++i)
            unit[i] = unit[i] >= u'A' && unit[i] <= u'Z' ? unit[i] | 0x20 : unit[i];
    }

    QString compared(QStringView character)
    {
        if (character.size() > 1)
            return computed(character);
        const char16_t unit = character[0].unicode();
        const auto known = m_singles.constFind(unit);
        return known != m_singles.cend() ? *known : *m_singles.insert(unit, computed(character));
    }

    QString computed(QStringView character) const
    {
        if (m_likeness == Likeness::Normalized)
            character = normalizedCharacter(character);
        const QString decomposed = character.toString().normalized(QString::NormalizationForm_D);
        return m_likeness == Likeness::Exact ? decomposed
                                             : caseFolded(decomposed).normalized(QString::NormalizationForm_D);
    }

    Likeness m_likeness;
    QHash<char16_t, QString> m_singles;
};

/// For each length of a matched beginning of the needle: how much of it is still matched when the next unit differs
/// (Knuth, Morris, Pratt).
std::vector<qint32> fallbackOf(const QString &needle)
{
    std::vector<qint32> fallback(size_t(needle.size()) + 1, 0);
    qint32 matched = 0;
    for (qsizetype i = 1; i < needle.size(); ++i) {
        while (matched > 0 && needle[i] != needle[matched])
            matched = fallback[size_t(matched)];
        if (needle[i] == needle[matched])
            ++matched;
        fallback[size_t(i) + 1] = matched;
    }
    return fallback;
}

} // namespace

QStringView normalizedCharacter(QStringView character)
{
    switch (character[0].unicode()) {
    case u'\r':
        return u"\n";
    case 0x201C:
    case 0x201D:
        return character.size() == 1 ? u"\"" : character;
    case 0x2018:
    case 0x2019:
        return character.size() == 1 ? u"'" : character;
    case 0x2014:
        return character.size() == 1 ? u"-" : character;
    default:
        return character;
    }
}

SearchableText::SearchableText(QStringView text, Likeness likeness) : m_likeness(likeness)
{
    m_units.reserve(text.size());
    m_origin.reserve(size_t(text.size()) + 1);
    Comparer(likeness).append(text, m_units, [this](qsizetype position, qsizetype count) {
        m_origin.resize(size_t(m_units.size()), kInside);
        for (qsizetype i = 0; i < count; ++i)
            m_origin.push_back(qint32(position + i));
    });
    m_origin.resize(size_t(m_units.size()), kInside);
    m_origin.push_back(qint32(text.size()));
}

UniqueRange SearchableText::uniqueRange(QStringView needle) const
{
    QString units;
    Comparer(m_likeness).append(needle, units, [](qsizetype, qsizetype) {});
    if (units.isEmpty() || units.size() > m_units.size())
        return {};
    const std::vector<qint32> fallback = fallbackOf(units);
    const qsizetype first = find(units, fallback, 0);
    if (first < 0)
        return {};
    const qsizetype end = first + units.size();
    if (find(units, fallback, end) >= 0)
        return {UniqueRange::Kind::Ambiguous, {}};
    const qint32 location = m_origin[size_t(first)];
    return {UniqueRange::Kind::Unique, {location, m_origin[size_t(end)] - location}};
}

qsizetype SearchableText::find(const QString &needle, const std::vector<qint32> &fallback, qsizetype from) const
{
    const QChar *const units = m_units.constData();
    const QChar *const sought = needle.constData();
    const qsizetype length = needle.size();
    qsizetype matched = 0;
    for (qsizetype i = from; i < m_units.size(); ++i) {
        if (matched == 0) { // FAST PATH: to the next place where a match can begin
            i = m_units.indexOf(sought[0], i);
            if (i < 0)
                return -1;
        }
        while (matched > 0 && units[i] != sought[matched])
            matched = fallback[size_t(matched)];
        if (units[i] == sought[matched])
            ++matched;
        if (matched < length)
            continue;
        const qsizetype begin = i + 1 - length;
        if (m_origin[size_t(begin)] != kInside && m_origin[size_t(i) + 1] != kInside)
            return begin;
        matched = fallback[size_t(matched)];
    }
    return -1;
}

UniqueRange uniqueRange(QStringView needle, QStringView haystack, Likeness likeness)
{
    if (needle.isEmpty() || haystack.isEmpty())
        return {};
    return SearchableText(haystack, likeness).uniqueRange(needle);
}

} // namespace Tessaline
