#include "foundation/NaturalCompare.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/uset.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <span>

namespace Tessaline {

namespace {

constexpr char16_t kFirstPrintable = u' ';
constexpr char16_t kLastPrintable = u'~';
constexpr size_t kLongestNumber = 254; // digits; ICU cuts longer ones into several numbers

const UChar *units(QStringView text)
{
    return reinterpret_cast<const UChar *>(text.utf16());
}

int32_t length(QStringView text)
{
    return static_cast<int32_t>(text.size());
}

bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

/// -1, 0 or 1, byte by byte; a key that ends comes first.
int compareKeys(std::span<const unsigned char> left, std::span<const unsigned char> right)
{
    const int order = std::memcmp(left.data(), right.data(), std::min(left.size(), right.size()));
    return order != 0 ? sign(order) : (left.size() > right.size()) - (left.size() < right.size());
}

int collate(const UCollator *collator, QStringView left, QStringView right)
{
    return ucol_strcoll(collator, units(left), length(left), units(right), length(right));
}

/// Whether some text of ASCII characters only is ordered as a unit of its own, or a single one as several.
bool joinsAsciiCharacters(const UCollator *collator)
{
    UErrorCode status = U_ZERO_ERROR;
    USet *const texts = uset_openEmpty();
    ucol_getContractionsAndExpansions(collator, texts, texts, true, &status);
    bool joins = U_FAILURE(status);
    const int32_t count = uset_getItemCount(texts);
    for (int32_t i = 0; i < count && !joins; ++i) {
        UChar32 first = 0;
        UChar32 last = 0;
        std::array<UChar, 64> text;
        status = U_ZERO_ERROR;
        const int32_t size = uset_getItem(texts, i, &first, &last, text.data(), text.size(), &status);
        if (size == 0) // a range of single characters
            joins = first <= 0x7F;
        else if (U_SUCCESS(status)) // a text; one that does not fit is far from ASCII
            joins = std::all_of(text.begin(), text.begin() + size, [](UChar unit) { return unit <= 0x7F; });
    }
    uset_close(texts);
    return joins;
}

} // namespace

void NaturalCollator::Close::operator()(UCollator *collator) const
{
    ucol_close(collator);
}

NaturalCollator::NaturalCollator(const QByteArray &locale)
{
    UErrorCode status = U_ZERO_ERROR;
    m_collator.reset(ucol_open(locale.constData(), &status));
    if (U_FAILURE(status)) {
        m_collator.reset();
        return;
    }
    ucol_setAttribute(m_collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    makeAsciiRanks();
}

NaturalCollator::~NaturalCollator() = default;

QByteArray NaturalCollator::userLocale()
{
    for (const char *variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const QByteArray value = qgetenv(variable);
        if (value.isEmpty())
            continue;
        // NOTE: ICU takes "C" for an American locale that sorts all capitals before all small letters.
        if (value == "C" || value == "POSIX" || value.startsWith("C."))
            return {};
        std::array<char, ULOC_FULLNAME_CAPACITY> canonical = {};
        UErrorCode status = U_ZERO_ERROR;
        uloc_canonicalize(value.constData(), canonical.data(), canonical.size(), &status);
        return U_SUCCESS(status) ? QByteArray(canonical.data()) : QByteArray();
    }
    return {};
}

// What ICU does with printable ASCII, as one table: no text of them is ordered as a unit, each has one weight on the
// first level and, if two share that, one of case. Wherever the locale is not that plain there is no table and ICU does
// all.
void NaturalCollator::makeAsciiRanks()
{
    UCollator *const collator = m_collator.get();
    UErrorCode status = U_ZERO_ERROR;
    const bool isPlain = ucol_getStrength(collator) == UCOL_TERTIARY &&
                         ucol_getAttribute(collator, UCOL_ALTERNATE_HANDLING, &status) == UCOL_NON_IGNORABLE &&
                         ucol_getAttribute(collator, UCOL_CASE_LEVEL, &status) == UCOL_OFF &&
                         ucol_getAttribute(collator, UCOL_FRENCH_COLLATION, &status) == UCOL_OFF && U_SUCCESS(status);
    if (!isPlain || joinsAsciiCharacters(collator))
        return;

    // 1. The characters in their order; of the digits only one, as a number stands where its first digit does.
    std::vector<char16_t> characters;
    for (char16_t unit = kFirstPrintable; unit <= kLastPrintable; ++unit)
        if (!isDigit(unit) || unit == u'0')
            characters.push_back(unit);
    std::ranges::sort(characters, [collator](char16_t left, char16_t right) {
        return collate(collator, QStringView(&left, 1), QStringView(&right, 1)) < 0;
    });

    // 2. Their ranks: a new letter where the first level differs, otherwise a new case of the same one.
    bool fits = true;
    unsigned char letter = 1;
    unsigned char caseOfLetter = 1;
    for (size_t i = 0; i < characters.size(); ++i) {
        const QStringView current(&characters[i], 1);
        if (i > 0) {
            const QStringView previous(&characters[i - 1], 1);
            ucol_setStrength(collator, UCOL_PRIMARY);
            const bool isNewLetter = collate(collator, previous, current) != 0;
            ucol_setStrength(collator, UCOL_SECONDARY);
            fits = fits && (isNewLetter || collate(collator, previous, current) == 0);
            ucol_setStrength(collator, UCOL_TERTIARY);
            letter = static_cast<uchar>(letter + (isNewLetter ? 1 : 0));
            caseOfLetter = static_cast<uchar>(isNewLetter ? 1 : caseOfLetter + 1);
        } else {
            ucol_setStrength(collator, UCOL_PRIMARY);
            fits = collate(collator, QStringView(), current) != 0; // none is left out of the comparison
            ucol_setStrength(collator, UCOL_TERTIARY);
        }
        m_letterRank[characters[i]] = letter;
        m_caseRank[characters[i]] = caseOfLetter;
    }

    // 3. Digits are numbers, with zeros before them or not.
    fits = fits && collate(collator, u"2", u"10") < 0 && collate(collator, u"02", u"2") == 0;
    m_hasAsciiKeys = fits;
}

// A key of bytes: the letters' ranks, each number as the rank of digits, the count of its digits and the digits; a
// zero, which is below every rank; the cases in the same order.
bool NaturalCollator::appendAsciiKey(QStringView name, Key &key) const
{
    if (!m_hasAsciiKeys)
        return false;
    const char16_t *const begin = name.utf16();
    const char16_t *const end = begin + name.size();

    for (const char16_t *unit = begin; unit != end;) {
        if (*unit < kFirstPrintable || *unit > kLastPrintable)
            return false;
        if (!isDigit(*unit)) {
            key.push_back(m_letterRank[*unit++]);
            continue;
        }
        const char16_t *const afterNumber = std::find_if_not(unit, end, isDigit);
        const char16_t *const firstDigit =
            std::find_if(unit, afterNumber - 1, [](char16_t digit) { return digit != u'0'; });
        const size_t digits = static_cast<size_t>(afterNumber - firstDigit);
        if (digits > kLongestNumber)
            return false;
        key.push_back(m_letterRank[u'0']);
        key.push_back(static_cast<unsigned char>(digits));
        for (unit = firstDigit; unit != afterNumber; ++unit)
            key.push_back(static_cast<unsigned char>(*unit));
    }
    key.push_back(0);
    for (const char16_t *unit = begin; unit != end; ++unit)
        if (!isDigit(*unit))
            key.push_back(m_caseRank[*unit]);
    return true;
}

bool NaturalCollator::appendCollationKey(QStringView name, Key &key) const
{
    if (!m_collator)
        return false;
    const size_t start = key.size();
    key.resize(start + static_cast<size_t>(name.size()) * 4 + 16); // enough for most
    for (;;) {
        const auto room = static_cast<int32_t>(key.size() - start);
        const int32_t size = ucol_getSortKey(m_collator.get(), units(name), length(name), key.data() + start, room);
        key.resize(start + static_cast<size_t>(size));
        if (size <= room)
            return size > 0; // 0 stands for an error
    }
}

int NaturalCollator::compareByCollator(QStringView left, QStringView right) const
{
    // WORKAROUND: ICU 72's ucol_strcoll passes over an equal beginning even in the middle of a number of wide digits,
    // so that it is no order at all there; its keys are one.
    thread_local Key leftKey;
    thread_local Key rightKey;
    leftKey.clear();
    rightKey.clear();
    if (appendCollationKey(left, leftKey) && appendCollationKey(right, rightKey))
        if (const int order = compareKeys(leftKey, rightKey))
            return order;
    return sign(left.compare(right)); // names that collate alike still have one order
}

int NaturalCollator::compare(QStringView left, QStringView right) const
{
    // FAST PATH: equals compareByCollator, which costs several times as much.
    thread_local Key leftKey;
    thread_local Key rightKey;
    leftKey.clear();
    rightKey.clear();
    if (!appendAsciiKey(left, leftKey) || !appendAsciiKey(right, rightKey))
        return compareByCollator(left, right);
    const int order = compareKeys(leftKey, rightKey);
    return order != 0 ? order : sign(left.compare(right));
}

std::vector<qsizetype> NaturalCollator::order(const QList<QStringView> &names) const
{
    std::vector<qsizetype> indices(static_cast<size_t>(names.size()));
    std::iota(indices.begin(), indices.end(), 0);
    if (names.size() < 2)
        return indices;

    // 1. One key a name, all of the same kind: those of ASCII names if all are, otherwise ICU's.
    Key keys;
    std::vector<size_t> ends;
    ends.reserve(indices.size());
    keys.reserve(indices.size() * 40); // enough for most names; it grows
    const auto makeKeys = [&](auto appendKey) {
        keys.clear();
        ends.clear();
        return std::ranges::all_of(names, [&](QStringView name) {
            const bool appended = (this->*appendKey)(name, keys);
            ends.push_back(keys.size());
            return appended;
        });
    };
    const bool hasKeys = makeKeys(&NaturalCollator::appendAsciiKey) || makeKeys(&NaturalCollator::appendCollationKey);

    // 2. The order of the keys; names that collate alike still have one order.
    const auto keyOf = [&](qsizetype index) {
        const size_t start = index == 0 ? 0 : ends[static_cast<size_t>(index) - 1];
        return std::span(keys).subspan(start, ends[static_cast<size_t>(index)] - start);
    };
    std::ranges::sort(indices, [&](qsizetype left, qsizetype right) {
        int order = hasKeys ? compareKeys(keyOf(left), keyOf(right)) : 0;
        if (order == 0)
            order = names.at(left).compare(names.at(right));
        return order != 0 ? order < 0 : left < right;
    });
    return indices;
}

namespace {

const NaturalCollator &userCollator()
{
    static const NaturalCollator collator(NaturalCollator::userLocale());
    return collator;
}

} // namespace

int localizedStandardCompare(QStringView left, QStringView right)
{
    return userCollator().compare(left, right);
}

std::vector<qsizetype> localizedStandardOrder(const QList<QStringView> &names)
{
    return userCollator().order(names);
}

} // namespace Tessaline
