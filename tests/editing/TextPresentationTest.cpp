#include "editing/TextPresentation.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Face = PresentedFont::Face;

constexpr double kSize = 16;

TextAttributes tagged(const QString &tag)
{
    TextAttributes attributes;
    attributes.blockStyle = SharedText(tag);
    return attributes;
}

TextPresentation presented(const TextAttributes &attributes)
{
    return presentation(attributes, kSize);
}

struct FontRow {
    QString tag;
    PresentedFont font;
};

struct ParagraphRow {
    QString tag;
    PresentedParagraph paragraph;
};

} // namespace

TEST(TextPresentation, FontsOfTags)
{
    const FontRow rows[] = {
        {u"heading:1"_s, {Face::System, 25, true, false, false}},
        {u"heading:"_s, {Face::System, 25, true, false, false}},
        {u"heading:x"_s, {Face::System, 25, true, false, false}},
        {u"heading:99999999999999999999"_s, {Face::System, 25, true, false, false}},
        {u"heading:2"_s, {Face::System, 21, true, false, false}},
        {u"heading:3"_s, {Face::System, 18, true, false, false}},
        {u"heading:4"_s, {Face::System, 16, true, false, false}},
        {u"heading:6"_s, {Face::System, 16, true, false, false}},
        {u"heading:0"_s, {Face::System, 16, true, false, false}},
        {u"heading:-1"_s, {Face::System, 16, true, false, false}},
        {u"code:"_s, {Face::Monospaced, 15, false, false, false}},
        {u"code:js"_s, {Face::Monospaced, 15, false, false, false}},
        {u"tableHeader"_s, {Face::System, 16, true, false, false}},
        {u"tableRow"_s, {Face::Body, 16, false, false, false}},
        {u"paragraph"_s, {Face::Body, 16, false, false, false}},
        {u"quote"_s, {Face::Body, 16, false, false, false}}, // the italics come later
        {u"bullet"_s, {Face::Body, 16, false, false, false}},
        {u"horizontalRule"_s, {Face::Body, 16, false, false, false}},
        {u"heading"_s, {Face::Body, 16, false, false, false}},
        {u"Heading:1"_s, {Face::Body, 16, false, false, false}},
        {u"unknown"_s, {Face::Body, 16, false, false, false}},
        {u""_s, {Face::Body, 16, false, false, false}},
    };
    for (const FontRow &row : rows)
        EXPECT_EQ(baseFontForBlockStyle(row.tag, kSize), row.font) << row.tag.toStdString();
}

TEST(TextPresentation, CodeIsNeverSmallerThanTenPoints)
{
    EXPECT_EQ(baseFontForBlockStyle(u"code:", 11).size, 10);
    EXPECT_EQ(baseFontForBlockStyle(u"code:", 10.5).size, 10);
    EXPECT_EQ(baseFontForBlockStyle(u"code:", 11.5).size, 10.5);
    EXPECT_EQ(baseFontForBlockStyle(u"code:", 4).size, 10);
}

TEST(TextPresentation, ParagraphsOfTags)
{
    const PresentedParagraph heading{8, 8, 20, 0, 0, {}, {}};
    const PresentedParagraph task{4, 2, 0, 2, 30, 30, {30}};
    const PresentedParagraph item{8, 3, 0, 18, 38, {}, {32}};
    const PresentedParagraph code{5, 0, 0, 20, 20, {}, {}};
    const PresentedParagraph table{8, 3, 0, 0, 0, {}, {150, 300, 450, 600, 750}};
    const PresentedParagraph plain{8, 10, 0, 0, 0, {}, {}};
    const ParagraphRow rows[] = {
        {u"heading:1"_s, heading}, {u"heading:9"_s, heading},
        {u"heading:"_s, heading},  {u"quote"_s, {8, 10, 0, 24, 24, {}, {}}},
        {u"task:0"_s, task},       {u"task:1"_s, task},
        {u"task:x"_s, task},       {u"bullet"_s, item},
        {u"numbered:7"_s, item},   {u"numbered:"_s, item},
        {u"code:"_s, code},        {u"code:js"_s, code},
        {u"tableHeader"_s, table}, {u"tableRow"_s, table},
        {u"paragraph"_s, plain},   {u"horizontalRule"_s, plain},
        {u"quote "_s, plain},      {u"bullets"_s, plain},
        {u"task"_s, plain},        {u""_s, plain},
    };
    for (const ParagraphRow &row : rows)
        EXPECT_EQ(paragraphStyleForBlockStyle(row.tag), row.paragraph) << row.tag.toStdString();
}

TEST(TextPresentation, TextWithoutATagIsAParagraph)
{
    EXPECT_EQ(presented({}), presented(tagged(u"paragraph"_s)));
    EXPECT_EQ(presented(tagged(u"unknown"_s)), presented(tagged(u"paragraph"_s)));
    EXPECT_EQ(presented({}).foreground, PresentedColor::Text);
    EXPECT_EQ(presented({}).background, std::nullopt);
}

TEST(TextPresentation, BoldAndItalicAddToTheFont)
{
    TextAttributes attributes = tagged(u"paragraph"_s);
    attributes.bold = true;
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::Body, 16, true, false, false}));
    attributes.italic = true;
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::Body, 16, true, false, true}));
    attributes.blockStyle = SharedText(u"heading:2"_s);
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::System, 21, true, false, true}));
    attributes.blockStyle = SharedText(u"code:"_s);
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::Monospaced, 15, true, false, true}));
}

TEST(TextPresentation, QuotesAreItalicAndGrey)
{
    TextAttributes attributes = tagged(u"quote"_s);
    const TextPresentation quote = presented(attributes);
    EXPECT_EQ(quote.font, (PresentedFont{Face::Body, 16, false, false, true}));
    EXPECT_EQ(quote.foreground, PresentedColor::SecondaryLabel);

    attributes.bold = attributes.italic = true;
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::Body, 16, true, false, true})); // italic once
}

TEST(TextPresentation, ACodeSpanShowsNeitherBoldNorItalic)
{
    TextAttributes attributes = tagged(u"quote"_s);
    attributes.bold = attributes.italic = attributes.inlineCode = true;
    const TextPresentation code = presented(attributes);
    EXPECT_EQ(code.font, (PresentedFont{Face::Monospaced, 15, false, false, false}));
    EXPECT_EQ(code.foreground, PresentedColor::Orange);
    EXPECT_EQ(code.background, PresentedColor::QuaternaryLabel);
}

TEST(TextPresentation, ACodeSpanInAHeadingHasTheSizeOfCode)
{
    TextAttributes attributes = tagged(u"heading:1"_s);
    attributes.inlineCode = true;
    EXPECT_EQ(presented(attributes).font, (PresentedFont{Face::Monospaced, 15, false, false, false}));
    EXPECT_EQ(presented(attributes).paragraph, paragraphStyleForBlockStyle(u"heading:1"));
}

TEST(TextPresentation, LinksAreUnderlined)
{
    TextAttributes attributes = tagged(u"paragraph"_s);
    attributes.linkDestination = SharedText(u"https://example.org"_s);
    const TextPresentation link = presented(attributes);
    EXPECT_EQ(link.foreground, PresentedColor::Link);
    EXPECT_TRUE(link.underline);
    EXPECT_EQ(link.link, u"https://example.org");
    EXPECT_FALSE(presented({}).link.isPresent());
}

TEST(TextPresentation, ACodeSpanInALinkHasTheLinksColourOnTheCodesGround)
{
    TextAttributes attributes = tagged(u"paragraph"_s);
    attributes.linkDestination = SharedText(u"u"_s);
    attributes.inlineCode = true;
    EXPECT_EQ(presented(attributes).foreground, PresentedColor::Link);
    EXPECT_EQ(presented(attributes).background, PresentedColor::QuaternaryLabel);
}

TEST(TextPresentation, ImagesAreGreyOnAGround)
{
    TextAttributes attributes = tagged(u"paragraph"_s);
    attributes.imageSource = SharedText(u""_s);
    attributes.linkDestination = SharedText(u"u"_s);
    EXPECT_EQ(presented(attributes).foreground, PresentedColor::SecondaryLabel);
    EXPECT_EQ(presented(attributes).background, PresentedColor::ControlBackground);
    EXPECT_TRUE(presented(attributes).underline);
}

TEST(TextPresentation, AnAltTextAloneIsNoImage)
{
    TextAttributes attributes = tagged(u"paragraph"_s);
    attributes.imageAlt = SharedText(u"a"_s);
    EXPECT_EQ(presented(attributes), presented(tagged(u"paragraph"_s)));
}

TEST(TextPresentation, MarkersAreSemiboldInTheirColour)
{
    for (const QString &tag : {u"bullet"_s, u"quote"_s, u"task:1"_s, u"heading:1"_s}) {
        TextAttributes attributes = tagged(tag);
        attributes.generatedMarker = attributes.bold = attributes.inlineCode = true;
        const TextPresentation marker = presented(attributes);
        EXPECT_EQ(marker.font, (PresentedFont{Face::System, 16, false, true, false})) << tag.toStdString();
        EXPECT_EQ(marker.foreground, PresentedColor::Marker);
        EXPECT_FALSE(marker.strikethrough);
    }
}

TEST(TextPresentation, ADoneTaskIsStruckThrough)
{
    EXPECT_TRUE(presented(tagged(u"task:1"_s)).strikethrough);
    EXPECT_EQ(presented(tagged(u"task:1"_s)).foreground, PresentedColor::SecondaryLabel);
    for (const QString &tag : {u"task:0"_s, u"task:"_s, u"task:11"_s, u"task:01"_s})
        EXPECT_FALSE(presented(tagged(tag)).strikethrough) << tag.toStdString();
}

TEST(TextPresentation, ALinkInADoneTaskIsGrey)
{
    TextAttributes attributes = tagged(u"task:1"_s);
    attributes.linkDestination = SharedText(u"u"_s);
    const TextPresentation link = presented(attributes);
    EXPECT_EQ(link.foreground, PresentedColor::SecondaryLabel);
    EXPECT_TRUE(link.strikethrough);
    EXPECT_TRUE(link.underline);
}

TEST(TypingAttributes, KeepWhatTextCanJoin)
{
    TextAttributes attributes = tagged(u"bullet"_s);
    attributes.bold = attributes.italic = attributes.inlineCode = true;
    attributes.linkDestination = SharedText(u"u"_s);
    EXPECT_EQ(typingAttributes(attributes), attributes);
}

TEST(TypingAttributes, LeaveMarkersAndImages)
{
    TextAttributes attributes = tagged(u"bullet"_s);
    attributes.generatedMarker = true;
    attributes.imageSource = SharedText(u"s"_s);
    attributes.imageAlt = SharedText(u"a"_s);
    EXPECT_EQ(typingAttributes(attributes), tagged(u"bullet"_s));
}

} // namespace Tessaline
