#include "Services/LocalAIService.h"

#include "documents/AppPreferences.h"
#include "tests/Services/RunningAssistant.h"
#include "tests/support/ScriptedDisk.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <iostream>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// Keeps what the service prints to itself, unless the test fails: then its findings are in between.
class LocalAIServiceTest : public ::testing::Test
{
protected:
    LocalAIServiceTest()
    {
        ::testing::internal::CaptureStdout();
        m_disk.setText(m_a, u"text of a"_s);
        m_disk.setText(m_b, u"text of b"_s);
        m_disk.setText(m_blank, u" \n"_s);
    }
    ~LocalAIServiceTest() override
    {
        m_assistant.reset();
        const std::string printed = ::testing::internal::GetCapturedStdout();
        if (HasFailure())
            std::cout << printed;
    }

    LocalAIService &prepare(const QByteArray &script)
    {
        m_assistant = std::make_unique<RunningAssistant>(script, m_disk);
        return service();
    }

    /// The same, until it is healthy.
    LocalAIService &start(const QByteArray &script)
    {
        prepare(script).startServer();
        EXPECT_TRUE(eventually([&] { return service().isServerRunning(); }, 60s));
        return service();
    }

    /// Makes a document active about which nothing is asked, since it can be read only afterwards.
    void makeActiveWithoutSuggestions()
    {
        service().switchActiveFile(m_later);
        EXPECT_TRUE(eventually([&] { return m_disk.reads().size() == 1 && m_disk.isIdle(); }, 60s));
        m_disk.setText(m_later, u"text of later"_s);
    }

    LocalAIService &service() { return m_assistant->service(); }
    const ScriptedServerFolder &server() const { return m_assistant->server(); }

    QCoro::Task<> send(const QString &prompt) { return service().sendMessage(prompt, std::nullopt, {}, {}); }
    QString answer()
    {
        return service().chatMessages().isEmpty() ? QString() : service().chatMessages().constLast().content;
    }
    bool waitForAnswer(const QString &text)
    {
        return eventually([&] { return answer() == text; }, 60s);
    }
    bool waitForSuggestions(const QStringList &suggestions)
    {
        return eventually([&] { return service().suggestedContexts() == suggestions; }, 60s);
    }

    const FileURL m_a{u"/docs/a.md"_s};
    const FileURL m_b{u"/docs/b.md"_s};
    const FileURL m_blank{u"/docs/blank.md"_s};
    const FileURL m_later{u"/docs/later.md"_s}; // cannot be read yet
    ScriptedDisk m_disk;
    std::unique_ptr<RunningAssistant> m_assistant;
};

const QByteArray kTopics = R"({"replies":{"/v1/suggest-context":[)"
                           R"({"body":"{\"suggestions\":[\"One\"]}"},{"body":"{\"suggestions\":[\"Two\"]}"}]}})";

} // namespace

TEST_F(LocalAIServiceTest, BeginsStoppedAndEmpty)
{
    prepare("{}");

    EXPECT_FALSE(service().isServerRunning());
    EXPECT_FALSE(service().isGenerating());
    EXPECT_EQ(service().serverStatus(), u"Stopped"_s);
    EXPECT_EQ(service().contextStatus(), QString());
    EXPECT_EQ(service().activeFileURL(), std::nullopt);
    EXPECT_TRUE(service().chatMessages().isEmpty() && service().attachedContexts().isEmpty());
    EXPECT_TRUE(service().suggestedContexts().isEmpty() && service().suggestionStates().isEmpty());
    EXPECT_EQ(service().activeModel().id, u"llama-3.2-3b-q4"_s);
    EXPECT_EQ(ServerAddress().port, 23949);
}

TEST_F(LocalAIServiceTest, AQuestionWhileTheServerIsDownIsDropped)
{
    prepare("{}");

    const QCoro::Task<> task = send(u"Is it?"_s);

    EXPECT_TRUE(task.isReady());
    EXPECT_FALSE(service().isGenerating());
    EXPECT_TRUE(service().chatMessages().isEmpty());
}

TEST_F(LocalAIServiceTest, TheFirstHealthyProbeAsksForSuggestionsAboutTheActiveDocument)
{
    prepare(kTopics);
    makeActiveWithoutSuggestions();

    service().startServer();

    EXPECT_TRUE(waitForSuggestions({u"One"_s}));
    EXPECT_EQ(bodyOf(server().requests("/v1/suggest-context").constFirst()), R"({"content":"text of later"})");
}

TEST_F(LocalAIServiceTest, WithoutADocumentAHealthyServerIsAskedForNothing)
{
    start(kTopics);

    service().switchActiveFile(m_b);

    EXPECT_TRUE(waitForSuggestions({u"One"_s}));
    EXPECT_EQ(bodyOf(server().requests("/v1/suggest-context").constFirst()), R"({"content":"text of b"})");
}

TEST_F(LocalAIServiceTest, SwitchingClearsTheStatusLineAndKeepsSuggestionsUntilTheNewOnesCome)
{
    start(kTopics).switchActiveFile(m_a);
    ASSERT_TRUE(waitForSuggestions({u"One"_s}));
    service().setContextStatus(u"Preparing context…"_s);

    service().switchActiveFile(m_b);

    EXPECT_EQ(service().contextStatus(), QString());
    EXPECT_EQ(service().suggestedContexts(), QStringList{u"One"_s});
    EXPECT_TRUE(waitForSuggestions({u"Two"_s}));

    service().switchActiveFile(m_later);
    service().switchActiveFile(m_blank);
    EXPECT_TRUE(waitForSuggestions({}));
    EXPECT_EQ(server().requests("/v1/suggest-context").size(), 2);
}

TEST_F(LocalAIServiceTest, SwitchingToTheSameDocumentAsksAgain)
{
    start(kTopics).switchActiveFile(m_a);
    ASSERT_TRUE(waitForSuggestions({u"One"_s}));
    service().setChatMessages({{QUuid::createUuid(), u"user"_s, u"Kept"_s}});
    const QList<ChatMessage> messages = service().chatMessages();

    service().switchActiveFile(m_a);

    EXPECT_EQ(service().chatMessages(), messages);
    EXPECT_TRUE(waitForSuggestions({u"Two"_s}));
}

TEST_F(LocalAIServiceTest, SwitchingToNoDocumentEmptiesEverythingAtOnce)
{
    start(kTopics).switchActiveFile(m_a);
    ASSERT_TRUE(waitForSuggestions({u"One"_s}));
    service().setAttachedContexts({{u"Hamlet"_s, std::nullopt, u"To be"_s, std::nullopt}});

    service().switchActiveFile(std::nullopt);

    EXPECT_EQ(service().activeFileURL(), std::nullopt);
    EXPECT_TRUE(service().chatMessages().isEmpty());
    EXPECT_TRUE(service().attachedContexts().isEmpty());
    EXPECT_TRUE(service().suggestedContexts().isEmpty());
}

TEST_F(LocalAIServiceTest, StoppingTheServerEndsTheGenerationAndTheSuggestionsFirst)
{
    start(R"({"replies":{"/v1/suggest-context":[{"steps":[{"hang":true}]}],)"
          R"("/v1/chat/completions":[{"steps":[{"token":"Yes"},{"hang":true}]}]}})")
        .switchActiveFile(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes"_s));
    ASSERT_TRUE(eventually([&] { return server().requests("/v1/suggest-context").size() == 1; }, 60s));

    service().stopServer();

    EXPECT_EQ(service().serverStatus(), u"Stopped"_s);
    EXPECT_FALSE(service().isServerRunning());
    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_FALSE(service().isGenerating());
    EXPECT_EQ(answer(), u"Yes"_s);
    EXPECT_EQ(service().contextStatus(), u"Generation stopped"_s);
    EXPECT_TRUE(isFree(m_assistant->port()));
}

TEST_F(LocalAIServiceTest, AServerThatDiesHalfWayFailsTheAnswerAndSaysItsStatus)
{
    start(R"({"replies":{"/v1/chat/completions":[)"
          R"({"transfer":"chunked","steps":[{"token":"Yes"},{"wait":50},{"exit":7}]}]}})")
        .switchActiveFile(m_a);

    const QCoro::Task<> task = send(u"Is it?"_s);

    ASSERT_TRUE(eventually([&] { return task.isReady() && !service().isServerRunning(); }, 60s));
    EXPECT_TRUE(answer().startsWith(u"Connection failed: ")) << answer().toStdString();
    EXPECT_EQ(service().serverStatus(), u"Local AI exited (code 7)"_s);
    EXPECT_EQ(service().contextStatus(), QString());
}

TEST_F(LocalAIServiceTest, AnAnswerBesideTheChatTouchesNoState)
{
    start(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Shorter."},{"done":true}]}]}})");
    QSignalSpy messages(&service(), &LocalAIService::chatMessagesChanged);
    QSignalSpy generating(&service(), &LocalAIService::isGeneratingChanged);
    QSignalSpy status(&service(), &LocalAIService::contextStatusChanged);
    const auto accumulator = std::make_shared<TokenAccumulator>();

    const auto outcome = service().generateOneShot(u"Shorter:"_s, u"text"_s, accumulator);

    ASSERT_TRUE(finishes(outcome, 60s));
    EXPECT_TRUE(outcome.result());
    EXPECT_EQ(accumulator->text(), u"Shorter."_s);
    EXPECT_EQ(messages.count() + generating.count() + status.count(), 0);
}

TEST_F(LocalAIServiceTest, CardsAndDigestsComeFromTheServer)
{
    start(R"({"replies":{"/v1/expand-concept":[{"body":"{\"status\":\"ambiguous\",\"options\":[]}"}],)"
          R"("/v1/digest-file":[{"body":"{\"digest\":\"A play.\"}"}]}})");

    std::optional<ConceptExpansionResponse> expanded;
    std::optional<QString> digest;
    auto expansion = service().expandConcept(u"Hamlet"_s).then([&](const auto &value) { expanded = value; });
    auto digestion = service().fetchDigest(u"a.txt"_s, u"To be"_s).then([&](const auto &value) { digest = value; });

    ASSERT_TRUE(eventually([&] { return expansion.isReady() && digestion.isReady(); }, 60s));
    EXPECT_EQ(expanded, (ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>{}}));
    EXPECT_EQ(digest, u"A play."_s);
}

TEST_F(LocalAIServiceTest, DecisionsAboutEditsStayOverDocumentsAndAreToldOnce)
{
    prepare("{}").switchActiveFile(m_a);
    QSignalSpy changed(&service(), &LocalAIService::suggestionStatesChanged);

    service().setSuggestionState(u"X_0"_s, u"accepted"_s);
    service().setSuggestionState(u"X_0"_s, u"accepted"_s);
    service().setChatMessages({});
    service().switchActiveFile(m_b);

    EXPECT_EQ(service().suggestionStates(), (QHash<QString, QString>{{u"X_0"_s, u"accepted"_s}}));
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(LocalAIServiceTest, EachPieceOfStateIsToldThroughTheService)
{
    prepare(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes"},{"event":{"error":"x"}}]}],)"
            R"("/v1/suggest-context":[{"body":"{\"suggestions\":[\"One\"]}"}]}})");
    QStringList told;
    const auto tell = [&](auto signal, const QString &name) {
        QObject::connect(&service(), signal, &service(), [&told, name] {
            if (!told.contains(name))
                told.append(name);
        });
    };
    tell(&LocalAIService::activeModelChanged, u"activeModel"_s);
    tell(&LocalAIService::serverStatusChanged, u"serverStatus"_s);
    tell(&LocalAIService::isServerRunningChanged, u"isServerRunning"_s);
    tell(&LocalAIService::suggestedContextsChanged, u"suggestedContexts"_s);
    tell(&LocalAIService::attachedContextsChanged, u"attachedContexts"_s);
    tell(&LocalAIService::isGeneratingChanged, u"isGenerating"_s);
    tell(&LocalAIService::chatMessagesChanged, u"chatMessages"_s);
    tell(&LocalAIService::contextStatusChanged, u"contextStatus"_s);

    makeActiveWithoutSuggestions();
    m_assistant->preferences().set(PreferenceKeys::kAiModelSelection, u"qwen-2.5-14b-q4"_s);
    service().startServer();
    ASSERT_TRUE(waitForSuggestions({u"One"_s}));
    service().setAttachedContexts({{u"Hamlet"_s, std::nullopt, u"To be"_s, std::nullopt}});
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));

    EXPECT_EQ(told, (QStringList{u"activeModel"_s, u"serverStatus"_s, u"isServerRunning"_s, u"suggestedContexts"_s,
                                 u"attachedContexts"_s, u"isGenerating"_s, u"chatMessages"_s, u"contextStatus"_s}));
}

TEST_F(LocalAIServiceTest, DestroyedInTheMiddleOfEverythingItLeavesNoProcess)
{
    start(R"({"replies":{"/v1/suggest-context":[{"steps":[{"hang":true}]}],)"
          R"("/v1/chat/completions":[{"steps":[{"token":"Yes"},{"hang":true}]}]}})")
        .switchActiveFile(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    const auto accumulator = std::make_shared<TokenAccumulator>();
    const auto beside = service().generateOneShot(u"Shorter:"_s, u"text"_s, accumulator);
    ASSERT_TRUE(eventually([&] { return answer() == u"Yes" && accumulator->text() == u"Yes"; }, 60s));

    m_assistant->destroy();

    EXPECT_TRUE(task.isReady());
    EXPECT_TRUE(beside.isFinished());
    EXPECT_TRUE(isFree(m_assistant->port()));
}

} // namespace Tessaline
