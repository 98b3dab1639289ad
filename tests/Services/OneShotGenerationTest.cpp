#include "Services/OneShotGeneration.h"

#include "tests/support/ScriptedServer.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Outcome = OneShotGeneration::Outcome;

class OneShotGenerationTest : public ::testing::Test
{
protected:
    void serve(const QByteArray &replies)
    {
        m_server = std::make_unique<ScriptedServer>(R"({"replies":{"/v1/chat/completions":[)" + replies + "]}}");
        WireOptions options;
        options.address.port = m_server->port();
        m_generation = std::make_unique<OneShotGeneration>(options);
    }

    QFuture<Outcome> begin() { return m_generation->generate(u"Shorter:\n\nabc"_s, u"the text"_s, m_accumulator); }

    Outcome generate()
    {
        const QFuture<Outcome> future = begin();
        EXPECT_TRUE(finishes(future, 60s));
        return future.isFinished() ? future.result() : Outcome();
    }

    QString text() const { return m_accumulator->text(); }

    const std::shared_ptr<TokenAccumulator> m_accumulator = std::make_shared<TokenAccumulator>();
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<OneShotGeneration> m_generation;
};

} // namespace

TEST_F(OneShotGenerationTest, TheRequestHasPromptAndTextAndAskForLittleChance)
{
    serve(R"({"steps":[{"token":"a"},{"token":"b"},{"done":true}]})");

    EXPECT_TRUE(generate());

    EXPECT_EQ(text(), u"ab"_s);
    EXPECT_EQ(bodyOf(m_server->requests().at(0)).toStdString(),
              R"({"prompt":"Shorter:\n\nabc","file_content":"the text","temperature":0.3,"top_p":0.9})");
}

TEST_F(OneShotGenerationTest, AnEmptyTextIsSentToo)
{
    serve(R"({"steps":[{"done":true}]})");

    const QFuture<Outcome> future = m_generation->generate(u"?"_s, QString(), m_accumulator);

    ASSERT_TRUE(finishes(future, 60s));
    EXPECT_EQ(bodyOf(m_server->requests().at(0)).toStdString(),
              R"({"prompt":"?","file_content":"","temperature":0.3,"top_p":0.9})");
}

TEST_F(OneShotGenerationTest, DoneEndsItAtOnceThoughTheServerGoesOn)
{
    serve(R"({"steps":[{"token":"a"},{"done":true},{"token":"b"},{"hang":true}]})");

    EXPECT_TRUE(generate());

    EXPECT_EQ(text(), u"a"_s);
}

TEST_F(OneShotGenerationTest, OnlyTokensBehindAPrefixWithABlankCount)
{
    serve(R"({"steps":[{"text":"data:{\"token\":\"x\"}\ndata:[DONE]\n"},{"event":{"error":"No."}},{"token":"a"}]})");

    EXPECT_TRUE(generate());

    EXPECT_EQ(text(), u"a"_s);
}

TEST_F(OneShotGenerationTest, TheTextCanBeReadWhileItGrows)
{
    serve(R"({"steps":[{"token":"a"},{"hang":true}]})");

    const QFuture<Outcome> future = begin();

    EXPECT_TRUE(eventually([&] { return text() == u"a"; }, 60s));
    EXPECT_FALSE(future.isFinished());
}

TEST_F(OneShotGenerationTest, SeveralRunAtTheSameTimeEachWithItsOwnText)
{
    serve(R"({"steps":[{"token":"a"},{"hang":true}]},{"steps":[{"token":"b"},{"done":true}]})");
    const auto other = std::make_shared<TokenAccumulator>();
    const QFuture<Outcome> first = begin();
    ASSERT_TRUE(eventually([&] { return text() == u"a"; }, 60s));

    const QFuture<Outcome> second = m_generation->generate(u"?"_s, QString(), other);

    EXPECT_TRUE(finishes(second, 60s));
    EXPECT_EQ(other->text(), u"b"_s);
    EXPECT_FALSE(first.isFinished());
    EXPECT_EQ(text(), u"a"_s);
}

TEST_F(OneShotGenerationTest, AStatusOtherThan200IsAFailureThatSaysWhich)
{
    serve(R"({"status":503,"steps":[{"token":"a"}]})");

    const Outcome outcome = generate();

    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.failure(), (WireFailure{WireFailure::Kind::Status, 503, u"Server returned status code 503"_s}));
    EXPECT_EQ(text(), QString());
}

TEST_F(OneShotGenerationTest, AFailedConnectionIsPassedOnAndWhatCameStays)
{
    serve(R"({"transfer":"chunked","steps":[{"token":"a"},{"close":true}]})");

    const Outcome broken = generate();
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.failure().kind, WireFailure::Kind::Transport);
    EXPECT_EQ(text(), u"a"_s);

    m_server->kill();
    const Outcome refused = generate();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.failure(),
              (WireFailure{WireFailure::Kind::Transport, -1, u"Could not connect to the server."_s}));
}

TEST_F(OneShotGenerationTest, DestroyedMeanwhileItEndsWhatRunsAndWhatHasYetToBegin)
{
    serve(R"({"steps":[{"token":"a"},{"hang":true}]})");
    const QFuture<Outcome> running = begin();
    ASSERT_TRUE(eventually([&] { return text() == u"a"; }, 60s));
    const QFuture<Outcome> waiting = m_generation->generate(u"?"_s, QString(), m_accumulator);

    m_generation.reset();

    for (const QFuture<Outcome> &future : {running, waiting}) {
        ASSERT_TRUE(future.isFinished() && future.isValid() && !future.isCanceled());
        ASSERT_FALSE(future.result());
        EXPECT_EQ(future.result().failure().kind, WireFailure::Kind::Stopped);
    }
}

} // namespace Tessaline
