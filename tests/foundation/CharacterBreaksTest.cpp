#include "foundation/CharacterBreaks.h"

#include <gtest/gtest.h>
#include <unicode/ubrk.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>
#include <random>

using namespace Tessaline;

namespace {

QList<qsizetype> walk(const QString &text)
{
    const CharacterBreaks breaks(text);
    QList<qsizetype> ends;
    for (qsizetype position = 0; position < text.size();)
        ends.append(position = breaks.following(position));
    return ends;
}

/// What the rules alone say.
QList<qsizetype> rules(const QString &text)
{
    struct Close {
        void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
    };
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UBreakIterator, Close> iterator(
        ubrk_open(UBRK_CHARACTER, "", reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()), &status));
    QList<qsizetype> ends;
    for (int32_t end = ubrk_next(iterator.get()); end != UBRK_DONE; end = ubrk_next(iterator.get()))
        ends.append(end);
    return ends;
}

} // namespace

TEST(CharacterBreaks, AnEmptyTextHasNoCharacter)
{
    EXPECT_TRUE(walk(QString()).isEmpty());
    EXPECT_TRUE(CharacterBreaks(QString()).isBreak(0));
}

TEST(CharacterBreaks, CarriageReturnAndLineFeedAreOneCharacter)
{
    EXPECT_EQ(walk(u"a\r\nb\r\r\n\n"_qs), (QList<qsizetype>{1, 3, 4, 5, 7, 8}));
}

TEST(CharacterBreaks, MarksStayWithTheirLetterAndFacesWithTheirParts)
{
    EXPECT_EQ(walk(u"e\u0301x"_qs), (QList<qsizetype>{2, 3}));
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_qs;
    EXPECT_EQ(walk(family), QList<qsizetype>{family.size()});
}

TEST(CharacterBreaks, TheFastFormSaysWhatTheRulesSay)
{
    const QString pieces[] = {u"a"_qs,          u"Z "_qs,     u"."_qs,          u"\r"_qs,     u"\n"_qs,
                              u"\t"_qs,         u"\u00E4"_qs, u"\u0301"_qs,     u"\u0416"_qs, u"\u4E2D"_qs,
                              u"\u1100"_qs,     u"\u1161"_qs, u"\uAC00"_qs,     u"\u11A8"_qs, u"\u0915"_qs,
                              u"\u094D"_qs,     u"\u0E33"_qs, u"\u0600"_qs,     u"\u200D"_qs, u"\uFE0F"_qs,
                              u"\U0001F1E9"_qs, u"\u0D4E"_qs, u"\U0001F469"_qs, u"\u0903"_qs};
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (int count = int(random() % 12); count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        ASSERT_EQ(walk(text), rules(text)) << text.toStdString();
        const CharacterBreaks breaks(text);
        const QList<qsizetype> ends = rules(text);
        for (qsizetype position = 0; position <= text.size(); ++position)
            ASSERT_EQ(breaks.isBreak(position), position == 0 || ends.contains(position)) << text.toStdString();
    }
}
