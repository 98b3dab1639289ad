#include "panels/ChatComposer.h"

#include "tests/panels/PanelsFixture.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using LeadingIcon = ChatInputState::LeadingIcon;
using SendButton = ChatInputState::SendButton;

const QByteArray kChat = "/v1/chat/completions";

class ChatComposerTest : public PanelsFixture
{
protected:
    /// Types and sends.
    void send(const QString &text, const std::optional<FileURL> &document,
              const std::optional<ProjectReference> &project = std::nullopt)
    {
        composer().setChatInput(text);
        composer().send(document, project);
    }

    bool isAnswered()
    {
        return eventually([this] { return !composer().isPreparingContext(); });
    }

    ChatComposer &composer()
    {
        if (!m_composer)
            m_composer = std::make_unique<ChatComposer>(*m_ai, m_documents);
        return *m_composer;
    }

private:
    std::unique_ptr<ChatComposer> m_composer;
};

} // namespace

TEST(ChatInputState, OnlyTheExactStatusOfAStartIsOneAlsoWhileAServerRuns)
{
    for (const bool isRunning : {false, true}) {
        const ChatInputState state =
            chatInputState({.serverStatus = u"Starting…"_s, .isServerRunning = isRunning, .text = {}});
        EXPECT_EQ(state.placeholder, u"Initializing Tessaline..."_s);
        EXPECT_EQ(state.leadingIcon, LeadingIcon::Progress);
        EXPECT_FALSE(state.isOffline);
        EXPECT_EQ(state.isFieldEnabled, isRunning);
    }
    EXPECT_TRUE(chatInputState({.serverStatus = u"Starting..."_s, .text = {}}).isOffline);
}

TEST(ChatInputState, ARunningServerIsTalkedToWhateverItsStatus)
{
    const ChatInputState state = chatInputState({.serverStatus = u"Stopped"_s, .isServerRunning = true, .text = {}});
    EXPECT_EQ(state.placeholder, u"Discuss with Tessaline..."_s);
    EXPECT_EQ(state.leadingIcon, LeadingIcon::Sparkles);
    EXPECT_FALSE(state.isOffline);
    EXPECT_TRUE(state.isFieldEnabled);
}

TEST(ChatInputState, WithoutAServerThePanelIsOfflineAndItsFieldDisabled)
{
    const ChatInputState state = chatInputState({.serverStatus = u"Stopped"_s, .text = u"hello"_s});
    EXPECT_EQ(state.placeholder, u"Tessaline is offline..."_s);
    EXPECT_EQ(state.leadingIcon, LeadingIcon::Warning);
    EXPECT_TRUE(state.isOffline);
    EXPECT_FALSE(state.isFieldEnabled);
    EXPECT_FALSE(state.canSend);
    EXPECT_FALSE(state.isSendButtonEnabled);
}

TEST(ChatInputState, TheFieldIsEnabledOnlyWhileNothingIsUnderWay)
{
    for (const bool isGenerating : {false, true})
        for (const bool isPreparing : {false, true})
            EXPECT_EQ(chatInputState({.serverStatus = u"Running"_s,
                                      .isServerRunning = true,
                                      .isGenerating = isGenerating,
                                      .isPreparingContext = isPreparing,
                                      .text = {}})
                          .isFieldEnabled,
                      !isGenerating && !isPreparing);
}

TEST(ChatInputState, TheSendButtonBecomesAStopButtonThatIsDimForThePanelsOwnQuestion)
{
    ChatInputConditions conditions{.serverStatus = u"Running"_s, .isServerRunning = true, .text = u" \n"_s};
    EXPECT_EQ(chatInputState(conditions).sendButton, SendButton::Send);
    EXPECT_FALSE(chatInputState(conditions).isSendButtonEnabled);
    conditions.text = u"why"_s;
    EXPECT_TRUE(chatInputState(conditions).canSend);
    EXPECT_TRUE(chatInputState(conditions).isSendButtonEnabled);
    conditions.isPreparingContext = true;
    EXPECT_EQ(chatInputState(conditions).sendButton, SendButton::Preparing);
    EXPECT_FALSE(chatInputState(conditions).isSendButtonEnabled);
    conditions.isGenerating = true;
    EXPECT_EQ(chatInputState(conditions).sendButton, SendButton::Stop);
    EXPECT_FALSE(chatInputState(conditions).isSendButtonEnabled);
    conditions.isPreparingContext = false;
    conditions.text.clear();
    EXPECT_TRUE(chatInputState(conditions).isSendButtonEnabled);
}

TEST_F(ChatComposerTest, SpacesAreNotSentAndStayInTheField)
{
    serve("{}");
    send(u"  \n"_s, m_document);
    EXPECT_EQ(composer().chatInput(), u"  \n"_s);
    EXPECT_FALSE(composer().isPreparingContext());
    EXPECT_FALSE(composer().state().canSend);
}

TEST_F(ChatComposerTest, AQuestionGoesOutWithWhatWasTypedInTheDocumentAMomentAgo)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."},{"done":true}]}]}})");
    open();
    type(u" Four."_s);
    m_ai->setAttachedContexts({{u"Hamlet"_s, std::nullopt, u"To be"_s, std::nullopt}});

    send(u"  Is it?\n"_s, m_document);
    EXPECT_EQ(composer().chatInput(), QString());
    EXPECT_TRUE(composer().isPreparingContext());
    EXPECT_EQ(m_ai->contextStatus(), u"Preparing context…"_s);
    ASSERT_TRUE(isAnswered());

    const QJsonObject request = QJsonDocument::fromJson(body(kChat)).object();
    EXPECT_EQ(request[u"prompt"_s], u"Is it?"_s);
    EXPECT_EQ(request[u"file_content"_s], u"One. Two. Three. Four."_s);
    EXPECT_EQ(request[u"context_items"_s][0][u"name"_s], u"Hamlet"_s);
    EXPECT_EQ(onDisk(), "One. Two. Three. Four.");
    ASSERT_EQ(m_ai->chatMessages().size(), 2);
    EXPECT_EQ(m_ai->chatMessages()[1].content, u"Yes."_s);
}

TEST_F(ChatComposerTest, TheProjectIsSearchedForExcerptsAndTheStatusSaysSo)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."}]}]}})");
    m_files.write(u"project/whales.md"_s, "About whales and whaling.");

    send(u"What of the whales?"_s, std::nullopt, ProjectReference{m_files.url(u"project"_s)});
    EXPECT_EQ(m_ai->contextStatus(), u"Finding relevant project context…"_s);
    ASSERT_TRUE(isAnswered());

    const QJsonObject request = QJsonDocument::fromJson(body(kChat)).object();
    EXPECT_FALSE(request.contains(u"file_content"_s));
    EXPECT_EQ(request[u"workspace_context_items"_s][0][u"name"_s], u"whales.md"_s);
}

TEST_F(ChatComposerTest, WithoutAnActiveFileAQuestionGoesOutWithoutADocumentAndTheStatusGoesByTheProject)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."}]}]}})");
    send(u"And?"_s, std::nullopt);
    EXPECT_EQ(m_ai->contextStatus(), u"Preparing context…"_s);
    ASSERT_TRUE(isAnswered());
    send(u"And?"_s, std::nullopt, ProjectReference{m_files.url(u"project"_s)});
    EXPECT_EQ(m_ai->contextStatus(), u"Finding relevant project context…"_s);
    ASSERT_TRUE(isAnswered());
    for (const qsizetype index : {0, 1}) {
        const QJsonObject request = QJsonDocument::fromJson(body(kChat, index)).object();
        EXPECT_EQ(request[u"prompt"_s], u"And?"_s);
        EXPECT_FALSE(request.contains(u"file_content"_s));
    }
}

TEST_F(ChatComposerTest, ADocumentThatCannotBeReadIsLeftOut)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."}]}]}})");
    send(u"And?"_s, m_files.url(u"missing.md"_s));
    ASSERT_TRUE(isAnswered());
    EXPECT_FALSE(QJsonDocument::fromJson(body(kChat)).object().contains(u"file_content"_s));
}

TEST_F(ChatComposerTest, ASecondQuestionWaitsForTheAnswerOfTheFirst)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"a"},{"hang":true}]}]}})");
    send(u"First?"_s, m_document);
    send(u"Second?"_s, m_document);
    EXPECT_EQ(composer().chatInput(), u"Second?"_s);
    ASSERT_TRUE(eventually([this] { return m_server->requests(kChat).size() == 1; }));
    send(u"Third?"_s, m_document);
    EXPECT_EQ(composer().chatInput(), u"Third?"_s);

    composer().stop();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(m_server->requests(kChat).size(), 1);
    EXPECT_EQ(m_ai->contextStatus(), u"Generation stopped"_s);
}

TEST_F(ChatComposerTest, WithoutAServerNothingIsSentAndTheFieldIsFreeAgain)
{
    send(u"Is it?"_s, m_document);
    ASSERT_TRUE(isAnswered());
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
    EXPECT_TRUE(composer().state().isOffline);
}

TEST_F(ChatComposerTest, ARetryStartsTheServer)
{
    composer().retry();
    EXPECT_EQ(composer().state().placeholder, u"Initializing Tessaline..."_s);
    EXPECT_FALSE(composer().state().isOffline);
}

TEST_F(ChatComposerTest, AClearedChatIsEmptyOnTheDiskTooAndKeepsTheRest)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."}]}]}})");
    m_ai->switchActiveFile(m_document);
    m_ai->setSuggestionState(u"x_0"_s, u"accepted"_s);
    send(u"Is it?"_s, m_document);
    ASSERT_TRUE(isAnswered());
    ASSERT_EQ(m_ai->chatMessages().size(), 2);

    composer().clearChat();
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
    EXPECT_EQ(m_ai->suggestionStates().size(), 1);
    m_ai->loadSession(m_document);
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
}

TEST_F(ChatComposerTest, TheChatMayBeClearedDuringAnAnswer)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"a"},{"hang":true}]}]}})");
    send(u"First?"_s, m_document);
    ASSERT_TRUE(eventually([this] { return m_ai->chatMessages().size() == 2; }));
    composer().clearChat();
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
    composer().stop();
    ASSERT_TRUE(isAnswered());
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
}

TEST_F(ChatComposerTest, AComposerThatGoesSendsNothingMore)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."}]}]}})");
    {
        ChatComposer composer(*m_ai, m_documents);
        composer.setChatInput(u"Is it?"_s);
        composer.send(m_document, std::nullopt);
    }
    ASSERT_TRUE(finishes(m_documents.flushAll()));
    ASSERT_TRUE(finishes(m_documents.readDocument(m_document)));
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
}

} // namespace Tessaline
