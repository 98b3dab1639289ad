#include "tests/server/EngineScripts.h"
#include "tests/server/RunningServer.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <string>
#include <string_view>
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

TEST(LlamaServerProgram, ShowsByTheGrowthOfTheModelsFolderHowFarItsDownloadIs)
{
    const TemporaryFiles files;
    const LlamaFolder llama(openAiScript(streamOf(token("Hello")), R"("/health":[{"body":"{}","until":")" +
                                                                       files.url(u"release"_s).path().toStdString() +
                                                                       R"("}],)"));
    const QString folder = u"home/.cache/tessaline-local-ai"_s;
    llama.files().makeFolder(folder);
    llama.files().write(folder + u"/another.gguf"_s, "weights");
    const RunningServer server(llama.variables());
    EXPECT_TRUE(comesTrue([&] { return server.get("/health").body == R"({"status":"loading"})"; }));
    EXPECT_TRUE(comesTrue([&] { return !llama.requests("/health").isEmpty(); })) << "the folder has been looked at";

    // As large as a quarter of the model, and empty.
    QFile part(llama.files().url(folder + u"/model.gguf.part"_s).path());
    ASSERT_TRUE(part.open(QFile::WriteOnly));
    ASSERT_TRUE(part.resize(2'019'377'696 / 4));

    EXPECT_TRUE(server.waitForLine("Downloading llama-3.2-3b-q4: 25 %"));
    EXPECT_EQ(server.get("/health").body, R"({"percent":25,"status":"downloading"})");
    files.write(u"release"_s, "now");
    EXPECT_TRUE(server.becomesWell());
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

TEST(LlamaServerProgram, IsStartedOnAnotherPortWhenItsPortIsRefused)
{
    const LlamaFolder llama(llamaScript());
    llama.wrap("if [ ! -e $folder/refused ]; then echo \"$4\" > $folder/refused; echo \"cannot bind $4\"; exit 1; fi\n"
               "exec $engine \"$@\"\n");
    const RunningServer server(llama.variables());

    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask()), "Hello");
    EXPECT_NE(llama.files().read(u"refused"_s).trimmed().toStdString(), llama.arguments().at(3));
}

TEST(LlamaServerProgram, TellsThatItDiedInTheMiddleOfAnAnswerAndIsStartedAnew)
{
    const LlamaFolder llama(llamaScript("{\"steps\":[" + token("Half") + ",{\"kill\":9}]}"));
    const RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());
    const qint64 first = llama.processId();

    const std::string answer = server.ask();

    EXPECT_EQ(tokensIn(answer), "Half");
    EXPECT_THAT(answer, HasSubstr("{\"error\":\"The engine ended in the middle of its answer.\"}\n\ndata: [DONE]\n\n"));
    EXPECT_TRUE(comesTrue([&] { return llama.processId() != first && server.get("/health").status == 200; }));
}

TEST(LlamaServerProgram, IsAskedAgainWithLessWhenItFindsThePromptTooLong)
{
    const LlamaFolder llama(llamaScript(
        R"({"status":400,"body":"{\"error\":{\"type\":\"exceed_context_size_error\"}}"},)" + streamOf(token("Yes"))));
    const RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());

    EXPECT_EQ(tokensIn(server.ask(R"({"prompt":"x","file_content":")" + std::string(60000, 'y') + "\"}")), "Yes");

    const QList<QByteArray> chats = llama.requests(kChat);
    ASSERT_EQ(chats.size(), 2);
    EXPECT_LT(chats[1].size(), chats[0].size());
}

TEST(LlamaServerProgram, IsUsedWhateverGarbageItWritesBesideItsAnswers)
{
    QByteArray script = openAiScript(
        streamOf(R"({"text":"garbage\n"},)" + token("Hello")),
        R"("/health":[{"body":"<html>"}],"/props":[{"body":"[[["}],"/tokenize":[{"body":"{\"tokens\":7}"}],)");
    script.insert(1, R"("output":[{"hex":"ff00fe0a0d0d0a25250a"},{"text":"100000000000 % of % \n"}],)");
    const LlamaFolder llama(script);
    const RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());

    const std::string answer = server.ask();

    EXPECT_EQ(tokensIn(answer), "Hello");
    EXPECT_THAT(answer, HasSubstr("\"context_window_tokens\":4096,")) << "as it was told, since it does not say";
    EXPECT_THAT(server.lines(), testing::Each(Not(HasSubstr("%"))));
}

TEST(LlamaServerProgram, IsEndedWithItsServerAlsoWhereAScriptStartedIt)
{
    QByteArray stubborn = llamaScript();
    stubborn.insert(1, "\"linger\":-1,");
    const LlamaFolder llama(stubborn);
    llama.wrap("$engine \"$@\"\nexit $?\n");
    RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());
    const auto engine = static_cast<long>(llama.processId());
    EXPECT_TRUE(isAlive(engine));

    EXPECT_EQ(server.end(), 0);

    EXPECT_TRUE(comesTrue([engine] { return !isAlive(engine); }));
}

TEST(LlamaServerProgram, EndsInTheMiddleOfAnAnswerWhenItsServerIsAskedToEnd)
{
    const LlamaFolder llama(llamaScript(streamOf(token("One") + ",{\"hang\":true}")));
    RunningServer server(llama.variables());
    ASSERT_TRUE(server.becomesWell());
    std::promise<void> streams;
    std::string seen;
    auto asking = std::async(std::launch::async, [&] {
        server.ask({}, [&](std::string_view bytes) {
            if (seen.find("One") == std::string::npos && (seen += bytes).find("One") != std::string::npos)
                streams.set_value();
            return true;
        });
    });
    streams.get_future().wait();
    const auto engine = static_cast<long>(llama.processId());

    EXPECT_EQ(server.end(), 0);

    EXPECT_FALSE(isAlive(engine));
    asking.get(); // the connection is closed
}

TEST(LlamaServerProgram, SaysHowFarTheLoadOfTheModelsFileIs)
{
    const TemporaryFiles files;
    QByteArray script =
        openAiScript(streamOf(token("Hello")),
                     R"("/health":[{"body":"{}","until":")" + files.url(u"release"_s).path().toStdString() + R"("}],)");
    script.insert(1, R"("output":[{"text":"loading 30 %\n"}],)");
    const LlamaFolder llama(script);
    llama.files().makeFolder(u"home/.cache/tessaline-local-ai"_s);
    llama.files().write(u"home/.cache/tessaline-local-ai/llama-3.2-3b-q4.gguf"_s, "weights");
    const RunningServer server(llama.variables());

    EXPECT_TRUE(server.waitForLine("Loading llama-3.2-3b-q4"));
    EXPECT_TRUE(comesTrue([&] { return server.get("/health").body == R"({"percent":30,"status":"loading"})"; }));
    files.write(u"release"_s, "now");
    EXPECT_TRUE(server.becomesWell());
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

TEST(OllamaProgram, IsPatientlyReadThroughALoadSlowTokensAndGarbage)
{
    const TemporaryFiles files;
    const std::string release = files.url(u"release"_s).path().toStdString();
    const std::string loaded = files.url(u"loaded"_s).path().toStdString();
    const ScriptedServer ollama(QByteArray::fromStdString(
        R"({"replies":{"/api/tags":[{"body":"{\"models\":[{\"name\":\"llama3.2:3b\"}]}"}],"/api/chat":[{"until":")" +
        loaded +
        R"(","steps":[{"hex":"00ff0a"},{"text":"[]\n{\n\n"},{"text":"{\"message\":{\"content\":\"One\"}}\n"},{"until":")" +
        release +
        R"("},{"text":"{\"message\":7,\"done\":\"no\"}\n{\"message\":{\"content\":\"two\"},\"done\":true}\n"}]}]}})"));
    const RunningServer server({ollamaOf(ollama)});
    ASSERT_TRUE(server.becomesWell());
    std::string seen;

    server.ask({}, [&](std::string_view bytes) {
        seen += bytes;
        files.write(u"loaded"_s, "now"); // what is used has come while the engine still loads
        if (tokensIn(seen) == "One")
            files.write(u"release"_s, "now");
        return true;
    });

    EXPECT_THAT(seen, StartsWith("data: {\"context\":{"));
    EXPECT_EQ(tokensIn(seen), "Onetwo");
    EXPECT_TRUE(seen.ends_with("data: [DONE]\n\n"));
}

TEST(OllamaProgram, IsMissedWhenItHasGone)
{
    ScriptedServer ollama(R"({"replies":{"/api/tags":[{"body":"{\"models\":[{\"name\":\"llama3.2:3b\"}]}"}],
        "/api/chat":[{"steps":[{"text":"{\"message\":{\"content\":\"Half\"}}\n"},{"kill":9}]}]}})");
    const RunningServer server({ollamaOf(ollama)});
    ASSERT_TRUE(server.becomesWell());

    const std::string half = server.ask();
    EXPECT_EQ(tokensIn(half), "Half");
    EXPECT_THAT(half, HasSubstr("Ollama ended in the middle of its answer."));
    EXPECT_THAT(server.ask(), HasSubstr("Ollama does not answer."));
    EXPECT_TRUE(comesTrue([&server] { return server.get("/health").status == 503; }));
    EXPECT_THAT(server.ask(), HasSubstr("There is no answer from Ollama at http://127.0.0.1:"));
}

TEST(OllamaProgram, IsRefusedWhenWhatItFetchedWouldBeAnsweredElsewhere)
{
    const ScriptedServer ollama(R"({"replies":{"/api/tags":[{"body":"{\"models\":[]}"},{"body":"{\"models\":[]}"},
        {"body":"{\"models\":[{\"name\":\"llama3.2:3b\",\"remote_host\":\"https://x\"}]}"}],
        "/api/pull":[{"body":"{\"status\":\"success\"}\n"}]}})");
    const RunningServer server({ollamaOf(ollama)});
    ASSERT_TRUE(server.becomesWell());

    EXPECT_THAT(server.ask(), HasSubstr("Ollama would send what you write to another machine"));
    EXPECT_TRUE(ollama.requests("/api/chat").isEmpty());
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
