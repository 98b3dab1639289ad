#include "foundation_ui/Label.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Tag.h"

#include <QtGui/QAccessible>
#include <QtWidgets/QVBoxLayout>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QFont font()
{
    return Fonts::interface(Fonts::kInterfaceSize);
}

} // namespace

TEST(Label, GivesWayToAFewPixelsOnOneLine)
{
    const Theme theme;
    const Label label(theme, ColorRole::Text, font(), u"A rather long name of a file.md"_s);

    EXPECT_GT(label.sizeHint().width(), 100);
    EXPECT_LT(label.minimumSizeHint().width(), 20);
}

TEST(Label, IsAsHighAsItsLinesWithWordWrap)
{
    const Theme theme;
    Label label(theme, ColorRole::Text, font(), u"Several words that need several lines"_s);
    label.setWordWrap(true);

    EXPECT_GT(label.heightForWidth(80), 2 * label.heightForWidth(1000));
}

TEST(Label, ShowsAllLinesInALayoutThatIsWiderThanItsMaximum)
{
    const Theme theme;
    QWidget parent;
    QVBoxLayout layout(&parent);
    auto *label = new Label(theme, ColorRole::Text, font(), u"word "_s.repeated(40).trimmed());
    label->setWordWrap(true);
    label->setMaximumWidth(120);
    layout.addWidget(label, 0, Qt::AlignHCenter);
    layout.addStretch();
    parent.resize(800, 600);
    parent.show();

    EXPECT_EQ(label->width(), 120);
    EXPECT_EQ(label->height(), label->heightForWidth(120));
    EXPECT_GT(label->height(), 5 * label->fontMetrics().height());
}

TEST(Label, BreaksALongPathThatHasNoSpaces)
{
    const Theme theme;
    Label label(theme, ColorRole::Text, font(), QString(300, u'x'));
    label.setWordWrap(true);
    label.resize(200, label.heightForWidth(200));

    // All lines are drawn inside: none runs out on the right as one long line would.
    EXPECT_GT(label.heightForWidth(200), 5 * label.fontMetrics().height());
}

TEST(Label, ShowsMarkupAsItIs)
{
    const Theme theme;
    const Label label(theme, ColorRole::Text, font(), u"<b>bold</b> & co"_s);

    EXPECT_EQ(label.textFormat(), Qt::PlainText);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(const_cast<Label *>(&label))->text(QAccessible::Name),
              u"<b>bold</b> & co"_s);
}

TEST(Label, ShowsLineBreaksAsSpacesOnOneLine)
{
    EXPECT_EQ(Label::singleLine(u"a\nb\rc\u2028d\u2029e"_s), u"a b c d e"_s);
}

TEST(Tag, PadsItsTextBySixAndTwo)
{
    const Theme theme;
    Tag tag(theme);
    tag.setText(u"field-notes"_s);
    const QFontMetrics metrics(Fonts::interface(Tag::kFontSize));

    EXPECT_NEAR(tag.sizeHint().width(), metrics.horizontalAdvance(tag.text()) + 2 * 6, 1);
    EXPECT_EQ(tag.sizeHint().height(), metrics.height() + 2 * 2);
}

} // namespace Tessaline
