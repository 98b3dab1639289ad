#include "foundation/NaturalCompare.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <thread>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

std::vector<qsizetype> orderOf(const NaturalCollator &collator, const QStringList &names)
{
    return collator.order(QList<QStringView>(names.begin(), names.end()));
}

QStringList sorted(const QStringList &names)
{
    const NaturalCollator root{QByteArray()};
    QStringList result;
    for (const qsizetype index : orderOf(root, names))
        result.append(names.at(index));
    return result;
}

/// Names that tend to collide: few letters in both cases, digits with zeros before them, punctuation.
QString randomName(std::mt19937 &random, QStringView alphabet)
{
    QString name;
    const size_t length = random() % 12;
    for (size_t i = 0; i < length; ++i)
        name.append(alphabet[static_cast<qsizetype>(random() % static_cast<size_t>(alphabet.size()))]);
    return name;
}

} // namespace

struct ComparedPair {
    const char *name;
    QString left;
    QString right;
    int expected;
};

void PrintTo(const ComparedPair &row, std::ostream *out)
{
    *out << row.name;
}

class LocalizedStandardCompare : public testing::TestWithParam<ComparedPair>
{};

TEST_P(LocalizedStandardCompare, OrdersAsAPersonExpects)
{
    const auto &[name, left, right, expected] = GetParam();

    EXPECT_EQ(localizedStandardCompare(left, right), expected);
    EXPECT_EQ(localizedStandardCompare(right, left), -expected);
}

INSTANTIATE_TEST_SUITE_P(
    Names, LocalizedStandardCompare,
    testing::Values(ComparedPair{"DigitsByTheirValue", u"File2.md"_s, u"File10.md"_s, -1},
                    ComparedPair{"DigitsBeforeCase", u"file2.md"_s, u"File10.md"_s, -1},
                    ComparedPair{"CaseDoesNotSeparateWords", u"apple"_s, u"Banana"_s, -1},
                    ComparedPair{"CapitalsAreNotBeforeAllSmallLetters", u"Zebra"_s, u"apple"_s, 1},
                    ComparedPair{"CaseDecidesWhereNothingElseDoes", u"readme"_s, u"README"_s, -1},
                    ComparedPair{"AccentsComeAfterLetters", u"Resume"_s, u"résumé"_s, -1},
                    ComparedPair{"AccentsDoNotSeparateWords", u"éa"_s, u"eb"_s, -1},
                    ComparedPair{"WidthDecidesWhereNothingElseDoes", u"ABC"_s, u"ＡＢＣ"_s, -1},
                    ComparedPair{"WidthDoesNotSeparateWords", u"ＡＢＣ"_s, u"abd"_s, -1},
                    ComparedPair{"WideDigitsAreDigits", u"File２"_s, u"File10"_s, -1},
                    ComparedPair{"ZerosBeforeANumberDecideLast", u"a01"_s, u"a1"_s, -1},
                    ComparedPair{"ZerosBeforeANumberDoNotCountAgainstTheRest", u"a01c"_s, u"a1b"_s, 1},
                    ComparedPair{"NumbersLongerThanAnyInteger", u"a99999999999999999999999999998"_s,
                                 u"a99999999999999999999999999999"_s, -1},
                    ComparedPair{"ShorterBeforeLonger", u"note"_s, u"note 2"_s, -1},
                    ComparedPair{"PunctuationBeforeDigitsAndLetters", u"_a"_s, u"1a"_s, -1},
                    ComparedPair{"EqualTexts", u"a.md"_s, u"a.md"_s, 0}, ComparedPair{"EmptyTexts", u""_s, u""_s, 0},
                    ComparedPair{"TheEmptyTextIsFirst", u""_s, u" "_s, -1},
                    ComparedPair{"ComposedAndDecomposedCollateAlikeButStayApart", u"e\u0301"_s, u"\u00E9"_s, -1}),
    [](const auto &row) { return row.param.name; });

TEST(NaturalCompare, TheLanguageOfTheEnvironmentDecides)
{
    const QByteArray all = qgetenv("LC_ALL");
    struct Row {
        QByteArray value;
        QByteArray locale;
    };
    for (const auto &[value, locale] : {Row{"C", ""}, Row{"POSIX", ""}, Row{"C.UTF-8", ""}, Row{"de_DE.UTF-8", "de_DE"},
                                        Row{"sv_SE", "sv_SE"}, Row{"cs_CZ.ISO8859-2", "cs_CZ"}}) {
        qputenv("LC_ALL", value);
        EXPECT_EQ(NaturalCollator::userLocale(), locale) << value.constData();
    }

    qunsetenv("LC_ALL");
    qputenv("LC_COLLATE", "da_DK.UTF-8");
    EXPECT_EQ(NaturalCollator::userLocale(), "da_DK") << "LC_COLLATE counts where LC_ALL is not set";

    qunsetenv("LC_COLLATE");
    qputenv("LC_ALL", all);
}

TEST(NaturalCompare, ALocalesOwnAlphabetIsFollowed)
{
    EXPECT_EQ(NaturalCollator("de").compare(u"ärger", u"zahl"), -1);
    EXPECT_EQ(NaturalCollator("sv").compare(u"ärger", u"zahl"), 1);
    EXPECT_EQ(NaturalCollator("et").compare(u"zoo", u"tee"), -1);     // z stands before t
    EXPECT_EQ(NaturalCollator("da").compare(u"aarhus", u"zebra"), 1); // "aa" is a letter at the end of the alphabet
    EXPECT_EQ(NaturalCollator("cs").compare(u"chata", u"hora"), 1);   // so is "ch", after h
}

TEST(NaturalCompare, TheFastPathIsUsedWhereLettersStandForThemselvesOnly)
{
    for (const char *locale : {"", "en_US", "de_DE", "fr_FR", "sv_SE", "ja_JP"})
        EXPECT_TRUE(NaturalCollator(locale).hasAsciiKeys()) << locale;
    for (const char *locale : {"da_DK", "cs_CZ", "hu_HU", "lt_LT"})
        EXPECT_FALSE(NaturalCollator(locale).hasAsciiKeys()) << locale;
}

TEST(NaturalCompare, TheFastPathEqualsTheCollator)
{
    std::mt19937 random(20240131);
    QString printable;
    for (char16_t unit = u' '; unit <= u'~'; ++unit)
        printable.append(QChar(unit));
    const QStringList alphabets = {u"aAbB019._-"_s, u"012"_s, u"chCHaAyYiIzZ"_s, printable,
                                   printable + u"\u0001\té\u0301２Ａ"_s};

    for (const char *locale : {"", "en_US", "de_DE", "fr_CA", "sv_SE", "da_DK", "cs_CZ", "lt_LT", "th_TH", "ja_JP",
                               "zh_CN", "en_US_POSIX"}) {
        const NaturalCollator collator(locale);
        for (const QString &alphabet : alphabets) {
            for (int i = 0; i < 4000; ++i) {
                const QString left = randomName(random, alphabet);
                // Half of the pairs share a beginning, as names in one folder do.
                const QString right =
                    i % 2 ? left.first(left.size() / 2) + randomName(random, alphabet) : randomName(random, alphabet);
                ASSERT_EQ(collator.compare(left, right), collator.compareByCollator(left, right))
                    << locale << ": \"" << left.toStdString() << "\" and \"" << right.toStdString() << '"';
            }
        }
    }
}

TEST(NaturalCompare, TheFastPathEqualsTheCollatorForVeryLongNumbers)
{
    const NaturalCollator collator{QByteArray()};
    QStringList names;
    for (const int zeros : {0, 1, 300})
        for (const int digits : {1, 2, 253, 254, 255, 256, 508, 509})
            for (const QChar digit : {u'1', u'9'})
                names.append(QString(zeros, u'0') + QString(digits, digit) + u'x');

    for (const QString &left : names)
        for (const QString &right : names)
            ASSERT_EQ(collator.compare(left, right), collator.compareByCollator(left, right))
                << left.toStdString() << '\n'
                << right.toStdString();
}

TEST(NaturalCompare, TheOrderOfAListIsThatOfItsPairs)
{
    std::mt19937 random(77);
    for (const char *locale : {"", "da_DK", "th_TH"}) {
        const NaturalCollator collator(locale);
        for (const QString &alphabet : {u"aAbB019._-"_s, u"aA1é\u0301２Ａö"_s}) {
            QStringList names;
            for (int i = 0; i < 300; ++i)
                names.append(randomName(random, alphabet));
            std::vector<qsizetype> expected(300);
            std::iota(expected.begin(), expected.end(), 0);
            std::ranges::stable_sort(expected, [&](qsizetype left, qsizetype right) {
                return collator.compareByCollator(names.at(left), names.at(right)) < 0;
            });

            EXPECT_EQ(orderOf(collator, names), expected) << locale;
        }
    }
}

TEST(NaturalCompare, AListOfAsciiAndOtherNamesIsOneOrder)
{
    EXPECT_EQ(sorted({u"zeta.md"_s, u"Émile.md"_s, u"file10.md"_s, u"File2.md"_s, u"eve.md"_s}),
              (QStringList{u"Émile.md"_s, u"eve.md"_s, u"File2.md"_s, u"file10.md"_s, u"zeta.md"_s}));
}

TEST(NaturalCompare, ListsOfNoneAndOneNameAreInOrder)
{
    EXPECT_TRUE(localizedStandardOrder({}).empty());
    EXPECT_EQ(localizedStandardOrder({QStringView(u"a")}), std::vector<qsizetype>{0});
}

TEST(NaturalCompare, EqualNamesKeepTheirOrder)
{
    EXPECT_EQ(localizedStandardOrder({u"b", u"a", u"b", u"a"}), (std::vector<qsizetype>{1, 3, 0, 2}));
}

TEST(NaturalCompare, IsTheSameOnSeveralThreads)
{
    QStringList names;
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i)
        names.append(randomName(random, u"aAbBé019２"));
    const QList<QStringView> views(names.begin(), names.end());
    const std::vector<qsizetype> expected = localizedStandardOrder(views);

    std::array<std::vector<qsizetype>, 4> orders;
    {
        std::vector<std::jthread> threads;
        for (std::vector<qsizetype> &order : orders)
            threads.emplace_back([&order, &views] { order = localizedStandardOrder(views); });
    }

    for (const std::vector<qsizetype> &order : orders)
        EXPECT_EQ(order, expected);
}

} // namespace Tessaline
