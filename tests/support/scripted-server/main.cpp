#include "Connection.h"
#include "Recorder.h"
#include "Script.h"

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace Scripted;

namespace {

Script readScript()
{
    const char *path = std::getenv("SCRIPTED_SERVER_SCRIPT");
    if (!path)
        return {};
    std::ifstream file(path, std::ios::binary);
    return parseScript(std::string(std::istreambuf_iterator<char>(file), {}));
}

/// From here on SIGTERM ends the program only after a while. Called before there are threads.
void postponeTermination(Milliseconds linger)
{
    sigset_t termination;
    sigemptyset(&termination);
    sigaddset(&termination, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &termination, nullptr);
    std::thread([termination, linger] {
        int signal = 0;
        sigwait(&termination, &signal);
        while (linger < Milliseconds(0))
            pause();
        std::this_thread::sleep_for(linger);
        _exit(0);
    }).detach();
}

void writeOutput(const Output &output)
{
    for (int unread = 0; ioctl(output.descriptor, FIONREAD, &unread) == 0 && unread > 0;)
        std::this_thread::sleep_for(Milliseconds(1));
    std::this_thread::sleep_for(output.after);
    for (std::size_t written = 0; written < output.bytes.size();) {
        const ssize_t count = write(output.descriptor, output.bytes.data() + written, output.bytes.size() - written);
        if (count <= 0)
            return;
        written += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "scripted server: %s: %s\n", what, std::strerror(errno));
    _exit(2);
}

int listenOn(std::uint16_t port, const std::string &portFile)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        fail("bind");
    if (listen(listener, 64) != 0)
        fail("listen");
    socklen_t size = sizeof address;
    getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size);
    if (!portFile.empty())
        writeWhole(portFile, std::to_string(ntohs(address.sin_port)));
    return listener;
}

} // namespace

/// The port behind `--port` among the arguments, or what the script says.
std::uint16_t portFor(int argc, char **argv, std::uint16_t scripted)
{
    for (int index = 1; index + 1 < argc; ++index)
        if (std::strcmp(argv[index], "--port") == 0)
            return static_cast<std::uint16_t>(std::strtoul(argv[index + 1], nullptr, 10));
    return scripted;
}

/// See Script.h for what it does. One thread for each client, and everything blocks: scripts are run as they read.
int main(int argc, char **argv)
try {
    const Script script = readScript();
    Recorder recorder(script.record);
    recorder.recordProcess(argc, argv, environ);

    if (script.linger)
        postponeTermination(*script.linger);
    if (script.exit)
        std::thread([exit = *script.exit] {
            std::this_thread::sleep_for(exit.after);
            endProgram(exit);
        }).detach();
    std::thread([&script] {
        for (const Output &output : script.output)
            writeOutput(output);
    }).detach();

    std::this_thread::sleep_for(script.listenAfter);
    const int listener = listenOn(portFor(argc, argv, script.port), script.portFile);
    Replies replies(script);
    while (true) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client == -1)
            continue;
        const int on = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        std::thread([client, &replies, &recorder] { serve(client, replies, recorder); }).detach();
    }
} catch (const std::exception &error) {
    std::fprintf(stderr, "scripted server: %s\n", error.what());
    _exit(2);
}
