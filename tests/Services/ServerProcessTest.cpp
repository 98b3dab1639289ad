#include "Services/ServerSupervisor.h"

#include "foundation/Preferences.h"
#include "Services/WireClient.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/Waiting.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A real program, started and supervised as the application does it; only the port is any that is free.
class ServerProcess : public ::testing::Test
{
protected:
    ServerProcess() { ::testing::internal::CaptureStdout(); }
    ~ServerProcess() override { console(); }

    /// Supervises a server with this script; `start` starts it.
    ServerSupervisor &prepare(const QByteArray &script)
    {
        m_server = std::make_unique<ScriptedServerFolder>(script);
        Environment environment = ownEnvironment();
        environment.insert("SCRIPTED_SERVER_SCRIPT", m_server->files().url(u"script.json"_s).path().toUtf8());
        environment.insert("OWN", "kept");
        m_supervisor = std::make_unique<ServerSupervisor>(ServerSupervisorParts{
            .preferences = m_preferences,
            .checkHealth = [this](std::stop_token stop) { return checkHealth(stop); },
            .cancelRequests = {},
            .dataFolder = m_files.url(u"data"_s),
            .candidates = {m_server->executable()},
            .environment = environment,
            .physicalMemoryBytes = 0,
            .activeProcessorCount = 1,
            .delay = [](std::chrono::milliseconds, std::stop_token stop) { return delay(20ms, stop); }});
        return *m_supervisor;
    }

    QCoro::Task<bool> checkHealth(std::stop_token stop)
    {
        if (!m_wire && m_server->port())
            m_wire = std::make_unique<WireClient>(WireOptions{.address = {*m_server->port()}, .healthTimeout = 60s});
        if (!m_wire)
            co_return false;
        co_return co_await m_wire->checkHealth(stop);
    }

    bool comesTo(const QString &status)
    {
        return eventually([&] { return m_supervisor->serverStatus() == status; });
    }
    QByteArray log() const { return m_files.read(u"data/server.log"_s); }
    QByteArray console()
    {
        if (!std::exchange(m_isConsoleRead, true))
            return QByteArray::fromStdString(::testing::internal::GetCapturedStdout());
        return {};
    }

    TemporaryFiles m_files;
    Preferences m_preferences{m_files.url(u"preferences.json"_s)};
    bool m_isConsoleRead = false;
    std::unique_ptr<ScriptedServerFolder> m_server;
    std::unique_ptr<WireClient> m_wire;
    std::unique_ptr<ServerSupervisor> m_supervisor;
};

bool exists(qint64 process)
{
    return kill(static_cast<pid_t>(process), 0) == 0;
}

TEST_F(ServerProcess, IsNotHealthyWhileItAnswers503AndPollingGoesOn)
{
    prepare(R"({"replies": {"/health": [{"status": 503}, {"status": 503}, {"status": 204}, {"status": 200}]}})");
    m_supervisor->startServer();

    ASSERT_TRUE(comesTo(u"Running"_s)) << m_supervisor->serverStatus().toStdString();
    EXPECT_EQ(m_server->requests("/health").size(), 4);
}

TEST_F(ServerProcess, IsToldItsModelByItsEnvironment)
{
    prepare("{}");
    m_supervisor->startServer();
    ASSERT_TRUE(comesTo(u"Running"_s));

    const QJsonObject environment = m_server->process().value(u"environment"_s).toObject();
    const QJsonObject expected{{u"RAYON_NUM_THREADS"_s, u"4"_s},
                               {u"OMP_NUM_THREADS"_s, u"4"_s},
                               {u"TESSALINE_MODEL_ID"_s, u"llama-3.2-3b-q4"_s},
                               {u"TESSALINE_CONTEXT_TOKENS"_s, u"8192"_s},
                               {u"TESSALINE_THREADS"_s, u"4"_s},
                               {u"OWN"_s, u"kept"_s}};
    for (auto variable = expected.begin(); variable != expected.end(); ++variable)
        EXPECT_EQ(environment.value(variable.key()), variable.value()) << variable.key().toStdString();
    EXPECT_EQ(m_server->process().value(u"arguments"_s).toArray(), QJsonArray());
}

TEST_F(ServerProcess, WritesItsOutputToTheConsoleAndTheLogOneEntryForEachWrite)
{
    prepare(
        R"({"output": [{"text": "loading\nmodel\n\n"}, {"hex": "636166c3"}, {"hex": "a9"},
                           {"text": "ünïcode, no line end", "to": "stderr"}]})");
    m_supervisor->startServer();

    ASSERT_TRUE(eventually([&] { return log().contains("no line end"); })) << log().constData();
    const QString time = u"\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\] "_s;
    const QRegularExpression expected(u"\\A%1loading\nmodel\n%1ünïcode, no line end\n\\z"_s.arg(time));
    EXPECT_TRUE(expected.match(QString::fromUtf8(log())).hasMatch()) << log().constData();
    m_supervisor->stopServer();
    const QByteArray lines = '\n' + console();
    EXPECT_TRUE(lines.contains("\n[Local AI Server] loading\nmodel\n")) << lines.constData();
    EXPECT_TRUE(lines.contains("\n[Local AI Server] ünïcode, no line end\n")) << lines.constData();
    EXPECT_FALSE(lines.contains("caf")) << "a read that ends within a character is dropped as a whole";
}

TEST_F(ServerProcess, BeginsItsLogAnewWithEachStart)
{
    prepare(R"({"output": [{"text": "hello"}]})");
    m_files.write(u"data/server.log"_s, "from an earlier run\n");
    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return log().endsWith("] hello\n"); }));
    EXPECT_FALSE(log().contains("earlier"));
    m_supervisor->stopServer();

    m_supervisor->startServer();
    ASSERT_TRUE(eventually([&] { return log().endsWith("] hello\n"); }));
    EXPECT_EQ(log().count("hello"), 1);
}

TEST_F(ServerProcess, RunsOnWhereItsLogCannotBeKept)
{
    m_files.write(u"data"_s, "a file where the folder should be");
    prepare(R"({"output": [{"text": "hello"}]})");
    m_supervisor->startServer();

    EXPECT_TRUE(comesTo(u"Running"_s)) << m_supervisor->serverStatus().toStdString();
    m_supervisor->stopServer();
    EXPECT_EQ(m_files.read(u"data"_s), "a file where the folder should be");
}

TEST_F(ServerProcess, ThatExitsSaysItsStatus)
{
    prepare(R"({"exit": {"code": 3}, "listenAfter": 100000})");
    m_supervisor->startServer();

    EXPECT_TRUE(comesTo(u"Local AI exited (code 3)"_s)) << m_supervisor->serverStatus().toStdString();
    EXPECT_EQ(m_supervisor->serverProcess(), nullptr);
}

TEST_F(ServerProcess, ThatIsKilledWhileItRunsSaysTheSignal)
{
    prepare("{}");
    m_supervisor->startServer();
    ASSERT_TRUE(comesTo(u"Running"_s));

    kill(static_cast<pid_t>(m_server->processId()), SIGKILL);

    EXPECT_TRUE(comesTo(u"Local AI exited (code 9)"_s)) << m_supervisor->serverStatus().toStdString();
    EXPECT_FALSE(m_supervisor->isServerRunning());
}

TEST_F(ServerProcess, IsWaitedForHoweverLongItTakesToEnd)
{
    prepare(R"({"linger": 300})");
    m_supervisor->startServer();
    ASSERT_TRUE(comesTo(u"Running"_s));

    m_supervisor->stopServer();

    EXPECT_EQ(m_supervisor->serverStatus(), u"Stopped"_s);
    EXPECT_FALSE(exists(m_server->processId()));
    EXPECT_TRUE(console().endsWith("Stopping Local AI Server subprocess...\nLocal AI Server stopped.\n"));
}

TEST_F(ServerProcess, ThatIsNoProgramSaysWhyItCouldNotBeStarted)
{
    prepare("{}");
    const QString path = m_server->executable().path();
    QFile::remove(path);
    m_server->files().write(u"tessaline-server"_s, "text");

    m_supervisor->startServer();

    EXPECT_EQ(m_supervisor->serverStatus(), u"Start failed: Could not start “%1”: Permission denied."_s.arg(path));
    EXPECT_EQ(console(),
              u"Failed to run tessaline-server: Could not start “%1”: Permission denied.\n"_s.arg(path).toUtf8());
}

} // namespace
} // namespace Tessaline
