#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Tessaline::Server {

/// A variable of the environment; absent if it is not set.
using Variables = std::optional<std::string> (*)(const char *name);

/// This process's own environment.
std::optional<std::string> ownVariable(const char *name);

/// A program on this machine that speaks HTTP.
struct LoopbackAddress {
    std::string host = "127.0.0.1"; // or "localhost" or "::1"
    int port = 0;
    std::string path; // in front of every path; without a slash at its end
    friend bool operator==(const LoopbackAddress &, const LoopbackAddress &) = default;
};

/// The address that a URL such as "http://127.0.0.1:8080/base" names; the scheme may be missing. Absent if it is none,
/// or if it names another machine: nothing is ever sent there.
std::optional<LoopbackAddress> loopbackAddress(std::string_view url, int defaultPort);

/// What the server is told by its environment and its command line.
struct Settings {
    static constexpr int kPort = 23949; // the application asks here and nowhere else

    int port = kPort; // 0: any free one
    std::string modelId = "llama-3.2-3b-q4";
    int contextTokens = 8192;
    int threads = 4;
    std::optional<LoopbackAddress> engine;          // TESSALINE_ENGINE_URL
    LoopbackAddress ollama{"127.0.0.1", 11434, {}}; // OLLAMA_HOST, where that is on this machine
    std::string modelFolder;                        // ~/.cache/tessaline-local-ai
    std::vector<std::string> programFolders;        // where engines are looked for: beside the server, then the path
    friend bool operator==(const Settings &, const Settings &) = default;
};

/// The settings that the environment makes. What is missing or malformed has its default: a number out of its range
/// (context 2048 to 1048576, threads 1 to 256), a model's name with other signs than letters, digits and ._-:/. A URL
/// of an engine elsewhere is a failure, told in one sentence.
std::variant<Settings, std::string> settingsFromEnvironment(Variables variable, const std::string &ownFolder);

/// What the command line asks for.
struct CommandLine {
    enum class Wish { Serve, ShowHelp, ShowVersion };
    Wish wish = Wish::Serve;
    std::optional<int> port;
    std::optional<std::string> engineUrl;
    friend bool operator==(const CommandLine &, const CommandLine &) = default;
};

/// The arguments behind the program's name: `--help`, `--version`, `--port N`, `--engine-url URL` (also with `=`).
/// Anything else is a failure, told in one sentence.
std::variant<CommandLine, std::string> parseCommandLine(const std::vector<std::string> &arguments);

/// What `--help` prints.
std::string helpText();

} // namespace Tessaline::Server
