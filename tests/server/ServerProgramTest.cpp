#include "tests/server/RunningServer.h"
#include "tests/support/ScriptedServer.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace Tessaline::Server {

namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char *kChat = "/v1/chat/completions";

/// A step that writes a line of an OpenAI-compatible stream with this token.
std::string token(const std::string &text)
{
    return R"({"event":{"choices":[{"delta":{"content":")" + text + R"("}}]}})";
}

/// The script of an OpenAI-compatible engine that answers a chat with these replies.
QByteArray openAiScript(const std::string &chatReplies, const std::string &others = {})
{
    return QByteArray::fromStdString(R"({"replies":{"/v1/models":[{"body":"{\"data\":[{\"id\":\"served\"}]}"}],)"
                                     R"("*":[{"status":404,"body":""}],)" +
                                     others + "\"" + kChat + "\":[" + chatReplies + "]}}");
}

std::string streamOf(const std::string &steps)
{
    return "{\"steps\":[" + steps + ",{\"done\":true}]}";
}

std::string urlOf(const ScriptedServer &engine)
{
    return "TESSALINE_ENGINE_URL=http://127.0.0.1:" + std::to_string(engine.port());
}

std::string ollamaOf(const ScriptedServer &engine)
{
    return "OLLAMA_HOST=127.0.0.1:" + std::to_string(engine.port());
}

/// A folder with a scripted `llama-server`, and the home of its models.
class LlamaFolder : public ScriptedServerFolder
{
public:
    explicit LlamaFolder(const QByteArray &script) : ScriptedServerFolder(script)
    {
        EXPECT_TRUE(QFile::link(executable().path(), files().url(u"llama-server"_s).path()));
        files().makeFolder(u"home"_s);
    }

    std::vector<std::string> variables() const
    {
        return {"PATH=" + path(u""_s), "HOME=" + path(u"home"_s), "SCRIPTED_SERVER_SCRIPT=" + path(u"script.json"_s),
                "TESSALINE_CONTEXT_TOKENS=4096", "LLAMA_ARG_HOST=0.0.0.0"};
    }

    std::string path(const QString &name) const { return files().url(name).path().toStdString(); }

    std::vector<std::string> arguments() const
    {
        std::vector<std::string> words;
        for (const QJsonValue &word : process().value(u"arguments"_s).toArray())
            words.push_back(word.toString().toStdString());
        return words;
    }

    std::string variable(const QString &name) const
    {
        return process().value(u"environment"_s).toObject().value(name).toString().toStdString();
    }
};

/// A llama-server that loads for a moment and then answers.
QByteArray llamaScript(const std::string &others = {})
{
    return openAiScript(streamOf(token("Hello")),
                        R"("/health":[{"status":503,"body":"{}"},{"body":"{}"}],)"
                        R"("/props":[{"body":"{\"default_generation_settings\":{\"n_ctx\":3072}}"}],)"
                        R"("/tokenize":[{"body":"{\"tokens\":[1,2,3,4,5]}"}],)" +
                            others);
}

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

TEST(ServerProgram, TellsEachFailureOfAnEngineInOneSentence)
{
    const std::string refusal =
        R"({"status":400,"body":"{\"error\":{\"type\":\"exceed_context_size_error\",\"message\":\"long\"}}"})";
    const std::vector<std::pair<std::string, std::string>> failures{
        {"{\"steps\":[" + token("Half") + ",{\"close\":true}]}", "The engine ended in the middle of its answer."},
        {"{\"steps\":[" + token("Half") + R"(,{"event":{"error":{"message":"no memory"}}},{"hang":true}]})",
         "The engine reports a failure: no memory."},
        {R"({"status":500,"body":"{\"error\":{\"message\":\"broken\"}}"})", "The engine refused the question: broken."},
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

    EXPECT_THAT(tokensIn(answer), HasSubstr(">>>>>>> NOT USABLE"));
    EXPECT_THAT(tokensIn(answer), Not(HasSubstr(">>>>>>> REPLACE")));
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
    EXPECT_EQ(engine.requests(kChat).size(), 1) << "the chat still runs";
    files.write(u"release"_s, "now");

    EXPECT_EQ(digest.get().body, R"({"digest":"Short."})");
    EXPECT_EQ(tokensIn(chat.get()), "One");
}

TEST(LlamaServerProgram, IsStartedWithTheSettingsAndAKeyAndEndsWithTheServer)
{
    const LlamaFolder llama(llamaScript());
    RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask()), "Hello");

    const std::vector<std::string> arguments = llama.arguments();
    ASSERT_EQ(arguments.size(), 11U);
    EXPECT_THAT(std::vector<std::string>(arguments.begin(), arguments.begin() + 3),
                ElementsAre("--host", "127.0.0.1", "--port"));
    EXPECT_THAT(
        std::vector<std::string>(arguments.begin() + 4, arguments.end()),
        ElementsAre("--hf-repo", HasSubstr("Llama-3.2-3B"), "--ctx-size", "4096", "--threads", "4", "--no-webui"));
    const std::string key = llama.variable(u"LLAMA_API_KEY"_s);
    EXPECT_EQ(key.size(), 48U);
    EXPECT_THAT(llama.requests(kChat).constFirst().toStdString(), HasSubstr("Authorization: Bearer " + key + "\r\n"));
    EXPECT_EQ(llama.variable(u"LLAMA_CACHE"_s), llama.path(u"home/.cache/tessaline-local-ai"_s));
    EXPECT_EQ(llama.variable(u"LLAMA_ARG_HOST"_s), "");
    EXPECT_EQ(llama.process().value(u"parentDeathSignal"_s).toInt(), SIGKILL);
    EXPECT_THAT(server.ask(), HasSubstr(R"("context_window_tokens":3072,"estimated_input_tokens":21,)"));
    const auto engine = static_cast<long>(llama.processId());
    EXPECT_TRUE(isAlive(engine));

    EXPECT_EQ(server.end(), 0);

    EXPECT_FALSE(isAlive(engine));
}

TEST(LlamaServerProgram, TakesTheModelsFileWhereThereIsOne)
{
    const LlamaFolder llama(llamaScript());
    llama.files().makeFolder(u"home/.cache/tessaline-local-ai"_s);
    llama.files().write(u"home/.cache/tessaline-local-ai/llama-3.2-3b-q4.gguf"_s, "weights");
    const RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());

    EXPECT_THAT(llama.arguments(),
                testing::Contains(llama.path(u"home/.cache/tessaline-local-ai/llama-3.2-3b-q4.gguf"_s)));
    EXPECT_THAT(llama.arguments(), testing::Contains("--model"));
}

TEST(LlamaServerProgram, IsKilledWhenItDoesNotListenAndWhenTheServerIsKilled)
{
    QByteArray stubborn = llamaScript();
    stubborn.insert(1, "\"linger\":-1,");
    {
        const LlamaFolder llama(stubborn);
        RunningServer server(llama.variables());
        ASSERT_TRUE(server.becomesWell());
        const auto engine = static_cast<long>(llama.processId());
        EXPECT_EQ(server.end(), 0);
        EXPECT_FALSE(isAlive(engine));
    }
    const LlamaFolder llama(stubborn);
    RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());
    const auto engine = static_cast<long>(llama.processId());
    server.kill();
    EXPECT_TRUE(comesTrue([engine] { return !isAlive(engine); }));
}

TEST(LlamaServerProgram, TellsHowFarItsDownloadIs)
{
    QByteArray script = llamaScript();
    script.insert(1, R"("output":[{"text":"model  7%\r"},{"text":"model  3%\r"}],)");
    const TemporaryFiles files;
    script.replace(R"({"status":503,"body":"{}"},{"body":"{}"})",
                   R"({"body":"{}","until":")" + files.url(u"release"_s).path().toUtf8() + R"("})");
    const LlamaFolder llama(script);
    const RunningServer server(llama.variables());

    EXPECT_TRUE(server.waitForLine("Downloading llama-3.2-3b-q4: 7 %"));
    EXPECT_EQ(server.get("/health").status, 503);
    EXPECT_EQ(server.get("/health").body, R"({"percent":7,"status":"downloading"})");
    EXPECT_THAT(server.ask(), HasSubstr("The model is being downloaded (7 %). Ask again when it is there."));
    files.write(u"release"_s, "now");
    EXPECT_TRUE(server.becomesWell());
    EXPECT_TRUE(server.waitForLine("Ready with llama-3.2-3b-q4"));
    for (const std::string &line : server.lines())
        EXPECT_THAT(line, Not(HasSubstr("3 %")));
}

TEST(LlamaServerProgram, IsExplainedWhenItCannotBeStarted)
{
    const TemporaryFiles files{{u"llama-server"_s, "#!/bin/sh\necho 'error: no such model' >&2\nexit 7\n"}};
    const std::string folder = files.folder().path().toStdString();
    QFile::setPermissions(files.url(u"llama-server"_s).path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const RunningServer server({"PATH=" + folder, "HOME=" + folder});

    EXPECT_TRUE(server.becomesWell());
    EXPECT_THAT(server.ask(), HasSubstr("it ended with status 7 and said last: error: no such model."));
    EXPECT_EQ(server.post("/v1/suggest-context", R"({"content":"x"})").body, R"({"suggestions":[]})");
}

TEST(LlamaServerProgram, IsStartedAnewWhenItDies)
{
    const LlamaFolder llama(llamaScript());
    const RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());
    const auto first = static_cast<pid_t>(llama.processId());

    ASSERT_EQ(kill(first, SIGKILL), 0);

    EXPECT_TRUE(comesTrue([&] { return llama.processId() != first; }));
    EXPECT_TRUE(comesTrue([&] { return tokensIn(server.ask()) == "Hello"; }));
}

TEST(OllamaProgram, StreamsWithTheContextThatWasSet)
{
    const ScriptedServer ollama(
        R"({"replies":{"/api/tags":[{"body":"{\"models\":[{\"name\":\"llama3.2:3b\"}]}"}],"/api/chat":[{"steps":[
        {"text":"{\"message\":{\"content\":\"One \"},\"done\":false}\n"},
        {"text":"{\"message\":{\"content\":\"two\"},\"done\":false}\n{\"message\":{\"content\":\"\"},\"done\":true}\n"}]}]}})");
    const RunningServer server({ollamaOf(ollama), "TESSALINE_CONTEXT_TOKENS=4096"});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask()), "One two");

    EXPECT_THAT(server.lines().front(), StartsWith("Engine: Ollama at http://127.0.0.1:"));
    const std::string body = bodyOf(ollama.requests("/api/chat").constFirst()).toStdString();
    EXPECT_THAT(body, HasSubstr("\"num_ctx\":4096"));
    EXPECT_THAT(body, HasSubstr("\"model\":\"llama3.2:3b\""));
}

TEST(OllamaProgram, FetchesAModelThatItLacks)
{
    const TemporaryFiles files;
    const ScriptedServer ollama(R"({"replies":{"/api/tags":[{"body":"{\"models\":[]}"}],"/api/pull":[{"steps":[
        {"text":"{\"status\":\"pulling manifest\"}\n{\"status\":\"pulling\",\"digest\":\"a\",\"total\":100,\"completed\":40}\n"},
        {"until":")" + files.url(u"release"_s).path().toUtf8() +
                                R"("},
        {"text":"{\"status\":\"success\"}\n"}]}]}})");
    const RunningServer server({ollamaOf(ollama)});

    EXPECT_TRUE(comesTrue([&] { return server.get("/health").body == R"({"percent":40,"status":"downloading"})"; }));
    files.write(u"release"_s, "now");
    EXPECT_TRUE(server.becomesWell());
    EXPECT_TRUE(server.waitForLine("Ready with llama-3.2-3b-q4"));
}

TEST(OllamaProgram, TellsItsFailuresAndIsRefusedWhereAnotherMachineAnswers)
{
    const std::string tags = R"("/api/tags":[{"body":"{\"models\":[{\"name\":\"llama3.2:3b\"}]}"}])";
    const std::vector<std::pair<std::string, std::string>> failures{
        {tags + R"(,"/api/chat":[{"body":"{\"message\":{\"content\":\"Half\"}}\n{\"error\":\"out of memory\"}\n"}])",
         "Ollama reports a failure: out of memory."},
        {tags + R"(,"/api/chat":[{"body":"{\"message\":{\"content\":\"Half\"}}\n"}])",
         "Ollama ended in the middle of its answer."},
        {tags + R"(,"/api/chat":[{"status":404,"body":"{\"error\":\"no such model\"}"}])",
         "Ollama refused the question: no such model."},
        {tags + R"(,"/api/chat":[{"body":"{\"message\":{\"content\":\"Half\"},\"remote_host\":\"https://x\"}\n"}])",
         "Ollama would send what you write to another machine"},
        {R"("/api/tags":[{"body":"{\"models\":[{\"name\":\"llama3.2:3b\",\"remote_model\":\"x\"}]}"}])",
         "Ollama would send what you write to another machine"},
        {R"("/api/tags":[{"body":"{\"models\":[]}"}],"/api/pull":[{"body":"{\"error\":\"no space\"}\n"}])",
         "Ollama could not fetch the model llama3.2:3b: no space."},
    };
    for (const auto &[replies, sentence] : failures) {
        const ScriptedServer ollama(QByteArray::fromStdString("{\"replies\":{" + replies + "}}"));
        const RunningServer server({ollamaOf(ollama)});
        ASSERT_TRUE(server.becomesWell());

        EXPECT_THAT(server.ask(), HasSubstr("data: {\"error\":\"" + sentence)) << replies;
    }
}

} // namespace Tessaline::Server
