#include "Services/ContextSuggestions.h"

#include "documents/DocumentStore.h"
#include "foundation/EventCenter.h"
#include "Services/Session.h"
#include "Services/WireClient.h"
#include "tests/support/ScriptedDisk.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A script whose answers about suggestions are these, one after the other.
QByteArray suggestionsScript(const QByteArray &replies)
{
    return R"({"replies":{"/v1/suggest-context":[)" + replies + "]}}";
}

constexpr const char *kTwoTopics = R"({"body":"{\"suggestions\":[\"Hamlet\",\"Ophelia\"],\"more\":1}"})";
const QStringList kTopics{u"Hamlet"_s, u"Ophelia"_s};
const QStringList kOld{u"Old"_s};

class ContextSuggestionsTest : public ::testing::Test
{
protected:
    ContextSuggestionsTest()
    {
        m_disk.setText(m_a, u"text of a"_s);
        m_disk.setText(m_b, u"text of b"_s);
        m_session.switchTo(m_a);
    }

    void serve(const QByteArray &script)
    {
        m_server = std::make_unique<ScriptedServer>(script);
        WireOptions options;
        options.address.port = m_server->port();
        m_wire = std::make_unique<WireClient>(options);
        m_suggestions = std::make_unique<ContextSuggestions>(m_session, m_store, *m_wire);
        m_suggestions->setSuggestedContexts(kOld);
        m_changed = std::make_unique<QSignalSpy>(m_suggestions.get(), &ContextSuggestions::suggestedContextsChanged);
    }

    /// Asks, waits for the end, and answers with what was printed meanwhile.
    QByteArray fetch(const QString &text, const std::optional<FileURL> &document)
    {
        ::testing::internal::CaptureStdout();
        const QCoro::Task<> task = m_suggestions->fetchSuggestions(text, document);
        EXPECT_TRUE(eventually([&] { return task.isReady(); }, 60s));
        return QByteArray::fromStdString(::testing::internal::GetCapturedStdout());
    }

    qsizetype requestCount() const { return m_server->requests().size(); }
    bool waitForRequests(qsizetype count) const
    {
        return eventually([&] { return requestCount() == count; }, 60s);
    }

    const FileURL m_a{u"/docs/a.md"_s};
    const FileURL m_b{u"/docs/b.md"_s};
    ScriptedDisk m_disk;
    EventCenter m_events;
    DocumentStore m_store{m_events, m_disk};
    Session m_session{SessionFiles(std::nullopt)};
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<WireClient> m_wire;
    std::unique_ptr<ContextSuggestions> m_suggestions;
    std::unique_ptr<QSignalSpy> m_changed;
};

} // namespace

TEST_F(ContextSuggestionsTest, TheTextIsSentUntrimmedAndTheTopicsAreTakenInTheirOrder)
{
    serve(suggestionsScript(kTwoTopics));

    EXPECT_EQ(fetch(u"  a/b\n"_s, m_a), "");

    EXPECT_EQ(m_suggestions->suggestedContexts(), kTopics);
    EXPECT_EQ(m_changed->count(), 1);
    EXPECT_EQ(bodyOf(m_server->requests().at(0)).toStdString(), R"({"content":"  a\/b\n"})");
}

TEST_F(ContextSuggestionsTest, TheTextIsNotKeptWhileItsTopicsAreAwaited)
{
    serve(suggestionsScript(R"({"after":600000})"));
    QString text(1000, u'x');

    const QCoro::Task<> task = m_suggestions->fetchSuggestions(text, m_a);

    ASSERT_TRUE(waitForRequests(1));
    EXPECT_TRUE(eventually([&] { return text.isDetached(); })) << "nobody else has it any more";
    EXPECT_FALSE(task.isReady());
}

TEST_F(ContextSuggestionsTest, ATextOfWhiteSpaceHasNoTopicsAndNeedsNoRequest)
{
    serve(suggestionsScript(kTwoTopics));

    EXPECT_EQ(fetch(u" \t\r\n\u00A0\u2028"_s, m_b), "");

    EXPECT_EQ(m_suggestions->suggestedContexts(), QStringList());
    EXPECT_EQ(requestCount(), 0);
}

TEST_F(ContextSuggestionsTest, AnEmptyAnswerEmptiesTheTopics)
{
    serve(suggestionsScript(R"({"body":"{\"suggestions\":[]}"})"));

    EXPECT_EQ(fetch(u"text"_s, m_a), "");

    EXPECT_EQ(m_suggestions->suggestedContexts(), QStringList());
}

TEST_F(ContextSuggestionsTest, AnAnswerForAnotherDocumentIsDropped)
{
    serve(suggestionsScript(kTwoTopics));

    fetch(u"text"_s, m_b);
    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);

    m_session.switchTo(std::nullopt);
    fetch(u"text"_s, m_a);
    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);
}

TEST_F(ContextSuggestionsTest, AnAnswerForNoDocumentIsAlwaysTaken)
{
    serve(suggestionsScript(kTwoTopics));

    fetch(u"text"_s, std::nullopt);

    EXPECT_EQ(m_suggestions->suggestedContexts(), kTopics);
}

TEST_F(ContextSuggestionsTest, AStatusOtherThan200LeavesTheTopicsInSilence)
{
    serve(suggestionsScript(R"({"status":500,"body":"{\"suggestions\":[]}"},{"status":204})"));

    EXPECT_EQ(fetch(u"text"_s, m_a), "");
    EXPECT_EQ(fetch(u"text"_s, m_a), "");

    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);
}

TEST_F(ContextSuggestionsTest, ABodyThatDoesNotDecodeLeavesTheTopicsAndALineOnTheConsole)
{
    serve(suggestionsScript(R"({"body":"{\"suggestions\":[1]}"})"));

    EXPECT_EQ(fetch(u"text"_s, m_a), "Failed to fetch suggestions: The server's answer could not be read.\n");

    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);
}

TEST_F(ContextSuggestionsTest, WithoutAServerTheTopicsStayAndALineIsOnTheConsole)
{
    serve("{}");
    m_server->kill();

    EXPECT_EQ(fetch(u"text"_s, m_a), "Failed to fetch suggestions: Could not connect to the server.\n");

    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);
}

TEST_F(ContextSuggestionsTest, BeginningReadsTheDocumentAndAsksAboutIt)
{
    serve(suggestionsScript(kTwoTopics));

    m_suggestions->begin(m_a);

    EXPECT_TRUE(eventually([&] { return m_suggestions->suggestedContexts() == kTopics; }, 60s));
    EXPECT_EQ(bodyOf(m_server->requests().at(0)).toStdString(), R"({"content":"text of a"})");
}

TEST_F(ContextSuggestionsTest, ADocumentThatCannotBeReadLeavesTheOldTopicsForGood)
{
    serve(suggestionsScript(kTwoTopics));
    m_disk.failReads(m_a, {FailureKind::NotReadable, u"It is a folder."_s});

    const QCoro::Task<> task = m_suggestions->readAndFetch(m_a);

    EXPECT_TRUE(eventually([&] { return task.isReady(); }, 60s));
    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld);
    EXPECT_EQ(requestCount(), 0);
}

TEST_F(ContextSuggestionsTest, BeginningAnewEndsTheRequestThatRuns)
{
    serve(suggestionsScript(QByteArray(R"({"steps":[{"hang":true}]},)") + kTwoTopics));
    ::testing::internal::CaptureStdout();
    m_suggestions->begin(m_a);
    ASSERT_TRUE(waitForRequests(1));

    m_session.switchTo(m_b);
    m_suggestions->begin(m_b);

    EXPECT_TRUE(eventually([&] { return m_suggestions->suggestedContexts() == kTopics; }, 60s));
    EXPECT_TRUE(eventually([&] { return m_server->isClosedByClient(0); }, 60s));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Failed to fetch suggestions: The request was cancelled.\n");
    EXPECT_EQ(bodyOf(m_server->requests().at(1)).toStdString(), R"({"content":"text of b"})");
}

TEST_F(ContextSuggestionsTest, CancelledWhileTheDocumentIsReadItAsksNothing)
{
    serve(suggestionsScript(kTwoTopics));
    const auto held = m_disk.holdNextRead(m_a);
    m_suggestions->begin(m_a);
    ASSERT_TRUE(eventually([&] { return held->isReached(); }, 60s));

    m_suggestions->cancel();
    held->release();
    const QCoro::Task<> behind = m_suggestions->readAndFetch(m_b);

    EXPECT_TRUE(eventually([&] { return behind.isReady(); }, 60s));
    EXPECT_EQ(requestCount(), 1);
    EXPECT_EQ(m_suggestions->suggestedContexts(), kOld) << "b is not the active document";
}

TEST_F(ContextSuggestionsTest, TwoRequestsRunSideBySideAndTheLastAnswerWins)
{
    serve(suggestionsScript(R"({"after":50,"body":"{\"suggestions\":[\"Slow\"]}"},)"
                            R"({"body":"{\"suggestions\":[\"Quick\"]}"})"));
    QStringList taken;
    QObject::connect(m_suggestions.get(), &ContextSuggestions::suggestedContextsChanged, &m_session,
                     [&] { taken += m_suggestions->suggestedContexts(); });

    m_suggestions->readAndFetch(m_a);
    ASSERT_TRUE(waitForRequests(1));
    m_suggestions->begin(m_a);

    ASSERT_TRUE(eventually([&] { return taken.size() == 2; }, 60s));
    EXPECT_EQ(m_suggestions->suggestedContexts(), QStringList{taken.constLast()});
    taken.sort();
    EXPECT_EQ(taken, (QStringList{u"Quick"_s, u"Slow"_s}));
}

TEST_F(ContextSuggestionsTest, DestroyedDuringARequestItIsSilent)
{
    serve(suggestionsScript(R"({"steps":[{"hang":true}]})"));
    const QCoro::Task<> task = m_suggestions->readAndFetch(m_a);
    m_suggestions->begin(m_a);
    ASSERT_TRUE(waitForRequests(2));
    ::testing::internal::CaptureStdout();

    m_suggestions.reset();

    EXPECT_TRUE(eventually([&] { return m_server->isClosedByClient(0) && m_server->isClosedByClient(1); }, 60s));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

} // namespace Tessaline
