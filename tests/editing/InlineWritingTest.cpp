#include "editing/InlineWriting.h"
#include "tests/editing/AttributedTextPrinter.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Parts {
    bool bold = false;
    bool italic = false;
    bool code = false;
    bool marker = false;
    QString link = {};
    QString image = {}; // a null text: none
    QString alt = {};
};

TextAttributes make(const Parts &parts)
{
    TextAttributes attributes;
    attributes.bold = parts.bold;
    attributes.italic = parts.italic;
    attributes.inlineCode = parts.code;
    attributes.generatedMarker = parts.marker;
    if (!parts.link.isNull())
        attributes.linkDestination = SharedText(parts.link);
    if (!parts.image.isNull())
        attributes.imageSource = SharedText(parts.image);
    if (!parts.alt.isNull())
        attributes.imageAlt = SharedText(parts.alt);
    return attributes;
}

QString written(const AttributedText &text)
{
    return serializeInline(text, {0, text.size()});
}

QString written(const QString &text, const Parts &parts)
{
    return written(AttributedText(text, make(parts)));
}

} // namespace

TEST(InlineWriting, PlainTextIsEscaped)
{
    EXPECT_EQ(written(u"a\\b*c`d[e]f"_s, {}), u"a\\\\b\\*c\\`d\\[e\\]f");
}

TEST(InlineWriting, NothingElseIsEscaped)
{
    const QString text = u"_ # - + > | ! . 1. (a) ~ < &"_s;
    EXPECT_EQ(written(text, {}), text);
}

TEST(InlineWriting, SignsWithMarksAreNotEscaped)
{
    EXPECT_EQ(written(u"*\u0301 [\uFE0F \u0600`"_s, {}), u"*\u0301 [\uFE0F \u0600`");
    EXPECT_EQ(written(u"`\u0301"_s, {.code = true}), u"``\u0301`");
}

TEST(InlineWriting, AMarkAtTheStartOfTheNextRunIsNotSeen)
{
    AttributedText text(u"*");
    text.append(u"\u0301", make({.bold = true}));
    EXPECT_EQ(written(text), u"\\***\u0301**");
}

TEST(InlineWriting, HardBreaksAreTwoSpacesAndALineBreak)
{
    EXPECT_EQ(written(u"a\u2028b"_s, {}), u"a  \nb");
    EXPECT_EQ(written(u"a\u2028b"_s, {.code = true}), u"`a  \nb`");
    EXPECT_EQ(written(u"\u2028\u2028"_s, {}), u"  \n  \n");
}

TEST(InlineWriting, Emphasis)
{
    EXPECT_EQ(written(u"a"_s, {.bold = true}), u"**a**");
    EXPECT_EQ(written(u"a"_s, {.italic = true}), u"*a*");
    EXPECT_EQ(written(u"a"_s, {.bold = true, .italic = true}), u"***a***");
    EXPECT_EQ(written(u" c"_s, {.bold = true}), u"** c**"); // no space is moved out
}

TEST(InlineWriting, CodeEscapesBackticksOnly)
{
    EXPECT_EQ(written(u"a*b\\c`d"_s, {.code = true}), u"`a*b\\c\\`d`");
}

TEST(InlineWriting, LinksKeepTheirDestinations)
{
    EXPECT_EQ(written(u"a]b"_s, {.link = u"u*)\\"_s}), u"[a\\]b](u*)\\)");
    EXPECT_EQ(written(u"a"_s, {.link = u""_s}), u"[a]()");
}

TEST(InlineWriting, EmphasisStandsOutsideALinkAndALinkOutsideCode)
{
    EXPECT_EQ(written(u"a"_s, {.bold = true, .italic = true, .code = true, .link = u"u"_s}), u"***[`a`](u)***");
}

TEST(InlineWriting, RunsAreWrappedOneByOne)
{
    AttributedText text(u"a ", make({.bold = true}));
    text.append(u"b", make({.bold = true, .italic = true}));
    text.append(u" c", make({.bold = true}));
    EXPECT_EQ(written(text), u"**a *****b***** c**");
}

TEST(InlineWriting, ALinkOfSeveralRunsIsSeveralLinks)
{
    AttributedText text(u"a", make({.link = u"u"_s}));
    text.append(u"b", make({.bold = true, .link = u"u"_s}));
    EXPECT_EQ(written(text), u"[a](u)**[b](u)**");
}

TEST(InlineWriting, MarkersAreLeftOut)
{
    AttributedText text(u"•\t", make({.marker = true}));
    text.append(u"a", {});
    EXPECT_EQ(written(text), u"a");
    EXPECT_EQ(plainText(text, {0, text.size()}), u"a");
}

TEST(InlineWriting, AnImageIsItsAttributes)
{
    EXPECT_EQ(written(u"whatever"_s, {.image = u"s)*"_s, .alt = u"a]b\\[c"_s}), u"![a\\]b\\[c](s)*)");
    EXPECT_EQ(written(u"x"_s, {.image = u""_s, .alt = u""_s}), u"![]()");
    EXPECT_EQ(written(u"x"_s, {.image = u"s"_s}), u"![Image](s)");
    EXPECT_EQ(written(u"x"_s, {.image = u"s"_s, .alt = u"a]\u0301"_s}), u"![a]\u0301](s)");
}

TEST(InlineWriting, AnImageLosesEverythingElse)
{
    EXPECT_EQ(written(u"x"_s, {.bold = true, .code = true, .link = u"u"_s, .image = u"s"_s, .alt = u"a"_s}),
              u"![a](s)");
}

TEST(InlineWriting, AMarkerThatIsAnImageIsLeftOut)
{
    EXPECT_EQ(written(u"x"_s, {.marker = true, .image = u"s"_s}), u"");
}

TEST(InlineWriting, AnImageInPiecesIsWrittenOnce)
{
    AttributedText text(u"x", make({.image = u"s"_s, .alt = u"a"_s}));
    text.append(u"y", make({.bold = true, .image = u"s"_s, .alt = u"b"_s}));
    EXPECT_EQ(written(text), u"![a](s)");
}

TEST(InlineWriting, TextTypedIntoAnImageSplitsIt)
{
    AttributedText text(u"x", make({.image = u"s"_s, .alt = u"a"_s}));
    text.append(u"typed", {});
    text.append(u"y", make({.image = u"s"_s, .alt = u"a"_s}));
    EXPECT_EQ(written(text), u"![a](s)typed![a](s)");
}

TEST(InlineWriting, ImagesOfOtherSourcesAreImagesOfTheirOwn)
{
    AttributedText text(u"x", make({.image = u"s"_s, .alt = u"a"_s}));
    text.append(u"y", make({.image = u"t"_s, .alt = u"a"_s}));
    EXPECT_EQ(written(text), u"![a](s)![a](t)");
}

TEST(InlineWriting, ARangeLooksAtNothingOutside)
{
    AttributedText text(u"ab", make({.image = u"s"_s, .alt = u"a"_s}));
    text.append(u"cd", make({.bold = true}));
    EXPECT_EQ(serializeInline(text, {1, 2}), u"![a](s)**c**");
    EXPECT_EQ(serializeInline(text, {3, 1}), u"**d**");
    EXPECT_EQ(serializeInline(text, {3, 0}), u"");
    EXPECT_EQ(serializeInline(text, {4, 0}), u"");
    EXPECT_EQ(plainText(text, {1, 2}), u"bc");
}

TEST(InlineWriting, ASelectionOverParagraphsHasPlainLineBreaks)
{
    AttributedText text(u"a\nb\tc", {});
    text.append(u"\nd", make({.bold = true}));
    EXPECT_EQ(written(text), u"a\nb\tc**\nd**");
}

TEST(InlineWriting, TextOfACodeBlockIsEscapedInASelection)
{
    TextAttributes code;
    code.blockStyle = SharedText(u"code:"_s);
    EXPECT_EQ(written(AttributedText(u"a*b", code)), u"a\\*b");
}

} // namespace Tessaline
