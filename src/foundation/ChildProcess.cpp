#include "foundation/ChildProcess.h"

#include "foundation/ChildOutput.h"

#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

// WORKAROUND: glibc 2.36 declares its functions here without saying that they are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kCouldNotStart = 127; // exit status of a child that became no program; nobody reads it

/// What the child needs between its birth and the program, made ready beforehand.
struct Birth {
    const char *path;
    char *const *arguments;
    char *const *environment;
    int input;
    int output;
    int report; // takes the error number if the program cannot be started
    pid_t parent;
};

/// Turns the child into the program. It still runs in its parent's memory, so there is nothing here but system calls.
[[noreturn]] void becomeProgram(const Birth &birth)
{
    // 1. Signals that are ignored would stay so in the program; handlers must not run in this borrowed memory.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        sigaction(signal, &action, nullptr);

    // 2. It dies with its parent, also if that has gone already.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != birth.parent)
        _exit(kCouldNotStart);

    // 3. Three streams; everything else, the report included, is closed as soon as the program takes over.
    dup2(birth.input, STDIN_FILENO);
    dup2(birth.output, STDOUT_FILENO);
    dup2(birth.output, STDERR_FILENO);
    if (close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) != 0)
        for (long number = sysconf(_SC_OPEN_MAX) - 1; number > STDERR_FILENO; --number) // Linux before 5.11
            fcntl(static_cast<int>(number), F_SETFD, FD_CLOEXEC);

    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(birth.path, birth.arguments, birth.environment);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(birth.report, &error, sizeof error);
    _exit(kCouldNotStart);
}

/// The child's number; -1 (and errno) if there can be none. Returns when the program has taken over or has failed to:
/// until then the child uses this process's memory instead of a copy of it, which is what makes it quick.
pid_t giveBirth(const Birth &birth)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = vfork();
    if (child == 0)
        becomeProgram(birth);
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return child;
}

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

Pipe makePipe()
{
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// The error with which the program could not be started; 0 if it was.
int reportedError(const Descriptor &report)
{
    int error = 0;
    ssize_t count = 0;
    do
        count = read(report.number(), &error, sizeof error);
    while (count == -1 && errno == EINTR);
    return count == sizeof error ? error : 0;
}

Failure launchFailure(const FileURL &executable, int error)
{
    const FailureKind kind = error == ENOENT ? FailureKind::NotFound : FailureKind::NotReadable;
    return Failure{kind, u"Could not start “%1”: %2."_s.arg(executable.path(), qt_error_string(error))};
}

class RunningChild final : public ChildProcess
{
public:
    RunningChild(pid_t child, Descriptor end, std::unique_ptr<ChildOutput> output)
        : m_child(child), m_end(std::move(end)), m_output(std::move(output)),
          m_notifier(m_end.number(), QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { noteEnd(); });
    }

    bool isRunning() const override
    {
        collect(WNOHANG);
        return !m_status;
    }

    void terminate() override
    {
        if (isRunning()) // so the number is not somebody else's by now
            kill(m_child, SIGTERM);
    }

    void waitUntilExit() override { collect(0); }

    int terminationStatus() const override { return m_status.value_or(0); }

    void setTerminationHandler(std::function<void()> handler) override { m_handler = std::move(handler); }

private:
    void collect(int flags) const
    {
        if (m_status)
            return;
        int status = 0;
        pid_t collected = 0;
        do
            collected = waitpid(m_child, &status, flags);
        while (collected == -1 && errno == EINTR);
        if (collected == m_child)
            m_status = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
        else if (collected == -1)
            m_status = 0; // somebody else has collected it: it has gone, and how is lost
    }

    void noteEnd()
    {
        m_notifier.setEnabled(false);
        collect(0);
        if (const auto handler = std::exchange(m_handler, nullptr))
            handler(); // may destroy this
    }

    pid_t m_child;
    mutable std::optional<int> m_status; // once it has ended
    Descriptor m_end;                    // readable when it has
    std::unique_ptr<ChildOutput> m_output;
    QSocketNotifier m_notifier;
    std::function<void()> m_handler;
};

} // namespace

Environment ownEnvironment()
{
    Environment own;
    for (char **entry = environ; *entry; ++entry) {
        const QByteArray text(*entry);
        const qsizetype equals = text.indexOf('=', 1);
        if (equals > 0)
            own.insert(text.first(equals), text.sliced(equals + 1));
    }
    return own;
}

Result<std::shared_ptr<ChildProcess>> launchChildProcess(const ChildCommand &command)
{
    // 1. What the child needs.
    const QByteArray path = QFile::encodeName(command.executable.path());
    QByteArrayList variables;
    for (auto variable = command.environment.begin(); variable != command.environment.end(); ++variable)
        variables.append(variable.key() + '=' + variable.value());
    std::vector<char *> environment;
    for (QByteArray &variable : variables)
        environment.push_back(variable.data());
    environment.push_back(nullptr);
    const std::array<char *, 2> arguments{const_cast<char *>(path.constData()), nullptr};

    const Descriptor input(open("/dev/null", O_RDONLY | O_CLOEXEC));
    Pipe output = makePipe();
    Pipe report = makePipe();
    if (!input.isOpen() || !output.readEnd.isOpen() || !report.readEnd.isOpen())
        return launchFailure(command.executable, errno);

    // 2. The child.
    const pid_t child = giveBirth({path.constData(), arguments.data(), environment.data(), input.number(),
                                   output.writeEnd.number(), report.writeEnd.number(), getpid()});
    if (child == -1)
        return launchFailure(command.executable, errno);
    output.writeEnd.close(); // the child's alone from here on, so that its end can be noticed
    report.writeEnd.close();

    // 3. Whether it became the program.
    int error = reportedError(report.readEnd);
    Descriptor end(error == 0 ? pidfd_open(child, 0) : -1);
    if (!end.isOpen()) {
        error = error == 0 ? errno : error;
        kill(child, SIGKILL);
        while (waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
        }
        return launchFailure(command.executable, error);
    }
    return std::shared_ptr<ChildProcess>(std::make_shared<RunningChild>(
        child, std::move(end), std::make_unique<ChildOutput>(std::move(output.readEnd), command.outputHandler)));
}

} // namespace Tessaline
