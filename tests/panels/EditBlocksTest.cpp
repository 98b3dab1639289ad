#include "panels/EditBlocks.h"

#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <QtCore/QRegularExpression>

#include <random>

using namespace Tessaline;

namespace {

struct Texts {
    QString original;
    QString replacement;
    friend bool operator==(const Texts &, const Texts &) = default;
    friend void PrintTo(const Texts &texts, std::ostream *out)
    {
        *out << testing::PrintToString(texts.original.toStdString()) << " -> "
             << testing::PrintToString(texts.replacement.toStdString());
    }
};

QList<Texts> blocksOf(const QString &answer)
{
    QList<Texts> texts;
    for (const EditBlock &block : editBlocks(answer))
        texts.append({answer.mid(block.original.location, block.original.length),
                      answer.mid(block.replacement.location, block.replacement.length)});
    return texts;
}

/// The grammar as one expression, which takes cubic time.
QList<EditBlock> plainBlocks(const QString &answer)
{
    static const QRegularExpression kBlock(
        uR"(<<<<<<< SEARCH\r?\n([\s\S]*?)\r?\n=======\r?\n([\s\S]*?)\r?\n>>>>>>> REPLACE)"_qs);
    QList<EditBlock> blocks;
    for (auto matches = kBlock.globalMatch(answer); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const auto range = [&match](int group) {
            return TextRange{match.capturedStart(group), match.capturedLength(group)};
        };
        blocks.append({range(0), range(1), range(2)});
    }
    return blocks;
}

} // namespace

TEST(EditBlocks, ABlockIsWhatStandsBetweenItsMarkers)
{
    EXPECT_EQ(blocksOf(u"Here:\n<<<<<<< SEARCH\nold\n=======\nnew\n>>>>>>> REPLACE\nDone."_qs),
              (QList<Texts>{{u"old"_qs, u"new"_qs}}));
}

TEST(EditBlocks, TextsAreTakenAsWrittenSpacesIncluded)
{
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\n  a \r\n\tb \n=======\n\n c\n\n>>>>>>> REPLACE"_qs),
              (QList<Texts>{{u"  a \r\n\tb "_qs, u"\n c\n"_qs}}));
}

TEST(EditBlocks, MarkersTakeEitherLineBreakAndGiveItUp)
{
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\r\nold\r\n=======\r\nnew\r\n>>>>>>> REPLACE"_qs),
              (QList<Texts>{{u"old"_qs, u"new"_qs}}));
}

TEST(EditBlocks, AnEmptyTextIsAnEmptyLine)
{
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\n\n=======\nnew\n>>>>>>> REPLACE"_qs), (QList<Texts>{{u""_qs, u"new"_qs}}));
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\nold\n=======\n\n>>>>>>> REPLACE"_qs), (QList<Texts>{{u"old"_qs, u""_qs}}));
}

TEST(EditBlocks, AnEmptyTextWithoutItsLineMakesNoBlock)
{
    EXPECT_TRUE(blocksOf(u"<<<<<<< SEARCH\n=======\nnew\n>>>>>>> REPLACE"_qs).isEmpty());
    EXPECT_TRUE(blocksOf(u"<<<<<<< SEARCH\nold\n=======\n>>>>>>> REPLACE"_qs).isEmpty());
}

TEST(EditBlocks, ABlockMayBeginAndEndWithinALine)
{
    EXPECT_EQ(blocksOf(u"so: <<<<<<< SEARCH\na\n=======\nb\n>>>>>>> REPLACE, and"_qs),
              (QList<Texts>{{u"a"_qs, u"b"_qs}}));
}

TEST(EditBlocks, ABlockIsSeenWhenItsLastSignHasArrived)
{
    const QString answer = u"<<<<<<< SEARCH\na\n=======\nb\n>>>>>>> REPLACE"_qs;
    for (qsizetype size = 0; size < answer.size(); ++size)
        EXPECT_TRUE(editBlocks(QStringView(answer).first(size)).isEmpty()) << size;
    EXPECT_EQ(editBlocks(answer).size(), 1);
}

TEST(EditBlocks, ADividerNeedsALineOfItsOwn)
{
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\na\n========\nb =======\n=======\nc\n>>>>>>> REPLACE"_qs),
              (QList<Texts>{{u"a\n========\nb ======="_qs, u"c"_qs}}));
}

TEST(EditBlocks, AnUnfinishedBlockSwallowsTheMarkersOfTheNext)
{
    EXPECT_EQ(blocksOf(u"<<<<<<< SEARCH\na\n<<<<<<< SEARCH\nb\n=======\nc\n>>>>>>> REPLACE"_qs),
              (QList<Texts>{{u"a\n<<<<<<< SEARCH\nb"_qs, u"c"_qs}}));
}

TEST(EditBlocks, TheLinearFormFindsWhatTheExpressionFinds)
{
    const QString pieces[] = {u"<<<<<<< SEARCH"_qs,
                              u"======="_qs,
                              u">>>>>>> REPLACE"_qs,
                              u"\n"_qs,
                              u"\r\n"_qs,
                              u"\r"_qs,
                              u"a"_qs,
                              u"="_qs,
                              u"\n"_qs};
    // Beginnings of blocks, so that whole ones come about often.
    const QString frames[] = {u"<<<<<<< SEARCH\n"_qs, u"\n=======\n"_qs, u"\n>>>>>>> REPLACE"_qs,
                              u"\r\n=======\r\n"_qs};
    std::mt19937 random(11);
    int found = 0;
    for (int round = 0; round < 20'000; ++round) {
        QString answer;
        for (int count = int(random() % 14); count > 0; --count)
            answer += random() % 2 ? pieces[random() % std::size(pieces)] : frames[random() % std::size(frames)];
        const QList<EditBlock> blocks = editBlocks(answer);
        ASSERT_EQ(blocks, plainBlocks(answer)) << answer.toStdString();
        found += int(blocks.size());
    }
    EXPECT_GT(found, 1000);
}
