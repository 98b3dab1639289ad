#include "editing/FormatCommands.h"
#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "editing/Paragraphs.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"

#include <gtest/gtest.h>

#include <QtCore/QHash>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QStringList kTypes{u"bold"_s, u"italic"_s, u"codeInline"_s, u"h1"_s,     u"h2"_s,
                         u"h3"_s,   u"quote"_s,  u"codeBlock"_s,  u"bullet"_s, u"numbered"_s,
                         u"task"_s, u"link"_s,   u"image"_s,      u"hr"_s,     u"table"_s};

/// The outcome of a command on a rendered text, with the selection shown.
QString applied(const QString &type, const QString &markdown, TextRange selection)
{
    const auto result = applyFormat({renderMarkdown(markdown), selection}, type);
    return result ? described(*result) : u"-"_s;
}

/// The Markdown after several commands, each on the selection that the one before left.
QString written(const QStringList &types, const QString &markdown, TextRange selection)
{
    FormattedText formatted{renderMarkdown(markdown), selection};
    for (const QString &type : types)
        formatted = applyFormat(formatted, type).value_or(FormattedText());
    return serializeMarkdown(formatted.text);
}

} // namespace

TEST(FormatCommands, AnUnknownTypeIsNone)
{
    for (const QString &type : {u""_s, u"h4"_s, u"Bold"_s, u"code"_s})
        EXPECT_EQ(applied(type, u"a"_s, {0, 1}), u"-") << type.toStdString();
}

TEST(FormatCommands, EveryTypeIsKnownAlsoInAnEmptyText)
{
    for (const QString &type : kTypes)
        EXPECT_NE(applied(type, u""_s, {0, 0}), u"-") << type.toStdString();
}

TEST(FormatCommands, ASelectionBehindTheTextIsCut)
{
    EXPECT_EQ(applied(u"bold"_s, u"ab"_s, {1, 99}), u"{paragraph}a<{paragraph,bold}b>");
    EXPECT_EQ(applied(u"link"_s, u"a"_s, {99, 99}), u"{paragraph}a<{link=url}link>");
    EXPECT_EQ(applied(u"link"_s, u"a"_s, {-5, -5}), u"<{link=url}link>{paragraph}a");
}

// --- parts of a paragraph ---

TEST(FormatCommands, AnInlineCommandSetsItsAttributeOnTheSelection)
{
    EXPECT_EQ(applied(u"bold"_s, u"abc"_s, {1, 1}), u"{paragraph}a<{paragraph,bold}b>{paragraph}c");
    EXPECT_EQ(applied(u"italic"_s, u"abc"_s, {1, 1}), u"{paragraph}a<{paragraph,italic}b>{paragraph}c");
    EXPECT_EQ(applied(u"codeInline"_s, u"abc"_s, {1, 1}), u"{paragraph}a<{paragraph,code}b>{paragraph}c");
}

TEST(FormatCommands, APartlyBoldSelectionBecomesBoldAndThenPlain)
{
    EXPECT_EQ(written({u"bold"_s}, u"a**b**c"_s, {0, 3}), u"**abc**");
    EXPECT_EQ(written({u"bold"_s}, u"**a**b"_s, {0, 2}), u"**ab**");
    EXPECT_EQ(written({u"bold"_s, u"bold"_s}, u"a**b**c"_s, {0, 3}), u"abc");
}

TEST(FormatCommands, AWhollyBoldSelectionLosesJustThat)
{
    EXPECT_EQ(written({u"bold"_s}, u"***ab***"_s, {0, 2}), u"*ab*");
    EXPECT_EQ(written({u"bold"_s}, u"**a[b](u)**"_s, {1, 1}), u"**a**[b](u)");
}

TEST(FormatCommands, AnInlineCommandWithoutASelectionChangesNothing)
{
    for (const QString &type : {u"bold"_s, u"italic"_s, u"codeInline"_s})
        EXPECT_EQ(applied(type, u"a**b**"_s, {1, 0}), u"{paragraph}a‸{paragraph,bold}b") << type.toStdString();
}

TEST(FormatCommands, AnInlineCommandReachesOverParagraphs)
{
    EXPECT_EQ(written({u"bold"_s}, u"a\n\nb"_s, {0, 3}), u"**a**\n\n**b**");
}

TEST(FormatCommands, ALinkOverASelection)
{
    EXPECT_EQ(applied(u"link"_s, u"abc"_s, {1, 1}), u"{paragraph}a<{paragraph,link=url}b>{paragraph}c");
    EXPECT_EQ(written({u"link"_s}, u"[a](x)"_s, {0, 1}), u"[a](url)");
}

TEST(FormatCommands, ALinkWithoutASelectionIsAWordThatIsSelected)
{
    EXPECT_EQ(applied(u"link"_s, u"ab"_s, {1, 0}), u"{paragraph}a<{link=url}link>{paragraph}b");
    EXPECT_EQ(applied(u"link"_s, u""_s, {0, 0}), u"<{link=url}link>");
}

TEST(FormatCommands, ALinkAtTheStartOfAHeadingTakesItsTag)
{
    EXPECT_EQ(written({u"link"_s}, u"# ab"_s, {0, 0}), u"[link](url)ab"); // the inserted word has none, and comes first
}

TEST(FormatCommands, AnImageTakesTheSelectionAsItsDescription)
{
    EXPECT_EQ(applied(u"image"_s, u"abc"_s, {1, 1}), u"{paragraph}a{image=url,alt=b}\U0001F5BC b‸{paragraph}c");
    EXPECT_EQ(applied(u"image"_s, u"ab"_s, {1, 0}), u"{paragraph}a{image=url,alt=Image}\U0001F5BC Image‸{paragraph}b");
}

TEST(FormatCommands, ARuleInAnEmptyLastParagraph)
{
    EXPECT_EQ(applied(u"hr"_s, u""_s, {0, 0}), u"{horizontalRule}────────────────‸");
    FormattedText formatted{renderMarkdown(u"a"), {2, 0}};
    formatted.text.append(u"\n", {});
    EXPECT_EQ(described(*applyFormat(formatted, u"hr")), u"{paragraph}a{}⏎{horizontalRule}────────────────‸");
}

TEST(FormatCommands, ARuleJoinsAParagraphThatIsNotEmpty)
{
    EXPECT_EQ(applied(u"hr"_s, u"abc"_s, {1, 1}), u"{paragraph}a{horizontalRule}────────────────‸{paragraph}c");
    EXPECT_EQ(written({u"hr"_s}, u"ab"_s, {0, 0}), u"---");
    EXPECT_EQ(written({u"hr"_s}, u"ab"_s, {1, 0}), u"a────────────────b");
}

TEST(FormatCommands, ATableReplacesTheSelection)
{
    EXPECT_EQ(applied(u"table"_s, u""_s, {0, 0}), u"{tableHeader}Header 1⇥Header 2⏎{tableRow}Cell 1⇥Cell 2‸");
    EXPECT_EQ(written({u"table"_s}, u"abc"_s, {0, 3}), u"| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |");
    EXPECT_EQ(written({u"table"_s}, u"ab"_s, {1, 0}), u"aHeader 1\tHeader 2\n\nCell 1\tCell 2b");
}

// --- whole paragraphs ---

TEST(FormatCommands, AStyleGoesToTheWholeParagraph)
{
    EXPECT_EQ(applied(u"h1"_s, u"a\n\nbc\n\nd"_s, {3, 0}), u"{paragraph}a⏎{heading:1}b‸{heading:1}c⏎{paragraph}d");
    EXPECT_EQ(applied(u"quote"_s, u"ab"_s, {0, 1}), u"<{quote}a>{quote}b");
    EXPECT_EQ(applied(u"codeBlock"_s, u"ab"_s, {2, 0}), u"{code:}ab‸");
}

TEST(FormatCommands, AHeadingIsAToggle)
{
    EXPECT_EQ(written({u"h1"_s}, u"# a"_s, {0, 0}), u"a");
    EXPECT_EQ(written({u"h2"_s}, u"# a"_s, {0, 0}), u"## a");
    EXPECT_EQ(written({u"h3"_s, u"h3"_s}, u"a"_s, {0, 0}), u"a");
}

TEST(FormatCommands, ABulletOnATaskReplacesTheBox)
{
    EXPECT_EQ(applied(u"bullet"_s, u"- [x] a"_s, {3, 0}), u"{bullet,marker}•⇥{bullet}a‸");
}

TEST(FormatCommands, ABulletOnABulletTakesTheMarkerAway)
{
    EXPECT_EQ(applied(u"bullet"_s, u"- a"_s, {3, 0}), u"{paragraph}a‸");
}

TEST(FormatCommands, AnOpenTaskIsAToggleAndADoneOneIsOpened)
{
    EXPECT_EQ(written({u"task"_s}, u"- [ ] a"_s, {2, 0}), u"a");
    EXPECT_EQ(written({u"task"_s}, u"- [x] a\n- [ ] b"_s, {2, 5}), u"- [ ] a\n- [ ] b");
}

TEST(FormatCommands, OnlyTheVeryTagIsToggled)
{
    EXPECT_EQ(written({u"codeBlock"_s}, u"```js\na\n```"_s, {0, 0}), u"```\na\n```");
    EXPECT_EQ(written({u"codeBlock"_s}, u"```\na\n```"_s, {0, 0}), u"a");
    EXPECT_EQ(written({u"numbered"_s}, u"2. a"_s, {3, 0}), u"1. a");
    EXPECT_EQ(written({u"numbered"_s}, u"1. a"_s, {3, 0}), u"a");
}

TEST(FormatCommands, TheFirstParagraphDecidesWhetherAStyleIsTakenAway)
{
    EXPECT_EQ(written({u"quote"_s}, u"> a\n\nb"_s, {0, 3}), u"a\n\nb");
    EXPECT_EQ(written({u"quote"_s}, u"a\n\n> b"_s, {0, 3}), u"> a\n> b");
}

TEST(FormatCommands, NumbersAreShownCountingUpButAreAllTheFirst)
{
    EXPECT_EQ(applied(u"numbered"_s, u"a\n\nb\n\nc"_s, {0, 5}),
              u"{numbered:1,marker}1.⇥<{numbered:1}a⏎{numbered:1,marker}2.⇥{numbered:1}b⏎{numbered:1,marker}3.⇥"
              u"{numbered:1}c>");
    EXPECT_EQ(written({u"numbered"_s}, u"a\n\nb\n\nc"_s, {0, 5}), u"1. a\n1. b\n1. c");
}

TEST(FormatCommands, AStyleInAnEmptyTextIsItsMarker)
{
    EXPECT_EQ(applied(u"numbered"_s, u""_s, {0, 0}), u"{numbered:1,marker}1.⇥‸");
    EXPECT_EQ(applied(u"bullet"_s, u""_s, {0, 0}), u"{bullet,marker}•⇥‸");
    EXPECT_EQ(applied(u"h1"_s, u""_s, {0, 0}), u"‸");
}

TEST(FormatCommands, TheEmptyLineBehindTheLastLineBreakCanBecomeAnItem)
{
    FormattedText formatted{renderMarkdown(u"a"), {2, 0}};
    TextAttributes paragraph;
    paragraph.blockStyle = SharedText(u"paragraph"_s);
    formatted.text.append(u"\n", paragraph);
    EXPECT_EQ(described(*applyFormat(formatted, u"task")), u"{paragraph}a⏎{task:0,marker}☐⇥‸");
}

TEST(FormatCommands, TheEmptyLineBehindAnItemIsNoItemOfItsOwn)
{
    // The line break that ends the item decides that "bullet" takes the style away; there is nothing to take it from.
    FormattedText formatted{renderMarkdown(u"- a"), {4, 0}};
    TextAttributes bullet;
    bullet.blockStyle = SharedText(u"bullet"_s);
    formatted.text.append(u"\n", bullet);
    EXPECT_EQ(described(*applyFormat(formatted, u"bullet")), u"{bullet,marker}•⇥{bullet}a⏎‸");
}

TEST(FormatCommands, ASelectionThatEndsBehindALineBreakLeavesTheNextParagraph)
{
    EXPECT_EQ(written({u"h1"_s}, u"a\n\nb"_s, {0, 2}), u"# a\n\nb");
}

TEST(FormatCommands, InlineAttributesStay)
{
    EXPECT_EQ(written({u"codeBlock"_s, u"codeBlock"_s}, u"a **b** [c](u)"_s, {0, 0}), u"a **b** [c](u)");
}

TEST(FormatCommands, AllMarkersOfAParagraphGo)
{
    FormattedText formatted{renderMarkdown(u"- a"), {0, 0}};
    formatted.text.append(renderMarkdown(u"- b")); // joined by deleting a line break
    EXPECT_EQ(described(*applyFormat(formatted, u"quote")), u"‸{quote}ab");
}

TEST(FormatCommands, ASelectionStaysOnItsText)
{
    EXPECT_EQ(applied(u"bullet"_s, u"ab"_s, {0, 2}), u"{bullet,marker}•⇥<{bullet}ab>");
    EXPECT_EQ(applied(u"bullet"_s, u"- ab"_s, {1, 2}), u"<{paragraph}a>{paragraph}b"); // from inside the marker
    EXPECT_EQ(applied(u"task"_s, u"a\n\nb"_s, {1, 1}), u"{task:0,marker}☐⇥{task:0}a<{task:0}⏎>{paragraph}b");
}

TEST(FormatCommands, ABlockCommandLeavesOneTagAndNoMarkerButItsOwn)
{
    GeneratedMarkdown random(11);
    const QHash<QString, QString> markers{{u"h2"_s, u""_s}, {u"bullet"_s, u"•\t"_s}, {u"task"_s, u"☐\t"_s}};
    for (int i = 0; i < 1000; ++i) {
        AttributedText text = renderMarkdown(random.document(1 + random.below(16)));
        if (const qsizetype lineBreak = text.text().indexOf(u'\n'); lineBreak >= 0 && random.oneIn(2))
            text.replace({lineBreak, 1}, {}); // a marker may now stand inside a paragraph
        const qsizetype location = random.below(text.size() + 1);
        const FormattedText formatted{text, {location, random.below(text.size() - location + 1)}};
        for (auto marker = markers.begin(); marker != markers.end(); ++marker) {
            const FormattedText result = *applyFormat(formatted, marker.key());
            const QString &shown = result.text.text();
            const TextRange all = Paragraphs::around(shown, result.selection);
            if (all.isEmpty())
                continue;
            const SharedText tag = result.text.attributesAt(all.location).blockStyle;
            for (const TextRange &paragraph : Paragraphs::in(shown, all)) {
                const QString own = tag == u"paragraph" ? QString() : marker.value();
                ASSERT_TRUE(shown.mid(paragraph.location).startsWith(own)) << described(result).toStdString();
                for (qsizetype at = paragraph.location; at < paragraph.end(); ++at) {
                    ASSERT_EQ(result.text.attributesAt(at).blockStyle, tag) << described(result).toStdString();
                    ASSERT_EQ(result.text.attributesAt(at).generatedMarker, at < paragraph.location + own.size())
                        << described(result).toStdString();
                }
            }
        }
    }
}

TEST(FormatCommands, AWindowOfTheSelectedParagraphsIsEnough)
{
    GeneratedMarkdown random(12);
    for (int i = 0; i < 3000; ++i) {
        const AttributedText text = random.oneIn(2) ? renderMarkdown(random.document(random.below(12)))
                                                    : random.attributedText(random.below(16));
        const qsizetype location = random.below(text.size() + 1);
        const TextRange selection{location, random.below(text.size() - location + 1)};
        const QString &type = kTypes.at(random.below(kTypes.size()));
        const FormattedText whole = *applyFormat({text, selection}, type);

        const TextRange paragraphs = Paragraphs::around(text.text(), selection);
        const qsizetype begin = std::max<qsizetype>(paragraphs.location - 1, 0);
        const TextRange window{begin, paragraphs.end() - begin};
        const FormattedText part =
            *applyFormat({text.sliced(window), {selection.location - begin, selection.length}}, type);
        AttributedText joined = text;
        joined.replace(window, part.text);

        ASSERT_EQ(joined, whole.text) << type.toStdString() << ' '
                                      << described(FormattedText{text, selection}).toStdString();
        ASSERT_EQ(part.selection.location + begin, whole.selection.location);
        ASSERT_EQ(part.selection.length, whole.selection.length);
    }
}

TEST(FormatCommands, ManyParagraphsTakeLinearTime)
{
    // A quadratic form takes minutes for this.
    const QString markdown = u"a\n\n"_s.repeated(100'000);
    const AttributedText text = renderMarkdown(markdown);
    const FormattedText result = *applyFormat({text, {0, text.size()}}, u"numbered");
    EXPECT_EQ(result.text.size(), text.size() + 9 * 3 + 90 * 4 + 900 * 5 + 9000 * 6 + 90000 * 7 + 8);
}

} // namespace Tessaline
