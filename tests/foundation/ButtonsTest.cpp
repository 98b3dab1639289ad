#include "foundation_ui/FocusRing.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/TabOrder.h"
#include "foundation_ui/TextButton.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QLineEdit>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class ButtonsTest : public ::testing::Test
{
protected:
    ButtonsTest()
    {
        m_window.resize(200, 100);
        m_field.setGeometry(0, 0, 100, 24);
        m_icon.setGeometry(20, 40, 24, 24);
        m_text.setGeometry(80, 40, 100, 28);
        m_window.show();
        QApplication::setActiveWindow(&m_window);
        m_field.setFocus();
    }

    bool isRingShown() const
    {
        const auto rings = m_window.findChildren<FocusRing *>();
        return std::any_of(rings.begin(), rings.end(), [](FocusRing *ring) { return ring->isVisible(); });
    }

    Theme m_theme;
    QWidget m_window;
    QLineEdit m_field{&m_window};
    IconButton m_icon{m_theme, u"plus"_s, u"Add Something"_s, &m_window};
    TextButton m_text{m_theme, u"Try Again"_s, TextButton::Kind::Bordered, &m_window};
};

} // namespace

TEST_F(ButtonsTest, ASymbolIsNamedByItsHelpText)
{
    EXPECT_EQ(m_icon.toolTip(), u"Add Something"_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&m_icon)->text(QAccessible::Name), u"Add Something"_s);
}

TEST_F(ButtonsTest, ATextIsItsOwnName)
{
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&m_text)->text(QAccessible::Name), u"Try Again"_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&m_text)->role(), QAccessible::Button);
}

TEST_F(ButtonsTest, AClickLeavesTheFocusWhereItIs)
{
    QSignalSpy clicked(&m_icon, &QAbstractButton::clicked);

    QTest::mouseClick(&m_icon, Qt::LeftButton);

    EXPECT_EQ(clicked.count(), 1);
    EXPECT_TRUE(m_field.hasFocus());
    EXPECT_FALSE(isRingShown());
}

TEST_F(ButtonsTest, TabReachesItAndShowsTheRingAroundIt)
{
    QTest::keyClick(&m_field, Qt::Key_Tab);

    ASSERT_TRUE(m_icon.hasFocus());
    ASSERT_TRUE(isRingShown());
    const QRect ring = m_window.findChild<FocusRing *>()->geometry();
    EXPECT_TRUE(ring.contains(m_icon.geometry()));
    EXPECT_GT(ring.width(), m_icon.width()); // outside the control

    QTest::keyClick(&m_icon, Qt::Key_Tab);
    EXPECT_TRUE(m_text.hasFocus());
    const auto rings = m_window.findChildren<FocusRing *>();
    EXPECT_EQ(std::count_if(rings.begin(), rings.end(), [](FocusRing *one) { return one->isVisible(); }), 1);
}

TEST_F(ButtonsTest, FocusGivenByTheProgramShowsNoRing)
{
    m_icon.setFocus(Qt::OtherFocusReason);

    EXPECT_FALSE(isRingShown());
}

TEST_F(ButtonsTest, ReturnAndSpacePressIt)
{
    QSignalSpy clicked(&m_icon, &QAbstractButton::clicked);
    m_icon.setFocus(Qt::TabFocusReason);

    QTest::keyClick(&m_icon, Qt::Key_Return);
    QTest::keyClick(&m_icon, Qt::Key_Enter);
    QTest::keyClick(&m_icon, Qt::Key_Space);

    EXPECT_EQ(clicked.count(), 3);
}

TEST_F(ButtonsTest, AssistiveTechnologyCanPressIt)
{
    QSignalSpy clicked(&m_text, &QAbstractButton::clicked);
    QAccessibleActionInterface *actions = QAccessible::queryAccessibleInterface(&m_text)->actionInterface();
    ASSERT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::pressAction()));

    actions->doAction(QAccessibleActionInterface::pressAction());
    m_text.setEnabled(false);
    actions->doAction(QAccessibleActionInterface::pressAction());

    EXPECT_EQ(clicked.count(), 1);
}

TEST_F(ButtonsTest, ACheckableButtonTellsWhetherItIsOn)
{
    m_icon.setCheckable(true);
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(&m_icon)->state().checked);

    QTest::mouseClick(&m_icon, Qt::LeftButton);

    EXPECT_TRUE(QAccessible::queryAccessibleInterface(&m_icon)->state().checkable);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(&m_icon)->state().checked);
}

TEST_F(ButtonsTest, AButtonMayGoWhileItsRingIsShown)
{
    auto button = std::make_unique<IconButton>(m_theme, u"minus"_s, u"Take Away"_s, &m_window);
    button->show();
    button->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(isRingShown());

    button.reset();

    EXPECT_FALSE(isRingShown());
}

TEST_F(ButtonsTest, AQuietButtonShowsItsSymbolOnlyUnderThePointerOrTheFocus)
{
    const auto hasInk = [this] {
        const QImage image = m_icon.grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != image.pixel(0, 0))
                    return true;
        return false;
    };
    EXPECT_TRUE(hasInk());

    m_icon.setIsQuiet(true);
    EXPECT_FALSE(hasInk());
    m_icon.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(hasInk());
}

TEST_F(ButtonsTest, TheOrderOfTabCanBeMarkedByWhatTakesNoFocus)
{
    QWidget mark(&m_window);
    placeInTabOrder(&m_field, &mark);
    placeInTabOrder(&mark, &m_text);

    QTest::keyClick(&m_field, Qt::Key_Tab);

    EXPECT_TRUE(m_text.hasFocus());
    EXPECT_EQ(mark.focusPolicy(), Qt::NoFocus);
}

} // namespace Tessaline
