#include "panels/LikelyDuplicate.h"

#include <gtest/gtest.h>

using namespace Tessaline;

namespace {

QList<ContextItem> items(const QStringList &names)
{
    QList<ContextItem> items;
    for (const QString &name : names)
        items.append({.name = name, .subtitle = {}, .content = {}, .digest = {}});
    return items;
}

} // namespace

TEST(LikelyDuplicate, EitherNameMayHoldTheOther)
{
    const QList<ContextItem> attached = items({u"Notes"_qs, u"Hamlet (play)"_qs});
    EXPECT_EQ(findLikelyDuplicate(u"Hamlet"_qs, attached), 1);
    EXPECT_EQ(findLikelyDuplicate(u"Hamlet (play), act two"_qs, attached), 1);
    EXPECT_EQ(findLikelyDuplicate(u"Macbeth"_qs, attached), std::nullopt);
}

TEST(LikelyDuplicate, CaseAndWhiteSpaceAtTheEndsDoNotCount)
{
    EXPECT_EQ(findLikelyDuplicate(u"\n HAMLET "_qs, items({u" hamlet\t"_qs})), 0);
    EXPECT_EQ(findLikelyDuplicate(u"ham let"_qs, items({u"hamlet"_qs})), std::nullopt);
    EXPECT_EQ(findLikelyDuplicate(u"cafe\u0301"_qs, items({u"CAF\u00C9"_qs})), 0);
}

TEST(LikelyDuplicate, TheFirstIsFound)
{
    EXPECT_EQ(findLikelyDuplicate(u"a"_qs, items({u"b"_qs, u"abc"_qs, u"a"_qs})), 1);
}

TEST(LikelyDuplicate, ABlankNameRepeatsNothing)
{
    EXPECT_EQ(findLikelyDuplicate(u" \n"_qs, items({u""_qs, u"a"_qs})), std::nullopt);
}

TEST(LikelyDuplicate, ABlankAttachedNameIsHeldByAll)
{
    EXPECT_EQ(findLikelyDuplicate(u"a"_qs, items({u" "_qs})), 0);
}

TEST(VisibleSuggestions, RepetitionsOfAttachedItemsAndOfEachOtherAreLeftOut)
{
    EXPECT_EQ(visibleSuggestions({u" Hamlet"_qs, u"hamlet"_qs, u""_qs, u" "_qs, u"Act II of Faust"_qs, u"Elsinore"_qs},
                                 items({u"Faust"_qs})),
              (QStringList{u" Hamlet"_qs, u"Elsinore"_qs}));
    EXPECT_TRUE(visibleSuggestions({}, items({u"Faust"_qs})).isEmpty());
}
