#include "editing/InlineMarkdown.h"
#include "tests/editing/AttributedTextPrinter.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Row {
    QString markdown;
    QString expected; // as AttributedTextPrinter.h describes it
};

void expectRows(const QList<Row> &rows)
{
    for (const Row &row : rows)
        EXPECT_EQ(described(parseInlineMarkdown(row.markdown)), row.expected) << row.markdown.toStdString();
}

} // namespace

TEST(InlineMarkdown, PlainTextStays)
{
    expectRows({{u""_s, u""_s},
                {u"a_b_ ~~c~~ <b> http://x"_s, u"{}a_b_ ~~c~~ <b> http://x"_s},
                {u"[a][b] &amp; !"_s, u"{}[a][b] &amp; !"_s}});
}

TEST(InlineMarkdown, ABackslashMakesAnyCharacterPlain)
{
    expectRows({{u"\\*a\\*"_s, u"{}*a*"_s},
                {u"a\\b"_s, u"{}ab"_s},
                {u"a\\\\b"_s, u"{}a\\b"_s},
                {u"\\`a`"_s, u"{}`a`"_s},
                {u"\\[a](b)"_s, u"{}[a](b)"_s},
                {u"!\\[a](b)"_s, u"{}![a](b)"_s},
                {u"\\\U0001F600"_s, u"{}\U0001F600"_s},
                {u"\\e\u0301"_s, u"{}e\u0301"_s},
                {u"\\**a*"_s, u"{}*{italic}a"_s}});
}

TEST(InlineMarkdown, ABackslashAtTheEndStays)
{
    expectRows({{u"a\\"_s, u"{}a\\"_s}, {u"*a\\*"_s, u"{italic}a\\"_s}, {u"\\\\\\"_s, u"{}\\\\"_s}});
}

TEST(InlineMarkdown, ABackslashWithAMarkEscapesNothing)
{
    expectRows({{u"\\\u0301*a*"_s, u"{}\\\u0301{italic}a"_s}});
}

TEST(InlineMarkdown, AnEscapedSignWithAMarkIsOneCharacter)
{
    expectRows({{u"\\*\u0301a*b*"_s, u"{}*\u0301a{italic}b"_s}});
}

TEST(InlineMarkdown, Images)
{
    expectRows({{u"![a](b)"_s, u"{image=b,alt=a}\U0001F5BC a"_s},
                {u"![](b)"_s, u"{image=b,alt=}\U0001F5BC "_s},
                {u"![a]()"_s, u"{image=,alt=a}\U0001F5BC a"_s},
                {u"x ![a *b* \\] c](d \"e\") y"_s, u"{}x {image=d \"e\",alt=a *b* \\] c}\U0001F5BC a *b* \\] c{} y"_s},
                {u"![a](b"_s, u"{}![a](b"_s},
                {u"![a] (b)"_s, u"{}![a] (b)"_s},
                {u"![a"_s, u"{}![a"_s},
                {u"! [a](b)"_s, u"{}! {link=b}a"_s},
                {u"!!["_s, u"{}!!["_s}});
}

TEST(InlineMarkdown, AnUnclosedImageMayHoldALink)
{
    // "![" finds the first "](" and a ")" behind it, so only its own failure leaves the link to be found.
    expectRows({{u"![a [b](c)"_s, u"{image=c,alt=a [b}\U0001F5BC a [b"_s}});
}

TEST(InlineMarkdown, ASourceEndsAtTheFirstParenthesis)
{
    expectRows({{u"![a](b(c)d)"_s, u"{image=b(c,alt=a}\U0001F5BC a{}d)"_s}, {u"[a](b(c)d)"_s, u"{link=b(c}a{}d)"_s}});
}

TEST(InlineMarkdown, Links)
{
    expectRows({{u"[a](b)"_s, u"{link=b}a"_s},
                {u"[a]()"_s, u"{link=}a"_s},
                {u"[](b)"_s, u""_s},
                {u"[a](b \"title\")"_s, u"{link=b \"title\"}a"_s},
                {u"[a](b\\)c)"_s, u"{link=b\\}a{}c)"_s},
                {u"[a]"_s, u"{}[a]"_s},
                {u"[a]("_s, u"{}[a]("_s},
                {u"[a](b"_s, u"{}[a](b"_s},
                {u"[a] (b)"_s, u"{}[a] (b)"_s}});
}

TEST(InlineMarkdown, ALabelReachesToTheFirstMiddle)
{
    expectRows({{u"[a] and [b](c)"_s, u"{link=c}a] and [b"_s}, {u"[[a](b)"_s, u"{link=b}[a"_s}});
}

TEST(InlineMarkdown, ALabelMayBeFormatted)
{
    expectRows({{u"[a **b** `c` \\] d](e)"_s, u"{link=e}a {bold,link=e}b{link=e} {code,link=e}c{link=e} ] d"_s},
                {u"**[a](b)**"_s, u"{bold,link=b}a"_s},
                {u"**[a**](b)"_s, u"{bold}[a{}](b)"_s},
                {u"[**a](b)**"_s, u"{link=b}a"_s}});
}

TEST(InlineMarkdown, Emphasis)
{
    expectRows({{u"*a*"_s, u"{italic}a"_s},
                {u"**a**"_s, u"{bold}a"_s},
                {u"***a***"_s, u"{bold,italic}a"_s},
                {u"a*b*c"_s, u"{}a{italic}b{}c"_s},
                {u"a * b * c"_s, u"{}a {italic} b {} c"_s},
                {u"** a **"_s, u"{bold} a "_s},
                {u"*a"_s, u"{}*a"_s},
                {u"**a*"_s, u"{}a*"_s}, // empty emphasis, then a lone asterisk
                {u"_a_ __b__"_s, u"{}_a_ __b__"_s}});
}

TEST(InlineMarkdown, EmptyEmphasisIsNothing)
{
    expectRows({{u"**"_s, u""_s}, {u"****"_s, u""_s}, {u"******"_s, u""_s}, {u"``"_s, u""_s}, {u"a**b"_s, u"{}ab"_s}});
}

TEST(InlineMarkdown, ARunOfAsterisksIsTheLongestDelimiterThatIsClosed)
{
    expectRows({{u"***a**"_s, u"{bold}*a"_s},
                {u"***a*"_s, u"{italic}a"_s},
                {u"***a* b**"_s, u"{bold,italic}a{bold} b"_s},
                {u"**a***"_s, u"{bold}a{}*"_s},
                {u"****a****"_s, u"{bold,italic}*a{}*"_s}});
}

TEST(InlineMarkdown, EmphasisNests)
{
    expectRows({{u"**a *b* c**"_s, u"{bold}a {bold,italic}b{bold} c"_s},
                {u"*a **b** c*"_s, u"{italic}a b c"_s}, // "*" is closed by the first asterisk that comes
                {u"***a *b* c***"_s, u"{bold,italic}a b c"_s}});
}

TEST(InlineMarkdown, ClosingDelimitersMindNoBackslash)
{
    expectRows({{u"*a\\*b*"_s, u"{italic}a\\{}b*"_s}, {u"`a\\`b"_s, u"{code}a\\{}b"_s}});
}

TEST(InlineMarkdown, CodeIsVerbatim)
{
    expectRows({{u"`a*b*\\c[d](e)`"_s, u"{code}a*b*\\c[d](e)"_s},
                {u"`a"_s, u"{}`a"_s},
                {u"``a``"_s, u"{}a"_s},
                {u"**`a`**"_s, u"{bold,code}a"_s},
                {u"`a**b`c*"_s, u"{code}a**b{}c*"_s},
                {u"**a`b**c`"_s, u"{bold}a`b{}c`"_s}});
}

TEST(InlineMarkdown, SignsWithMarksAreNoDelimiters)
{
    expectRows({{u"*\u0301a*"_s, u"{}*\u0301a*"_s},
                {u"*a*\u0301 b*"_s, u"{italic}a*\u0301 b"_s},
                {u"**\u0301a*"_s, u"{italic}*\u0301a"_s},
                {u"`a`\uFE0F"_s, u"{}`a`\uFE0F"_s},
                {u"[a](\u0301b)"_s, u"{}[a](\u0301b)"_s},
                {u"[a](b)\u0301 c)"_s, u"{link=b)\u0301 c}a"_s},
                {u"[\u0301a](b)"_s, u"{}[\u0301a](b)"_s},
                {u"!\u0301[a](b)"_s, u"{}!\u0301{link=b}a"_s},
                {u"\u0600*a*"_s, u"{}\u0600*a*"_s}});
}

TEST(InlineMarkdown, EqualNeighboursAreOneRun)
{
    expectRows({{u"*a**b*"_s, u"{italic}ab"_s},
                {u"[a](u)[b](u)"_s, u"{link=u}ab"_s},
                {u"[a](u)[b](v)"_s, u"{link=u}a{link=v}b"_s},
                {u"a\\bc"_s, u"{}abc"_s}});
}

TEST(InlineMarkdown, AttributesAreAddedToAll)
{
    TextAttributes attributes;
    attributes.blockStyle = SharedText(u"quote"_s);
    AttributedText text(u"x");
    appendInlineMarkdown(u"a *b*", attributes, text);
    EXPECT_EQ(described(text), u"{}x{quote}a {quote,italic}b");
}

TEST(InlineMarkdown, DeepNestingIsShallow)
{
    // What looks like a thousand levels is closed by the first delimiter of each kind.
    const AttributedText text = parseInlineMarkdown(u"**["_s.repeated(1000) + u"a"_s + u"](b)**"_s.repeated(1000));
    EXPECT_FALSE(text.isEmpty());
}

} // namespace Tessaline
