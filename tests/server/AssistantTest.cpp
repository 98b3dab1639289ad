#include "server/Assistant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <new>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Tessaline::Server {

namespace {

using testing::HasSubstr;

class ReadyEngine : public Engine
{
public:
    std::string name() const override { return "ready"; }
    EngineState state() const override { return {EngineState::Phase::Ready, -1, {}}; }
    std::optional<int> contextTokens() const override { return 4096; }
    std::optional<int> countTokens(std::string_view, std::stop_token) override { return {}; }
};

/// Answers everything with one word, once it may.
class HeldEngine final : public ReadyEngine
{
public:
    EngineOutcome generate(const EngineRequest &request, std::stop_token, const TokenReceiver &token) override
    {
        asked.push_back(request);
        if (asked.size() == 1) {
            began.count_down();
            release.wait();
        }
        token("word");
        return {};
    }

    std::vector<EngineRequest> asked; // one after the other, which is what is tested
    std::latch began{1};
    std::latch release{1};
};

/// Answers a chat at once. What is asked aside comes to no end the first time, unless it is stopped.
class EndlessAsideEngine final : public ReadyEngine
{
public:
    EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) override
    {
        if (request.jsonSchema.empty()) {
            token("word");
            return {};
        }
        if (++askedAside == 1) {
            std::promise<void> stopped;
            const std::stop_callback callback(stop, [&stopped] { stopped.set_value(); });
            began.count_down();
            stopped.get_future().wait();
            return {EngineOutcome::End::Stopped, {}};
        }
        token(R"({"digest":"Short."})");
        return {};
    }

    std::atomic<int> askedAside = 0;
    std::latch began{1};
};

/// Has no memory for its first answer.
class ThrowingEngine final : public ReadyEngine
{
public:
    EngineOutcome generate(const EngineRequest &, std::stop_token, const TokenReceiver &token) override
    {
        if (++m_asked == 1)
            throw std::bad_alloc();
        token(R"({"digest":"Short."})");
        return {};
    }

private:
    int m_asked = 0;
};

Reply digest(const Routes &routes, const std::stop_token &stop)
{
    return std::get<Reply>(routes.posts.at("/v1/digest-file")(R"({"filename":"a","content":"b"})", stop));
}

} // namespace

TEST(Assistant, ForgetsASideRequestWhoseClientHasGoneWhileItWaitedForAChat)
{
    HeldEngine engine;
    Assistant assistant(Settings{}, engine);
    const Routes routes = assistant.routes();
    std::string stream;
    const auto answer = routes.posts.at("/v1/chat/completions")(R"({"prompt":"x"})", {});
    auto chat = std::async(std::launch::async, [&] {
        std::get<EventStream>(answer)([&stream](std::string_view bytes) {
            stream += bytes;
            return true;
        });
    });
    engine.began.wait();
    std::stop_source client;
    auto waiting = std::async(std::launch::async, digest, routes, client.get_token());

    client.request_stop();

    EXPECT_EQ(waiting.get().status, 503);
    engine.release.count_down();
    chat.get();
    EXPECT_EQ(engine.asked.size(), 1U) << "only the chat";
    EXPECT_THAT(stream, HasSubstr("data: {\"token\":\"word\"}\n\ndata: [DONE]\n\n"));
    EXPECT_EQ(digest(routes, {}).status, 503) << "no JSON";
    EXPECT_EQ(engine.asked.size(), 2U);
}

TEST(Assistant, LetsAChatGoBeforeASideRequestThatRunsAlreadyAndAsksThatAgain)
{
    EndlessAsideEngine engine;
    Assistant assistant(Settings{}, engine);
    const Routes routes = assistant.routes();
    auto waiting = std::async(std::launch::async, digest, routes, std::stop_token());
    engine.began.wait();
    std::string stream;

    std::get<EventStream>(routes.posts.at("/v1/chat/completions")(R"({"prompt":"x"})", {}))(
        [&stream](std::string_view bytes) {
            stream += bytes;
            return true;
        });

    EXPECT_THAT(stream, HasSubstr("data: {\"token\":\"word\"}"));
    EXPECT_EQ(waiting.get().body, R"({"digest":"Short."})");
    EXPECT_EQ(engine.askedAside, 2);
}

TEST(Assistant, GivesTheNextSideRequestItsTurnWhenThereWasNoMemoryForTheOneBefore)
{
    ThrowingEngine engine;
    Assistant assistant(Settings{}, engine);
    const Routes routes = assistant.routes();
    EXPECT_THROW(digest(routes, {}), std::bad_alloc);
    std::stop_source impatient;
    impatient.request_stop();

    EXPECT_EQ(digest(routes, impatient.get_token()).body, R"({"digest":"Short."})");
}

TEST(Assistant, StopsASideRequestThatRunsWhenItsClientGoes)
{
    EndlessAsideEngine engine;
    Assistant assistant(Settings{}, engine);
    const Routes routes = assistant.routes();
    std::stop_source client;
    auto waiting = std::async(std::launch::async, digest, routes, client.get_token());
    engine.began.wait();

    client.request_stop();

    EXPECT_EQ(waiting.get().status, 503);
    EXPECT_EQ(engine.askedAside, 1);
}

TEST(Assistant, LeavesAQuarterOfTheWindowToTheAnswer)
{
    HeldEngine engine;
    engine.release.count_down();
    Assistant assistant(Settings{}, engine);
    const auto answer = assistant.routes().posts.at("/v1/chat/completions")(
        R"({"prompt":"x","file_content":")" + std::string(100000, 'y') + R"(","temperature":0.3,"top_p":0.5})", {});

    std::get<EventStream>(answer)([](std::string_view) { return true; });

    ASSERT_EQ(engine.asked.size(), 1U);
    EXPECT_GE(engine.asked[0].mostTokens, 1024);
    EXPECT_EQ(engine.asked[0].temperature, 0.3);
    EXPECT_EQ(engine.asked[0].topP, 0.5);
    EXPECT_EQ(engine.asked[0].turns.front().role, "system");
}

} // namespace Tessaline::Server
