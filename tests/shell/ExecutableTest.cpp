#include "Services/ServerCandidates.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <functional>

#include <sys/resource.h>
#include <unistd.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

const QString kExecutable = QStringLiteral(TESSALINE_EXECUTABLE);
constexpr int kLimit = 30000; // milliseconds

/// All that a normal run prints: that this build cannot update itself, and that there is no server for the assistant.
QByteArray normalOutput()
{
    const FileURL folder(QFileInfo(kExecutable).canonicalPath());
    return "Sparkle is disabled: set TESSALINE_SPARKLE_PUBLIC_ED_KEY when building the release.\n"
           "tessaline-server binary not found. Paths checked: " +
           printedCandidates(serverCandidates(folder)).toUtf8() + '\n';
}

/// The real program with folders of its own and no display.
class Executable : public ::testing::Test
{
protected:
    Executable() { m_files.makeFolder(u"runtime"_s); }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString &name :
             {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s, u"DBUS_SESSION_BUS_ADDRESS"_s})
            environment.remove(name);
        environment.insert(u"HOME"_s, m_files.folder().path());
        environment.insert(u"XDG_CONFIG_HOME"_s, m_configuration);
        environment.insert(u"XDG_DATA_HOME"_s, m_files.url(u"data"_s).path());
        environment.insert(u"XDG_CACHE_HOME"_s, m_files.url(u"cache"_s).path());
        environment.insert(u"XDG_RUNTIME_DIR"_s, m_files.url(u"runtime"_s).path());
        return environment;
    }

    struct Answer {
        int status = -1;
        bool crashed = true;
        QString output;
        QString errors;
    };

    /// Runs it to its end.
    Answer run(const QStringList &arguments, const QProcessEnvironment &environment) const
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(kExecutable, arguments);
        if (!process.waitForFinished(kLimit))
            return {};
        return {process.exitCode(), process.exitStatus() == QProcess::CrashExit,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }
    Answer run(const QStringList &arguments) const { return run(arguments, environment()); }

    /// Whether `signal` is in one of the masks that the system tells of a process, such as "SigCgt:", those it handles.
    static bool isInMask(const QProcess &process, QByteArrayView mask, int signal)
    {
        QFile status(u"/proc/%1/status"_s.arg(process.processId()));
        if (!status.open(QIODevice::ReadOnly))
            return false;
        for (const QByteArray &line : status.readAll().split('\n'))
            if (line.startsWith(mask))
                return line.sliced(mask.size()).trimmed().toULongLong(nullptr, 16) >> (signal - 1) & 1;
        return false;
    }

    /// Whether a signal would be taken by the program rather than end it on the spot.
    static bool handlesSignals(const QProcess &process) { return isInMask(process, "SigCgt:", SIGTERM); }

    /// Starts it on no screen and waits until it can be asked to end. `beforeItStarts` is run in its process.
    std::unique_ptr<QProcess> startRunning(const std::function<void()> &beforeItStarts = {}) const
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment());
        process->setChildProcessModifier(beforeItStarts);
        process->start(kExecutable, {u"-platform"_s, u"offscreen"_s});
        EXPECT_TRUE(process->waitForStarted(kLimit));
        EXPECT_TRUE(eventually([&] { return handlesSignals(*process); }));
        return process;
    }

    static void expectGoodEnd(QProcess &process, const QByteArray &output = normalOutput())
    {
        ASSERT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(kLimit));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
        EXPECT_EQ(process.readAllStandardOutput(), output);
    }

    TemporaryFiles m_files;
    QString m_configuration = m_files.url(u"config"_s).path();
};

/// What a process keeps open under this number.
QString openFile(const QProcess &process, int number)
{
    return QFile::symLinkTarget(u"/proc/%1/fd/%2"_s.arg(process.processId()).arg(number));
}

void sendSignal(const QProcess &process, int signal)
{
    if (process.processId() > 0) // of one that has ended it is 0, which means everybody
        kill(static_cast<pid_t>(process.processId()), signal);
}

TEST_F(Executable, SaysItsVersionWithoutADisplay)
{
    const Answer answer = run({u"--version"_s});

    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.output, u"tessaline %1\n"_s.arg(QStringLiteral(TESSALINE_VERSION)));
    EXPECT_EQ(answer.errors, QString());
    EXPECT_FALSE(m_files.exists(u"config"_s)) << "asking changes nothing";
}

TEST_F(Executable, HelpsWithoutADisplay)
{
    const Answer answer = run({u"--help"_s});

    EXPECT_EQ(answer.status, 0);
    EXPECT_TRUE(answer.output.startsWith(u"Usage: tessaline"_s));
    EXPECT_EQ(answer.errors, QString());
}

TEST_F(Executable, RefusesAnUnknownOptionWithStatusTwo)
{
    const Answer answer = run({u"--bogus"_s});

    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.output, QString());
    EXPECT_EQ(answer.errors, u"tessaline: There is no option “--bogus”; “tessaline --help” lists those there are.\n"_s);
}

TEST_F(Executable, SaysThatThereIsNoDisplay)
{
    const Answer answer = run({});

    EXPECT_FALSE(answer.crashed);
    EXPECT_EQ(answer.status, 1);
    EXPECT_EQ(answer.output, QString());
    EXPECT_EQ(
        answer.errors,
        u"tessaline: Could not open a window: there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set).\n"_s);
}

TEST_F(Executable, SaysThatADisplayCannotBeReachedInsteadOfCrashing)
{
    QProcessEnvironment nobodyThere = environment();
    nobodyThere.insert(u"DISPLAY"_s, u":54321"_s);

    const Answer answer = run({u"-platform"_s, u"xcb"_s}, nobodyThere);

    EXPECT_FALSE(answer.crashed);
    EXPECT_EQ(answer.status, 1);
    EXPECT_TRUE(answer.errors.endsWith(u"tessaline: Could not open a window: the display cannot be reached.\n"_s))
        << answer.errors.toStdString();
}

TEST_F(Executable, EndsWellOnEachSignalThatAsksForIt)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const std::unique_ptr<QProcess> process = startRunning();
        sendSignal(*process, signal);
        expectGoodEnd(*process);
    }
}

TEST_F(Executable, SeveralSignalsChangeNothing)
{
    const std::unique_ptr<QProcess> process = startRunning();
    for (const int signal : {SIGTERM, SIGTERM, SIGINT, SIGHUP, SIGTERM})
        sendSignal(*process, signal);
    expectGoodEnd(*process);
}

TEST_F(Executable, PrintsNothingButThatThereIsNoUpdaterAndNoServer)
{
    const std::unique_ptr<QProcess> process = startRunning();
    sendSignal(*process, SIGTERM);
    expectGoodEnd(*process);
    EXPECT_EQ(process->readAllStandardError(), QByteArray());
}

TEST_F(Executable, AStandardStreamThatCameClosedIsNotGivenToAFileOfItsOwn)
{
    const auto process = startRunning([] {
        for (const int stream : {0, 1, 2})
            close(stream);
    });

    for (const int stream : {0, 1, 2})
        EXPECT_EQ(openFile(*process, stream), u"/dev/null"_s);
    process->terminate();
    expectGoodEnd(*process, {});
}

TEST_F(Executable, HearsOfTheEndOfItsChildrenAlsoWhereItsParentDidNotWantTo)
{
    const auto process = startRunning([] { std::signal(SIGCHLD, SIG_IGN); });

    EXPECT_FALSE(isInMask(*process, "SigIgn:", SIGCHLD));
    process->terminate();
    expectGoodEnd(*process);
}

TEST_F(Executable, PrintingIntoAPipeThatNobodyReadsDoesNotEndIt)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);

    const auto process = startRunning([&ends] { dup2(ends[1], STDOUT_FILENO); });
    close(ends[1]);

    process->terminate();
    expectGoodEnd(*process, {});
}

TEST_F(Executable, AFileThatMayNotGrowAsLargeDoesNotEndIt)
{
    const QString stored = m_files.url(u"config/com.orlenth.tessaline/preferences.json"_s).path();
    m_files.makeFolder(u"project"_s);
    m_files.write(u"config/com.orlenth.tessaline/preferences.json"_s,
                  QJsonDocument(QJsonObject{{u"kept"_s, QString(5000, u'x')},
                                            {u"lastProjectFolderURLs"_s,
                                             QJsonArray{m_files.url(u"project"_s).path(), u"/missing"_s}}})
                      .toJson());

    const auto process = startRunning([] {
        const rlimit limit{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });

    process->terminate(); // the shortened list of projects is stored before it ends
    ASSERT_TRUE(process->waitForFinished(kLimit));
    EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
    EXPECT_TRUE(process->readAllStandardOutput().endsWith("Failed to store the preferences in " + stored.toUtf8() +
                                                          ": The system answered: File too large.\n"));
    EXPECT_TRUE(m_files.read(u"config/com.orlenth.tessaline/preferences.json"_s).contains("/missing")) << "as it was";
}

TEST_F(Executable, ASecondStartEndsWellAndSaysNothing)
{
    const std::unique_ptr<QProcess> first = startRunning();

    const Answer second = run({u"-platform"_s, u"offscreen"_s});

    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output + second.errors, QString());
    sendSignal(*first, SIGTERM);
    expectGoodEnd(*first);
}

TEST_F(Executable, ASecondStartNeedsNoDisplay)
{
    const std::unique_ptr<QProcess> first = startRunning();

    EXPECT_EQ(run({}).status, 0);

    sendSignal(*first, SIGTERM);
    expectGoodEnd(*first);
}

TEST_F(Executable, ACrashKeepsNobodyOut)
{
    std::unique_ptr<QProcess> first = startRunning();
    first->kill();
    ASSERT_TRUE(first->waitForFinished(kLimit));

    const std::unique_ptr<QProcess> next = startRunning();
    sendSignal(*next, SIGTERM);
    expectGoodEnd(*next);
}

TEST_F(Executable, ASecondStartGivesUpOnAFirstThatHangsAndSaysSo)
{
    const std::unique_ptr<QProcess> first = startRunning();
    sendSignal(*first, SIGSTOP);

    const Answer second = run({u"-platform"_s, u"offscreen"_s});

    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.errors,
              u"tessaline: Could not come to the front: Tessaline is running already, but does not answer.\n"_s);
    sendSignal(*first, SIGCONT);
    sendSignal(*first, SIGTERM);
    expectGoodEnd(*first);
}

TEST_F(Executable, AStartDuringTheEndOfTheFirstStartsItself)
{
    for (int round = 0; round < 5; ++round) {
        const std::unique_ptr<QProcess> first = startRunning();
        QProcess second;
        second.setProcessEnvironment(environment());

        sendSignal(*first, SIGTERM);
        second.start(kExecutable, {u"-platform"_s, u"offscreen"_s});

        expectGoodEnd(*first);
        // Either it was sent to the first one just before that began to end, or it runs by now.
        EXPECT_TRUE(eventually([&] { return second.state() == QProcess::NotRunning || handlesSignals(second); }));
        const bool wasSent = second.state() == QProcess::NotRunning;
        sendSignal(second, SIGTERM);
        expectGoodEnd(second, wasSent ? QByteArray() : normalOutput());
    }
}

TEST_F(Executable, AConfigurationFolderThatCannotBeMadeDoesNotPreventTheStart)
{
    m_configuration = u"/proc/nowhere"_s; // nobody can make a folder there

    const std::unique_ptr<QProcess> process = startRunning();

    EXPECT_FALSE(process->waitForFinished(300));
    sendSignal(*process, SIGTERM);
    expectGoodEnd(*process);
}

} // namespace
} // namespace Tessaline
