#include "server/Settings.h"
#include "server/LlamaServerEngine.h"
#include "server/ModelNames.h"
#include "server/NoEngine.h"
#include "server/ProgressLines.h"
#include "server/RequestGate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace Tessaline::Server {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::map<std::string, std::string> s_variables;

std::optional<std::string> scriptedVariable(const char *name)
{
    const auto found = s_variables.find(name);
    return found == s_variables.end() ? std::nullopt : std::optional(found->second);
}

std::variant<Settings, std::string> settingsWith(std::map<std::string, std::string> variables)
{
    s_variables = std::move(variables);
    return settingsFromEnvironment(scriptedVariable, "/opt/tessaline");
}

Settings soundSettings(std::map<std::string, std::string> variables)
{
    const auto settings = settingsWith(std::move(variables));
    EXPECT_TRUE(std::holds_alternative<Settings>(settings));
    return std::get<Settings>(settings);
}

/// How a request is refused by a server on its own port; 0 if it is not.
int statusOf(const RequestHead &head)
{
    const std::optional<Refusal> refused = refusal(head, 23949, 1000);
    return refused ? refused->status : 0;
}

} // namespace

TEST(ServerSettings, AreWhatTheApplicationSays)
{
    const Settings settings = soundSettings({{"TESSALINE_MODEL_ID", "qwen-2.5-14b-q4"},
                                             {"TESSALINE_CONTEXT_TOKENS", "32768"},
                                             {"TESSALINE_THREADS", "8"},
                                             {"RAYON_NUM_THREADS", "4"},
                                             {"OMP_NUM_THREADS", "4"},
                                             {"HOME", "/home/writer"},
                                             {"PATH", "/usr/bin:relative::/bin"}});

    EXPECT_EQ(settings.port, 23949);
    EXPECT_EQ(settings.modelId, "qwen-2.5-14b-q4");
    EXPECT_EQ(settings.contextTokens, 32768);
    EXPECT_EQ(settings.threads, 8);
    EXPECT_EQ(settings.engine, std::nullopt);
    EXPECT_EQ(settings.ollama, (LoopbackAddress{"127.0.0.1", 11434, ""}));
    EXPECT_EQ(settings.modelFolder, "/home/writer/.cache/tessaline-local-ai");
    EXPECT_THAT(settings.programFolders, ElementsAre("/opt/tessaline", "/usr/bin", "/bin"));
}

TEST(ServerSettings, HaveDefaultsForWhatIsMissingOrMalformed)
{
    for (const char *bad : {"", "x", "12x", " 8192", "-1", "0", "99999999999999999999"}) {
        const Settings settings = soundSettings({{"TESSALINE_CONTEXT_TOKENS", bad}, {"TESSALINE_THREADS", bad}});
        EXPECT_EQ(settings.contextTokens, 8192) << bad;
        EXPECT_EQ(settings.threads, 4) << bad;
    }
    for (const char *bad : {"", "a b", "a\nb", "../a", "a/../b", "/etc/passwd", "--help", "a\"b", "a\x7F", "ü"})
        EXPECT_EQ(soundSettings({{"TESSALINE_MODEL_ID", bad}}).modelId, "llama-3.2-3b-q4") << bad;
    EXPECT_EQ(soundSettings({{"TESSALINE_MODEL_ID", std::string(100'000, 'x')}}).modelId, "llama-3.2-3b-q4");
    EXPECT_EQ(soundSettings({{"TESSALINE_MODEL_ID", "hf.co/owner/Name-1.5:Q4_K_M"}}).modelId,
              "hf.co/owner/Name-1.5:Q4_K_M");
    for (const std::map<std::string, std::string> &home :
         std::vector<std::map<std::string, std::string>>{{}, {{"HOME", ""}}, {{"HOME", "relative"}}})
        EXPECT_THAT(soundSettings(home).modelFolder, testing::MatchesRegex("(/.*)?/\\.cache/tessaline-local-ai"));
    EXPECT_EQ(soundSettings({{"OMP_NUM_THREADS", "6"}, {"RAYON_NUM_THREADS", "5"}}).threads, 6);
    EXPECT_EQ(soundSettings({{"RAYON_NUM_THREADS", "5"}}).threads, 5);
}

TEST(ServerSettings, RefuseAnEngineOnAnotherMachine)
{
    for (const char *url : {"http://example.org",
                            "http://192.168.0.1:80",
                            "https://127.0.0.1",
                            "http://127.0.0.1.example.org",
                            "http://user@127.0.0.1",
                            "http://127.0.0.1@example.org",
                            "http://[::2]:80",
                            "http://[::1",
                            "http://127.0.0.1:0",
                            "http://127.0.0.1:65536",
                            "http://127.0.0.1:x",
                            "ftp://localhost",
                            "http://localhost@example.org",
                            "http://localhost.example.org",
                            "http://0x7f.1",
                            "http://2130706433",
                            "http://127.1",
                            "http://0.0.0.0",
                            "http://[::ffff:127.0.0.1]",
                            "http://127.0.0.1:80:80",
                            "http://127.0.0.1:+80",
                            "http://127.0.0.1:",
                            "http://127.0.0.1\\@example.org",
                            "http://127.0.0.1#@example.org",
                            "http://127.0.0.1/?a",
                            "http://127.0.0.1/ a",
                            "http://127.0.0.1/ HTTP/1.1\r\nA: b",
                            "http://127.0.0.1\t",
                            "http://",
                            "//127.0.0.1"}) {
        const auto settings = settingsWith({{"TESSALINE_ENGINE_URL", url}});
        ASSERT_TRUE(std::holds_alternative<std::string>(settings)) << url;
        EXPECT_THAT(std::get<std::string>(settings), HasSubstr("is not one of this machine")) << url;
    }
    EXPECT_EQ(soundSettings({{"OLLAMA_HOST", "0.0.0.0"}}).ollama, (LoopbackAddress{"127.0.0.1", 11434, ""}));
}

TEST(ServerSettings, TakeEveryFormOfAnAddressOfThisMachine)
{
    EXPECT_EQ(loopbackAddress("http://127.0.0.1:8080/base/", 80), (LoopbackAddress{"127.0.0.1", 8080, "/base"}));
    EXPECT_EQ(loopbackAddress("localhost", 80), (LoopbackAddress{"localhost", 80, ""}));
    EXPECT_EQ(loopbackAddress("http://[::1]:9", 80), (LoopbackAddress{"::1", 9, ""}));
    EXPECT_EQ(soundSettings({{"OLLAMA_HOST", "127.0.0.1:99"}}).ollama, (LoopbackAddress{"127.0.0.1", 99, ""}));
}

TEST(ServerCommandLine, TakesItsFourArguments)
{
    EXPECT_EQ(std::get<CommandLine>(parseCommandLine({})), CommandLine{});
    EXPECT_EQ(std::get<CommandLine>(parseCommandLine({"--port", "0", "--engine-url=http://127.0.0.1:1"})),
              (CommandLine{CommandLine::Wish::Serve, 0, "http://127.0.0.1:1"}));
    EXPECT_EQ(std::get<CommandLine>(parseCommandLine({"--help"})).wish, CommandLine::Wish::ShowHelp);
    EXPECT_EQ(std::get<CommandLine>(parseCommandLine({"--version"})).wish, CommandLine::Wish::ShowVersion);
    for (const std::vector<std::string> &bad :
         std::vector<std::vector<std::string>>{{"--port"},
                                               {"--port", "x"},
                                               {"--port=65536"},
                                               {"--engine-url", "http://example.org"},
                                               {"--engine-url"},
                                               {"serve"},
                                               {""}})
        EXPECT_TRUE(std::holds_alternative<std::string>(parseCommandLine(bad))) << bad.front();
}

TEST(RequestGate, LetsInWhoUsesTheServersOwnNameAndIsNoWebPage)
{
    for (const char *host : {"127.0.0.1:23949", "localhost:23949"})
        EXPECT_EQ(statusOf({"GET", "/health", {{"Host", host}}}), 0) << host;
    EXPECT_EQ(statusOf({"GET", "/health", {{"host", "localhost:23949"}, {"Sec-Fetch-Site", "none"}}}), 0) << "by hand";

    for (const char *host :
         {"", "127.0.0.1", "127.0.0.1:80", "localhost", "LOCALHOST:23949", "localhost.:23949", "evil.example:23949",
          "127.0.0.1:23949.evil.example", "user@127.0.0.1:23949", "[::1]:23949", "0.0.0.0:23949", "127.0.0.1:239490"})
        EXPECT_EQ(statusOf({"GET", "/health", {{"Host", host}}}), 403) << host;
    EXPECT_EQ(statusOf({"GET", "/health", {}}), 403);
    EXPECT_EQ(statusOf({"GET", "/health", {{"Host", "localhost:23949"}, {"host", "localhost:23949"}}}), 403);
    for (const char *name : {"Origin", "origin", "ORIGIN"})
        EXPECT_EQ(statusOf({"GET", "/health", {{"Host", "localhost:23949"}, {name, ""}}}), 403) << name;
    for (const char *site : {"", "cross-site", "same-site", "same-origin"})
        EXPECT_EQ(statusOf({"GET", "/health", {{"Host", "localhost:23949"}, {"sec-fetch-site", site}}}), 403) << site;
}

TEST(RequestGate, ReadsHeadsThatCanBeReadInOneWayOnly)
{
    const auto head = parseHead("POST /a?b HTTP/1.1\r\nHost:x\r\nEmpty:\r\nX-A: \t b c \t\r\n\r\n");
    ASSERT_TRUE(head);
    EXPECT_EQ(head->method, "POST");
    EXPECT_EQ(head->target, "/a?b");
    EXPECT_THAT(head->headers, ElementsAre(std::pair<std::string_view, std::string_view>("Host", "x"),
                                           std::pair<std::string_view, std::string_view>("Empty", ""),
                                           std::pair<std::string_view, std::string_view>("X-A", "b c")));

    using namespace std::string_view_literals;
    for (const std::string_view bad :
         {""sv, "\r\n"sv, "\r\n\r\n"sv, "GET / HTTP/1.1\r\n"sv, "GET / HTTP/1.1\n\n"sv, "GET /\r\n\r\n"sv,
          "GET HTTP/1.1\r\n\r\n"sv, "GET  / HTTP/1.1\r\n\r\n"sv, "GET / / HTTP/1.1\r\n\r\n"sv,
          "GET / HTTP/2.0\r\n\r\n"sv, " GET / HTTP/1.1\r\n\r\n"sv, "GET / HTTP/1.1\r\nHost\r\n\r\n"sv,
          "GET / HTTP/1.1\r\nHost : x\r\n\r\n"sv, "GET / HTTP/1.1\r\n: x\r\n\r\n"sv,
          "GET / HTTP/1.1\r\nA: b\r\n c\r\n\r\n"sv, "GET / HTTP/1.1\r\nA: b\nOrigin: c\r\n\r\n"sv,
          "GET / HTTP/1.1\r\nA: b\0\r\n\r\n"sv, "GET / HTTP/1.1\r\nA: b\r\n\r\nmore"sv})
        EXPECT_FALSE(parseHead(bad)) << bad;
}

TEST(LlamaServer, IsStartedOnLoopbackWithTheSettingsAndWithoutItsPage)
{
    Settings settings;
    settings.contextTokens = 16384;
    settings.threads = 6;

    EXPECT_THAT(llamaArguments(settings, {"--model", "/m.gguf"}, 4711),
                ElementsAre("--host", "127.0.0.1", "--port", "4711", "--model", "/m.gguf", "--ctx-size", "16384",
                            "--threads", "6", "--no-webui"));
}

TEST(LlamaServer, InheritsNoOptionAndGetsItsKeyByTheEnvironment)
{
    Settings settings;
    settings.modelFolder = "/home/writer/.cache/tessaline-local-ai";

    EXPECT_THAT(
        llamaEnvironment({"HOME=/home/writer", "LLAMA_ARG_TOOLS=all", "LLAMA_ARG_HOST=0.0.0.0", "LLAMA_API_KEY=old",
                          "LLAMA_CACHE=/elsewhere", "TESSALINE_ENGINE_URL=http://127.0.0.1"},
                         settings, "secret"),
        ElementsAre("HOME=/home/writer", "LLAMA_CACHE=/home/writer/.cache/tessaline-local-ai", "LLAMA_API_KEY=secret"));
}

TEST(LlamaServer, TellsItsProgressByThePercentagesOfItsOutput)
{
    EXPECT_EQ(percentageIn("  42%"), 42);
    EXPECT_EQ(percentageIn("model.gguf [====>    ] 42.9 % of 2.0 GB"), 42);
    EXPECT_EQ(percentageIn("10% 20%"), 20);
    EXPECT_EQ(percentageIn("100%"), 100);
    for (const char *none : {"", "%", "loading", "x%", "101%", "99999999999999999999%"})
        EXPECT_EQ(percentageIn(none), std::nullopt) << none;
}

TEST(ModelNames, AreKnownForEachModelOfTheApplicationOnly)
{
    for (const char *id : {"llama-3.2-3b-q4", "llama-3.1-8b-q4", "qwen-2.5-14b-q4"}) {
        ASSERT_TRUE(modelNames(id)) << id;
        EXPECT_FALSE(modelNames(id)->repository.empty() || modelNames(id)->ollama.empty()) << id;
    }
    EXPECT_FALSE(modelNames("something-else"));
}

TEST(ProgressLines, ComeAtMostOnceASecondAndNeverGoBack)
{
    std::vector<std::string> lines;
    std::chrono::steady_clock::time_point now;
    ProgressLines progress(
        "m", [&](const std::string &line) { lines.push_back(line); }, [&] { return now; });
    const auto note = [&](EngineState::Phase phase, int percent, int milliseconds) {
        now += std::chrono::milliseconds(milliseconds);
        progress.note({phase, percent, {}});
    };

    note(EngineState::Phase::Loading, -1, 0);
    note(EngineState::Phase::Downloading, 1, 10);
    note(EngineState::Phase::Downloading, 2, 500);
    note(EngineState::Phase::Downloading, 3, 600);
    note(EngineState::Phase::Downloading, 2, 2000);
    note(EngineState::Phase::Downloading, 3, 2000);
    note(EngineState::Phase::Ready, -1, 10);

    EXPECT_THAT(lines, ElementsAre("Loading m", "Downloading m: 1 %", "Downloading m: 3 %", "Ready with m"));
}

TEST(NoEngine, SaysWhichTwoCanBeInstalledAndWhereModelsGo)
{
    Settings settings;
    settings.modelFolder = "/home/writer/.cache/tessaline-local-ai";
    settings.programFolders = {"/opt/tessaline"};

    const std::string sentences = sentencesWithoutEngine(settings);

    EXPECT_THAT(sentences, HasSubstr("No local engine was found"));
    EXPECT_THAT(sentences, HasSubstr("llama-server on the path or into /opt/tessaline"));
    EXPECT_THAT(sentences, HasSubstr("/home/writer/.cache/tessaline-local-ai/llama-3.2-3b-q4.gguf"));
    EXPECT_THAT(sentences, HasSubstr("ollama pull llama3.2:3b"));
    EXPECT_THAT(sentences, Not(HasSubstr("\n")));
}

} // namespace Tessaline::Server
