#include "tests/server/RunningServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <thread>

namespace Tessaline::Server {

namespace {

constexpr std::chrono::seconds kPatience(60); // only a failing test sees the end of it

} // namespace

RunningServer::RunningServer(std::vector<std::string> variables, std::vector<std::string> arguments)
{
    variables.insert(variables.begin(), {"HOME=/nonexistent", "PATH=/nonexistent", "OLLAMA_HOST=127.0.0.1:1"});
    // NOTE: of two variables of one name the first counts, so what the test gives is put behind and replaces.
    for (size_t index = variables.size(); index-- > 0;) {
        const std::string name = variables[index].substr(0, variables[index].find('=') + 1);
        for (size_t earlier = index; earlier-- > 0;)
            if (variables[earlier].starts_with(name)) {
                variables.erase(variables.begin() + static_cast<std::ptrdiff_t>(earlier));
                --index;
            }
    }
    for (const char *const name : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"})
        if (const char *const value = std::getenv(name))
            variables.push_back(std::string(name) + "=" + value);
    EngineCommand command{TESSALINE_SERVER, std::move(arguments), std::move(variables), [this](std::string_view line) {
                              const std::lock_guard guard(m_mutex);
                              m_lines.emplace_back(line);
                              m_changed.notify_all();
                          }};
    std::string error;
    m_process = std::make_unique<EngineProcess>(command, error);
    EXPECT_EQ(error, "");

    // It says where it listens, or ends.
    constexpr std::string_view kListening = "listening on 127.0.0.1:";
    comesTrue([&] {
        for (const std::string &line : lines())
            if (const size_t at = line.find(kListening); at != std::string::npos)
                m_port = std::atoi(line.c_str() + at + kListening.size());
        return m_port != 0 || m_process->status();
    });
}

RunningServer::~RunningServer()
{
    if (m_process->status())
        return;
    EXPECT_EQ(end(), 0);
    if (m_process->status() != 0)
        for (const std::string &line : lines())
            std::cerr << "tessaline-server: " << line << '\n';
}

long RunningServer::privateMemory() const
{
    std::ifstream file("/proc/" + std::to_string(m_process->processId()) + "/status");
    constexpr std::string_view kName = "RssAnon:";
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(kName))
            return std::atol(line.c_str() + kName.size());
    return -1;
}

std::vector<std::string> RunningServer::lines() const
{
    const std::lock_guard guard(m_mutex);
    return m_lines;
}

bool RunningServer::waitForLine(std::string_view part) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] {
        for (const std::string &line : m_lines)
            if (line.find(part) != std::string::npos)
                return true;
        return false;
    });
}

int RunningServer::status()
{
    if (!m_process->waitForEnd(kPatience))
        return -1;
    m_process->waitForLastLine();
    return *m_process->status();
}

int RunningServer::end()
{
    m_process->terminate();
    return status();
}

void RunningServer::kill()
{
    m_process->kill();
    status();
}

HttpOutcome RunningServer::get(const std::string &path) const
{
    return httpCall({"127.0.0.1", m_port, {}}, {path, {}, {}}, {});
}

HttpOutcome RunningServer::post(const std::string &path, const std::string &body) const
{
    return httpCall({"127.0.0.1", m_port, {}}, {path, body, {}}, {});
}

bool RunningServer::becomesWell() const
{
    return comesTrue([this] { return get("/health").status == 200; });
}

std::string RunningServer::ask(const std::string &body) const
{
    const HttpOutcome outcome = post("/v1/chat/completions", body);
    EXPECT_EQ(outcome.status, 200);
    return outcome.body;
}

void RunningServer::ask(std::stop_token stop, const std::function<bool(std::string_view)> &bytes) const
{
    httpCall({"127.0.0.1", m_port, {}}, {"/v1/chat/completions", R"({"prompt":"Hello"})", {}}, std::move(stop), bytes);
}

std::string tokensIn(const std::string &stream)
{
    constexpr std::string_view kPrefix = "data: {\"token\":\"";
    std::string tokens;
    for (size_t at = stream.find(kPrefix); at != std::string::npos; at = stream.find(kPrefix, at + 1)) {
        const size_t begin = at + kPrefix.size();
        tokens += stream.substr(begin, stream.find("\"}\n", begin) - begin);
    }
    return tokens;
}

bool comesTrue(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

bool isAlive(long process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    const std::string status(std::istreambuf_iterator<char>(file), {});
    return !status.empty() && status.find("\nState:\tZ") == std::string::npos;
}

} // namespace Tessaline::Server
