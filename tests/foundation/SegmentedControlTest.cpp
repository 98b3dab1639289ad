#include "foundation_ui/SegmentedControl.h"

#include "foundation_ui/PlainButton.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class SegmentedControlTest : public ::testing::Test
{
protected:
    SegmentedControlTest()
    {
        m_control.setItems({{u"sun.max.fill"_s, u"Day"_s, u"The Day"_s},
                            {u"moon.fill"_s, u"Night"_s, u"The Night"_s},
                            {u"laptopcomputer"_s, u"Work"_s, u"The Work"_s}});
        m_control.resize(m_control.sizeHint());
        m_control.show();
        QApplication::setActiveWindow(&m_control);
    }

    QList<PlainButton *> segments() const
    {
        QList<PlainButton *> segments = m_control.findChildren<PlainButton *>();
        std::sort(segments.begin(), segments.end(),
                  [](PlainButton *left, PlainButton *right) { return left->x() < right->x(); });
        return segments;
    }

    QAccessibleInterface *accessible(int index) const
    {
        return QAccessible::queryAccessibleInterface(segments().at(index));
    }

    Theme m_theme;
    SegmentedControl m_control{m_theme};
};

} // namespace

TEST_F(SegmentedControlTest, TheFirstSegmentIsSelectedAtTheStart)
{
    EXPECT_EQ(m_control.selectedIndex(), 0);
    EXPECT_TRUE(segments().at(0)->isChecked());
    EXPECT_FALSE(segments().at(1)->isChecked());
}

TEST_F(SegmentedControlTest, AClickSelects)
{
    QSignalSpy selected(&m_control, &SegmentedControl::selected);

    QTest::mouseClick(segments().at(2), Qt::LeftButton);

    EXPECT_EQ(m_control.selectedIndex(), 2);
    ASSERT_EQ(selected.count(), 1);
    EXPECT_EQ(selected.first().first().toInt(), 2);
}

TEST_F(SegmentedControlTest, AClickOnTheSelectedSegmentChangesNothing)
{
    QSignalSpy selected(&m_control, &SegmentedControl::selected);

    QTest::mouseClick(segments().at(0), Qt::LeftButton);

    EXPECT_TRUE(segments().at(0)->isChecked());
    EXPECT_EQ(selected.count(), 0);
}

TEST_F(SegmentedControlTest, ASelectionByTheProgramIsNotReported)
{
    QSignalSpy selected(&m_control, &SegmentedControl::selected);

    m_control.setSelectedIndex(1);
    m_control.setSelectedIndex(7); // there is none
    m_control.setSelectedIndex(-1);

    EXPECT_EQ(m_control.selectedIndex(), 1);
    EXPECT_EQ(selected.count(), 0);
}

TEST_F(SegmentedControlTest, TheArrowsMoveTheSelectionAndStopAtTheEnds)
{
    segments().at(0)->setFocus(Qt::TabFocusReason);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(m_control.selectedIndex(), 1);
    EXPECT_TRUE(segments().at(1)->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_End);
    EXPECT_EQ(m_control.selectedIndex(), 2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(m_control.selectedIndex(), 2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    EXPECT_EQ(m_control.selectedIndex(), 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Home);
    EXPECT_EQ(m_control.selectedIndex(), 0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    EXPECT_EQ(m_control.selectedIndex(), 0);
}

TEST_F(SegmentedControlTest, TabEntersAtTheSelectedSegmentOnly)
{
    m_control.setSelectedIndex(1);

    EXPECT_EQ(segments().at(0)->focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(segments().at(1)->focusPolicy(), Qt::TabFocus);
    EXPECT_EQ(segments().at(2)->focusPolicy(), Qt::NoFocus);
}

TEST_F(SegmentedControlTest, TheSelectedSegmentTellsThatItIs)
{
    m_control.setSelectedIndex(1);

    EXPECT_EQ(accessible(1)->text(QAccessible::Value), u"Selected"_s);
    EXPECT_EQ(accessible(1)->text(QAccessible::Description), u"Selected"_s);
    EXPECT_TRUE(accessible(1)->state().checked);
    EXPECT_EQ(accessible(0)->text(QAccessible::Value), QString());
    EXPECT_FALSE(accessible(0)->state().checked);
    EXPECT_TRUE(accessible(0)->state().checkable);
    EXPECT_EQ(accessible(0)->role(), QAccessible::RadioButton);
}

TEST_F(SegmentedControlTest, SegmentsAreNamedByTheirLabelsOrWithoutThemByTheirHelpTexts)
{
    EXPECT_EQ(accessible(1)->text(QAccessible::Name), u"Night"_s);
    EXPECT_EQ(segments().at(1)->toolTip(), u"The Night"_s);

    m_control.setShowsLabels(false);

    EXPECT_EQ(accessible(1)->text(QAccessible::Name), u"The Night"_s);
}

TEST_F(SegmentedControlTest, SegmentsStandFourApartInsideThreeOfPadding)
{
    m_control.setShowsLabels(false);
    m_control.resize(m_control.sizeHint());

    EXPECT_EQ(segments().at(0)->geometry(), QRect(3, 3, 28, m_control.height() - 6));
    EXPECT_EQ(segments().at(1)->x(), 3 + 28 + 4);
    EXPECT_EQ(m_control.width(), 3 * 28 + 2 * 4 + 2 * 3);
    EXPECT_GT(m_control.widthFor(true), m_control.width());
}

TEST_F(SegmentedControlTest, EqualItemsLeaveTheSegmentsAlone)
{
    m_control.setSelectedIndex(2);
    const QList<PlainButton *> before = segments();

    m_control.setItems(QList(m_control.items()));

    EXPECT_EQ(segments(), before);
    EXPECT_EQ(m_control.selectedIndex(), 2);
}

TEST_F(SegmentedControlTest, OtherItemsTakeTheirPlace)
{
    m_control.setSelectedIndex(2);

    m_control.setItems({{u"doc"_s, u"Only"_s, u"The Only One"_s}});

    ASSERT_EQ(segments().size(), 1);
    EXPECT_EQ(m_control.selectedIndex(), 0);
    EXPECT_TRUE(segments().at(0)->isChecked());
    EXPECT_TRUE(segments().at(0)->isVisible());
}

TEST_F(SegmentedControlTest, TheGroundOfTheSelectedSegmentIsPainted)
{
    const QImage image = m_control.grab().toImage();
    const QRect first = segments().at(0)->geometry();

    EXPECT_EQ(image.pixelColor(first.left() + 3, first.center().y()), m_theme.color(ColorRole::SelectedSegment));
    EXPECT_NE(image.pixelColor(segments().at(1)->geometry().left() + 3, first.center().y()),
              m_theme.color(ColorRole::SelectedSegment));
}

} // namespace Tessaline
