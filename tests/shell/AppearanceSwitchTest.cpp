#include "shell/AppearanceSwitch.h"

#include "documents/AppPreferences.h"
#include "foundation/Preferences.h"
#include "shell/SystemAppearance.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

class Switching : public ::testing::Test
{
protected:
    TemporaryFiles m_files;
    Preferences m_stored{m_files.url(u"preferences.json"_s)};
    AppPreferences m_preferences{m_stored};
    SystemAppearance m_system{Appearance::Dark};
    Theme m_theme;
    AppearanceSwitch m_switch{m_preferences, m_system, m_theme};
};

TEST(AppearanceSwitch, OnlyTheChoiceOfTheSystemLooksAtTheSystem)
{
    for (const Appearance system : {Appearance::Light, Appearance::Dark}) {
        EXPECT_EQ(effectiveAppearance(AppTheme::System, system), system);
        EXPECT_EQ(effectiveAppearance(AppTheme::Light, system), Appearance::Light);
        EXPECT_EQ(effectiveAppearance(AppTheme::Dark, system), Appearance::Dark);
    }
}

TEST_F(Switching, NothingHappensBeforeItIsApplied)
{
    m_preferences.setAppTheme(AppTheme::Dark);
    EXPECT_EQ(m_theme.appearance(), Appearance::Light);
}

TEST_F(Switching, AnAbsentChoiceIsTheSystems)
{
    m_switch.apply();
    EXPECT_EQ(m_theme.appearance(), Appearance::Dark);
}

TEST_F(Switching, AnUnknownStoredTextIsTheSystems)
{
    m_stored.set(PreferenceKeys::kAppTheme, u"Sepia"_s);
    m_switch.apply();
    EXPECT_EQ(m_theme.appearance(), Appearance::Dark);
}

TEST_F(Switching, EveryLaterChoiceIsFollowedAtOnce)
{
    m_switch.apply();
    m_preferences.setAppTheme(AppTheme::Light);
    EXPECT_EQ(m_theme.appearance(), Appearance::Light);
    m_preferences.setAppTheme(AppTheme::Dark);
    EXPECT_EQ(m_theme.appearance(), Appearance::Dark);
    m_preferences.setAppTheme(AppTheme::Light);
    m_preferences.setAppTheme(AppTheme::System);
    EXPECT_EQ(m_theme.appearance(), Appearance::Dark);
}

} // namespace
} // namespace Tessaline
