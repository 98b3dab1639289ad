#include "editing/AttributedDocument.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <random>

namespace Tessaline {

namespace {

TextAttributes attributes(int kind)
{
    TextAttributes made;
    made.bold = (kind & 1) != 0;
    made.italic = (kind & 2) != 0;
    if (kind & 4)
        made.linkDestination = SharedText(QStringLiteral("to %1").arg(kind));
    return made;
}

} // namespace

TEST(AttributedDocument, EqualsTheAttributedTextAfterAnySequenceOfReplacements)
{
    std::mt19937 random(3);
    const auto upTo = [&random](qsizetype most) { return std::uniform_int_distribution<qsizetype>(0, most)(random); };
    const auto generated = [&](qsizetype longest) {
        AttributedText text;
        for (qsizetype rest = upTo(longest); rest > 0;) {
            const qsizetype length = std::min(rest, upTo(40) + 1);
            text.append(QString(length, QChar(u'a' + static_cast<char16_t>(upTo(25)))),
                        attributes(static_cast<int>(upTo(7))));
            rest -= length;
        }
        return text;
    };
    for (int round = 0; round < 20; ++round) {
        AttributedText model = generated(40'000);
        AttributedDocument document;
        document.reset(model);
        for (int edit = 0; edit < 100; ++edit) {
            const qsizetype location = upTo(model.size());
            const qsizetype most = edit % 10 == 0 ? 20'000 : 60;
            const TextRange range{location, std::min(upTo(most), model.size() - location)};
            const AttributedText replacement = generated(most);
            model.replace(range, replacement);
            const TextChange change = document.replace(range, replacement);
            ASSERT_EQ(change, (TextChange{range.location, range.length, replacement.size()}));
            ASSERT_EQ(document.sliced({0, document.size()}), model);
            ASSERT_EQ(document.runCount(), model.runs().size()); // as maximal as the model's
            if (model.isEmpty())
                continue;
            const qsizetype index = upTo(model.size() - 1);
            ASSERT_EQ(document.attributesAt(index), model.attributesAt(index));
            ASSERT_EQ(document.runAt(index), model.runs().at(model.runAt(index)).range);
            const TextRange limits{index / 2, model.size() - index / 2};
            ASSERT_EQ(document.effectiveRange(index, &TextAttributes::bold, limits),
                      model.effectiveRange(index, &TextAttributes::bold, limits));
        }
    }
}

TEST(AttributedDocument, APlainTextOfAnySizeIsOneRun)
{
    AttributedDocument document(ChunkedText(QString(100'000, u'x')));

    document.replace({50'000, 10}, AttributedText(u"plain"));

    EXPECT_EQ(document.runCount(), 1);
    EXPECT_EQ(document.runAt(7), (TextRange{0, 99'995}));
}

TEST(AttributedDocument, CanBeEmptiedAndFilledAgain)
{
    AttributedDocument document(ChunkedText(QStringLiteral("text")));

    document.replace({0, 4}, {});
    EXPECT_EQ(document.size(), 0);
    EXPECT_EQ(document.runCount(), 0);
    document.replace({0, 0}, AttributedText(u"new", attributes(1)));

    EXPECT_EQ(document.sliced({0, 3}), AttributedText(u"new", attributes(1)));
}

} // namespace Tessaline
