#include "foundation_ui/TessalineStyle.h"

#include "foundation_ui/Contrast.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyleOption>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class TessalineStyleTest : public ::testing::Test
{
protected:
    QStyleOptionSlider barOption(int maximum, int page, int position) const
    {
        QStyleOptionSlider option;
        option.orientation = Qt::Vertical;
        option.rect = QRect(0, 0, TessalineStyle::kScrollBarExtent, 400);
        option.maximum = maximum;
        option.pageStep = page;
        option.sliderPosition = position;
        return option;
    }

    QRect slider(const QStyleOptionSlider &option) const
    {
        return m_style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, nullptr);
    }

    Theme m_theme;
    TessalineStyle m_style{m_theme};
};

} // namespace

TEST_F(TessalineStyleTest, AScrollBarsHandleShowsTheShareThatIsSeen)
{
    const QRect half = slider(barOption(100, 100, 0));
    EXPECT_EQ(half.height(), 200);
    EXPECT_EQ(half.top(), 0);
    EXPECT_EQ(slider(barOption(100, 100, 100)).bottom(), 399);
    EXPECT_EQ(slider(barOption(100, 100, 50)).top(), 100);
}

TEST_F(TessalineStyleTest, AHandleStaysLargeEnoughToBeCaught)
{
    EXPECT_EQ(slider(barOption(2'000'000'000, 400, 0)).height(), 32);
    EXPECT_EQ(slider(barOption(2'000'000'000, 400, 2'000'000'000)).bottom(), 399);
}

TEST_F(TessalineStyleTest, AScrollBarHasNoArrows)
{
    const QStyleOptionSlider option = barOption(100, 100, 0);

    EXPECT_TRUE(m_style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarAddLine, nullptr).isEmpty());
    EXPECT_EQ(m_style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, nullptr), option.rect);
}

TEST_F(TessalineStyleTest, AMenuHasRoomForItsTitlesAndTheirKeys)
{
    QMenu menu;
    menu.setStyle(&m_style);
    QAction *longTitle = menu.addAction(u"A title that is the longest of all"_s);
    QAction *withKeys = menu.addAction(u"New Document…"_s);
    withKeys->setShortcut(Qt::CTRL | Qt::Key_N);
    const QFontMetrics metrics(menu.font());

    EXPECT_GE(menu.actionGeometry(longTitle).width(),
              metrics.horizontalAdvance(longTitle->text()) + metrics.horizontalAdvance(u"Ctrl+N"_s));
    EXPECT_EQ(menu.actionGeometry(withKeys).height(), 28);
}

TEST_F(TessalineStyleTest, AButtonHasRoomOnBothSidesOfItsText)
{
    QPushButton button(QStringLiteral("Add all of them anyway"));
    button.setStyle(&m_style);
    const int text = button.fontMetrics().horizontalAdvance(button.text());
    EXPECT_GE(button.sizeHint().width(), text + 2 * 12);
    EXPECT_EQ(button.sizeHint().height(), 28);
}

TEST_F(TessalineStyleTest, AComboBoxIsAsHighAsALineEditAndOpensAMenuOverItself)
{
    QComboBox box;
    box.addItem(u"first"_s);
    box.setStyle(&m_style);
    QLineEdit edit;
    edit.setStyle(&m_style);

    EXPECT_EQ(box.sizeHint().height(), edit.sizeHint().height());
    EXPECT_EQ(m_style.styleHint(QStyle::SH_ComboBox_Popup, nullptr, &box, nullptr), 1);
}

TEST_F(TessalineStyleTest, ThePaletteFollowsTheAppearance)
{
    const QPalette light = applicationPalette(Appearance::Light);
    const QPalette dark = applicationPalette(Appearance::Dark);

    EXPECT_EQ(light.color(QPalette::Text), color(ColorRole::Text, Appearance::Light));
    EXPECT_EQ(dark.color(QPalette::Text), color(ColorRole::Text, Appearance::Dark));
    EXPECT_EQ(dark.color(QPalette::PlaceholderText), color(ColorRole::TertiaryText, Appearance::Dark));
    EXPECT_GE(contrastRatio(dark.color(QPalette::HighlightedText), dark.color(QPalette::Highlight)), 4.5);
    EXPECT_GE(contrastRatio(light.color(QPalette::HighlightedText), light.color(QPalette::Highlight)), 4.5);
}

} // namespace Tessaline
