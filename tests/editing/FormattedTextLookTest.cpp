#include "editing/FormattedTextLook.h"

#include "foundation_ui/Fonts.h"

#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>
#include <QtWidgets/QApplication>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A document as it is laid out.
class FormattedLook : public testing::Test
{
protected:
    void open(const QString &markdown)
    {
        m_open.setMarkdown(markdown);
        m_open.settle();
    }
    /// The format of some words; of the first of its kind.
    QTextCharFormat formatOf(const QString &words)
    {
        const qsizetype position = m_open.positionOf(words);
        const TextLayout::Block block = layout().blockAt(position);
        const int offset = block.offsetOf(position);
        for (const QTextLayout::FormatRange &range : block.layout->formats())
            if (range.start <= offset && offset < range.start + range.length)
                return range.format;
        return {};
    }
    QColor colorOf(const QString &words) { return formatOf(words).foreground().color(); }
    QColor role(ColorRole role) const { return m_open.theme.color(role); }
    /// How far from the edge of the text some words begin, on the side where their paragraph begins.
    qreal indentOf(const QString &words) { return layout().caretRect(m_open.positionOf(words)).x(); }
    qreal topOf(const QString &words) { return layout().caretRect(m_open.positionOf(words)).top(); }
    TextLayout &layout() { return m_open.view().textLayout(); }

    OpenFormattedEditor m_open;
};

constexpr double kSize = 17;

} // namespace

TEST_F(FormattedLook, BodyTextIsInTheBookFaceAndHeadingsInTheInterfaceFace)
{
    open(u"# One\n\n## Two\n\n### Three\n\n#### Four\n\n###### Six\n\nbody"_s);

    EXPECT_EQ(formatOf(u"body"_s).font(), Fonts::body(kSize));
    const struct {
        const char16_t *words;
        double size;
    } kCases[] = {{u"One", kSize + 9}, {u"Two", kSize + 5}, {u"Three", kSize + 2}, {u"Four", kSize}, {u"Six", kSize}};
    for (const auto &[words, size] : kCases) {
        const QTextCharFormat format = formatOf(QString::fromUtf16(words));
        EXPECT_EQ(format.font(), Fonts::interface(size, QFont::Bold)) << size;
        EXPECT_EQ(format.foreground().color(), role(ColorRole::Heading));
    }
    EXPECT_EQ(colorOf(u"body"_s), role(ColorRole::Text));
}

TEST_F(FormattedLook, RunsLookLikeWhatTheyAre)
{
    open(u"**bold** *ital* ***both*** `code` [link](u) ![img](s)"_s);

    EXPECT_EQ(formatOf(u"bold"_s).font().weight(), QFont::Bold);
    EXPECT_FALSE(formatOf(u"bold"_s).font().italic());
    EXPECT_TRUE(formatOf(u"ital"_s).font().italic());
    EXPECT_TRUE(formatOf(u"both"_s).font().italic());
    EXPECT_EQ(formatOf(u"both"_s).font().weight(), QFont::Bold);
    EXPECT_EQ(formatOf(u"code"_s).font(), Fonts::code(kSize - 1));
    EXPECT_EQ(colorOf(u"code"_s), role(ColorRole::InlineCode));
    EXPECT_EQ(formatOf(u"code"_s).background().color(), role(ColorRole::InlineCodeBackground));
    EXPECT_EQ(colorOf(u"link"_s), role(ColorRole::Link));
    EXPECT_TRUE(formatOf(u"link"_s).fontUnderline());
    EXPECT_EQ(colorOf(u"img"_s), role(ColorRole::SecondaryText));
    EXPECT_EQ(formatOf(u"img"_s).background().color(), role(ColorRole::Field));
}

TEST_F(FormattedLook, ParagraphsLookLikeWhatTheyAre)
{
    open(u"> said **so**\n\n- [x] done `c`\n- [ ] todo\n\n```\nfn\n```\n\n|head|b|\n|---|---|\n|cell|2|"_s);

    EXPECT_TRUE(formatOf(u"said"_s).font().italic());
    EXPECT_TRUE(formatOf(u"so"_s).font().italic());
    EXPECT_EQ(colorOf(u"said"_s), role(ColorRole::SecondaryText));
    EXPECT_TRUE(formatOf(u"done"_s).fontStrikeOut());
    EXPECT_EQ(colorOf(u"done"_s), role(ColorRole::SecondaryText));
    EXPECT_EQ(colorOf(u"c"_s), role(ColorRole::SecondaryText));
    EXPECT_FALSE(formatOf(u"☑"_s).fontStrikeOut());
    EXPECT_EQ(colorOf(u"☑"_s), role(ColorRole::Accent));
    EXPECT_FALSE(formatOf(u"todo"_s).fontStrikeOut());
    EXPECT_EQ(formatOf(u"fn"_s).font(), Fonts::code(kSize - 1));
    EXPECT_EQ(formatOf(u"head"_s).font(), Fonts::interface(kSize, QFont::Bold));
    EXPECT_EQ(formatOf(u"cell"_s).font(), Fonts::body(kSize));
}

TEST_F(FormattedLook, MarkersAreSemiboldAndOfTheInterfaceFace)
{
    open(u"3. three\n- [ ] task\n- dot"_s);

    for (const QString &marker : {u"3."_s, u"☐"_s, u"•"_s}) {
        EXPECT_EQ(formatOf(marker).font(), Fonts::interface(kSize, QFont::DemiBold));
        EXPECT_EQ(colorOf(marker), role(ColorRole::Accent));
    }
}

TEST_F(FormattedLook, CodeIsNeverSmallerThanTenPoints)
{
    open(u"`code`"_s);
    m_open.editor.setFontSize(6);
    m_open.settle();

    EXPECT_EQ(formatOf(u"code"_s).font(), Fonts::code(10));
}

TEST_F(FormattedLook, FollowsTheThemeAndTheFontSize)
{
    open(u"- [link](u)"_s);

    m_open.theme.setAppearance(Appearance::Dark);
    m_open.settle();
    EXPECT_EQ(colorOf(u"link"_s), color(ColorRole::Link, Appearance::Dark));

    m_open.editor.setFontSize(30);
    m_open.settle();
    EXPECT_EQ(formatOf(u"link"_s).font(), [] {
        QFont font = Fonts::body(30);
        font.setUnderline(true);
        return font;
    }());
}

TEST_F(FormattedLook, ParagraphsAreIndentedByTheirKind)
{
    const QString words = u"words to go on for more than a row "_s.repeated(4);
    open(u"plain\n\n> quote %1\n\n- bullet %1\n- [ ] task %1\n\n```\nfn %1\n```\n\n|head|second|third|\n|---|---|---|"_s
             .arg(words));
    const auto secondRow = [this](const QString &start) {
        const qsizetype position = m_open.positionOf(start);
        return layout().caretRect(layout().rowEnd(position) + 1).x();
    };

    EXPECT_NEAR(indentOf(u"plain"_s), 0, 0.5);
    EXPECT_NEAR(indentOf(u"quote"_s), 24, 0.5);
    EXPECT_NEAR(secondRow(u"quote"_s), 24, 0.5);
    EXPECT_NEAR(indentOf(u"•"_s), 18, 0.5);
    EXPECT_NEAR(indentOf(u"bullet"_s), 32, 0.5);
    EXPECT_NEAR(secondRow(u"bullet"_s), 38, 0.5);
    EXPECT_NEAR(indentOf(u"☐"_s), 2, 0.5);
    EXPECT_NEAR(indentOf(u"task"_s), 30, 0.5);
    EXPECT_NEAR(secondRow(u"task"_s), 30, 0.5);
    EXPECT_NEAR(indentOf(u"fn"_s), 20, 0.5);
    EXPECT_NEAR(secondRow(u"fn"_s), 20, 0.5);
    EXPECT_NEAR(indentOf(u"second"_s), 150, 0.5);
    EXPECT_NEAR(indentOf(u"third"_s), 300, 0.5);
}

TEST_F(FormattedLook, ATextNeverTouchesTheNumberOfItsItem)
{
    for (const double size : {9.0, 13.0, 17.0, 24.0, 40.0}) {
        m_open.editor.setFontSize(size);
        open(u"1. one\n2. two\n10. ten\n100. hundred\n-5. less\n- [ ] task\n- dot"_s);
        const QFontMetricsF marker(Fonts::interface(size, QFont::DemiBold));
        for (const auto &[sign, words] : {std::pair{u"1."_s, u"one"_s},
                                          {u"2."_s, u"two"_s},
                                          {u"10."_s, u"ten"_s},
                                          {u"100."_s, u"hundred"_s},
                                          {u"-5."_s, u"less"_s},
                                          {u"☐"_s, u"task"_s},
                                          {u"•"_s, u"dot"_s}}) {
            const qreal end = indentOf(sign) + marker.horizontalAdvance(sign);
            EXPECT_GE(indentOf(words), end + 3) << size << ' ' << words.toStdString();
            EXPECT_LE(indentOf(words), std::max(38.0, end + 14)) << size << ' ' << words.toStdString();
        }
        if (size == kSize) {
            EXPECT_EQ(indentOf(u"one"_s), indentOf(u"two"_s)) << "numbers of one digit begin their text in one place";
        }
    }
}

TEST_F(FormattedLook, EverySignOfCodeKeepsItsPlace)
{
    open(u"```\na::b -> c\n```\n\n`!=x`"_s);
    const qreal width = QFontMetricsF(Fonts::code(kSize - 1)).horizontalAdvance(u'0');

    for (qsizetype i = 0; i < 9; ++i)
        EXPECT_NEAR(layout().caretRect(i + 1).x() - layout().caretRect(i).x(), width, 0.1) << i;
    for (qsizetype i = 10; i < 13; ++i)
        EXPECT_NEAR(layout().caretRect(i + 1).x() - layout().caretRect(i).x(), width, 0.1) << i;
    EXPECT_EQ(colorOf(u"="_s), role(ColorRole::InlineCode));
    const QTextLayout &code = *layout().blockAt(0).layout;
    EXPECT_GT(code.lineAt(0).glyphRuns(0, 4).size(), 1) << "shaped apart, so that no figure takes their place";
}

TEST_F(FormattedLook, TextFromRightToLeftIsTheMirrorImage)
{
    open(u"- אחת\n\n> שתיים\n\n- [ ] שלוש\n\n```\nארבע\n```\n\n|חמש|שש|\n|---|---|"_s);
    const qreal width = layout().width();

    EXPECT_NEAR(width - indentOf(u"אחת"_s), 32, 1);
    EXPECT_NEAR(width - indentOf(u"שתיים"_s), 24, 1);
    EXPECT_NEAR(width - indentOf(u"שלוש"_s), 30, 1);
    EXPECT_NEAR(width - indentOf(u"ארבע"_s), 20, 1);
    EXPECT_NEAR(width - indentOf(u"שש"_s), 150, 1);
}

TEST_F(FormattedLook, HeadingsStandApartAndLinesOfCodeDoNot)
{
    open(u"a\n\nb\n\n## c\n\n```\nd\ne\n```"_s);
    const qreal paragraph = topOf(u"b"_s) - topOf(u"a"_s);
    const qreal heading = topOf(u"c"_s) - topOf(u"b"_s);
    const qreal code = topOf(u"e"_s) - topOf(u"d"_s);

    EXPECT_NEAR(heading - paragraph, 20, 1);
    const QRectF ofHeading = layout().caretRect(m_open.positionOf(u"c"_s));
    const BlockLook look = layout().look().lookOf(layout().placeAt(m_open.positionOf(u"c"_s)), true);
    EXPECT_EQ(look.spacingAfter, 8);
    EXPECT_NEAR(topOf(u"d"_s) - ofHeading.bottom(), look.lineSpacing + 8, 1);
    EXPECT_LT(code, paragraph);
    EXPECT_EQ(m_open.view().caretRectInViewport(0).top(), 36) << "no distance before the first paragraph";
    open(u"# first"_s);
    EXPECT_EQ(m_open.view().caretRectInViewport(0).top(), 36) << "not before a heading either";
}

TEST_F(FormattedLook, WhereAListATableOrCodeEndsTheNextParagraphIsAsFarAwayAsFromAnyOther)
{
    const auto gap = [this](const QString &above, const QString &below) {
        const qsizetype position = m_open.positionOf(above);
        return topOf(below) - layout().caretRect(position).bottom();
    };
    open(u"paragraph\n\nplain\n\n- item\n- [ ] task\n\nend"_s);
    const qreal ordinary = gap(u"paragraph"_s, u"plain"_s);
    EXPECT_LT(gap(u"item"_s, u"task"_s), ordinary);
    EXPECT_GE(gap(u"task"_s, u"end"_s), 10);

    open(u"```\none\ntwo\n```\n\nend"_s);
    EXPECT_LT(gap(u"one"_s, u"two"_s), 10);
    EXPECT_GE(gap(u"two"_s, u"end"_s), 10);

    open(u"```\none\n```\n\n```js\ntwo\n```"_s);
    EXPECT_GE(gap(u"one"_s, u"two"_s), 10);

    open(u"|one|b|\n|---|---|\n|two|c|\n\n|three|d|\n|---|---|"_s);
    EXPECT_LT(gap(u"one"_s, u"two"_s), 10);
    EXPECT_GE(gap(u"two"_s, u"three"_s), 10);
}

TEST_F(FormattedLook, ADistanceFollowsWhenTheNextParagraphChangesItsKind)
{
    open(u"```\none\n```\n\ntwo\n\nthree"_s);
    const int top = m_open.rectOf(m_open.positionOf(u"two"_s)).top();

    m_open.putCaretBefore(u"two"_s);
    m_open.format(u"codeBlock"_s);
    const int joined = m_open.rectOf(m_open.positionOf(u"two"_s)).top();
    EXPECT_LT(joined, top - 5);
    m_open.undo();
    EXPECT_EQ(m_open.rectOf(m_open.positionOf(u"two"_s)).top(), top);
    m_open.redo();
    EXPECT_EQ(m_open.rectOf(m_open.positionOf(u"two"_s)).top(), joined);

    const QPoint three = m_open.pointAt(m_open.positionOf(u"three"_s));
    m_open.setMarkdown(u"```\none\ntwo\n```\n\nthree"_s);
    EXPECT_EQ(m_open.pointAt(m_open.positionOf(u"three"_s)), three) << "as if it was laid out at once";
    m_open.view().lookChanged();
    EXPECT_EQ(m_open.pointAt(m_open.positionOf(u"three"_s)), three);
}

TEST_F(FormattedLook, AnEmptyLastLineLooksLikeWhatWouldBeTypedThere)
{
    open(u"# Title"_s);
    m_open.putCaretAtEnd();
    const int height = m_open.view().caretRectInViewport(m_open.selection().caret).height();

    m_open.press(Qt::Key_Return);
    EXPECT_EQ(m_open.view().caretRectInViewport(m_open.selection().caret).height(), height);
    const QPoint before = m_open.pointAt(m_open.selection().caret);
    m_open.type(u"x"_s);
    EXPECT_EQ(m_open.view().caretRectInViewport(m_open.selection().caret).center().y(), before.y());
}

TEST_F(FormattedLook, TheSignsOfTheEditorHaveGlyphs)
{
    for (const QString &sign : {u"☐"_s, u"☑"_s, u"•"_s, u"🖼"_s, u"─"_s}) {
        open(sign == u"─"_s ? u"---"_s : sign);
        const QTextLine row = layout().blockAt(0).layout->lineAt(0);
        const QList<QGlyphRun> runs = row.glyphRuns(0, static_cast<int>(sign.size()));
        ASSERT_FALSE(runs.isEmpty()) << sign.toStdString();
        EXPECT_FALSE(runs.constFirst().glyphIndexes().contains(0)) << sign.toStdString();
    }
}

} // namespace Tessaline
