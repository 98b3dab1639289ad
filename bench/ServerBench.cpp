// What the assistant's server adds to an engine's own time, how soon it answers, and what it takes at rest.

#include "server/Assistant.h"
#include "server/EngineProcess.h"
#include "server/HttpClient.h"
#include "server/HttpServer.h"
#include "server/OpenAiTalk.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <semaphore>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace Tessaline::Server {

namespace {

/// Answers requests as long as it lives.
class RunningHttp
{
public:
    explicit RunningHttp(Routes routes)
    {
        m_server.bind(0);
        m_thread = std::thread([this, routes = std::move(routes)] { m_server.run(routes); });
    }
    ~RunningHttp()
    {
        m_server.stop();
        m_thread.join();
    }
    RunningHttp(const RunningHttp &) = delete;
    RunningHttp &operator=(const RunningHttp &) = delete;

    LoopbackAddress address() const { return {"127.0.0.1", m_server.port(), {}}; }

private:
    HttpServer m_server;
    std::thread m_thread;
};

/// An engine that takes no time: so many tokens, each written by itself.
Routes engineRoutes(int64_t tokens)
{
    Routes routes;
    routes.health = [] { return Reply{}; };
    routes.posts["/v1/chat/completions"] = [tokens](const std::string &, const std::stop_token &) {
        return EventStream([tokens](const EventWriter &write) {
            for (int64_t token = 0; token < tokens; ++token)
                write("data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":\" word\"}}]}\n\n");
            write("data: [DONE]\n\n");
        });
    };
    return routes;
}

/// As the engines that the server talks to, without a process.
class PeerEngine final : public Engine
{
public:
    explicit PeerEngine(LoopbackAddress address) : m_peer{std::move(address), {}, "model"} {}

    std::string name() const override { return "bench"; }
    EngineState state() const override { return {EngineState::Phase::Ready, -1, {}}; }
    std::optional<int> contextTokens() const override { return {}; }
    std::optional<int> countTokens(std::string_view, std::stop_token) override { return {}; }
    EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) override
    {
        return openAiGenerate(m_peer, request, std::move(stop), token);
    }

private:
    OpenAiPeer m_peer;
};

void askAll(benchmark::State &state, const LoopbackAddress &address)
{
    for (auto _ : state) {
        size_t bytes = 0;
        httpCall(address, {"/v1/chat/completions", R"({"prompt":"Hello"})", {}}, {}, [&bytes](std::string_view piece) {
            bytes += piece.size();
            return true;
        });
        benchmark::DoNotOptimize(bytes);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

/// An engine alone, and behind the server: the difference of the times for one token is what the server adds to the
/// first, that for 1000 divided by 1000 what it adds to each.
void askEngine(benchmark::State &state)
{
    const RunningHttp engine(engineRoutes(state.range(0)));
    askAll(state, engine.address());
}
BENCHMARK(askEngine)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

void askServer(benchmark::State &state)
{
    const RunningHttp http(engineRoutes(state.range(0)));
    PeerEngine engine(http.address());
    Assistant assistant(Settings{}, engine);
    const RunningHttp server(assistant.routes());
    askAll(state, server.address());
}
BENCHMARK(askServer)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The same with a document of so many bytes, of which the most is left out: what the server itself needs for it before
/// the engine is asked.
void askAboutDocument(benchmark::State &state)
{
    const RunningHttp http(engineRoutes(1));
    PeerEngine engine(http.address());
    Assistant assistant(Settings{}, engine);
    const RunningHttp server(assistant.routes());
    std::string body = R"({"prompt":"What is said about the lighthouse in line 77?","file_content":")";
    for (int line = 0; static_cast<int64_t>(body.size()) < state.range(0); ++line)
        body += "A line of prose, which goes on for a while, and is line " + std::to_string(line) + ".\\n";
    body += "\"}";
    for (auto _ : state)
        benchmark::DoNotOptimize(httpCall(server.address(), {"/v1/chat/completions", body, {}}, {}).body);
}
BENCHMARK(askAboutDocument)->RangeMultiplier(10)->Range(10000, 10000000)->Unit(benchmark::kMillisecond)->UseRealTime();

/// From the moment at which a client closes its connection to the moment at which the engine learns of it, through the
/// server.
void stopEngine(benchmark::State &state)
{
    std::binary_semaphore hasStopped(0);
    Routes routes;
    routes.health = [] { return Reply{}; };
    routes.posts["/v1/chat/completions"] = [&hasStopped](const std::string &, const std::stop_token &stop) {
        return EventStream([&hasStopped, stop](const EventWriter &write) {
            write("data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":\" word\"}}]}\n\n");
            std::binary_semaphore wake(0);
            const std::stop_callback callback(stop, [&wake] { wake.release(); });
            wake.acquire();
            hasStopped.release();
        });
    };
    const RunningHttp http(std::move(routes));
    PeerEngine engine(http.address());
    Assistant assistant(Settings{}, engine);
    const RunningHttp server(assistant.routes());
    for (auto _ : state) {
        std::chrono::steady_clock::time_point closed;
        httpCall(server.address(), {"/v1/chat/completions", R"({"prompt":"Hello"})", {}}, {},
                 [&closed](std::string_view piece) {
                     closed = std::chrono::steady_clock::now();
                     return piece.find("word") == std::string_view::npos;
                 });
        hasStopped.acquire();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - closed).count());
    }
}
BENCHMARK(stopEngine)->Unit(benchmark::kMillisecond)->UseManualTime();

/// From the start of the program to its first healthy answer where there is no engine, and what it takes in memory
/// then.
void startServer(benchmark::State &state)
{
    double kilobytes = 0;
    for (auto _ : state) {
        std::atomic<int> port = 0;
        const EngineCommand command{TESSALINE_SERVER,
                                    {"--port", "0"},
                                    {"HOME=/nonexistent", "PATH=/nonexistent", "OLLAMA_HOST=127.0.0.1:1"},
                                    [&port](std::string_view line) {
                                        if (const size_t colon = line.rfind(':'); colon != std::string_view::npos)
                                            port = std::atoi(std::string(line.substr(colon + 1)).c_str());
                                    }};
        std::string error;
        auto process = std::make_unique<EngineProcess>(command, error);
        while (port == 0 && error.empty() && !process->status())
            std::this_thread::yield();
        if (httpCall({"127.0.0.1", port, {}}, {"/health", {}, {}}, {}).status != 200)
            state.SkipWithError("The server is not well.");
        state.PauseTiming();
        std::ifstream file("/proc/" + std::to_string(process->processId()) + "/smaps_rollup");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with("Pss:"))
                kilobytes = std::atof(line.c_str() + 4);
        process.reset();
        state.ResumeTiming();
    }
    state.counters["memory_MB"] = kilobytes / 1000;
}
BENCHMARK(startServer)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace Tessaline::Server
