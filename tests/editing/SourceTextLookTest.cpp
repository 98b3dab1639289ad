#include "editing/SourceTextLook.h"

#include "foundation_ui/Fonts.h"

#include <QtGui/QFontMetricsF>

#include <gtest/gtest.h>

#include <cmath>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

BlockLook lookOfAll(const QString &string, double fontSize)
{
    const ChunkedText text(string);
    SourceTextLook look(text);
    look.setFontSize(fontSize);
    LayoutBlock block;
    block.range = {0, string.size()};
    return look.lookOf(block, true);
}

} // namespace

TEST(SourceTextLook, IsTheFaceForCodeInTheGivenSize)
{
    EXPECT_EQ(lookOfAll(u"text"_s, 17).font, Fonts::code(17));
    EXPECT_EQ(lookOfAll(u"text"_s, 40).font.pixelSize(), 40);
    EXPECT_EQ(lookOfAll(u"text"_s, 17).font.weight(), QFont::Normal);
}

TEST(SourceTextLook, PutsFourPixelsBelowEachRowAndSixBelowEachParagraph)
{
    const BlockLook look = lookOfAll(u"text"_s, 17);

    EXPECT_EQ(look.lineSpacing, 4);
    EXPECT_EQ(look.spacingAfter, 6);
    EXPECT_EQ(look.spacingBefore, 0);
    EXPECT_EQ(look.firstLineIndent, 0);
    EXPECT_EQ(look.headIndent, 0);
}

TEST(SourceTextLook, IsTheSameForWhateverTheMarkdownMeans)
{
    for (const QString &line : {u"# Heading"_s, u"**bold** and `code`"_s, u"- [ ] task"_s, u"> quote"_s}) {
        const BlockLook look = lookOfAll(line, 17);
        EXPECT_EQ(look.font, lookOfAll(u"text"_s, 17).font);
        for (const QTextLayout::FormatRange &range : look.formats) { // they part signs, and change nothing to be seen
            EXPECT_FALSE(range.format.hasProperty(QTextFormat::ForegroundBrush));
            EXPECT_FALSE(range.format.hasProperty(QTextFormat::BackgroundBrush));
            EXPECT_FALSE(range.format.hasProperty(QTextFormat::FontWeight));
        }
    }
}

TEST(SourceTextLook, GuessesRowsFromTheFace)
{
    const ChunkedText text(u"text"_s);
    SourceTextLook look(text);
    look.setFontSize(17);
    const QFontMetricsF face(look.font());

    const BlockMetrics metrics = look.metrics(static_cast<int>(face.horizontalAdvance(u'0') * 80.5));

    EXPECT_EQ(metrics.columns, 80);
    EXPECT_EQ(metrics.rowHeight, static_cast<int>(std::ceil(face.height())) + 4);
}

} // namespace Tessaline
