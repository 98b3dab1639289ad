#include "documents/FontSizeAdjuster.h"

#include "tests/documents/ToolbarFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class FontSizeAdjusterTest : public ToolbarFixture
{
protected:
    void store(double size) { m_stored.set(PreferenceKeys::kEditorFontSize, size); }
    double stored() const { return m_preferences.editorFontSize(); }
    void decrease() { click(u"Decrease Font Size (Cmd -)"_s); }
    void increase() { click(u"Increase Font Size (Cmd +)"_s); }
};

} // namespace

TEST_F(FontSizeAdjusterTest, ShowsTheDefaultOfSeventeen)
{
    EXPECT_TRUE(showsText(m_toolbar, u"17"_s));
}

TEST_F(FontSizeAdjusterTest, AStoredSizeOfNineIsOnlyRaised)
{
    store(9.0);
    EXPECT_TRUE(showsText(m_toolbar, u"9"_s));

    decrease();
    EXPECT_EQ(stored(), 9.0);
    increase();
    EXPECT_EQ(stored(), 10.0);
    EXPECT_TRUE(showsText(m_toolbar, u"10"_s));
}

TEST_F(FontSizeAdjusterTest, AStoredFractionIsCutInTheFieldAndKeptByTheSteps)
{
    store(17.5);
    EXPECT_TRUE(showsText(m_toolbar, u"17"_s));

    increase();

    EXPECT_EQ(stored(), 18.5);
    EXPECT_TRUE(showsText(m_toolbar, u"18"_s));
}

TEST_F(FontSizeAdjusterTest, AnyStoredNumberIsShownAndKept)
{
    for (const double size : {0.0, -5.5, 1e6, 1e300, -1e300}) {
        store(size);
        EXPECT_EQ(stored(), size);
    }
    EXPECT_TRUE(showsText(m_toolbar, u"-1000000000000000"_s));

    store(-0.5);
    EXPECT_TRUE(showsText(m_toolbar, u"0"_s));
}

TEST_F(FontSizeAdjusterTest, AButtonAtItsLimitStaysEnabledAndDoesNothing)
{
    store(40.0);
    increase();
    EXPECT_EQ(stored(), 40.0);
    EXPECT_TRUE(buttonNamed(m_toolbar, u"Increase Font Size (Cmd +)"_s)->isEnabled());

    store(10.0);
    decrease();
    EXPECT_EQ(stored(), 10.0);
    EXPECT_TRUE(buttonNamed(m_toolbar, u"Decrease Font Size (Cmd -)"_s)->isEnabled());
}

TEST_F(FontSizeAdjusterTest, StepsByOne)
{
    increase();
    increase();
    decrease();

    EXPECT_EQ(stored(), 18.0);
    EXPECT_TRUE(showsText(m_toolbar, u"18"_s));
}

TEST_F(FontSizeAdjusterTest, ItsFieldIsThirtySixWide)
{
    const QList<QLabel *> labels = m_toolbar.findChildren<QLabel *>();
    const auto field =
        std::find_if(labels.begin(), labels.end(), [](QLabel *label) { return label->text() == u"17"_s; });

    ASSERT_NE(field, labels.end());
    EXPECT_EQ((*field)->width(), 36);
}

} // namespace Tessaline
