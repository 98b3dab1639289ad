#include "Services/ChatGeneration.h"

#include "Services/Session.h"
#include "Services/WireClient.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const ContextItem kItem{u"Hamlet"_s, u"Play"_s, u"To be"_s, std::nullopt};
const ContextItem kExcerpt{u"notes/a.md"_s, u"Project · Notes"_s, u"an excerpt"_s, std::nullopt};

/// A script whose answers to chat requests have these steps.
QByteArray chatScript(const QByteArray &steps)
{
    return R"({"replies":{"/v1/chat/completions":[{"steps":[)" + steps + R"(]}]}})";
}

/// A session, a server and the generation between them.
class ChatGenerationTest : public ::testing::Test
{
protected:
    /// Starts the server. Before this there is none at the address.
    void serve(const QByteArray &script)
    {
        m_server = std::make_unique<ScriptedServer>(script);
        WireOptions options;
        options.address.port = m_server->port();
        connectTo(options);
    }

    void connectTo(const WireOptions &options)
    {
        m_generation.reset();
        m_wire = std::make_unique<WireClient>(options);
        m_generation = std::make_unique<ChatGeneration>(m_session, *m_wire, [this] {
            const GrowingAnswer::TimePoint now(m_times.isEmpty() ? m_lastTime += 1h : m_lastTime = m_times.takeFirst());
            return now;
        });
        QObject::connect(&m_session, &Session::chatMessagesChanged, m_generation.get(), [this] {
            const QString content = m_session.chatMessages().isEmpty() ? QString() : answer();
            if (m_shown.isEmpty() || m_shown.constLast() != content)
                m_shown.append(content);
        });
    }

    QCoro::Task<> send(const QString &prompt) { return m_generation->sendMessage(prompt, std::nullopt, {}, {}); }

    /// Asks and waits for the whole answer.
    void ask(const QString &prompt)
    {
        const QCoro::Task<> task = send(prompt);
        ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
        EXPECT_FALSE(m_generation->isGenerating());
    }

    bool waitForAnswer(const QString &text)
    {
        return eventually([&] { return !m_session.chatMessages().isEmpty() && answer() == text; }, 60s);
    }

    QString answer() const { return m_session.chatMessages().constLast().content; }
    QString status() const { return m_generation->contextStatus(); }
    SessionContents onDisk(const FileURL &document) const { return m_files.load(document); }
    QByteArray body(qsizetype request = 0) const { return bodyOf(m_server->requests().at(request)); }

    const TemporaryFiles m_disk{{u"a.md"_s, "a"}, {u"b.md"_s, "b"}};
    const FileURL m_a = m_disk.url(u"a.md"_s);
    const FileURL m_b = m_disk.url(u"b.md"_s);
    const SessionFiles m_files{m_disk.url(u"data"_s)};
    Session m_session{m_files};
    QStringList m_shown;                      // what the last message has held, one after the other
    QList<std::chrono::milliseconds> m_times; // when the next tokens come, and when those that are shown have been
                                              // drawn; then all of it is an hour after the last
    std::chrono::milliseconds m_lastTime{0};
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<WireClient> m_wire;
    std::unique_ptr<ChatGeneration> m_generation;
};

} // namespace

// The request

TEST_F(ChatGenerationTest, AFirstQuestionHasNoHistoryAndNoEmptyLists)
{
    serve(chatScript(R"({"token":"Yes."},{"done":true})"));

    ask(u"Is it?"_s);

    EXPECT_EQ(body().toStdString(), R"({"prompt":"Is it?","temperature":0.7,"top_p":0.9})");
    EXPECT_TRUE(m_server->requests().at(0).startsWith("POST /v1/chat/completions HTTP/1.1\r\n"));
    EXPECT_TRUE(m_server->requests().at(0).toLower().contains("\r\ncontent-type: application/json\r\n"));
}

TEST_F(ChatGenerationTest, DocumentContextsExcerptsAndAllEarlierTurnsGoWithTheQuestion)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"status":500},{"steps":[{"token":"Yes."}]}]}})");
    ask(u"First?"_s);

    const QCoro::Task<> task = m_generation->sendMessage(u"Second?"_s, u"the text"_s, {kItem}, {kExcerpt});
    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));

    EXPECT_EQ(
        body(1).toStdString(),
        R"({"prompt":"Second?","file_content":"the text",)"
        R"("context_items":[{"name":"Hamlet","subtitle":"Play","content":"To be"}],)"
        R"("workspace_context_items":[{"name":"notes\/a.md","subtitle":"Project · Notes","content":"an excerpt"}],)"
        R"("history":[{"role":"user","content":"First?"},)"
        R"({"role":"assistant","content":"Server error: Status code 500"}],"temperature":0.7,"top_p":0.9})");
}

TEST_F(ChatGenerationTest, AnEmptyDocumentIsSentAndALargeOneIsSentWhole)
{
    serve(chatScript(R"({"token":"Yes."})"));
    const QString large(300'000, u'x');

    for (const QString &document : {QString(), large}) {
        m_session.setChatMessages({});
        const QCoro::Task<> task = m_generation->sendMessage(u"?"_s, document, {}, {});
        ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    }

    EXPECT_EQ(body(0).toStdString(), R"({"prompt":"?","file_content":"","temperature":0.7,"top_p":0.9})");
    EXPECT_EQ(QJsonDocument::fromJson(body(1)).object().value(u"file_content"_s).toString(), large);
}

// The messages

TEST_F(ChatGenerationTest, TheQuestionIsOnTheDiskBeforeTheAnswerBegins)
{
    serve(chatScript(R"({"hang":true})"));
    m_session.switchTo(m_a);

    const QCoro::Task<> task = send(u"Is it?"_s);

    EXPECT_TRUE(m_generation->isGenerating());
    ASSERT_EQ(m_session.chatMessages().size(), 2);
    const ChatMessage question = m_session.chatMessages().at(0);
    EXPECT_EQ(question, (ChatMessage{question.id, u"user"_s, u"Is it?"_s}));
    const ChatMessage answer = m_session.chatMessages().at(1);
    EXPECT_EQ(answer, (ChatMessage{answer.id, u"assistant"_s, QString()}));
    EXPECT_FALSE(question.id.isNull() || answer.id.isNull() || question.id == answer.id);
    EXPECT_EQ(onDisk(m_a).chatMessages, QList<ChatMessage>{question});
}

TEST_F(ChatGenerationTest, TheWholeAnswerIsSavedAtTheEnd)
{
    serve(chatScript(R"({"token":"Yes"},{"token":", "},{"token":"it is."},{"done":true})"));
    m_session.switchTo(m_a);
    QSignalSpy generating(m_generation.get(), &ChatGeneration::isGeneratingChanged);

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), u"Yes, it is."_s);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
    EXPECT_EQ(generating.count(), 2);
    EXPECT_EQ(status(), QString());
}

TEST_F(ChatGenerationTest, WithoutADocumentNothingIsSaved)
{
    serve(chatScript(R"({"token":"Yes."})"));

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), u"Yes."_s);
    EXPECT_FALSE(m_disk.exists(u"data"_s));
}

TEST_F(ChatGenerationTest, TheFirstTokenIsShownAtOnceTheNextAfter50MillisecondsAndTheLastAlways)
{
    m_times = {1000ms, 1000ms, 1049ms, 1050ms, 1050ms, 1099ms, 1099ms};
    serve(chatScript(R"({"token":"a"},{"token":"b"},{"token":"c"},{"token":"d"},{"token":"e"})"));

    ask(u"Spell."_s);

    EXPECT_EQ(m_shown, (QStringList{u"Spell."_s, QString(), u"a"_s, u"abc"_s, u"abcde"_s}));
}

TEST_F(ChatGenerationTest, TheTimeUntilTheNextUpdateCountsFromTheEndOfTheDrawing)
{
    m_times = {1000ms, 1060ms, 1061ms, 1109ms, 1110ms, 1170ms, 1171ms}; // each update takes 60 milliseconds to draw
    serve(chatScript(R"({"token":"a"},{"token":"b"},{"token":"c"},{"token":"d"},{"token":"e"})"));

    ask(u"Spell."_s);

    EXPECT_EQ(m_shown, (QStringList{u"Spell."_s, QString(), u"a"_s, u"abcd"_s, u"abcde"_s}));
}

TEST_F(ChatGenerationTest, ASecondQuestionDuringAnAnswerIsLost)
{
    serve(chatScript(R"({"token":"Yes."},{"hang":true})"));
    const QCoro::Task<> first = send(u"First?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes."_s));

    const QCoro::Task<> second = send(u"Second?"_s);

    EXPECT_TRUE(second.isReady());
    EXPECT_FALSE(first.isReady());
    EXPECT_EQ(m_session.chatMessages().size(), 2);
    EXPECT_EQ(m_server->requests().size(), 1);
}

TEST_F(ChatGenerationTest, AStreamWithoutDataLeavesAnEmptyAnswerWhichIsSaved)
{
    serve(chatScript(R"({"done":true})"));
    m_session.switchTo(m_a);

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), QString());
    EXPECT_EQ(onDisk(m_a).chatMessages.size(), 2);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
}

TEST_F(ChatGenerationTest, LinesThatDoNotDecodeAreIgnored)
{
    serve(chatScript(R"({"text":"event: message\n: comment\n\ndata: {\"token\":1}\ndata: {\"tok\ndata: 7\n"},)"
                     R"({"token":"Yes."},{"event":{"context":{"context_window_tokens":1}}},{"done":true},)"
                     R"({"token":" Really."},{"text":"data: cut off"})"));

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), u"Yes. Really."_s);
    EXPECT_EQ(status(), QString());
}

// The status line

TEST_F(ChatGenerationTest, StatisticsMakeTheStatusLineWhichStaysAfterTheEnd)
{
    serve(chatScript(
        R"({"event":{"context":{"context_window_tokens":8192,"estimated_input_tokens":2345,"active_document_chars":10,)"
        R"("attached_context_count":1,"workspace_context_count":3,"history_message_count":0}}},{"token":"Yes."})"));
    m_generation->setContextStatus(u"Preparing context…"_s);
    QSignalSpy changed(m_generation.get(), &ChatGeneration::contextStatusChanged);

    ask(u"Is it?"_s);

    EXPECT_EQ(status(), u"Using document + 4 sources · ~2.3K tokens"_s);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(ChatGenerationTest, AnErrorBeforeAnyTokenIsTheAnswerAndTheStreamIsReadOn)
{
    serve(chatScript(R"({"event":{"error":"Out of memory."}},{"event":{"error":"Again."}},{"token":" Or not."})"));

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), u"Out of memory. Or not."_s);
    EXPECT_EQ(status(), u"AI error: Again."_s);
}

TEST_F(ChatGenerationTest, AnErrorAfterATokenShowsInTheStatusLineOnly)
{
    serve(chatScript(R"({"token":"Yes"},{"event":{"error":"Out of memory."}},{"token":"."})"));

    ask(u"Is it?"_s);

    EXPECT_EQ(answer(), u"Yes."_s);
    EXPECT_EQ(status(), u"AI error: Out of memory."_s);
}

// Stopping

TEST_F(ChatGenerationTest, StoppedBeforeTheFirstTokenTheAnswerSaysSo)
{
    serve(chatScript(R"({"hang":true})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(eventually([&] { return m_server->requests().size() == 1; }, 60s));

    m_generation->cancel();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_FALSE(m_generation->isGenerating());
    EXPECT_EQ(answer(), u"Generation stopped."_s);
    EXPECT_EQ(status(), u"Generation stopped"_s);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
    EXPECT_TRUE(eventually([&] { return m_server->isClosedByClient(0); }, 60s));
}

TEST_F(ChatGenerationTest, StoppedBeforeTheRequestHasLeftItSaysSoToo)
{
    serve(chatScript(R"({"token":"Yes."})"));
    const QCoro::Task<> task = send(u"Is it?"_s);

    m_generation->cancel();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(answer(), u"Generation stopped."_s);
}

TEST_F(ChatGenerationTest, StoppedAfterSomeTokensAllOfThemStayWithoutAMark)
{
    m_times = {1000ms, 1000ms, 1001ms, 1002ms}; // so that only the first is shown before the stop
    serve(chatScript(R"({"token":"a"},{"token":"b"},{"event":{"error":"x"}},{"token":"c"},{"hang":true})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Spell."_s);
    ASSERT_TRUE(eventually([&] { return m_times.isEmpty(); }, 60s));
    ASSERT_EQ(answer(), u"a"_s);

    m_generation->cancel();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(answer(), u"abc"_s);
    EXPECT_EQ(status(), u"Generation stopped"_s);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
    EXPECT_TRUE(eventually([&] { return m_server->isClosedByClient(0); }, 60s));
}

TEST_F(ChatGenerationTest, StoppedInAnswerToAChangeOfItsOwnItEndsRightAfter)
{
    serve(chatScript(R"({"token":"a"},{"token":"b"},{"hang":true})"));
    QObject::connect(&m_session, &Session::chatMessagesChanged, &m_session, [this] {
        if (answer() == u"a")
            m_generation->cancel();
    });

    const QCoro::Task<> task = send(u"Spell."_s);

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(answer(), u"a"_s);
    EXPECT_EQ(status(), u"Generation stopped"_s);
}

TEST_F(ChatGenerationTest, StoppingWithoutAGenerationDoesNothing)
{
    serve(chatScript(R"({"token":"Yes."})"));

    m_generation->cancel();
    ask(u"Is it?"_s);
    m_generation->cancel();

    EXPECT_EQ(answer(), u"Yes."_s);
    EXPECT_EQ(status(), QString());
}

// Failures

TEST_F(ChatGenerationTest, AStatusOtherThan200IsTheAnswer)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"status":503,"body":"busy"},{"status":204}]}})");
    m_session.switchTo(m_a);
    m_generation->setContextStatus(u"as it was"_s);

    ask(u"First?"_s);
    EXPECT_EQ(answer(), u"Server error: Status code 503"_s);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());

    ask(u"Second?"_s);
    EXPECT_EQ(answer(), u"Server error: Status code 204"_s);
    EXPECT_EQ(status(), u"as it was"_s);
}

TEST_F(ChatGenerationTest, WithoutAServerTheAnswerSaysThatTheConnectionFailed)
{
    serve("{}");
    m_server->kill();
    m_session.switchTo(m_a);
    m_generation->setContextStatus(u"as it was"_s);

    ask(u"Is it?"_s);

    EXPECT_TRUE(answer().startsWith(u"Connection failed: ")) << answer().toStdString();
    EXPECT_TRUE(answer().endsWith(u".\nMake sure the local server is built and running."_s)) << answer().toStdString();
    EXPECT_EQ(status(), u"as it was"_s);
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
}

TEST_F(ChatGenerationTest, AConnectionThatBreaksHalfWayTakesThePartialAnswerWithIt)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"transfer":"chunked","steps":[{"token":"Yes"},{"close":true}]}]}})");
    m_generation->setContextStatus(u"as it was"_s);

    ask(u"Is it?"_s);

    EXPECT_TRUE(answer().startsWith(u"Connection failed: ")) << answer().toStdString();
    EXPECT_EQ(status(), u"as it was"_s);
}

TEST_F(ChatGenerationTest, AConnectionThatIsResetIsAFailedOneAlsoWhereItsEndWouldHaveBeenTheAnswers)
{
    serve(chatScript(R"({"token":"Yes"},{"until":")" + m_disk.url(u"gate"_s).path().toUtf8() + R"("},{"reset":true})"));
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes"_s));

    m_disk.write(u"gate"_s, "");

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_TRUE(answer().startsWith(u"Connection failed: The network connection was lost.")) << answer().toStdString();
}

TEST_F(ChatGenerationTest, AServerKilledHalfWayThroughAChunkedAnswerIsAFailedConnection)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"transfer":"chunked","steps":[{"token":"Yes"},{"hang":true}]}]}})");
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes"_s));

    m_server->kill();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_TRUE(answer().startsWith(u"Connection failed: ")) << answer().toStdString();
    EXPECT_EQ(onDisk(m_a).chatMessages, m_session.chatMessages());
}

TEST_F(ChatGenerationTest, AServerThatIsSilentForTooLongIsAFailedConnection)
{
    m_server = std::make_unique<ScriptedServer>(chatScript(R"({"token":"Yes"},{"hang":true})"));
    WireOptions options;
    options.address.port = m_server->port();
    options.streamTimeout = 50ms;
    connectTo(options);

    ask(u"Is it?"_s);

    EXPECT_TRUE(answer().startsWith(u"Connection failed: ")) << answer().toStdString();
}

// What else happens meanwhile

TEST_F(ChatGenerationTest, AChatClearedDuringAnAnswerStaysEmpty)
{
    serve(chatScript(R"({"token":"Yes"},{"token":",","count":20,"every":5},{"token":" it is."})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(eventually([&] { return !answer().isEmpty(); }, 60s));

    m_session.setChatMessages({});
    m_session.saveActive();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_FALSE(m_generation->isGenerating());
    EXPECT_TRUE(m_session.chatMessages().isEmpty());
    EXPECT_TRUE(onDisk(m_a).chatMessages.isEmpty());
    EXPECT_TRUE(m_server->isAnswered(0)) << "the stream was not stopped";
}

TEST_F(ChatGenerationTest, AnAnswerIsNotGivenToTheDocumentThatWasSwitchedTo)
{
    const ChatMessage ofB{QUuid::createUuid(), u"user"_s, u"About b"_s};
    m_files.save(m_b, {{ofB}, {}}, {});
    serve(chatScript(R"({"token":"Yes"},{"token":",","count":20,"every":5},{"token":" it is."})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(eventually([&] { return !answer().isEmpty(); }, 60s));
    const QList<ChatMessage> ofA = m_session.chatMessages();

    m_session.switchTo(m_b);

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>{ofB});
    EXPECT_EQ(onDisk(m_a).chatMessages, ofA) << "the old document keeps the answer as it stood";
    EXPECT_EQ(onDisk(m_b).chatMessages, QList<ChatMessage>{ofB});
    EXPECT_TRUE(m_server->isAnswered(0)) << "the stream was not stopped";
}

TEST_F(ChatGenerationTest, TheEndSavesTheDocumentThatIsActiveByThen)
{
    serve(chatScript(R"({"token":"Yes"},{"hang":true})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes"_s));
    m_session.switchTo(m_b);
    m_session.setAttachedContexts({kItem});

    m_generation->cancel();

    ASSERT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(onDisk(m_b), (SessionContents{{}, {kItem}}));
}

TEST_F(ChatGenerationTest, DestroyedDuringAnAnswerItLeavesEverythingAsItIs)
{
    serve(chatScript(R"({"token":"Yes"},{"hang":true})"));
    m_session.switchTo(m_a);
    const QCoro::Task<> task = send(u"Is it?"_s);
    ASSERT_TRUE(waitForAnswer(u"Yes"_s));
    const QList<ChatMessage> before = m_session.chatMessages();
    const SessionContents saved = onDisk(m_a);

    m_generation.reset();

    EXPECT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(m_session.chatMessages(), before);
    EXPECT_EQ(onDisk(m_a), saved);
    EXPECT_TRUE(eventually([&] { return m_server->isClosedByClient(0); }, 60s));
}

} // namespace Tessaline
