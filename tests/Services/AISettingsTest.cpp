#include "Services/AISettings.h"

#include "documents/AppPreferences.h"
#include "documents/DocumentStore.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "Services/LocalAIService.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <optional>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 kGiB = quint64(1) << 30;

class Settings : public ::testing::Test
{
protected:
    /// The settings on a machine with this much memory. Its servers end as soon as they are asked to.
    AISettings &on(quint64 memory, const QList<FileURL> &candidates = {}, const WireOptions &wire = {})
    {
        m_settings.reset();
        m_service = std::make_unique<LocalAIService>(LocalAIServiceParts{
            .server = {.preferences = m_stored,
                       .checkHealth = {},
                       .cancelRequests = {},
                       .dataFolder = m_files.url(u"data"_s),
                       .candidates = candidates,
                       .environment = ownEnvironment(),
                       .physicalMemoryBytes = memory,
                       .launch =
                           [this](const ChildCommand &command) {
                               m_models.append(QString::fromUtf8(command.environment.value("TESSALINE_MODEL_ID")));
                               return Result<std::shared_ptr<ChildProcess>>(std::make_shared<Child>());
                           }},
            .documents = m_documents,
            .wire = wire});
        m_settings = std::make_unique<AISettings>(*m_service, m_preferences, memory);
        return *m_settings;
    }

    class Child final : public ChildProcess
    {
        bool isRunning() const override { return m_isRunning; }
        void terminate() override { m_isRunning = false; }
        void waitUntilExit() override {}
        int terminationStatus() const override { return 0; }
        void setTerminationHandler(std::function<void()>) override {}
        bool m_isRunning = true;
    };

    TemporaryFiles m_files{{u"tessaline-server"_s, ""}};
    Preferences m_stored{m_files.url(u"preferences.json"_s)};
    AppPreferences m_preferences{m_stored};
    EventCenter m_events;
    DiskAccess m_disk;
    DocumentStore m_documents{m_events, m_disk};
    QStringList m_models; // that servers were started with
    std::unique_ptr<LocalAIService> m_service;
    std::unique_ptr<AISettings> m_settings;
};

TEST_F(Settings, OfferTheRecommendedModelAndThenEachOne)
{
    EXPECT_EQ(on(16 * kGiB).choices(), (QList<AISettings::Choice>{
                                           {u"automatic"_s, u"Automatic — Llama 3.1 Balanced"_s},
                                           {u"llama-3.2-3b-q4"_s, u"Llama 3.2 Compact — 2.0 GB"_s},
                                           {u"llama-3.1-8b-q4"_s, u"Llama 3.1 Balanced — 4.9 GB"_s},
                                           {u"qwen-2.5-14b-q4"_s, u"Qwen 2.5 High Quality — 9.0 GB"_s},
                                       }));
    EXPECT_EQ(on(48 * kGiB).choices().first().title, u"Automatic — Qwen 2.5 High Quality"_s);
}

TEST_F(Settings, TellWhatTheSelectedModelIs)
{
    AISettings &settings = on(16 * kGiB);
    EXPECT_EQ(settings.detail(), (AISettings::Detail{
                                     u"Llama 3.1 Balanced"_s,
                                     u"8B · Q4_K_M · 16384 token context"_s,
                                     u"The default balance of writing quality, context, and speed."_s,
                                     QString(),
                                 }));

    settings.select(u"llama-3.2-3b-q4"_s);
    EXPECT_EQ(settings.detail().displayName, u"Llama 3.2 Compact"_s);
    EXPECT_EQ(settings.selectedChoice(), 1);
}

TEST_F(Settings, WarnOfAModelThatAsksForMoreMemoryButUseIt)
{
    AISettings &settings = on(8 * kGiB, {m_files.url(u"tessaline-server"_s)});
    settings.select(u"qwen-2.5-14b-q4"_s);

    EXPECT_EQ(settings.detail().displayName, u"Qwen 2.5 High Quality"_s);
    EXPECT_EQ(settings.detail().warning, u"This model expects at least 32 GB of memory."_s);
    settings.apply();
    EXPECT_EQ(m_models, QStringList{u"qwen-2.5-14b-q4"_s});
}

TEST_F(Settings, CountMemoryInWholeGiBRoundedDown)
{
    const quint64 almost = 15 * kGiB + kGiB / 10 * 9;
    AISettings &settings = on(almost);
    settings.select(u"llama-3.1-8b-q4"_s);

    EXPECT_EQ(settings.memory(), u"15 GB memory"_s);
    EXPECT_EQ(settings.detail().warning, u"This model expects at least 16 GB of memory."_s);
    EXPECT_EQ(on(16 * kGiB).detail().warning, QString());
}

TEST_F(Settings, TreatAnUnknownSelectionLikeTheAutomaticOneAndLeaveItStored)
{
    m_preferences.setAiModelSelection(u"gone-1b"_s);
    AISettings &settings = on(16 * kGiB);

    EXPECT_EQ(settings.selectedChoice(), -1);
    EXPECT_EQ(settings.detail().displayName, u"Llama 3.1 Balanced"_s);
    EXPECT_FALSE(settings.canApply());
    EXPECT_EQ(m_preferences.aiModelSelection(), u"gone-1b"_s);
}

TEST_F(Settings, StoreASelectionAtOnceAndTellEverybody)
{
    AISettings &settings = on(16 * kGiB);
    QSignalSpy selection(&settings, &AISettings::selectionChanged);
    QSignalSpy canApply(&settings, &AISettings::canApplyChanged);

    settings.select(u"qwen-2.5-14b-q4"_s);

    EXPECT_EQ(m_preferences.aiModelSelection(), u"qwen-2.5-14b-q4"_s);
    EXPECT_EQ(m_service->activeModel().id, u"llama-3.1-8b-q4"_s) << "the server has not been asked yet";
    EXPECT_EQ(selection.count(), 1);
    EXPECT_EQ(canApply.count(), 1);
    EXPECT_EQ(settings.selectedChoice(), 3);
}

TEST_F(Settings, HaveNothingToApplyWhenTheSelectionMeansTheActiveModel)
{
    AISettings &settings = on(16 * kGiB, {m_files.url(u"tessaline-server"_s)});
    EXPECT_FALSE(settings.canApply());
    settings.select(u"llama-3.1-8b-q4"_s); // which automatic means too
    EXPECT_FALSE(settings.canApply());
    settings.apply();
    EXPECT_EQ(m_models, QStringList());

    settings.select(u"llama-3.2-3b-q4"_s);
    EXPECT_TRUE(settings.canApply());
    settings.select(u"automatic"_s);
    EXPECT_FALSE(settings.canApply());
}

TEST_F(Settings, RestartTheServerWithTheSelection)
{
    AISettings &settings = on(16 * kGiB, {m_files.url(u"tessaline-server"_s)});
    m_service->startServer();
    settings.select(u"llama-3.2-3b-q4"_s);
    QSignalSpy canApply(&settings, &AISettings::canApplyChanged);

    settings.apply();

    EXPECT_EQ(m_models, (QStringList{u"llama-3.1-8b-q4"_s, u"llama-3.2-3b-q4"_s}));
    EXPECT_EQ(m_service->serverStatus(), u"Starting…"_s);
    EXPECT_FALSE(settings.canApply());
    EXPECT_GE(canApply.count(), 1);
}

TEST_F(Settings, CannotApplyTheSameModelAgainAfterAFailedStart)
{
    AISettings &settings = on(16 * kGiB);
    settings.select(u"llama-3.2-3b-q4"_s);
    settings.apply();

    EXPECT_EQ(m_service->serverStatus(), u"Binary not found. Build server first."_s);
    EXPECT_FALSE(settings.canApply());
}

TEST_F(Settings, ApplyNothingWhileAnAnswerIsBeingWritten)
{
    const ScriptedServer server(
        R"({"replies": {"/v1/chat/completions": [{"steps": [{"token": "a"}, {"hang": true}]}]}})");
    AISettings &settings = on(16 * kGiB, {m_files.url(u"tessaline-server"_s)}, {.address = {server.port()}});
    m_service->startServer();
    ASSERT_TRUE(eventually([&] { return m_service->isServerRunning(); }));
    settings.select(u"llama-3.2-3b-q4"_s);
    const auto sending = m_service->sendMessage(u"Hello"_s, std::nullopt, {}, {});
    ASSERT_TRUE(m_service->isGenerating());

    EXPECT_FALSE(settings.canApply());
    settings.apply();
    EXPECT_EQ(m_models.size(), 1);

    QSignalSpy canApply(&settings, &AISettings::canApplyChanged);
    m_service->cancelGeneration();
    ASSERT_TRUE(eventually([&] { return settings.canApply(); }));
    EXPECT_GE(canApply.count(), 1);
}

} // namespace
} // namespace Tessaline
