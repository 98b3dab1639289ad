#include "Services/ServerSupervisor.h"

#include "documents/AppPreferences.h"
#include "foundation/Preferences.h"
#include "Services/ServerCandidates.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A child that does what the test says.
class PretendedChild final : public ChildProcess
{
public:
    explicit PretendedChild(QStringList &journal) : m_journal(journal) {}

    bool isRunning() const override { return isAlive; }
    void terminate() override
    {
        m_journal.append(handler ? u"terminate, heard"_s : u"terminate, unheard"_s);
        isTerminated = true;
    }
    void waitUntilExit() override
    {
        m_journal.append(u"wait"_s);
        isAlive = false;
    }
    int terminationStatus() const override { return status; }
    void setTerminationHandler(std::function<void()> newHandler) override { handler = std::move(newHandler); }

    /// Ends by itself; the handler hears of it.
    void end(int newStatus)
    {
        isAlive = false;
        status = newStatus;
        if (const auto call = std::exchange(handler, nullptr))
            call();
    }

    bool isAlive = true;
    bool isTerminated = false;
    int status = 0;
    std::function<void()> handler;

private:
    QStringList &m_journal;
};

class Supervised : public ::testing::Test
{
protected:
    Supervised() { ::testing::internal::CaptureStdout(); }
    ~Supervised() override
    {
        if (!m_isConsoleRead)
            ::testing::internal::GetCapturedStdout();
    }

    ServerSupervisorParts parts()
    {
        return {.preferences = m_preferences,
                .checkHealth = [this](std::stop_token stop) { return answerProbe(stop); },
                .cancelRequests = [this] { m_journal.append(u"cancel requests"_s); },
                .dataFolder = m_files.url(u"data"_s),
                .candidates = {m_files.url(u"absent"_s), m_files.url(u"tessaline-server"_s)},
                .environment = {{"OWN", "1"}},
                .physicalMemoryBytes = quint64(16) << 30,
                .activeProcessorCount = 10,
                .launch = [this](const ChildCommand &command) { return launch(command); },
                .delay = [this](std::chrono::milliseconds duration, std::stop_token) { return letPass(duration); },
                .now = [this] { return m_now; }};
    }

    Result<std::shared_ptr<ChildProcess>> launch(const ChildCommand &command)
    {
        m_commands.append(command);
        if (m_launchFailure)
            return *m_launchFailure;
        m_children.push_back(std::make_shared<PretendedChild>(m_journal));
        return std::shared_ptr<ChildProcess>(m_children.back());
    }

    QCoro::Task<bool> answerProbe(std::stop_token stop)
    {
        ++m_probes;
        while (m_holdsProbes && !stop.stop_requested())
            co_await delay(1ms, stop);
        m_wasProbeStopped = stop.stop_requested();
        co_return m_probes > m_failingProbes;
    }

    QCoro::Task<> letPass(std::chrono::milliseconds duration)
    {
        m_now += duration;
        m_delays.append(static_cast<int>(duration.count()));
        co_return;
    }

    PretendedChild &child() { return *m_children.back(); }
    void pass()
    {
        for (int turn = 0; turn < 20; ++turn)
            QCoreApplication::processEvents();
    }
    QByteArray console()
    {
        m_isConsoleRead = true;
        return QByteArray::fromStdString(::testing::internal::GetCapturedStdout());
    }
    void startAndRun()
    {
        m_supervisor->startServer();
        ASSERT_TRUE(eventually([&] { return m_supervisor->isServerRunning(); }));
    }
    void startAndTimeOut()
    {
        m_failingProbes = 100000;
        m_supervisor->startServer();
        ASSERT_TRUE(eventually([&] { return m_supervisor->serverStatus() == u"Local AI startup timed out"; }));
    }

    /// The row of the state table that holds now.
    void expectState(const QString &status, bool hasProcess, bool isRunning, bool hasStartupTask)
    {
        EXPECT_EQ(m_supervisor->serverStatus(), status);
        EXPECT_EQ(m_supervisor->serverProcess() != nullptr, hasProcess);
        EXPECT_EQ(m_supervisor->isServerRunning(), isRunning);
        EXPECT_EQ(m_supervisor->startupTask().has_value(), hasStartupTask);
    }

    TemporaryFiles m_files{{u"tessaline-server"_s, "any file will do"}};
    Preferences m_preferences{m_files.url(u"preferences.json"_s)};
    QStringList m_journal;
    QList<ChildCommand> m_commands;
    std::vector<std::shared_ptr<PretendedChild>> m_children;
    std::optional<Failure> m_launchFailure;
    int m_probes = 0;
    int m_failingProbes = 0;
    bool m_holdsProbes = false;
    bool m_wasProbeStopped = false;
    QList<int> m_delays;
    std::chrono::system_clock::time_point m_now{};
    bool m_isConsoleRead = false;
    std::unique_ptr<ServerSupervisor> m_supervisor = std::make_unique<ServerSupervisor>(parts());
};

// --- what a start comes to

TEST_F(Supervised, IsStoppedAtFirst)
{
    expectState(u"Stopped"_s, false, false, false);
    EXPECT_EQ(m_supervisor->activeModel().id, u"llama-3.1-8b-q4"_s);
    EXPECT_TRUE(m_commands.isEmpty());
}

TEST_F(Supervised, StartsTheFirstCandidateThatExists)
{
    m_supervisor->startServer();

    expectState(u"Starting…"_s, true, false, true);
    ASSERT_EQ(m_commands.size(), 1);
    EXPECT_EQ(m_commands.first().executable, m_files.url(u"tessaline-server"_s));
    EXPECT_EQ(m_commands.first().environment, (Environment{{"OMP_NUM_THREADS", "4"},
                                                           {"OWN", "1"},
                                                           {"RAYON_NUM_THREADS", "4"},
                                                           {"TESSALINE_CONTEXT_TOKENS", "16384"},
                                                           {"TESSALINE_MODEL_ID", "llama-3.1-8b-q4"},
                                                           {"TESSALINE_THREADS", "8"}}));
    EXPECT_EQ(m_probes, 0) << "the caller goes on first";
    EXPECT_EQ(console(), "Started tessaline-server process. Polling health check...\n");
}

TEST_F(Supervised, SaysThatThereIsNoBinaryAndWhereItLooked)
{
    ServerSupervisorParts missing = parts();
    missing.candidates = {m_files.url(u"a"_s), m_files.url(u"b"_s)};
    m_supervisor = std::make_unique<ServerSupervisor>(missing);

    m_supervisor->startServer();

    expectState(u"Binary not found. Build server first."_s, false, false, false);
    EXPECT_TRUE(m_commands.isEmpty());
    EXPECT_EQ(console(),
              u"tessaline-server binary not found. Paths checked: [\"%1/a\", \"%1/b\"]\n"_s.arg(m_files.folder().path())
                  .toUtf8());
}

TEST_F(Supervised, SaysWhyTheLaunchFailed)
{
    m_launchFailure = Failure{FailureKind::NotReadable, u"Could not start “x”: Permission denied."_s};

    m_supervisor->startServer();

    expectState(u"Start failed: Could not start “x”: Permission denied."_s, false, false, false);
    EXPECT_EQ(console(), "Failed to run tessaline-server: Could not start “x”: Permission denied.\n");
}

TEST_F(Supervised, AStartThatComesToNothingLeavesAnEarlierPollingTaskStopped)
{
    for (const bool isMissing : {true, false}) {
        m_files.write(u"tessaline-server"_s, "");
        m_launchFailure.reset();
        m_supervisor->startServer();
        child().isAlive = false; // and its end has not been heard of yet
        if (isMissing)
            QFile::remove(m_files.url(u"tessaline-server"_s).path());
        else
            m_launchFailure = Failure{FailureKind::NotReadable, u"No."_s};

        m_supervisor->startServer();

        expectState(isMissing ? u"Binary not found. Build server first."_s : u"Start failed: No."_s, false, false,
                    true);
        EXPECT_TRUE(m_supervisor->startupTask()->stop_requested());
        pass();
        EXPECT_EQ(m_probes, 0);
    }
}

TEST_F(Supervised, AServerThatCouldNotBeStartedCanBeTriedAgain)
{
    m_launchFailure = Failure{FailureKind::NotReadable, u"No."_s};
    m_supervisor->startServer();
    m_launchFailure.reset();

    m_supervisor->startServer();

    expectState(u"Starting…"_s, true, false, true);
}

TEST_F(Supervised, ASecondStartLeavesTheServerAlone)
{
    m_supervisor->startServer();
    m_supervisor->startServer();
    EXPECT_EQ(m_commands.size(), 1);
    expectState(u"Starting…"_s, true, false, true);

    ASSERT_TRUE(eventually([&] { return m_supervisor->isServerRunning(); }));
    m_supervisor->startServer();
    EXPECT_EQ(m_commands.size(), 1);
    expectState(u"Running"_s, true, true, false);
}

// --- the model

TEST_F(Supervised, ChoosesTheModelAtEachStartThatReallyStarts)
{
    QSignalSpy changed(m_supervisor.get(), &ServerSupervisor::activeModelChanged);
    m_preferences.set(PreferenceKeys::kAiModelSelection, u"qwen-2.5-14b-q4"_s);
    EXPECT_EQ(m_supervisor->activeModel().id, u"llama-3.1-8b-q4"_s) << "only a start takes it over";

    m_supervisor->startServer();
    EXPECT_EQ(m_supervisor->activeModel().id, u"qwen-2.5-14b-q4"_s);
    EXPECT_EQ(m_commands.last().environment.value("TESSALINE_CONTEXT_TOKENS"), "32768");

    m_preferences.set(PreferenceKeys::kAiModelSelection, u"no such model"_s);
    m_supervisor->startServer(); // it is alive
    EXPECT_EQ(m_supervisor->activeModel().id, u"qwen-2.5-14b-q4"_s);

    m_supervisor->stopServer();
    m_supervisor->startServer();
    EXPECT_EQ(m_supervisor->activeModel().id, u"llama-3.1-8b-q4"_s);
    EXPECT_EQ(changed.count(), 2);
}

// --- the polling

TEST_F(Supervised, RunsAtTheFirstHealthyProbe)
{
    m_failingProbes = 2;
    QSignalSpy healthy(m_supervisor.get(), &ServerSupervisor::becameHealthy);
    QSignalSpy running(m_supervisor.get(), &ServerSupervisor::isServerRunningChanged);
    QSignalSpy status(m_supervisor.get(), &ServerSupervisor::serverStatusChanged);

    startAndRun();
    pass();

    expectState(u"Running"_s, true, true, false);
    EXPECT_EQ(m_delays, (QList<int>{1000, 1000}));
    EXPECT_EQ(m_probes, 3);
    EXPECT_EQ(healthy.count(), 1);
    EXPECT_EQ(running.count(), 1);
    EXPECT_EQ(status.count(), 2) << "Starting…, Running";
    EXPECT_EQ(console(), "Started tessaline-server process. Polling health check...\n"
                         "Local AI Server is fully ready. Fetching initial document suggestions...\n");
}

TEST_F(Supervised, GivesUpAfterTenMinutesAndLeavesTheProcessAlive)
{
    QSignalSpy healthy(m_supervisor.get(), &ServerSupervisor::becameHealthy);
    startAndTimeOut();

    expectState(u"Local AI startup timed out"_s, true, false, false);
    EXPECT_EQ(m_probes, 600);
    EXPECT_FALSE(child().isTerminated);
    m_failingProbes = 0;
    pass();
    EXPECT_EQ(m_probes, 600) << "nobody asks any more";
    EXPECT_EQ(healthy.count(), 0);
    EXPECT_TRUE(console().endsWith("Local AI Server failed to respond to health check.\n"));
}

TEST_F(Supervised, AfterATimeOutOnlyStopAndStartHelp)
{
    startAndTimeOut();

    m_supervisor->startServer();
    EXPECT_EQ(m_commands.size(), 1);
    expectState(u"Local AI startup timed out"_s, true, false, false);

    m_supervisor->stopServer();
    m_failingProbes = 0;
    startAndRun();
    EXPECT_EQ(m_commands.size(), 2);
}

TEST_F(Supervised, LeavesTheEndOfAProcessDuringThePollingToTheTerminationHandler)
{
    m_supervisor->startServer();
    child().isAlive = false;
    pass();
    expectState(u"Starting…"_s, true, false, false);
    EXPECT_EQ(m_probes, 0);

    child().end(7);

    expectState(u"Local AI exited (code 7)"_s, false, false, false);
}

TEST_F(Supervised, AStartWhileAnOldProbeIsOnItsWayPollsOnlyForTheNewProcess)
{
    m_holdsProbes = true;
    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return m_probes == 1; }));
    child().isAlive = false;
    m_supervisor->startServer();
    EXPECT_TRUE(m_wasProbeStopped) << "the old probe";
    QSignalSpy healthy(m_supervisor.get(), &ServerSupervisor::becameHealthy);
    m_holdsProbes = false;

    ASSERT_TRUE(eventually([&] { return m_supervisor->isServerRunning(); }));
    pass();
    EXPECT_EQ(healthy.count(), 1);
    EXPECT_EQ(m_probes, 2);
}

// --- the end of the process

TEST_F(Supervised, ReportsAnEndDuringThePollingAndThePollingWritesNothingOverIt)
{
    m_holdsProbes = true;
    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return m_probes == 1; }));

    child().end(3);

    expectState(u"Local AI exited (code 3)"_s, false, false, false);
    EXPECT_TRUE(m_wasProbeStopped);
    m_holdsProbes = false;
    pass();
    expectState(u"Local AI exited (code 3)"_s, false, false, false);
}

TEST_F(Supervised, ReportsAnEndWhileItRunsAndStartsAgain)
{
    startAndRun();
    QSignalSpy running(m_supervisor.get(), &ServerSupervisor::isServerRunningChanged);

    child().end(9);

    expectState(u"Local AI exited (code 9)"_s, false, false, false);
    EXPECT_EQ(running.count(), 1);
    m_supervisor->startServer();
    EXPECT_EQ(m_commands.size(), 2);
    expectState(u"Starting…"_s, true, false, true);
}

TEST_F(Supervised, ReportsAnEndAfterATimeOut)
{
    startAndTimeOut();
    child().end(0);

    expectState(u"Local AI exited (code 0)"_s, false, false, false);
}

TEST_F(Supervised, TheEndOfAnEarlierProcessDoesNotDisturbALaterOne)
{
    m_supervisor->startServer();
    const std::shared_ptr<PretendedChild> earlier = m_children.back();
    earlier->isAlive = false;
    m_supervisor->startServer();
    ASSERT_EQ(m_children.size(), 2U);

    earlier->end(1);

    expectState(u"Starting…"_s, true, false, true);
    EXPECT_EQ(m_supervisor->serverProcess(), m_children.back().get());
}

TEST_F(Supervised, AnEndThatIsHeardOfAfterTheStopChangesNothing)
{
    m_supervisor->startServer();
    const auto late = child().handler;
    m_supervisor->stopServer();

    late();

    expectState(u"Stopped"_s, false, false, false);
}

// --- stopping

TEST_F(Supervised, StopsWhilePollingWithoutTakingThatForAnExit)
{
    m_holdsProbes = true;
    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return m_probes == 1; }));

    m_supervisor->stopServer();

    expectState(u"Stopped"_s, false, false, false);
    EXPECT_TRUE(m_wasProbeStopped);
    EXPECT_EQ(m_journal, (QStringList{u"cancel requests"_s, u"terminate, unheard"_s, u"wait"_s}));
    pass();
    expectState(u"Stopped"_s, false, false, false);
    EXPECT_EQ(console(), "Started tessaline-server process. Polling health check...\n"
                         "Stopping Local AI Server subprocess...\n"
                         "Local AI Server stopped.\n");
}

TEST_F(Supervised, StopsARunningServer)
{
    startAndRun();
    m_supervisor->stopServer();
    expectState(u"Stopped"_s, false, false, false);

    startAndRun();
    EXPECT_EQ(m_commands.size(), 2);
}

TEST_F(Supervised, StopsWithoutAProcessToo)
{
    m_supervisor->stopServer();
    expectState(u"Stopped"_s, false, false, false);

    m_launchFailure = Failure{FailureKind::NotReadable, u"No."_s};
    m_supervisor->startServer();
    m_supervisor->stopServer();
    expectState(u"Stopped"_s, false, false, false);

    m_launchFailure.reset();
    m_supervisor->startServer();
    child().end(1);
    m_supervisor->stopServer();
    expectState(u"Stopped"_s, false, false, false);

    EXPECT_EQ(m_journal, QStringList(3, u"cancel requests"_s));
    EXPECT_FALSE(console().contains("stopped")) << "there was nothing to stop";
}

TEST_F(Supervised, StopsBeforeThePollingHasBegun)
{
    m_supervisor->startServer();
    m_supervisor->stopServer();
    pass();

    EXPECT_EQ(m_probes, 0);
    expectState(u"Stopped"_s, false, false, false);
}

TEST_F(Supervised, EndsTheServerWhenItGoesItself)
{
    m_holdsProbes = true;
    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return m_probes == 1; }));
    const std::shared_ptr<PretendedChild> last = m_children.back();

    m_supervisor.reset();

    EXPECT_TRUE(m_wasProbeStopped);
    EXPECT_FALSE(last->isAlive);
    EXPECT_EQ(m_journal, (QStringList{u"terminate, unheard"_s, u"wait"_s}));
}

} // namespace
} // namespace Tessaline
