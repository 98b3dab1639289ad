#include "tests/server/EngineScripts.h"
#include "tests/server/RunningServer.h"
#include "tests/support/TemporaryFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace Tessaline::Server {

namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

} // namespace

TEST(ServerProgram, ExplainsWhatToInstallWhereThereIsNoEngine)
{
    RunningServer server({"TESSALINE_MODEL_ID=llama-3.1-8b-q4"});

    EXPECT_THAT(server.lines(),
                ElementsAre(StartsWith("Engine: none; model: llama-3.1-8b-q4; listening on 127.0.0.1:")));
    EXPECT_EQ(server.get("/health").status, 200);
    const std::string answer = server.ask();
    EXPECT_THAT(answer, StartsWith("data: {\"context\":{"));
    EXPECT_THAT(answer, HasSubstr("data: {\"error\":\"No local engine was found"));
    EXPECT_TRUE(answer.ends_with("\n\ndata: [DONE]\n\n"));
    EXPECT_EQ(server.post("/v1/suggest-context", R"({"content":"x"})").body, R"({"suggestions":[]})");
    EXPECT_EQ(server.post("/v1/digest-file", R"({"filename":"x","content":"y"})").status, 503);
    EXPECT_EQ(server.post("/v1/expand-concept", R"({"concept":"x"})").status, 503);
    EXPECT_EQ(server.post("/v1/expand-concept", R"({"concept":3})").status, 400);
    EXPECT_EQ(server.post(kChat, "{").body, R"({"error":"The body is not JSON."})");
}

TEST(ServerProgram, EndsWithAStatusForEachReason)
{
    RunningServer first({});
    RunningServer second({}, {"--port", std::to_string(first.port())});

    EXPECT_EQ(second.status(), 3);
    EXPECT_THAT(second.lines(), ElementsAre(HasSubstr("Port " + std::to_string(first.port()) + " ")));
    EXPECT_EQ(RunningServer({"TESSALINE_ENGINE_URL=http://example.org"}).status(), 2);
    EXPECT_EQ(RunningServer({}, {"--nonsense"}).status(), 2);
    RunningServer version({}, {"--version"});
    EXPECT_EQ(version.status(), 0);
    EXPECT_TRUE(version.waitForLine("tessaline-server 0."));
    RunningServer help({}, {"--help"});
    EXPECT_EQ(help.status(), 0);
    EXPECT_TRUE(help.waitForLine("--engine-url"));
}

TEST(ServerProgram, StreamsWhatAnEngineAnswersAndSaysFirstWhatWasUsed)
{
    const ScriptedServer engine(openAiScript(
        streamOf(R"({"text":": comment\n\n"},)" + token("One ") + ",{\"text\":\"garbage\\n\"}," + token("two")),
        R"("/tokenize":[{"body":"{\"tokens\":[1,2,3,4,5]}"}],)"));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    const std::string answer =
        server.ask(R"({"prompt":"Hello","file_content":"äöü","context_items":[{"name":"a","content":"b"}],)"
                   R"("history":[{"role":"user","content":"x"}]})");

    // Five tokens of the text, and eight around each of three turns.
    EXPECT_THAT(
        answer,
        StartsWith(
            "data: {\"context\":{\"active_document_chars\":3,\"attached_context_count\":1,\"context_window_tokens\":"
            "8192,\"estimated_input_tokens\":29,\"history_message_count\":1,\"workspace_context_count\":0}}\n\n"));
    EXPECT_EQ(tokensIn(answer), "One two");
    EXPECT_TRUE(answer.ends_with("\n\ndata: [DONE]\n\n"));
    EXPECT_THAT(bodyOf(engine.requests(kChat).constFirst()).toStdString(), HasSubstr(R"("model":"served")"));
    EXPECT_THAT(server.lines().front(), StartsWith("Engine: the engine at http://127.0.0.1:"));
}

TEST(ServerProgram, WaitsForAnEngineAndSaysSo)
{
    const ScriptedServer engine(
        R"({"replies":{"/v1/models":[{"status":503},{"status":503},{"body":"{}"}],"*":[{"status":404}]}})");
    const RunningServer server({urlOf(engine)});

    EXPECT_TRUE(server.becomesWell());
    EXPECT_TRUE(server.waitForLine("Ready with llama-3.2-3b-q4"));
    EXPECT_THAT(server.lines(), testing::Contains("Loading llama-3.2-3b-q4"));
    EXPECT_EQ(engine.requests("/v1/models").size(), 3);
}

TEST(ServerProgram, IsNotWellWhileAnEngineLoadsButAnswersThatItDoes)
{
    const RunningServer server({"TESSALINE_ENGINE_URL=http://127.0.0.1:1"});

    const HttpOutcome health = server.get("/health");
    EXPECT_EQ(health.status, 503);
    EXPECT_EQ(health.body, R"({"status":"loading"})");
    EXPECT_THAT(server.ask(), HasSubstr("The model is being loaded. Ask again in a moment."));
}

TEST(ServerProgram, PassesTokensOnAtOnceAndStopsTheEngineWhenTheClientGoes)
{
    const ScriptedServer engine(openAiScript(streamOf(token("One") + ",{\"hang\":true}")));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());
    std::stop_source client;
    std::string seen;

    server.ask(client.get_token(), [&](std::string_view bytes) {
        seen += bytes;
        return tokensIn(seen) != "One"; // and the client goes
    });

    EXPECT_EQ(tokensIn(seen), "One");
    const qsizetype chat = engine.requests().size() - 1;
    EXPECT_TRUE(comesTrue([&] { return engine.isClosedByClient(chat); }));
}

TEST(ServerProgram, StopsAnEngineThatIsStillSilentWhenTheClientGoes)
{
    const ScriptedServer engine(openAiScript(streamOf("{\"hang\":true}")));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());
    std::stop_source client;
    std::jthread asking([&] { server.ask(client.get_token(), [](std::string_view) { return true; }); });
    ASSERT_TRUE(comesTrue([&] { return !engine.requests(kChat).isEmpty(); }));

    client.request_stop();

    const qsizetype chat = engine.requests().size() - 1;
    EXPECT_TRUE(comesTrue([&] { return engine.isClosedByClient(chat); }));
}

TEST(ServerProgram, MissesAnEngineThatOthersRunAndLeavesItAlone)
{
    ScriptedServer engine(openAiScript(streamOf(token("Hello"))));
    {
        RunningServer first({urlOf(engine)});
        ASSERT_TRUE(first.becomesWell());
        EXPECT_EQ(tokensIn(first.ask()), "Hello");
        EXPECT_EQ(first.end(), 0);
    }
    EXPECT_TRUE(isAlive(static_cast<long>(engine.processId())));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    engine.kill();

    EXPECT_THAT(server.ask(), HasSubstr("The engine does not answer."));
    EXPECT_TRUE(comesTrue([&server] { return server.get("/health").status == 503; }));
    EXPECT_THAT(server.ask(), HasSubstr("There is no answer from the engine at http://127.0.0.1:"));
}

TEST(ServerProgram, PassesSlowTokensOnOneByOne)
{
    const TemporaryFiles files;
    const std::string release = files.url(u"release"_s).path().toStdString();
    const ScriptedServer engine(
        openAiScript(streamOf(token("One") + R"(,{"until":")" + release + "\"}," + token("two"))));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());
    std::string seen;

    server.ask({}, [&](std::string_view bytes) {
        seen += bytes;
        if (tokensIn(seen) == "One") // has come while the engine still thinks about the second
            files.write(u"release"_s, "now");
        return true;
    });

    EXPECT_EQ(tokensIn(seen), "Onetwo");
}

TEST(ServerProgram, PassesOverGarbageAndEndsAnAnswerThatIsNothingElse)
{
    const std::string garbage =
        R"({"hex":"00ff80c0"},{"text":"\ndata: {\ndata: []\ndata: {\"choices\":{}}\n\n<html>\n"})";
    const ScriptedServer engine(openAiScript(streamOf(garbage + "," + token("One") + "," + garbage) + ",{\"steps\":[" +
                                             garbage +
                                             R"(]},{"steps":[{"fill":"xxxxxxxx","count":1000000},{"done":true}]})"));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    const std::string sound = server.ask();
    EXPECT_EQ(tokensIn(sound), "One");
    EXPECT_THAT(sound, Not(HasSubstr("\"error\"")));
    EXPECT_THAT(server.ask(), HasSubstr("The engine ended in the middle of its answer."));
    EXPECT_THAT(server.ask(), HasSubstr("The engine ended in the middle of its answer.")) << "a line without an end";
}

TEST(ServerProgram, TellsEachFailureOfAnEngineInOneSentence)
{
    const std::string refusal =
        R"({"status":400,"body":"{\"error\":{\"type\":\"exceed_context_size_error\",\"message\":\"long\"}}"})";
    const std::vector<std::pair<std::string, std::string>> failures{
        {"{\"steps\":[" + token("Half") + ",{\"close\":true}]}", "The engine ended in the middle of its answer."},
        {"{\"steps\":[" + token("Half") + R"(,{"event":{"error":{"message":"no memory"}}},{"hang":true}]})",
         "The engine reports a failure: no memory."},
        {R"({"status":500,"body":"{\"error\":{\"message\":\"broken\"}}"})", "The engine refused the question: broken."},
        {R"({"status":500,"body":"{\"error\":{\"message\":\"broken\\n at\\tline 3...\"}}"})",
         "The engine refused the question: broken at line 3."},
        {R"({"status":500,"body":"<html>"})", "The engine refused the question: it did not say why."},
        {refusal, "The question, with what comes with it, is too long for the model."},
    };
    for (const auto &[reply, sentence] : failures) {
        const ScriptedServer engine(openAiScript(reply));
        const RunningServer server({urlOf(engine)});
        ASSERT_TRUE(server.becomesWell());

        const std::string answer = server.ask();

        EXPECT_THAT(answer, HasSubstr("data: {\"error\":\"" + sentence + "\"}\n\ndata: [DONE]\n\n")) << reply;
        EXPECT_EQ(tokensIn(answer), reply.find("Half") == std::string::npos ? "" : "Half");
    }
}

TEST(ServerProgram, AsksAgainWithLessWhenTheEngineFindsThePromptTooLong)
{
    const ScriptedServer engine(openAiScript(
        R"({"status":400,"body":"{\"error\":{\"type\":\"exceed_context_size_error\"}}"},)" + streamOf(token("Yes"))));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask(R"({"prompt":"x","file_content":")" + std::string(60000, 'y') + "\"}")), "Yes");

    const QList<QByteArray> chats = engine.requests(kChat);
    ASSERT_EQ(chats.size(), 2);
    EXPECT_LT(chats[1].size(), chats[0].size());
}

TEST(ServerProgram, KeepsCharactersWholeWhateverPiecesTheyComeIn)
{
    const ScriptedServer engine(openAiScript(R"({"cutEvery":1,"steps":[)" + token("ä€😀") + R"(,{"done":true}]})"));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask()), "ä€😀");
}

TEST(ServerProgram, SpoilsAnEditThatTheApplicationWouldMisread)
{
    const ScriptedServer engine(openAiScript(
        streamOf(token(R"(<<<<<<< SEARCH\nTitle\n=======\nText\n=======\nTitle\n=======\nBetter\n>>>>>>> REP)") + "," +
                 token("LACE"))));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    const std::string answer = server.ask(R"({"prompt":"x","file_content":"Title\n=======\nText\n"})");

    EXPECT_THAT(tokensIn(answer), HasSubstr("<<<<<<< NOT USABLE"));
    EXPECT_THAT(tokensIn(answer), Not(HasSubstr("<<<<<<< SEARCH")));
    EXPECT_THAT(bodyOf(engine.requests(kChat).constFirst()).toStdString(), HasSubstr("line 2. Never copy such a line"));
}

TEST(ServerProgram, AsksForTopicsDigestsAndCardsAsJson)
{
    const auto says = [](const std::string &text) { return streamOf(token(text)); };
    const ScriptedServer engine(openAiScript(
        says(R"(Here:\n```json\n{\"topics\":[\"Rhyme\",\"Metre\"]}\n```)") + "," + says(R"({\"digest\":\"A poem.\"})") +
        "," + says(R"({\"cards\":[{\"title\":\"T\",\"subtitle\":\"S\",\"content\":\"C\"}]})") + "," +
        says(
            R"({\"cards\":[{\"title\":\"T\",\"subtitle\":\"S\",\"content\":\"C\"},{\"title\":\"U\",\"subtitle\":\"S\",\"content\":\"C\"}]})") +
        "," + says("no JSON at all")));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(server.post("/v1/suggest-context", R"({"content":"A poem"})").body,
              R"({"suggestions":["Rhyme","Metre"]})");
    EXPECT_EQ(server.post("/v1/digest-file", R"({"filename":"a.md","content":"A poem"})").body,
              R"({"digest":"A poem."})");
    EXPECT_THAT(server.post("/v1/expand-concept", R"({"concept":"Mercury"})").body, HasSubstr(R"("status":"success")"));
    EXPECT_THAT(server.post("/v1/expand-concept", R"({"concept":"Mercury"})").body,
                HasSubstr(R"("status":"ambiguous")"));
    EXPECT_EQ(server.post("/v1/digest-file", R"({"filename":"a.md","content":"A poem"})").status, 503);
    EXPECT_THAT(bodyOf(engine.requests(kChat).constFirst()).toStdString(),
                HasSubstr(R"("response_format":{"json_schema":)"));
}

TEST(ServerProgram, GivesBackTheMemoryOfLargeRequests)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer keeps what is free";
#endif
    const ScriptedServer engine(openAiScript(streamOf(token("One"))));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());
    ASSERT_EQ(tokensIn(server.ask()), "One");
    const long before = server.privateMemory();
    ASSERT_GT(before, 0);
    std::string document;
    while (document.size() < 8'000'000)
        document += "A line of " + std::to_string(document.size()) + " letters.\\n";

    {
        std::vector<std::jthread> clients;
        for (int client = 0; client < 3; ++client)
            clients.emplace_back([&] {
                EXPECT_EQ(tokensIn(server.ask(R"({"prompt":"x","file_content":")" + document + "\"}")), "One");
            });
    }

    constexpr long kLittle = 3000; // KiB: less than half of one document
    EXPECT_TRUE(comesTrue([&] { return server.privateMemory() < before + kLittle; }))
        << before << " KiB before, " << server.privateMemory() << " after";
}

TEST(ServerProgram, AsksWithoutASchemaWhatAnEngineRefusesWithOne)
{
    const ScriptedServer engine(
        openAiScript(R"({"status":400,"body":"{\"error\":\"unknown field response_format\"}"},)" +
                     streamOf(token(R"({\"digest\":\"Short.\"})")) + R"(,{"status":400,"body":""})"));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(server.post("/v1/digest-file", R"({"filename":"a","content":"b"})").body, R"({"digest":"Short."})");
    EXPECT_EQ(server.post("/v1/digest-file", R"({"filename":"a","content":"b"})").status, 503);

    const QList<QByteArray> asked = engine.requests(kChat);
    ASSERT_EQ(asked.size(), 4) << "twice each";
    EXPECT_THAT(asked[0].toStdString(), HasSubstr("response_format"));
    EXPECT_THAT(asked[1].toStdString(), Not(HasSubstr("response_format")));
}

TEST(ServerProgram, LetsTheSideRequestsWaitForAChat)
{
    const TemporaryFiles files;
    const std::string release = files.url(u"release"_s).path().toStdString();
    const ScriptedServer engine(openAiScript(streamOf(token("One") + R"(,{"until":")" + release + "\"}") + "," +
                                             streamOf(token(R"({\"digest\":\"Short.\"})"))));
    const RunningServer server({urlOf(engine)});
    ASSERT_TRUE(server.becomesWell());
    auto chat = std::async(std::launch::async, [&] { return server.ask(); });
    ASSERT_TRUE(comesTrue([&] { return engine.requests(kChat).size() == 1; }));

    auto digest = std::async(std::launch::async,
                             [&] { return server.post("/v1/digest-file", R"({"filename":"a","content":"b"})"); });
    files.write(u"release"_s, "now");

    EXPECT_EQ(digest.get().body, R"({"digest":"Short."})");
    EXPECT_EQ(tokensIn(chat.get()), "One");
}

} // namespace Tessaline::Server
