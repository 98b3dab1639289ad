#include "Services/AIModelOption.h"

#include "tests/support/TemporaryFiles.h"

#include <QtCore/QSet>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 kGiB = quint64(1) << 30;

TEST(AIModelOption, TheTableHasThreeModelsFromTheSmallestToTheLargest)
{
    const QList<AIModelOption> expected{
        {u"llama-3.2-3b-q4"_s, u"Llama 3.2 Compact"_s, u"3B · Q4_K_M"_s, u"2.0 GB"_s, 8, 8192,
         u"Fastest responses and the lowest memory use. Best for shorter edits."_s},
        {u"llama-3.1-8b-q4"_s, u"Llama 3.1 Balanced"_s, u"8B · Q4_K_M"_s, u"4.9 GB"_s, 16, 16384,
         u"The default balance of writing quality, context, and speed."_s},
        {u"qwen-2.5-14b-q4"_s, u"Qwen 2.5 High Quality"_s, u"14B · Q4_K_M"_s, u"9.0 GB"_s, 32, 32768,
         u"Stronger analysis and drafting for Macs with substantial unified memory."_s},
    };

    EXPECT_EQ(approvedModels(), expected);
}

TEST(AIModelOption, IsComparedAndHashedByAllItsFields)
{
    AIModelOption other = approvedModels().first();
    EXPECT_EQ(other, approvedModels().first());
    other.summary += u'.';

    EXPECT_NE(other, approvedModels().first());
    EXPECT_EQ((QSet<AIModelOption>{other, approvedModels().first(), other}).size(), 2);
}

TEST(RecommendedModel, FollowsTheMemoryWithRoomToSpare)
{
    const struct {
        quint64 memory;
        QString id;
    } cases[]{
        {0, u"llama-3.2-3b-q4"_s},
        {8 * kGiB, u"llama-3.2-3b-q4"_s},
        {16 * kGiB - 1, u"llama-3.2-3b-q4"_s},
        {16 * kGiB, u"llama-3.1-8b-q4"_s},
        {32 * kGiB, u"llama-3.1-8b-q4"_s}, // although the largest asks for no more
        {48 * kGiB - 1, u"llama-3.1-8b-q4"_s},
        {48 * kGiB, u"qwen-2.5-14b-q4"_s},
        {512 * kGiB, u"qwen-2.5-14b-q4"_s},
        {~quint64(0), u"qwen-2.5-14b-q4"_s},
    };

    for (const auto &[memory, id] : cases)
        EXPECT_EQ(recommendedModel(memory).id, id) << memory;
}

TEST(ResolveActiveModel, TakesTheRecommendedOneUnlessAModelIsChosen)
{
    const QStringList unchosen{u"automatic"_s, u""_s, u"gone-1b"_s, u"LLAMA-3.2-3B-Q4"_s, u"Automatic"_s};
    for (const QString &selection : unchosen)
        EXPECT_EQ(resolveActiveModel(selection, 16 * kGiB).id, u"llama-3.1-8b-q4"_s) << selection.toStdString();

    EXPECT_EQ(resolveActiveModel(std::nullopt, 48 * kGiB).id, u"qwen-2.5-14b-q4"_s);
}

TEST(ResolveActiveModel, TakesTheChosenModelWhateverMemoryItAsksFor)
{
    for (const AIModelOption &model : approvedModels())
        EXPECT_EQ(resolveActiveModel(model.id, 8 * kGiB), model);
}

} // namespace
} // namespace Tessaline
