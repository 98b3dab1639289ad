#include "editing/NormalForm.h"

#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString normalOf(const QString &markdown)
{
    return normalFormOf(ChunkedText(markdown))->markdown.toString();
}

} // namespace

TEST(NormalForm, IsWhatIsWrittenForTheReadText)
{
    EXPECT_EQ(normalOf(u"* a\r\n+ b\n\n\n# x\n***\n"_s), u"- a\n- b\n\n# x\n\n---"_s);
}

TEST(NormalForm, OfNothingIsEmpty)
{
    for (const QString &markdown : {u""_s, u"\n"_s, u" \t\r\n\n"_s, u"# "_s, u"```"_s})
        EXPECT_EQ(normalOf(markdown), QString()) << markdown.toStdString();
}

TEST(NormalForm, OfADocumentInItsNormalFormIsTheDocument)
{
    const ChunkedText markdown(u"# x\n\n- a\n- b"_s);

    const std::shared_ptr<NormalForm> form = normalFormOf(markdown);

    EXPECT_EQ(form->markdown, markdown);
    EXPECT_EQ(form->change.removed, 0);
    EXPECT_EQ(form->change.inserted, 0);
    EXPECT_EQ(form->pieces.paragraphCount(), 3);
}

TEST(NormalForm, IsNullWhenItWasAskedToStop)
{
    std::stop_source source;
    source.request_stop();

    EXPECT_EQ(normalFormOf(ChunkedText(u"text"_s), source.get_token()), nullptr);
}

TEST(NormalForm, OfAnyDocumentHasItsTextItsChangeAndItsPieces)
{
    GeneratedMarkdown random(31);
    for (int i = 0; i < 1000; ++i) {
        const ChunkedText markdown(i % 2 == 0 ? random.document(random.below(12)) : random.noise(random.below(30)));
        const AttributedText shown = renderMarkdown(markdown.toString());

        const std::shared_ptr<NormalForm> form = normalFormOf(markdown);

        ASSERT_EQ(form->markdown.toString(), serializeMarkdown(shown)) << markdown.toString().toStdString();
        ASSERT_EQ(form->pieces.length(), form->markdown.size());
        ASSERT_EQ(form->pieces.paragraphCount(), Paragraphs::in(shown.text(), {0, shown.size()}).size());
        ChunkedText changed = markdown;
        const TextChange &change = form->change;
        changed.replace(change.location, change.removed, form->markdown.sliced(change.location, change.inserted));
        ASSERT_EQ(changed, form->markdown);
    }
}

TEST(TextChangesInOne, AreTheStretchThatBothTouch)
{
    EXPECT_EQ(inOne({2, 1, 3}, {8, 0, 2}), (TextChange{2, 4, 8}));
    EXPECT_EQ(inOne({8, 0, 2}, {2, 1, 3}), (TextChange{2, 6, 10}));
    EXPECT_EQ(inOne({2, 5, 5}, {3, 1, 0}), (TextChange{2, 5, 4}));
    EXPECT_EQ(inOne({9, 0, 0}, {3, 1, 2}), (TextChange{3, 1, 2}));
    EXPECT_EQ(inOne({3, 1, 2}, {9, 0, 0}), (TextChange{3, 1, 2}));
}

TEST(TextChangesInOne, MakeTheFirstTextIntoTheLast)
{
    GeneratedText random(32);
    for (int i = 0; i < 1000; ++i) {
        const auto someChange = [&random](qsizetype size) {
            const qsizetype location = random.below(size + 1);
            return TextChange{location, random.below(size - location + 1), random.below(5)};
        };
        const QString first(12, u'a');
        const TextChange toSecond = someChange(first.size());
        QString last = first;
        last.replace(toSecond.location, toSecond.removed, QString(toSecond.inserted, u'b'));
        const TextChange toLast = someChange(last.size());
        last.replace(toLast.location, toLast.removed, QString(toLast.inserted, u'c'));

        const TextChange change = inOne(toSecond, toLast);

        QString made = first;
        made.replace(change.location, change.removed, last.mid(change.location, change.inserted));
        ASSERT_EQ(made, last);
    }
}

} // namespace Tessaline
