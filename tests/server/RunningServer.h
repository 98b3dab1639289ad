#pragma once

#include "server/EngineProcess.h"
#include "server/HttpClient.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

/// The program itself, on a free port, with the environment that a test gives it and nothing else of this process's. It
/// ends with this object.
class RunningServer
{
public:
    /// `variables` are NAME=value. Returns when it listens, or has ended. Without OLLAMA_HOST there is no Ollama.
    explicit RunningServer(std::vector<std::string> variables, std::vector<std::string> arguments = {"--port", "0"});
    ~RunningServer(); // expects that it ends well, unless it has ended

    int port() const { return m_port; } // 0 if it does not listen
    long privateMemory() const;         // KiB, without files
    std::vector<std::string> lines() const;
    bool waitForLine(std::string_view part) const; // at most a minute
    /// The exit status; waits for the end, at most a minute, and is -1 then.
    int status();

    HttpOutcome get(const std::string &path) const;
    HttpOutcome post(const std::string &path, const std::string &body) const;
    /// Waits until the server is well; false if that takes a minute.
    bool becomesWell() const;
    /// The whole stream of events.
    std::string ask(const std::string &body = R"({"prompt":"Hello"})") const;
    /// Hands the stream over as it comes, until `bytes` answers false or the stop comes.
    void ask(std::stop_token stop, const std::function<bool(std::string_view)> &bytes) const;

    int end(); // by SIGTERM; returns its status when it has gone
    void kill();

private:
    mutable std::mutex m_mutex; // guards what follows
    mutable std::condition_variable m_changed;
    std::vector<std::string> m_lines;
    int m_port = 0;
    std::unique_ptr<EngineProcess> m_process; // last: its lines come until it has gone
};

/// All texts of the token events of a stream, joined.
std::string tokensIn(const std::string &stream);

/// Whether `condition()` comes to hold within a minute.
bool comesTrue(const std::function<bool()> &condition);

/// Whether there is a process of this number that has not ended.
bool isAlive(long process);

} // namespace Tessaline::Server
