#include "server/Assistant.h"
#include "server/EngineChoice.h"
#include "server/HttpServer.h"
#include "server/ProgressLines.h"
#include "server/Settings.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <variant>
#include <vector>

namespace {

using namespace Tessaline::Server;

enum Status { kEnded = 0, kWrongSetting = 2, kPortTaken = 3 };

void print(const std::string &line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

int complain(const std::string &sentence, Status status)
{
    std::fputs((sentence + "\n").c_str(), stderr);
    return status;
}

std::string ownFolder()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string(".") : self.parent_path().string();
}

} // namespace

int main(int argc, char **argv)
{
    // 1. What is wanted.
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

    // 2. Signals are waited for by this thread and interrupt no other.
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
    ProgressLines progress(settings.modelId, print);
    const std::unique_ptr<Engine> engine =
        chooseEngine(settings, [&progress](const EngineState &state) { progress.note(state); });
    print("Engine: " + engine->name() + "; model: " + settings.modelId +
          "; listening on 127.0.0.1:" + std::to_string(server.port()));
    engine->begin();
    Assistant assistant(settings, *engine);
    std::thread answering([&] { server.run(assistant.routes()); });

    // 4. The end: the engine first, so that it is gone whatever clients still do.
    int signal = 0;
    sigwait(&ends, &signal);
    engine->end();
    server.stop();
    answering.join();
    return kEnded;
}
