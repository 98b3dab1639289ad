#include "panels/AISettingsView.h"

#include "documents/AppPreferences.h"
#include "documents/DocumentStore.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "Services/AISettings.h"
#include "tests/support/AssistantWithoutServer.h"
#include "tests/support/DressingTheme.h"
#include "tests/support/TemporaryFiles.h"

#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

/// The pane on a machine of 8 GiB that has no server.
class AISettingsPane : public ::testing::Test
{
protected:
    AISettingsPane()
    {
        m_view.adjustSize();
        m_view.show();
    }

    QStringList texts() const
    {
        QStringList texts;
        for (const QLabel *label : m_view.findChildren<QLabel *>())
            if (label->isVisible())
                texts.append(label->text());
        return texts;
    }
    QComboBox &picker() const { return *m_view.findChild<QComboBox *>(); }
    QAbstractButton &apply() const
    {
        for (QAbstractButton *button : m_view.findChildren<QAbstractButton *>())
            if (button->text() == u"Apply and Restart Local AI")
                return *button;
        qFatal("there is no such button");
    }

    TemporaryFiles m_files;
    Preferences m_stored{m_files.url(u"preferences.json"_s)};
    AppPreferences m_preferences{m_stored};
    EventCenter m_events;
    DiskAccess m_disk;
    DocumentStore m_documents{m_events, m_disk};
    LocalAIService m_service{assistantWithoutServer(m_stored, m_documents)};
    AISettings m_settings{m_service, m_preferences, kEightGiB};
    Theme &m_theme = dressingTheme();
    AISettingsView m_view{m_theme, m_settings};
};

TEST_F(AISettingsPane, ShowsItsRowsFromTopToBottom)
{
    EXPECT_EQ(texts(), (QStringList{
                           u"Local AI Model"_s,
                           u"Model"_s,
                           u"Llama 3.2 Compact"_s,
                           u"3B · Q4_K_M · 8192 token context"_s,
                           u"Fastest responses and the lowest memory use. Best for shorter edits."_s,
                           u"This Computer"_s,
                           u"8 GB memory"_s,
                           u"Downloaded weights"_s,
                           u"Stored outside the app"_s,
                           u"Only approved models are available here. Model weights download on demand to "
                           "~/.cache/tessaline-local-ai and are not included in the application bundle."_s,
                       }));
    EXPECT_EQ(m_view.size(), AISettingsView::kSize);
}

TEST_F(AISettingsPane, OffersTheModelsAndStoresTheOneThatIsPicked)
{
    QStringList titles;
    for (int index = 0; index < picker().count(); ++index)
        titles.append(picker().itemText(index));
    EXPECT_EQ(titles, (QStringList{u"Automatic — Llama 3.2 Compact"_s, u"Llama 3.2 Compact — 2.0 GB"_s,
                                   u"Llama 3.1 Balanced — 4.9 GB"_s, u"Qwen 2.5 High Quality — 9.0 GB"_s}));
    EXPECT_EQ(picker().accessibleName(), u"Model"_s);
    EXPECT_EQ(picker().currentIndex(), 0);

    picker().setFocus();
    QTest::keyClick(&picker(), Qt::Key_End);

    EXPECT_EQ(m_preferences.aiModelSelection(), u"qwen-2.5-14b-q4"_s);
    EXPECT_TRUE(texts().contains(u"Qwen 2.5 High Quality"_s));
}

TEST_F(AISettingsPane, WarnsOnlyWhereTheMemoryFallsShort)
{
    const QString warning = u"This model expects at least 16 GB of memory."_s;
    EXPECT_FALSE(texts().contains(warning));

    m_preferences.setAiModelSelection(u"llama-3.1-8b-q4"_s);
    EXPECT_TRUE(texts().contains(warning));
    EXPECT_LE(m_view.layout()->totalHeightForWidth(m_view.width()), m_view.height()) << "there is room for it";

    m_preferences.setAiModelSelection(u"automatic"_s);
    EXPECT_FALSE(texts().contains(warning));
}

TEST_F(AISettingsPane, FollowsASelectionMadeElsewhereAndShowsAnUnknownOneAsNone)
{
    m_preferences.setAiModelSelection(u"llama-3.1-8b-q4"_s);
    EXPECT_EQ(picker().currentIndex(), 2);

    m_preferences.setAiModelSelection(u"gone-1b"_s);
    EXPECT_EQ(picker().currentIndex(), -1);
    EXPECT_EQ(picker().currentText(), QString());
    EXPECT_TRUE(texts().contains(u"Llama 3.2 Compact"_s));
}

TEST_F(AISettingsPane, EnablesItsButtonOnlyWhileThereIsSomethingToApply)
{
    EXPECT_FALSE(apply().isEnabled());
    m_preferences.setAiModelSelection(u"llama-3.1-8b-q4"_s);
    ASSERT_TRUE(apply().isEnabled());

    QTest::mouseClick(&apply(), Qt::LeftButton);

    EXPECT_EQ(m_service.activeModel().id, u"llama-3.1-8b-q4"_s);
    EXPECT_EQ(m_service.serverStatus(), u"Binary not found. Build server first."_s);
    EXPECT_FALSE(apply().isEnabled()) << "it was applied, although it failed";
}

} // namespace
} // namespace Tessaline
