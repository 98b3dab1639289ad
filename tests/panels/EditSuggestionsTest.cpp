#include "panels/EditSuggestions.h"

#include <gtest/gtest.h>

using namespace Tessaline;

namespace {

const QString kBlock = u"<<<<<<< SEARCH\nold\n=======\nnew\n>>>>>>> REPLACE"_qs;

ChatMessage answer(const QString &content)
{
    return {
        .id = QUuid(u"0f0e0d0c-0b0a-0908-0706-050403020100"_qs), .role = kAssistantRole.toString(), .content = content};
}

} // namespace

TEST(EditSuggestions, IdsAreTheMessagesInCapitalsAndTheNumberOfTheBlock)
{
    const QList<EditSuggestion> suggestions = editSuggestions(answer(kBlock + u"\nand\n"_qs + kBlock));
    ASSERT_EQ(suggestions.size(), 2);
    EXPECT_EQ(suggestions[0], (EditSuggestion{.id = u"0F0E0D0C-0B0A-0908-0706-050403020100_0"_qs,
                                              .originalText = u"old"_qs,
                                              .replacementText = u"new"_qs}));
    EXPECT_EQ(suggestions[1].id, u"0F0E0D0C-0B0A-0908-0706-050403020100_1"_qs);
}

TEST(EditSuggestions, AGrowingAnswerOnlyGainsSuggestionsAtTheEnd)
{
    const QString whole = u"a\n"_qs + kBlock + u"\nb\n"_qs + kBlock + u"\nc"_qs;
    QList<EditSuggestion> before;
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const QList<EditSuggestion> now = editSuggestions(answer(whole.first(size)));
        ASSERT_GE(now.size(), before.size());
        ASSERT_EQ(now.first(before.size()), before);
        before = now;
    }
    EXPECT_EQ(before.size(), 2);
}

TEST(DisplayText, CompleteBlocksAreTakenOutAndTheEndsTrimmed)
{
    EXPECT_EQ(displayText(answer(u"\n Before.\n\n"_qs + kBlock + u"\n\nAfter. \n"_qs)), u"Before.\n\n\n\nAfter."_qs);
    EXPECT_EQ(displayText(answer(u"plain"_qs)), u"plain"_qs);
}

TEST(DisplayText, HalfABlockStaysVisibleUntilItIsWhole)
{
    const QString half = kBlock.chopped(1);
    EXPECT_EQ(displayText(answer(u"See: "_qs + half)), u"See: "_qs + half);
    EXPECT_EQ(displayText(answer(u"See: "_qs + kBlock)), u"See:"_qs);
}

TEST(DisplayText, AnAnswerOfNothingButBlocksHasNoText)
{
    EXPECT_EQ(displayText(answer(kBlock + u"\n\n"_qs + kBlock)), QString(u""_qs));
}
