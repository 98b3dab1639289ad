#include "foundation_ui/Alert.h"
#include "foundation_ui/Header.h"
#include "foundation_ui/TextButton.h"

#include <QtWidgets/QLabel>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QStringList textsOf(const QWidget &widget)
{
    QList<QLabel *> labels = widget.findChildren<QLabel *>();
    std::sort(labels.begin(), labels.end(), [](QLabel *left, QLabel *right) { return left->y() < right->y(); });
    QStringList texts;
    for (QLabel *label : labels)
        texts.append(label->text());
    return texts;
}

} // namespace

TEST(Alert, ShowsItsTitleItsDescriptionAndItsContentFromTopToBottom)
{
    const Theme theme;
    auto *button = new TextButton(theme, u"Again"_s, TextButton::Kind::Bordered);
    Alert alert(theme, u"Not reached"_s, u"The other side gave no answer."_s, button);
    alert.resize(300, alert.sizeHint().height());
    alert.show();

    EXPECT_EQ(textsOf(alert), (QStringList{u"Not reached"_s, u"The other side gave no answer."_s}));
    EXPECT_EQ(alert.findChildren<QLabel *>().first()->pos(), QPoint(4, 8));
    EXPECT_GT(button->y(), alert.findChildren<QLabel *>().last()->geometry().bottom());
    EXPECT_EQ(button->x(), 4);
}

TEST(Alert, WithoutADescriptionLeavesNoGap)
{
    const Theme theme;
    auto *button = new TextButton(theme, u"Again"_s, TextButton::Kind::Bordered);
    Alert alert(theme, u"Not reached"_s, QString(), button);
    alert.resize(300, alert.sizeHint().height());
    alert.show();

    EXPECT_EQ(textsOf(alert), QStringList{u"Not reached"_s});
    EXPECT_EQ(button->y(), alert.findChild<QLabel *>()->geometry().bottom() + 1 + 6);
}

TEST(Header, KeepsItsTitleAsItIsWrittenBeforeWhatFollows)
{
    const Theme theme;
    auto *button = new TextButton(theme, u"More"_s, TextButton::Kind::Plain);
    Header header(theme, u"A small title"_s, button);
    header.show();

    auto *title = header.findChild<QLabel *>();
    EXPECT_EQ(title->text(), u"A small title"_s);
    EXPECT_EQ(title->font().weight(), QFont::Bold);
    EXPECT_GT(button->x(), title->geometry().right());
}

TEST(Header, MayStandAlone)
{
    const Theme theme;
    const Header header(theme, u"Alone"_s, nullptr);

    EXPECT_EQ(textsOf(header), QStringList{u"Alone"_s});
}

} // namespace Tessaline
