#include "editing/InlineMarkdown.h"
#include "editing/InlineWriting.h"
#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/PlainCodec.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kTexts = 4000; // of each kind

void expectMaximalRuns(const AttributedText &text)
{
    qsizetype end = 0;
    for (qsizetype i = 0; i < text.runs().size(); ++i) {
        const AttributeRun &run = text.runs().at(i);
        ASSERT_EQ(run.range.location, end);
        ASSERT_GT(run.range.length, 0);
        if (i > 0) {
            ASSERT_NE(run.attributes, text.runs().at(i - 1).attributes);
        }
        end = run.range.end();
    }
    ASSERT_EQ(end, text.size());
}

/// Calls `check(markdown)` for many texts, of noise and of documents.
template <class Check>
void forEachText(unsigned seed, Check check)
{
    GeneratedMarkdown random(seed);
    for (int i = 0; i < kTexts; ++i) {
        const QString markdown = random.oneIn(2) ? random.noise(random.below(40)) : random.document(random.below(14));
        check(markdown);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "in text " << i << ": " << visible(markdown).toStdString();
            return;
        }
    }
}

} // namespace

TEST(CodecProperties, BlocksAreThoseOfThePlainForm)
{
    forEachText(1,
                [](const QString &markdown) { EXPECT_EQ(parseBlocks(markdown), PlainCodec::parseBlocks(markdown)); });
}

TEST(CodecProperties, InlineRunsAreThoseOfThePlainForm)
{
    GeneratedMarkdown random(2);
    for (int i = 0; i < 5 * kTexts; ++i) {
        const QString markdown = random.inlineNoise(random.below(40));
        ASSERT_EQ(parseInlineMarkdown(markdown), PlainCodec::parseInlineMarkdown(markdown))
            << visible(markdown).toStdString();
    }
}

TEST(CodecProperties, InlineTextMayHaveLineBreaksInIt)
{
    forEachText(3, [](const QString &markdown) {
        EXPECT_EQ(parseInlineMarkdown(markdown), PlainCodec::parseInlineMarkdown(markdown));
    });
}

TEST(CodecProperties, RenderingIsThatOfThePlainFormInMaximalRuns)
{
    forEachText(4, [](const QString &markdown) {
        const AttributedText text = renderMarkdown(markdown);
        EXPECT_EQ(text, PlainCodec::renderMarkdown(markdown));
        expectMaximalRuns(text);
    });
}

TEST(CodecProperties, WritingIsThatOfThePlainForm)
{
    forEachText(5, [](const QString &markdown) {
        const AttributedText text = renderMarkdown(markdown);
        EXPECT_EQ(serializeMarkdown(text), PlainCodec::serializeMarkdown(text));
    });
}

TEST(CodecProperties, NoShapeOfTextIsSearchedAgainAndAgain)
{
    // Each takes a moment in linear time and about a minute in quadratic time.
    constexpr qsizetype kSize = 300'000;
    for (const QString &unit :
         {u"["_s,   u"*"_s,      u"`"_s,          u"!["_s,      u"]("_s,      u"[a](b"_s,   u"**["_s,
          u"[!["_s, u"\\"_s,     u"** *** a "_s,  u"*a **b "_s, u"*\u0301"_s, u"\u0600*"_s, u"word "_s,
          u"|"_s,   u"|a|\n"_s,  u"a|b\n---\n"_s, u"- "_s,      u"- \n"_s,    u"```a\n"_s,  u"a  \n"_s,
          u"a\r"_s, u"\r\n\r"_s, u"1"_s,          u" "_s,       u"#"_s}) {
        const AttributedText text = renderMarkdown(unit.repeated(kSize / unit.size()));
        EXPECT_LE(serializeMarkdown(text).size(), 16 * kSize) << unit.toStdString();
    }
}

TEST(CodecProperties, AnyRunsAreWrittenAsInThePlainForm)
{
    GeneratedMarkdown random(6);
    for (int i = 0; i < 5 * kTexts; ++i) {
        const AttributedText text = random.attributedText(random.below(20));
        ASSERT_EQ(serializeMarkdown(text), PlainCodec::serializeMarkdown(text)) << described(text).toStdString();
        ASSERT_EQ(serializeInline(text, {0, text.size()}), PlainCodec::serializeSelection(text))
            << described(text).toStdString();
    }
}

} // namespace Tessaline
