#include "MarkdownUI/InlineHtml.h"
#include "MarkdownUI/MarkdownParser.h"
#include "MarkdownUI/Theme.h"

#include <gtest/gtest.h>
#include <QtCore/QRegularExpression>

#include <random>

using namespace MarkdownUI;
using namespace Qt::StringLiterals;

namespace {

MarkdownUIAttributes plainAttributes()
{
    MarkdownUIAttributes attributes;
    attributes.fontProperties = FontProperties{.size = 16};
    return attributes;
}

QList<InlineNode> inlinesOf(QStringView markdown)
{
    const QList<BlockNode> blocks = parseBlocks(markdown);
    return blocks.isEmpty() ? QList<InlineNode>() : blocks.first().as<BlockNode::Paragraph>()->content;
}

AttributedString rendered(QStringView markdown, SoftBreak::Mode mode = SoftBreak::Mode::Space, const QUrl &baseURL = {})
{
    return renderAttributedString(inlinesOf(markdown), baseURL, defaultTheme().inlineTextStyles(), mode,
                                  plainAttributes());
}

/// Runs as "text{styles}" with a bar between them; e, s, d, c and l for the styles, outermost first.
std::string runsOf(const AttributedString &string)
{
    QStringList runs;
    for (const AttributedString::Run &run : string.runs()) {
        QString text = string.text().sliced(run.location, run.length).replace(u'\n', u'~');
        QString names;
        for (const InlineStyle style : string.stylesOf(run))
            names += u"cesdl"[static_cast<int>(style)];
        runs.append(names.isEmpty() ? text : text + u'{' + names + u'}');
    }
    return runs.join(u'|').toStdString();
}

std::string spaced(QStringView markdown)
{
    return rendered(markdown).text().toStdString();
}

std::string broken(QStringView markdown)
{
    return rendered(markdown, SoftBreak::Mode::LineBreak).text().toStdString();
}

std::optional<QString> linkOf(QStringView markdown, const QUrl &baseURL = {})
{
    return rendered(markdown, SoftBreak::Mode::Space, baseURL).runs().first().attributes.link;
}

// --- breaks ---

TEST(InlineRenderer, ASoftBreakIsABlankOrALineAsTheModeSays)
{
    EXPECT_EQ(spaced(u"a\nb"), "a b");
    EXPECT_EQ(broken(u"a\nb"), "a\nb");
}

TEST(InlineRenderer, ALineBreakIsALineInBothModes)
{
    EXPECT_EQ(spaced(u"a  \nb"), "a\nb");
    EXPECT_EQ(broken(u"a\\\nb"), "a\nb");
}

TEST(InlineRenderer, ABreakTagInAnyFormBreaksTheLine)
{
    for (const QStringView tag : {u"<br>", u"<br/>", u"<br />", u"<BR>", u"<Br class=\"x\">", u"</br>"})
        EXPECT_EQ(spaced(u"a%1b"_s.arg(tag)), "a\nb") << tag.toString().toStdString();
}

TEST(InlineRenderer, BlanksAfterABreakTagAreGone)
{
    EXPECT_EQ(spaced(u"a<br>  \u00a0 b c"), "a\nb c");
    EXPECT_EQ(spaced(u"a<br>*b*"), "a\nb");
    EXPECT_EQ(spaced(u"a<br> *b*"), "a\nb");
    EXPECT_EQ(spaced(u"a <br>b"), "a \nb");
}

TEST(InlineRenderer, TheSkipEndsAtTheFirstTextEvenIfNothingIsLeftOfIt)
{
    // " " is the whole text between the tag and the emphasis; the blank inside the code is not a text's.
    EXPECT_EQ(runsOf(rendered(u"a<br> *b* c")), "a~|b{e}| c");
    EXPECT_EQ(spaced(u"a<br>` b ` c"), "a\nbc");
}

TEST(InlineRenderer, ASoftBreakAfterABreakTagAddsNoBlankAndEndsTheSkip)
{
    EXPECT_EQ(spaced(u"a<br>\nb"), "a\nb");
    const QList<InlineNode> nodes{InlineNode::Html{u"<br>"_s}, InlineNode::SoftBreak(), InlineNode::Text{u"  b"_s}};
    const InlineTextStyles styles = defaultTheme().inlineTextStyles();
    EXPECT_EQ(renderAttributedString(nodes, {}, styles, SoftBreak::Mode::Space, {}).text(), u"\n  b"_s);
    EXPECT_EQ(renderAttributedString(nodes, {}, styles, SoftBreak::Mode::LineBreak, {}).text(), u"\n\nb"_s);
}

TEST(InlineRenderer, ASoftBreakAsALineTakesTheBlanksAfterIt)
{
    const QList<InlineNode> nodes{InlineNode::SoftBreak(), InlineNode::Text{u" \t b"_s}};
    EXPECT_EQ(renderAttributedString(nodes, {}, {}, SoftBreak::Mode::LineBreak, {}).text(), u"\nb"_s);
}

TEST(InlineRenderer, ALineBreakDoesNotTakeTheBlanksAfterIt)
{
    const QList<InlineNode> nodes{InlineNode::LineBreak(), InlineNode::Text{u"  b"_s}};
    EXPECT_EQ(renderAttributedString(nodes, {}, {}, SoftBreak::Mode::LineBreak, {}).text(), u"\n  b"_s);
}

// --- HTML ---

TEST(InlineRenderer, OtherHtmlIsShownAsItIsWritten)
{
    EXPECT_EQ(runsOf(rendered(u"a <b>c</b> d")), "a <b>c</b> d");
    EXPECT_EQ(spaced(u"a <!-- b --> c"), "a <!-- b --> c");
    EXPECT_EQ(spaced(u"a<brx>b<bre/>"), "a<brx>b<bre/>");
    EXPECT_EQ(spaced(u"a <?php b ?> <![CDATA[c]]>"), "a <?php b ?> <![CDATA[c]]>");
}

TEST(InlineHtml, IsABreakIfTheFirstTagInItIs)
{
    EXPECT_TRUE(isLineBreakTag(u"<!-- <br> -->"));
    EXPECT_FALSE(isLineBreakTag(u"<!-- <b> <br> -->"));
    EXPECT_TRUE(isLineBreakTag(u"< <br>"));
    EXPECT_FALSE(isLineBreakTag(u"<br"));
    EXPECT_FALSE(isLineBreakTag(u"<"));
    EXPECT_FALSE(isLineBreakTag(u"</"));
    EXPECT_FALSE(isLineBreakTag(u""));
    EXPECT_FALSE(isLineBreakTag(u"<b\u0280>"));
}

TEST(InlineHtml, AgreesWithThePatternOnGeneratedTexts)
{
    const QRegularExpression pattern(u"<\\/?([a-zA-Z0-9]+)[^>]*>"_s);
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (size_t length = random() % 9; text.size() < qsizetype(length);)
            text += QStringView(u"<</>>bBrR1 -")[qsizetype(random() % 12)];
        const QRegularExpressionMatch match = pattern.match(text);
        const bool isBreak = match.hasMatch() && match.captured(1).toLower() == u"br";
        ASSERT_EQ(isLineBreakTag(text), isBreak) << text.toStdString();
    }
}

// --- styles ---

TEST(InlineRenderer, NestedStylesBothApplyAndTheOuterOnesHoldAgainAfterwards)
{
    const AttributedString string = rendered(u"a **b *c* d** e");

    EXPECT_EQ(runsOf(string), "a |b {s}|c{se}| d{s}| e");
    EXPECT_EQ(string.runs().at(2).attributes.fontProperties->weight, FontProperties::Weight::Semibold);
    EXPECT_EQ(string.runs().at(2).attributes.fontProperties->style, FontProperties::Style::Italic);
    EXPECT_EQ(string.runs().at(1).attributes, string.runs().at(3).attributes);
    EXPECT_EQ(string.runs().at(4).attributes, plainAttributes());
}

TEST(InlineRenderer, EveryStyleHasItsName)
{
    EXPECT_EQ(runsOf(rendered(u"`a` *b* **c** ~~d~~ [e](f)")), "a{c}| |b{e}| |c{s}| |d{d}| |e{l}");
}

TEST(InlineRenderer, CodeInStrongIsBoth)
{
    const AttributedString string = rendered(u"**`a`**");

    EXPECT_EQ(runsOf(string), "a{sc}");
    EXPECT_EQ(string.runs().first().attributes.fontProperties->weight, FontProperties::Weight::Semibold);
    EXPECT_EQ(string.runs().first().attributes.fontProperties->familyVariant,
              FontProperties::FamilyVariant::Monospaced);
}

TEST(InlineRenderer, RunsAreMaximal)
{
    EXPECT_EQ(runsOf(rendered(u"a\nb &amp; c<i>")), "a b & c<i>");
    EXPECT_EQ(runsOf(rendered(u"*a*<br>*b*")), "a{e}|~|b{e}");

    const QList<InlineNode> twins{InlineNode::Emphasis{{InlineNode::Text{u"a"_s}}},
                                  InlineNode::Emphasis{{InlineNode::Text{u"b"_s}}}};
    const InlineTextStyles styles = defaultTheme().inlineTextStyles();
    EXPECT_EQ(runsOf(renderAttributedString(twins, {}, styles, SoftBreak::Mode::Space, {})), "ab{e}");
    // Looks can be alike where styles are not.
    const QList<InlineNode> others{InlineNode::Emphasis{{InlineNode::Text{u"a"_s}}}, InlineNode::Text{u"b"_s}};
    EXPECT_EQ(runsOf(renderAttributedString(others, {}, {}, SoftBreak::Mode::Space, {})), "a{e}|b");
}

// --- links ---

TEST(InlineRenderer, ALinkHasItsTargetAndItsStyle)
{
    const AttributedString string = rendered(u"[a *b*](https://c.org/d%20e?f#g) h");

    EXPECT_EQ(runsOf(string), "a {l}|b{le}| h");
    EXPECT_EQ(string.runs().at(0).attributes.link, u"https://c.org/d%20e?f#g"_s);
    EXPECT_EQ(string.runs().at(1).attributes.link, u"https://c.org/d%20e?f#g"_s);
    EXPECT_EQ(string.runs().at(0).attributes.foregroundColor, Palette::kLink);
    EXPECT_EQ(string.runs().at(2).attributes, plainAttributes());
}

TEST(InlineRenderer, ALinkThatIsNoUrlHasTheStyleOnly)
{
    const AttributedString string = rendered(u"[a](<b c>)");

    EXPECT_EQ(runsOf(string), "a{l}");
    EXPECT_EQ(string.runs().first().attributes.link, std::nullopt);
    EXPECT_EQ(string.runs().first().attributes.foregroundColor, Palette::kLink);
    EXPECT_EQ(linkOf(u"[a]()"), std::nullopt);
}

TEST(InlineRenderer, ALinkIsResolvedAgainstTheBase)
{
    EXPECT_EQ(linkOf(u"[a](b/c)"), u"b/c"_s);
    EXPECT_EQ(linkOf(u"[a](b/c)", QUrl(u"https://d.org/e/f"_s)), u"https://d.org/e/b/c"_s);
    EXPECT_EQ(linkOf(u"[a](/b)", QUrl(u"https://d.org/e/f"_s)), u"https://d.org/b"_s);
    EXPECT_EQ(linkOf(u"[a](mailto:b@c.org)", QUrl(u"https://d.org/e/f"_s)), u"mailto:b@c.org"_s);
}

// --- images ---

std::string withImages(QStringView markdown, const QSet<QString> &images)
{
    return runsOf(renderText(inlinesOf(markdown), {}, defaultTheme().inlineTextStyles(), images, SoftBreak::Mode::Space,
                             plainAttributes()));
}

TEST(InlineRenderer, ALoadedImageStandsInTheLine)
{
    EXPECT_EQ(withImages(u"a ![b](c.png) d", {u"c.png"_s}), "a |\ufffc| d");

    const AttributedString string = renderText(inlinesOf(u"a ![b](c.png)"), {}, defaultTheme().inlineTextStyles(),
                                               {u"c.png"_s}, SoftBreak::Mode::Space, plainAttributes());
    EXPECT_EQ(string.runs().last().image, (RawImageData{u"c.png"_s, u"b"_s, std::nullopt}));
    EXPECT_EQ(string.runs().last().attributes, plainAttributes());
    EXPECT_EQ(string.runs().first().image, std::nullopt);
}

TEST(InlineRenderer, AnImageThatIsNotLoadedLeavesNothing)
{
    EXPECT_EQ(withImages(u"a ![b](c.png) d", {}), "a  d");
    EXPECT_EQ(spaced(u"a ![b](c.png) d"), "a  d");
}

TEST(InlineRenderer, AnImageInsideAnotherNodeIsNotDrawn)
{
    EXPECT_EQ(withImages(u"*a ![b](c.png)*", {u"c.png"_s}), "a {e}");
}

TEST(InlineRenderer, TwoImagesAreTwoRuns)
{
    EXPECT_EQ(withImages(u"![a](b)![a](b)c", {u"b"_s}), "\ufffc|\ufffc|c");
}

TEST(InlineRenderer, TheSkipAfterABreakTagReachesOverAnImageAndIntoANode)
{
    EXPECT_EQ(withImages(u"a<br>![b](c) d", {u"c"_s}), "a~|\ufffc|d");
    EXPECT_EQ(withImages(u"a<br>*&#32;b*", {}), withImages(u"a<br>*b*", {}));
}

TEST(InlineRenderer, AllSourcesAreFoundOnceAndInOrder)
{
    EXPECT_EQ(imageSources(inlinesOf(u"![a](1) *![b](2)* [![c](1) ![d](3)](x) ![e ![f](5)](4)")),
              (QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}));
    EXPECT_EQ(imageSources({}), QStringList());
}

} // namespace
