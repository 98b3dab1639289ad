#include "editing/AttributedText.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextAttributes bold()
{
    TextAttributes attributes;
    attributes.bold = true;
    return attributes;
}

AttributedText plainBoldPlain() // "aaabbbccc"
{
    AttributedText text(u"aaa");
    text.append(u"bbb", bold());
    text.append(u"ccc", {});
    return text;
}

/// The plainest form: attributes unit by unit.
struct Units {
    QString text;
    QList<TextAttributes> attributes;

    explicit Units(const AttributedText &from) : text(from.text())
    {
        for (qsizetype i = 0; i < from.size(); ++i)
            attributes.append(from.attributesAt(i));
    }
    AttributedText joined() const
    {
        AttributedText result;
        for (qsizetype i = 0; i < text.size(); ++i)
            result.append(QStringView(text).sliced(i, 1), attributes.at(i));
        return result;
    }
};

} // namespace

TEST(AttributedText, NeighboursThatAreAlikeAreOneRun)
{
    AttributedText text(u"a");
    text.append(u"b", {});
    text.append(u"", bold());
    text.append(AttributedText(u"c"));
    EXPECT_EQ(described(text), u"{}abc");
    EXPECT_EQ(text.runs().size(), 1);
}

TEST(AttributedText, EqualTextsAreAlikeWhoeverMadeThem)
{
    TextAttributes one;
    one.linkDestination = SharedText(u"u"_s);
    TextAttributes other;
    other.linkDestination = SharedText(u"u"_s);
    AttributedText text(u"a", one);
    text.append(u"b", other);
    EXPECT_EQ(text.runs().size(), 1);
}

TEST(AttributedText, AnEmptyTextIsNotAnAbsentOne)
{
    TextAttributes empty;
    empty.linkDestination = SharedText(u""_s);
    EXPECT_NE(empty, TextAttributes());
    EXPECT_TRUE(empty.linkDestination.isPresent());
    EXPECT_FALSE(SharedText().isPresent());
}

TEST(AttributedText, RunsAreFoundByIndex)
{
    const AttributedText text = plainBoldPlain();
    EXPECT_EQ(text.runAt(0), 0);
    EXPECT_EQ(text.runAt(2), 0);
    EXPECT_EQ(text.runAt(3), 1);
    EXPECT_EQ(text.runAt(8), 2);
    EXPECT_EQ(text.runAt(9), 3);
    EXPECT_TRUE(text.attributesAt(5).bold);
}

TEST(AttributedText, Slices)
{
    EXPECT_EQ(described(plainBoldPlain().sliced({2, 2})), u"{}a{bold}b");
    EXPECT_EQ(described(plainBoldPlain().sliced({3, 3})), u"{bold}bbb");
    EXPECT_EQ(described(plainBoldPlain().sliced({9, 0})), u"");
}

TEST(AttributedText, ReplacingJoinsWhatMeets)
{
    AttributedText text = plainBoldPlain();
    text.replace({3, 3}, AttributedText(u"x"));
    EXPECT_EQ(described(text), u"{}aaaxccc");
    text.replace({1, 5}, {});
    EXPECT_EQ(described(text), u"{}ac");
}

TEST(AttributedText, SettingAnAttributeTwiceIsSettingItOnce)
{
    AttributedText text = plainBoldPlain();
    text.set({1, 3}, &TextAttributes::bold, true);
    const AttributedText once = text;
    text.set({1, 3}, &TextAttributes::bold, true);
    EXPECT_EQ(text, once);
    EXPECT_EQ(described(text), u"{}aa{bold}bbbb{}ccc"_s.replace(u"aa{bold}bbbb"_s, u"a{bold}aabbb"_s));
}

TEST(AttributedText, TakingAnAttributeAwayJoinsRuns)
{
    AttributedText text = plainBoldPlain();
    text.set({0, 9}, &TextAttributes::bold, false);
    EXPECT_EQ(text.runs().size(), 1);
}

TEST(AttributedText, TheEffectiveRangeLooksAtOneAttribute)
{
    AttributedText text = plainBoldPlain();
    text.set({4, 1}, &TextAttributes::italic, true);
    EXPECT_EQ(text.effectiveRange(4, &TextAttributes::bold, {0, 9}), (TextRange{3, 3}));
    EXPECT_EQ(text.effectiveRange(4, &TextAttributes::italic, {0, 9}), (TextRange{4, 1}));
    EXPECT_EQ(text.effectiveRange(4, &TextAttributes::inlineCode, {0, 9}), (TextRange{0, 9}));
}

TEST(AttributedText, TheEffectiveRangeStaysInsideItsLimits)
{
    EXPECT_EQ(plainBoldPlain().effectiveRange(4, &TextAttributes::bold, {4, 1}), (TextRange{4, 1}));
    EXPECT_EQ(plainBoldPlain().effectiveRange(4, &TextAttributes::bold, {0, 5}), (TextRange{3, 2}));
}

TEST(AttributedText, ACopyKeepsItsValue)
{
    AttributedText text = plainBoldPlain();
    const AttributedText copy = text;
    text.set({0, 9}, &TextAttributes::italic, true);
    text.append(text);
    EXPECT_EQ(copy, plainBoldPlain());
    EXPECT_EQ(text.size(), 18);
}

TEST(AttributedText, EveryEditIsThatOfItsUnits)
{
    GeneratedMarkdown random(10);
    for (int i = 0; i < 2000; ++i) {
        AttributedText text = random.attributedText(1 + random.below(12));
        Units units(text);
        const qsizetype location = random.below(text.size() + 1);
        const TextRange range{location, random.below(text.size() - location + 1)};
        switch (random.below(3)) {
        case 0: {
            const AttributedText other = random.attributedText(random.below(4));
            text.replace(range, other);
            const Units fresh(other);
            units.text.replace(range.location, range.length, other.text());
            units.attributes.remove(range.location, range.length);
            for (qsizetype k = 0; k < other.size(); ++k)
                units.attributes.insert(range.location + k, fresh.attributes.at(k));
            break;
        }
        case 1: {
            const SharedText tag = random.attributes().blockStyle;
            text.set(range, &TextAttributes::blockStyle, tag);
            for (qsizetype k = range.location; k < range.end(); ++k)
                units.attributes[k].blockStyle = tag;
            break;
        }
        default:
            text = text.sliced(range);
            units.text = units.text.mid(range.location, range.length);
            units.attributes = units.attributes.mid(range.location, range.length);
        }
        ASSERT_EQ(text, units.joined());
    }
}

} // namespace Tessaline
