#include "server/EngineProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

namespace {

std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What runs in the child: system calls only, since other threads of its parent may have held any lock.
[[noreturn]] void becomeProgram(const char *program, char *const *arguments, char *const *environment, int input,
                                int output, int report, pid_t parent)
{
    constexpr int kCouldNotStart = 127;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setpgid(0, 0); // what it starts belongs to it
    if (getppid() != parent)
        _exit(kCouldNotStart);
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        sigaction(signal, &action, nullptr);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC); // also the connections of clients
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(program, arguments, environment);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    _exit(kCouldNotStart);
}

} // namespace

EngineProcess::EngineProcess(const EngineCommand &command, std::string &error)
{
    // 1. What the child needs.
    std::vector<std::string> arguments{command.program};
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    std::vector<std::string> environment = command.environment;
    const std::vector<char *> argumentPointers = pointersTo(arguments);
    const std::vector<char *> environmentPointers = pointersTo(environment);
    std::array<int, 2> output{-1, -1};
    std::array<int, 2> report{-1, -1};
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    m_over = eventfd(0, EFD_CLOEXEC);
    if (input == -1 || m_over == -1 || pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(report.data(), O_CLOEXEC) != 0) {
        error = std::strerror(errno);
        for (const int descriptor : {input, std::exchange(m_over, -1), output[0], output[1]})
            if (descriptor != -1)
                close(descriptor);
        return;
    }

    // 2. The child.
    const pid_t parent = getpid();
    m_child = fork();
    if (m_child == 0)
        becomeProgram(command.program.c_str(), argumentPointers.data(), environmentPointers.data(), input, output[1],
                      report[1], parent);
    int number = m_child == -1 ? errno : 0;
    close(input);
    close(output[1]);
    close(report[1]);

    // 3. Whether it became the program: then the report ends without a word.
    if (m_child != -1)
        while (read(report[0], &number, sizeof number) == -1 && errno == EINTR) {
        }
    close(report[0]);
    if (number != 0) {
        error = std::strerror(number);
        close(output[0]);
        close(m_over);
        if (m_child != -1)
            waitpid(m_child, nullptr, 0);
        m_child = -1;
        return;
    }
    m_output = output[0];
    m_reader = std::thread([this, line = command.line] { readOutput(line); });
    m_waiter = std::thread([this] {
        // NOTE: the number stays the child's until it is collected, which happens under the lock: nobody else is
        // signalled.
        siginfo_t info = {};
        while (waitid(P_PID, static_cast<id_t>(m_child), &info, WEXITED | WNOWAIT) == -1 && errno == EINTR) {
        }
        const std::lock_guard guard(m_mutex);
        ::kill(-m_child, SIGKILL); // what it has left behind, such as an engine that a script started
        int status = 0;
        waitpid(m_child, &status, 0);
        m_status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        eventfd_write(m_over, 1);
        m_ended.notify_all();
    });
}

EngineProcess::~EngineProcess()
{
    if (m_child == -1)
        return;
    terminate();
    if (!waitForEnd(kGrace))
        kill();
    m_waiter.join();
    waitForLastLine();
    close(m_output);
    close(m_over);
}

void EngineProcess::signal(int number)
{
    const std::lock_guard guard(m_mutex);
    if (m_child != -1 && !m_status)
        ::kill(-m_child, number);
}

void EngineProcess::terminate()
{
    signal(SIGTERM);
}

void EngineProcess::kill()
{
    signal(SIGKILL);
}

void EngineProcess::readOutput(const std::function<void(std::string_view)> &line)
{
    constexpr size_t kLongestLine = 64 * 1024;
    constexpr int kMostReadsBehindTheEnd = 32; // somebody else may keep the pipe open, and write to it for ever
    std::string text;
    std::array<char, 4096> bytes{};
    for (int readsBehindTheEnd = 0; readsBehindTheEnd < kMostReadsBehindTheEnd;) {
        std::array<pollfd, 2> asked{pollfd{m_output, POLLIN, 0}, pollfd{m_over, POLLIN, 0}};
        if (poll(asked.data(), asked.size(), -1) <= 0)
            continue;
        if (asked[0].revents == 0)
            break; // it has ended, and what it wrote has been read
        readsBehindTheEnd += asked[1].revents != 0;
        const ssize_t count = read(m_output, bytes.data(), bytes.size());
        if (count == -1 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        text.append(bytes.data(), static_cast<size_t>(count));
        for (size_t end = text.find_first_of("\r\n"); end != std::string::npos; end = text.find_first_of("\r\n")) {
            if (end > 0)
                line(std::string_view(text).substr(0, end));
            text.erase(0, end + 1);
        }
        if (text.size() > kLongestLine)
            text.clear();
    }
    if (!text.empty())
        line(text);
}

bool EngineProcess::waitForEnd(std::chrono::milliseconds wait)
{
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, wait, [this] { return m_status.has_value(); });
}

void EngineProcess::waitForEnd(const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    m_ended.wait(lock, stop, [this] { return m_status.has_value(); });
}

void EngineProcess::waitForLastLine()
{
    if (m_reader.joinable())
        m_reader.join();
}

std::optional<int> EngineProcess::status()
{
    const std::lock_guard guard(m_mutex);
    return m_status;
}

int freePort()
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    const bool isBound = bind(listener, generic, size) == 0 && getsockname(listener, generic, &size) == 0;
    close(listener);
    return isBound ? ntohs(address.sin_port) : 0;
}

} // namespace Tessaline::Server
