#include "foundation/ChildProcess.h"

#include "tests/support/ScriptedServer.h"
#include "tests/support/Waiting.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QMutex>
#include <QtCore/QScopeGuard>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

/// Collects what a child writes.
class Output
{
public:
    std::function<void(const QByteArray &)> handler()
    {
        return [this](const QByteArray &bytes) {
            const QMutexLocker lock(&m_mutex);
            m_pieces.append(bytes);
            m_thread = QThread::currentThread();
        };
    }
    QByteArray bytes() const { return pieces().join(); }
    QByteArrayList pieces() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_pieces;
    }
    bool isOnAnotherThread() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_thread != QThread::currentThread();
    }

private:
    mutable QMutex m_mutex; // guards both
    QByteArrayList m_pieces;
    QThread *m_thread = nullptr;
};

Environment environmentOf(const ScriptedServerFolder &server)
{
    Environment environment = ownEnvironment();
    environment.insert("SCRIPTED_SERVER_SCRIPT", server.files().url(u"script.json"_s).path().toUtf8());
    return environment;
}

class Child : public ::testing::Test
{
protected:
    std::shared_ptr<ChildProcess> launch(const ScriptedServerFolder &server)
    {
        return launch(server.executable(), environmentOf(server));
    }

    std::shared_ptr<ChildProcess> launch(const FileURL &executable, const Environment &environment = ownEnvironment())
    {
        Result<std::shared_ptr<ChildProcess>> launched =
            launchChildProcess({executable, environment, m_output.handler()});
        EXPECT_TRUE(launched) << launched.failure().text.toStdString();
        return std::move(launched).value();
    }

    /// A program of one line, for the shell.
    FileURL shellScript(const QByteArray &line) const
    {
        m_files.write(u"script"_s, "#!/bin/sh\n" + line + "\n");
        QFile::setPermissions(m_files.url(u"script"_s).path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return m_files.url(u"script"_s);
    }

    TemporaryFiles m_files;
    Output m_output;
};

bool exists(qint64 process)
{
    return kill(static_cast<pid_t>(process), 0) == 0;
}

TEST_F(Child, HasThreeStreamsAndNothingElseOfItsParent)
{
    // 1. A parent with everything that could be inherited: an open file, and signals ignored, caught and blocked.
    const int open = ::open("/dev/null", O_RDONLY);
    const auto ignored = std::signal(SIGUSR1, SIG_IGN);
    const auto caught = std::signal(SIGUSR2, [](int) {});
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGHUP);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto restore = qScopeGuard([&] {
        close(open);
        std::signal(SIGUSR1, ignored);
        std::signal(SIGUSR2, caught);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    });

    const ScriptedServerFolder server;
    const auto child = launch(server);
    ASSERT_TRUE(eventually([&] { return server.port().has_value(); }));

    // 2. Its child.
    const QJsonObject process = server.process();
    const QJsonObject descriptors = process.value(u"descriptors"_s).toObject();
    EXPECT_EQ(descriptors.keys(), (QStringList{u"0"_s, u"1"_s, u"2"_s}));
    EXPECT_EQ(descriptors.value(u"0"_s).toString(), u"/dev/null"_s);
    EXPECT_TRUE(descriptors.value(u"1"_s).toString().startsWith(u"pipe:"_s));
    EXPECT_EQ(descriptors.value(u"1"_s), descriptors.value(u"2"_s));
    EXPECT_EQ(process.value(u"arguments"_s).toArray(), QJsonArray());
    EXPECT_EQ(process.value(u"folder"_s).toString(), QDir::currentPath());
    EXPECT_EQ(process.value(u"blockedSignals"_s).toString().toULongLong(nullptr, 16), 0U);
    EXPECT_EQ(process.value(u"ignoredSignals"_s).toString().toULongLong(nullptr, 16), 0U);
    EXPECT_EQ(process.value(u"parentDeathSignal"_s).toInt(), SIGKILL);

    // 3. And the parent is what it was.
    EXPECT_EQ(std::signal(SIGUSR1, SIG_IGN), SIG_IGN);
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGHUP), 1);
    EXPECT_EQ(sigismember(&after, SIGTERM), 0);

    child->terminate();
    child->waitUntilExit();
}

TEST_F(Child, HasTheEnvironmentThatItIsGivenByteForByte)
{
    const auto child = launch(shellScript("env"), {{"PLAIN", "a=b"}, {"LATIN", "\xe9\xff"}, {"EMPTY", ""}});
    child->waitUntilExit();

    ASSERT_TRUE(eventually([&] { return m_output.bytes().contains("PLAIN"); }));
    const QByteArrayList lines = m_output.bytes().split('\n');
    EXPECT_TRUE(lines.contains("PLAIN=a=b"));
    EXPECT_TRUE(lines.contains("LATIN=\xe9\xff"));
    EXPECT_TRUE(lines.contains("EMPTY="));
    EXPECT_FALSE(m_output.bytes().contains("HOME="));
}

TEST_F(Child, OwnEnvironmentIsWhatThisProcessWasGiven)
{
    qputenv("TESSALINE_TEST_BYTES", "\xe9=1");
    const auto restore = qScopeGuard([] { qunsetenv("TESSALINE_TEST_BYTES"); });

    EXPECT_EQ(ownEnvironment().value("TESSALINE_TEST_BYTES"), "\xe9=1");
    EXPECT_EQ(ownEnvironment().value("PATH"), qgetenv("PATH"));
}

TEST_F(Child, WritesBothOutputsIntoOnePipeThatAnotherThreadReads)
{
    const ScriptedServerFolder server(R"({"output": [{"text": "one"}, {"text": "two", "to": "stderr", "after": 50}]})");
    const auto child = launch(server);

    ASSERT_TRUE(eventually([&] { return m_output.bytes() == "onetwo"; })) << m_output.bytes().constData();
    EXPECT_TRUE(m_output.isOnAnotherThread());
    child->terminate();
    child->waitUntilExit();
}

TEST_F(Child, HandsOverWhatItWroteBeforeItEndedEvenWhenItIsForgottenAtOnce)
{
    const QByteArray whole(60000, 'x');
    auto child = launch(shellScript("printf %60000s '' | tr ' ' x"));
    child->waitUntilExit();
    child.reset();

    EXPECT_EQ(m_output.bytes(), whole);
}

TEST_F(Child, ThatLeavesAProgramBehindOnItsPipeCanBeForgotten)
{
    auto child = launch(shellScript("sleep 1000 & echo $!"));
    child->waitUntilExit();
    child.reset(); // the pipe is still open at its other end

    const auto left = static_cast<pid_t>(m_output.bytes().trimmed().toLong());
    ASSERT_GT(left, 0);
    EXPECT_EQ(kill(left, SIGKILL), 0);
}

TEST_F(Child, TellsItsExitStatus)
{
    const auto child = launch(shellScript("exit 42"));
    int ends = 0;
    child->setTerminationHandler([&] { ++ends; });

    ASSERT_TRUE(eventually([&] { return ends > 0; }));
    EXPECT_FALSE(child->isRunning());
    EXPECT_EQ(child->terminationStatus(), 42);
    QCoreApplication::processEvents();
    EXPECT_EQ(ends, 1);
}

TEST_F(Child, TellsTheSignalThatEndedIt)
{
    const auto child = launch(shellScript("kill -KILL $$"));
    child->waitUntilExit();

    EXPECT_EQ(child->terminationStatus(), SIGKILL);
}

TEST_F(Child, IsReportedEvenIfItEndedBeforeAnybodyAsked)
{
    const auto child = launch(shellScript("exit 1"));
    child->waitUntilExit();
    bool isReported = false;
    child->setTerminationHandler([&] { isReported = true; });

    EXPECT_FALSE(isReported) << "only from the event loop";
    EXPECT_TRUE(eventually([&] { return isReported; }));
}

TEST_F(Child, IsNotReportedToAHandlerThatWasCleared)
{
    const auto child = launch(shellScript("exit 1"));
    bool isReported = false;
    child->setTerminationHandler([&] { isReported = true; });
    child->setTerminationHandler({});
    const auto other = launch(shellScript("exit 1"));
    bool isOtherReported = false;
    other->setTerminationHandler([&] { isOtherReported = true; });

    ASSERT_TRUE(eventually([&] { return isOtherReported && !child->isRunning(); }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(isReported);
}

TEST_F(Child, CanBeForgottenByItsOwnTerminationHandler)
{
    auto child = launch(shellScript("exit 1"));
    child->setTerminationHandler([&] { child.reset(); });

    EXPECT_TRUE(eventually([&] { return !child; }));
}

TEST_F(Child, RunsUntilItIsTerminatedAndWaitedFor)
{
    const ScriptedServerFolder server(R"({"linger": 200})");
    const auto child = launch(server);
    ASSERT_TRUE(eventually([&] { return server.port().has_value(); }));
    EXPECT_TRUE(child->isRunning());
    EXPECT_EQ(child->terminationStatus(), 0);

    child->terminate();
    child->waitUntilExit(); // it takes its time

    EXPECT_FALSE(child->isRunning());
    EXPECT_FALSE(exists(server.processId()));
    child->terminate(); // nobody is there any more
    child->waitUntilExit();
}

TEST_F(Child, CannotBeWhatIsNoProgram)
{
    m_files.write(u"plain"_s, "text");
    m_files.write(u"marked"_s, "text");
    m_files.makeFolder(u"folder"_s);
    QFile::setPermissions(m_files.url(u"marked"_s).path(), QFile::ReadOwner | QFile::ExeOwner);
    const struct {
        QString name;
        FailureKind kind;
        QString reason;
    } cases[]{
        {u"absent"_s, FailureKind::NotFound, u"No such file or directory"_s},
        {u"plain"_s, FailureKind::NotReadable, u"Permission denied"_s},
        {u"folder"_s, FailureKind::NotReadable, u"Permission denied"_s},
        {u"marked"_s, FailureKind::NotReadable, u"Exec format error"_s},
    };

    for (const auto &[name, kind, reason] : cases) {
        const FileURL url = m_files.url(name);
        const auto launched = launchChildProcess({url, {}, m_output.handler()});
        ASSERT_FALSE(launched) << name.toStdString();
        EXPECT_EQ(launched.failure(), (Failure{kind, u"Could not start “%1”: %2."_s.arg(url.path(), reason)}));
    }
    EXPECT_EQ(m_output.bytes(), QByteArray());
}

TEST_F(Child, ThatCannotStartLeavesNoDescriptorAndNoProcess)
{
    const auto openDescriptors = [] {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
    };
    const qsizetype before = openDescriptors();

    EXPECT_FALSE(launchChildProcess({m_files.url(u"absent"_s), {}, m_output.handler()}));

    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left";
}

} // namespace
} // namespace Tessaline
