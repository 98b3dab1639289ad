#include "documents/AppPreferences.h"

#include "foundation/Preferences.h"
#include "tests/support/TemporaryFiles.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class AppPreferencesTest : public ::testing::Test
{
protected:
    const TemporaryFiles m_files;
    Preferences m_store{m_files.url(u"preferences.json"_s)};
    AppPreferences m_preferences{m_store};
};

} // namespace

TEST_F(AppPreferencesTest, HaveTheirDefaultsWhereNothingIsStored)
{
    EXPECT_EQ(m_preferences.appTheme(), AppTheme::System);
    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
    EXPECT_EQ(m_preferences.editorFontSize(), 17.0);
    EXPECT_EQ(m_preferences.aiModelSelection(), u"automatic"_s);
}

TEST_F(AppPreferencesTest, AreStoredUnderTheirKeys)
{
    m_preferences.setAppTheme(AppTheme::Dark);
    m_preferences.setViewMode(ViewMode::RawMarkdown);
    m_preferences.increaseFontSize();
    m_preferences.setAiModelSelection(u"some-model"_s);

    EXPECT_EQ(m_store.string(u"appTheme"_s), u"Dark"_s);
    EXPECT_EQ(m_store.string(u"editorViewModeV2"_s), u"rawMarkdown"_s);
    EXPECT_EQ(m_store.number(u"editorFontSize"_s), 18.0);
    EXPECT_EQ(m_store.string(u"aiModelSelection"_s), u"some-model"_s);
}

TEST_F(AppPreferencesTest, AnUnknownStoredTextBehavesAsTheDefault)
{
    m_store.set(u"appTheme"_s, u"Sepia"_s);
    m_store.set(u"editorViewModeV2"_s, u"presentation"_s);

    EXPECT_EQ(m_preferences.appTheme(), AppTheme::System);
    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
}

TEST_F(AppPreferencesTest, AStoredValueOfAnotherTypeBehavesAsTheDefault)
{
    m_store.set(u"appTheme"_s, 2.0);
    m_store.set(u"editorViewModeV2"_s, QStringList{u"split"_s});
    m_store.set(u"editorFontSize"_s, u"20"_s);

    EXPECT_EQ(m_preferences.appTheme(), AppTheme::System);
    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
    EXPECT_EQ(m_preferences.editorFontSize(), 17.0);
}

TEST_F(AppPreferencesTest, NoOtherFormOfTheViewModeKeyIsRead)
{
    m_store.set(u"editorViewMode"_s, u"split"_s);

    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
}

TEST_F(AppPreferencesTest, AWriteThroughOneHolderIsSeenByTheOthersAtOnce)
{
    AppPreferences other(m_store);
    QSignalSpy themeChanged(&other, &AppPreferences::appThemeChanged);
    QSignalSpy modeChanged(&other, &AppPreferences::viewModeChanged);
    QSignalSpy sizeChanged(&other, &AppPreferences::editorFontSizeChanged);
    QSignalSpy modelChanged(&other, &AppPreferences::aiModelSelectionChanged);

    m_preferences.setAppTheme(AppTheme::Light);
    m_preferences.setViewMode(ViewMode::Split);
    m_preferences.decreaseFontSize();
    m_preferences.setAiModelSelection(u"some-model"_s);

    EXPECT_EQ(other.appTheme(), AppTheme::Light);
    EXPECT_EQ(other.viewMode(), ViewMode::Split);
    EXPECT_EQ(other.editorFontSize(), 16.0);
    EXPECT_EQ(themeChanged.count(), 1);
    EXPECT_EQ(modeChanged.count(), 1);
    EXPECT_EQ(sizeChanged.count(), 1);
    EXPECT_EQ(modelChanged.count(), 1);
}

TEST_F(AppPreferencesTest, TheFontSizeStopsAtItsBounds)
{
    for (int i = 0; i < 40; ++i)
        m_preferences.increaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 40.0);

    for (int i = 0; i < 80; ++i)
        m_preferences.decreaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 10.0);
}

TEST_F(AppPreferencesTest, AFontSizeOf9OnlyGrowsBackByOneStep)
{
    m_store.set(u"editorFontSize"_s, 9.0);

    m_preferences.decreaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 9.0);

    m_preferences.increaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 10.0);
}

TEST_F(AppPreferencesTest, AFontSizeAboveTheBoundComesBackOneStepAtATime)
{
    m_store.set(u"editorFontSize"_s, 50.0);

    m_preferences.increaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 50.0);

    m_preferences.decreaseFontSize();
    EXPECT_EQ(m_preferences.editorFontSize(), 49.0);
}

TEST_F(AppPreferencesTest, AFontSizeBetweenTwoPointsStepsByWholePoints)
{
    m_store.set(u"editorFontSize"_s, 17.5);

    m_preferences.increaseFontSize();

    EXPECT_EQ(m_preferences.editorFontSize(), 18.5);
}

} // namespace Tessaline
