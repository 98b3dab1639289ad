#include "panels/UniqueSearch.h"

#include "foundation/CharacterBreaks.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <QtCore/QStringList>

#include <random>

using namespace Tessaline;

namespace {

using Kind = UniqueRange::Kind;
constexpr Likeness kExact = Likeness::Exact;
constexpr Likeness kIgnored = Likeness::CaseIgnored;

UniqueRange unique(qsizetype location, qsizetype length)
{
    return {Kind::Unique, {location, length}};
}

const UniqueRange kAbsent{};
const UniqueRange kAmbiguous{Kind::Ambiguous, {}};

QStringList characters(const QString &text)
{
    QStringList result;
    const CharacterBreaks breaks(text);
    for (qsizetype position = 0; position < text.size();) {
        const qsizetype end = breaks.following(position);
        result.append(text.mid(position, end - position));
        position = end;
    }
    return result;
}

/// Character by character at every place.
UniqueRange plainUniqueRange(const QString &needle, const QString &haystack, Likeness likeness)
{
    const auto form = [likeness](const QString &character) {
        QString result = character.normalized(QString::NormalizationForm_D);
        if (likeness == kIgnored)
            result = result.toCaseFolded().normalized(QString::NormalizationForm_D);
        return result;
    };
    const QStringList sought = characters(needle);
    const QStringList all = characters(haystack);
    UniqueRange found;
    qsizetype offset = 0;
    for (qsizetype i = 0; !sought.isEmpty() && i + sought.size() <= all.size();) {
        qsizetype length = 0;
        bool matches = true;
        for (qsizetype j = 0; j < sought.size() && matches; ++j) {
            matches = form(sought[j]) == form(all[i + j]);
            length += all[i + j].size();
        }
        if (matches && found.kind == Kind::Unique)
            return kAmbiguous;
        if (matches)
            found = unique(offset, length);
        for (qsizetype step = matches ? sought.size() : 1; step > 0; --step)
            offset += all[i++].size();
    }
    return found;
}

} // namespace

namespace Tessaline {
void PrintTo(const UniqueRange &found, std::ostream *out)
{
    *out << int(found.kind) << " at " << found.range.location << " + " << found.range.length;
}
} // namespace Tessaline

TEST(UniqueSearch, AnEmptyTextIsFoundNowhereAndNothingIsFoundInOne)
{
    EXPECT_EQ(uniqueRange(u"", u"abc", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"abc", u"", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"", u"", kIgnored), kAbsent);
}

TEST(UniqueSearch, OneTwoOrNoOccurrence)
{
    EXPECT_EQ(uniqueRange(u"b", u"abc", kExact), unique(1, 1));
    EXPECT_EQ(uniqueRange(u"b", u"abcb", kExact), kAmbiguous);
    EXPECT_EQ(uniqueRange(u"d", u"abc", kExact), kAbsent);
}

TEST(UniqueSearch, AMatchAtTheEndIsUnique)
{
    EXPECT_EQ(uniqueRange(u"bc", u"abc", kExact), unique(1, 2));
}

TEST(UniqueSearch, OverlappingOccurrencesAreOne)
{
    EXPECT_EQ(uniqueRange(u"aa", u"aaa", kExact), unique(0, 2));
    EXPECT_EQ(uniqueRange(u"aa", u"aaaa", kExact), kAmbiguous);
}

TEST(UniqueSearch, CaseCountsOnlyWhenItIsAskedFor)
{
    EXPECT_EQ(uniqueRange(u"STRASSE Ä", u"Die straße ä.", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"STRASSE Ä", u"Die straße ä.", kIgnored), unique(4, 8));
    EXPECT_EQ(uniqueRange(u"s", u"ß", kIgnored), kAbsent);
}

TEST(UniqueSearch, CanonicallyEqualTextIsEqualAndWholeCharactersAreFound)
{
    EXPECT_EQ(uniqueRange(u"caf\u00E9", u"un cafe\u0301 noir", kExact), unique(3, 5));
    EXPECT_EQ(uniqueRange(u"cafe\u0301", u"un caf\u00E9 noir", kExact), unique(3, 4));
    EXPECT_EQ(uniqueRange(u"cafe", u"un cafe\u0301 noir", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"\u0301", u"e\u0301", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"\uAC01", u"\u1100\u1161\u11A8", kExact), unique(0, 3));
}

TEST(UniqueSearch, CarriageReturnAndLineFeedAreOneCharacter)
{
    EXPECT_EQ(uniqueRange(u"a\n", u"a\r\nb", kExact), kAbsent);
    EXPECT_EQ(uniqueRange(u"\r\nb", u"a\r\nb", kExact), unique(1, 3));
}

TEST(UniqueSearch, TheFastFormFindsWhatTheCharactersSay)
{
    const QString pieces[] = {u"a"_qs,      u"A"_qs,      u"b"_qs,          u"\u00E4"_qs,    u"a\u0308"_qs,
                              u"\u00C4"_qs, u"\u0308"_qs, u"\r\n"_qs,       u"\n"_qs,        u"\u0416"_qs,
                              u"\u0436"_qs, u"\u1100"_qs, u"\u1161"_qs,     u"\uAC00"_qs,    u"\u200D"_qs,
                              u"\u212B"_qs, u"\u00E5"_qs, u"\U0001F469"_qs, u" "_qs,         u"\u0323"_qs,
                              u"\u0307"_qs, u"\u0600"_qs, u"\U00010400"_qs, u"\U00010428"_qs};
    std::mt19937 random(3);
    const auto text = [&](int most) {
        QString result;
        const int variety = 2 + int(random() % std::size(pieces));
        for (int count = int(random() % unsigned(most)); count > 0; --count)
            result += pieces[random() % unsigned(std::min<int>(variety, std::size(pieces)))];
        return result;
    };
    int kinds[3] = {};
    for (int round = 0; round < 20'000; ++round) {
        const QString haystack = text(24);
        const QString needle = text(5);
        for (const Likeness likeness : {kExact, kIgnored}) {
            const UniqueRange found = uniqueRange(needle, haystack, likeness);
            ASSERT_EQ(found, plainUniqueRange(needle, haystack, likeness))
                << needle.toStdString() << " in " << haystack.toStdString();
            ++kinds[int(found.kind)];
        }
    }
    for (const int count : kinds)
        EXPECT_GT(count, 500);
}
