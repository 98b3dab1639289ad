#include "server/Assistant.h"
#include "server/EngineChoice.h"
#include "server/HttpServer.h"
#include "server/ProgressLines.h"
#include "server/Settings.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <latch>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <variant>
#include <vector>

namespace {

using namespace Tessaline::Server;

enum Status { kEnded = 0, kWrongSetting = 2, kPortTaken = 3 };

/// Writes a line, unless nobody takes it: whoever started this server may have stopped reading, and it must not stand
/// still for that.
void writeLine(int file, std::string line)
{
    constexpr int kPatience = 200;                            // ms
    line.resize(std::min<size_t>(line.size(), PIPE_BUF - 1)); // so much goes out at once
    const auto isControl = [](char sign) { return static_cast<unsigned char>(sign) < ' '; };
    std::replace_if(line.begin(), line.end(), isControl, ' '); // an engine's words stay within the line
    line += '\n';
    pollfd asked{file, POLLOUT, 0};
    if (poll(&asked, 1, kPatience) > 0 && (asked.revents & POLLOUT) != 0) [[maybe_unused]]
        const ssize_t written = write(file, line.data(), line.size());
}

void print(const std::string &line)
{
    writeLine(STDOUT_FILENO, line);
}

int complain(const std::string &sentence, Status status)
{
    writeLine(STDERR_FILENO, sentence);
    return status;
}

/// Takes the numbers 0 to 2 if nothing is there: otherwise a socket would get one, and the lines that are printed.
void openMissingStandardFiles()
{
    int file = 0;
    do
        file = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file != -1 && file <= STDERR_FILENO);
    if (file != -1)
        close(file);
}

/// Ends this process when that takes too long, whatever hangs: who started it waits for it. The system then ends the
/// engine.
void endAnyway(const std::stop_token &hasEnded)
{
    constexpr std::chrono::seconds kMostTime{4};
    std::mutex mutex;
    std::condition_variable_any woken;
    std::unique_lock lock(mutex);
    woken.wait_for(lock, hasEnded, kMostTime, [] { return false; });
    if (!hasEnded.stop_requested())
        _exit(kEnded);
}

std::string ownFolder()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string(".") : self.parent_path().string();
}

/// Memory goes back to the system as soon as it is free. A request may hold a document of many megabytes, and the
/// library would keep as much, for each thread that ever answered one.
void keepNoMemory()
{
    constexpr int kLargestKept = 64 * 1024; // bytes; larger pieces are the system's own
    constexpr int kMostAtTheEnd = 128 * 1024;
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, kLargestKept);
    mallopt(M_TRIM_THRESHOLD, kMostAtTheEnd);
}

} // namespace

int main(int argc, char **argv)
{
    openMissingStandardFiles();

    // 1. What is wanted.
    keepNoMemory();
    const auto parsed = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (const std::string *const sentence = std::get_if<std::string>(&parsed))
        return complain(*sentence, kWrongSetting);
    const CommandLine &line = std::get<CommandLine>(parsed);
    if (line.wish == CommandLine::Wish::ShowHelp) {
        std::fputs(helpText().c_str(), stdout);
        return kEnded;
    }
    if (line.wish == CommandLine::Wish::ShowVersion) {
        print("tessaline-server " TESSALINE_VERSION);
        return kEnded;
    }
    if (line.engineUrl)
        setenv("TESSALINE_ENGINE_URL", line.engineUrl->c_str(), 1);
    const auto made = settingsFromEnvironment(ownVariable, ownFolder());
    if (const std::string *const sentence = std::get_if<std::string>(&made))
        return complain(*sentence, kWrongSetting);
    Settings settings = std::get<Settings>(made);
    settings.port = line.port.value_or(settings.port);

    // 2. Signals are waited for by one thread and interrupt no other.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    // 3. The port comes first: nothing is started by a server that cannot be reached. Who connects in these first
    // milliseconds waits until there is an engine to ask.
    HttpServer server;
    if (!server.bind(settings.port))
        return complain("Port " + std::to_string(settings.port) + " of 127.0.0.1 is taken by another program.",
                        kPortTaken);
    std::latch isAskedToEnd(1);
    const std::jthread signals([&ends, &isAskedToEnd](const std::stop_token &hasEnded) {
        int signal = 0;
        sigwait(&ends, &signal);
        isAskedToEnd.count_down();
        endAnyway(hasEnded);
    });

    // 4. The engine.
    ProgressLines progress(settings.modelId, print);
    const std::unique_ptr<Engine> engine =
        chooseEngine(settings, [&progress](const EngineState &state) { progress.note(state); });
    print("Engine: " + engine->name() + "; model: " + settings.modelId +
          "; listening on 127.0.0.1:" + std::to_string(server.port()));
    engine->begin();
    Assistant assistant(settings, *engine);
    std::thread answering([&] { server.run(assistant.routes()); });

    // 5. The end: the engine first, so that it is gone whatever clients still do.
    isAskedToEnd.wait();
    engine->end();
    server.stop();
    answering.join();
    return kEnded;
}
