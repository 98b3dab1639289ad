#include "shell/SingleInstance.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"
#include "tests/support/WithoutPrivileges.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtTest/QSignalSpy>

#include <csignal>
#include <future>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Outcome = SingleInstance::Outcome;

SingleInstanceOptions in(const FileURL &folder, std::chrono::milliseconds patience = 10s)
{
    SingleInstanceOptions options;
    options.folder = folder;
    options.patience = patience;
    options.retryInterval = 2ms;
    return options;
}

/// Acquires as another process would, on a thread, so that this one can answer.
std::future<Outcome> acquireElsewhere(const SingleInstanceOptions &options, const QByteArray &token = {})
{
    return std::async(std::launch::async, [options, token] { return SingleInstance(options).acquire(token); });
}

Outcome resultOf(std::future<Outcome> &outcome)
{
    EXPECT_TRUE(eventually([&] { return outcome.wait_for(0s) == std::future_status::ready; }, 20s));
    return outcome.get();
}

/// A child process that acquires and then does `then`. It is killed at the end.
class OtherProcess
{
public:
    template <class Then>
    OtherProcess(const SingleInstanceOptions &options, Then then)
    {
        int ready[2];
        [[maybe_unused]] const int made = pipe(ready);
        m_pid = fork();
        if (m_pid == 0) {
            auto *instance = new SingleInstance(options);
            const char outcome = instance->acquire() == Outcome::First ? 'f' : 'x';
            [[maybe_unused]] const ssize_t told = write(ready[1], &outcome, 1);
            then(*instance);
            _exit(0);
        }
        close(ready[1]);
        [[maybe_unused]] const ssize_t heard = read(ready[0], &m_outcome, 1);
        close(ready[0]);
    }
    ~OtherProcess() { kill(); }
    Q_DISABLE_COPY_MOVE(OtherProcess)

    bool isFirst() const { return m_outcome == 'f'; }
    void kill()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
            m_pid = -1;
        }
    }

private:
    pid_t m_pid = -1;
    char m_outcome = 0;
};

const auto hang = [](SingleInstance &) {
    for (;;)
        pause();
};

TEST(SingleInstance, TheFirstOfAFolderIsFirstAndTheFolderIsMade)
{
    const TemporaryFiles files;
    const FileURL folder = files.url(u"config/app"_s);

    SingleInstance instance(in(folder));

    EXPECT_EQ(instance.acquire(), Outcome::First);
    EXPECT_TRUE(files.exists(u"config/app/instance.lock"_s));
}

TEST(SingleInstance, ASecondOneHandsOverItsToken)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);
    first.listen();
    QSignalSpy requests(&first, &SingleInstance::activationRequested);

    auto second = acquireElsewhere(in(files.folder()), "token-7 of the desktop");

    EXPECT_EQ(resultOf(second), Outcome::HandedOver);
    ASSERT_EQ(requests.count(), 1);
    EXPECT_EQ(requests.first().first().toByteArray(), "token-7 of the desktop");
}

TEST(SingleInstance, ASecondOneWithoutATokenHandsOverToo)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);
    first.listen();
    QSignalSpy requests(&first, &SingleInstance::activationRequested);

    auto second = acquireElsewhere(in(files.folder()));

    EXPECT_EQ(resultOf(second), Outcome::HandedOver);
    ASSERT_EQ(requests.count(), 1);
    EXPECT_TRUE(requests.first().first().toByteArray().isEmpty());
}

TEST(SingleInstance, ManyStartsAtOnceAreAllAnswered)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);
    first.listen();

    std::vector<std::future<Outcome>> others;
    for (int count = 0; count < 30; ++count) // more than the socket queues
        others.push_back(acquireElsewhere(in(files.folder())));

    for (auto &other : others)
        EXPECT_EQ(resultOf(other), Outcome::HandedOver);
}

TEST(SingleInstance, OneThatAsksWhileTheFirstStillStartsIsAnsweredOnceItListens)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);

    auto second = acquireElsewhere(in(files.folder()));
    ASSERT_EQ(second.wait_for(50ms), std::future_status::timeout);
    first.listen();

    EXPECT_EQ(resultOf(second), Outcome::HandedOver);
}

TEST(SingleInstance, OneThatComesWhileTheFirstIsEndingWaitsAndThenStartsItself)
{
    const TemporaryFiles files;
    auto first = std::make_unique<SingleInstance>(in(files.folder()));
    ASSERT_EQ(first->acquire(), Outcome::First);
    first->listen();
    QSignalSpy requests(first.get(), &SingleInstance::activationRequested);

    first->stopListening();
    auto second = acquireElsewhere(in(files.folder()));
    ASSERT_EQ(second.wait_for(50ms), std::future_status::timeout);
    first.reset();

    EXPECT_EQ(resultOf(second), Outcome::First);
}

TEST(SingleInstance, OneThatHasAskedButWasNotAnsweredBeforeTheEndStartsItself)
{
    const TemporaryFiles files;
    auto first = std::make_unique<SingleInstance>(in(files.folder()));
    ASSERT_EQ(first->acquire(), Outcome::First);
    auto second = acquireElsewhere(in(files.folder()));
    ASSERT_EQ(second.wait_for(50ms), std::future_status::timeout); // it is connected, nobody reads

    first->stopListening();
    first.reset();

    EXPECT_EQ(resultOf(second), Outcome::First);
}

TEST(SingleInstance, FoldersDoNotKnowEachOther)
{
    const TemporaryFiles files;
    SingleInstance one(in(files.url(u"one"_s)));
    SingleInstance other(in(files.url(u"other"_s)));

    EXPECT_EQ(one.acquire(), Outcome::First);
    EXPECT_EQ(other.acquire(), Outcome::First);
}

TEST(SingleInstance, ACrashKeepsNobodyOut)
{
    const TemporaryFiles files;
    OtherProcess crashing(in(files.folder()), hang);
    ASSERT_TRUE(crashing.isFirst());

    crashing.kill();

    ASSERT_TRUE(files.exists(u"instance.socket"_s)); // the crash left it
    SingleInstance next(in(files.folder(), 0ms));
    EXPECT_EQ(next.acquire(), Outcome::First);
    next.listen();
    auto third = acquireElsewhere(in(files.folder()));
    EXPECT_EQ(resultOf(third), Outcome::HandedOver);
}

TEST(SingleInstance, OneThatHangsIsWaitedForNoLongerThanThePatience)
{
    const TemporaryFiles files;
    const OtherProcess hanging(in(files.folder()), hang);
    ASSERT_TRUE(hanging.isFirst());
    QElapsedTimer timer;
    timer.start();

    SingleInstance second(in(files.folder(), 200ms));

    EXPECT_EQ(second.acquire(), Outcome::NoAnswer);
    EXPECT_GE(timer.elapsed(), 200);
}

TEST(SingleInstance, OneThatHangsWithAFullQueueIsWaitedForNoLongerEither)
{
    const TemporaryFiles files;
    const OtherProcess hanging(in(files.folder()), hang);
    std::vector<std::future<Outcome>> others;
    for (int count = 0; count < 40; ++count)
        others.push_back(acquireElsewhere(in(files.folder(), 300ms)));

    for (auto &other : others)
        EXPECT_EQ(resultOf(other), Outcome::NoAnswer);
}

TEST(SingleInstance, AChildThatOutlivesTheFirstDoesNotKeepTheLock)
{
    const TemporaryFiles files;
    pid_t child = -1;
    {
        SingleInstance first(in(files.folder()));
        ASSERT_EQ(first.acquire(), Outcome::First);
        child = fork();
        if (child == 0) {
            execlp("sleep", "sleep", "60", nullptr);
            _exit(1);
        }
        // The child lets go of the lock when it becomes another program.
        QFile program(u"/proc/%1/comm"_s.arg(child));
        ASSERT_TRUE(eventually([&] {
            program.close();
            return program.open(QIODevice::ReadOnly) && program.readAll().startsWith("sleep");
        }));
    }

    SingleInstance next(in(files.folder(), 0ms));
    EXPECT_EQ(next.acquire(), Outcome::First);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

TEST(SingleInstance, WhereTheFolderCannotBeMadeTheProgramRunsWithoutALock)
{
    const TemporaryFiles files{{u"file"_s, "not a folder"}};
    SingleInstance one(in(files.url(u"file/config"_s)));
    SingleInstance other(in(files.url(u"file/config"_s)));

    EXPECT_EQ(one.acquire(), Outcome::First);
    EXPECT_EQ(other.acquire(), Outcome::First);
    one.listen();
    one.stopListening();
}

TEST(SingleInstance, WhereTheFolderCannotBeWrittenTheProgramRunsWithoutALock)
{
    const TemporaryFiles files;
    files.makeFolder(u"config"_s);
    letEverybodyIn(files.folder().path().toLocal8Bit().constData());
    QFile::setPermissions(files.url(u"config"_s).path(),
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);

    const int outcome = runWithoutPrivileges([&] {
        SingleInstance instance(in(files.url(u"config"_s), 0ms));
        return instance.acquire() == Outcome::First ? 0 : 1;
    });

    EXPECT_EQ(outcome, 0);
    EXPECT_FALSE(files.exists(u"config/instance.lock"_s));
}

TEST(SingleInstance, ALockLeftInAFolderThatHasBecomeReadOnlyStillWorks)
{
    const TemporaryFiles files{{u"config/instance.lock"_s, ""}};
    letEverybodyIn(files.folder().path().toLocal8Bit().constData());
    QFile::setPermissions(files.url(u"config/instance.lock"_s).path(), QFile::ReadOwner | QFile::ReadOther);
    QFile::setPermissions(files.url(u"config"_s).path(),
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);

    const int outcome = runWithoutPrivileges([&] {
        SingleInstance first(in(files.url(u"config"_s), 0ms));
        SingleInstance second(in(files.url(u"config"_s), 0ms));
        return first.acquire() == Outcome::First && second.acquire() == Outcome::NoAnswer ? 0 : 1;
    });

    EXPECT_EQ(outcome, 0);
}

TEST(SingleInstance, AFolderWithALongPathWorksLikeAnyOther)
{
    const TemporaryFiles files;
    const FileURL folder = files.url(QString(100, u'a') + u'/' + QString(100, u'b')); // longer than a socket's address
    SingleInstance first(in(folder));
    ASSERT_EQ(first.acquire(), Outcome::First);
    first.listen();

    auto second = acquireElsewhere(in(folder));

    EXPECT_EQ(resultOf(second), Outcome::HandedOver);
    EXPECT_TRUE(QFileInfo::exists(folder.appending(u"instance.socket").path()));
}

TEST(SingleInstance, TheSocketIsForTheUserAlone)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);

    const QFile::Permissions others = QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup | QFile::WriteGroup;
    EXPECT_FALSE(QFileInfo(files.url(u"instance.socket"_s).path()).permissions() & others);
}

/// What a stranger to the protocol sends.
struct Request {
    const char *name;
    QByteArray bytes;
};

class BadRequest : public ::testing::TestWithParam<Request>
{};

TEST_P(BadRequest, IsNeitherAnsweredNorHarmful)
{
    const TemporaryFiles files;
    SingleInstance first(in(files.folder()));
    ASSERT_EQ(first.acquire(), Outcome::First);
    first.listen();
    QSignalSpy requests(&first, &SingleInstance::activationRequested);

    const int stranger = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, files.url(u"instance.socket"_s).path().toLocal8Bit().constData(),
             sizeof address.sun_path);
    ASSERT_EQ(connect(stranger, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    const QByteArray bytes = GetParam().bytes;
    ASSERT_EQ(send(stranger, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL), bytes.size());
    shutdown(stranger, SHUT_WR);

    char answer = 0;
    EXPECT_TRUE(eventually([&] { return recv(stranger, &answer, 1, MSG_DONTWAIT) == 0; })); // closed, nothing said
    close(stranger);
    EXPECT_EQ(requests.count(), 0);
    auto second = acquireElsewhere(in(files.folder()));
    EXPECT_EQ(resultOf(second), Outcome::HandedOver);
}

INSTANTIATE_TEST_SUITE_P(SingleInstance, BadRequest,
                         ::testing::Values(Request{"Nothing", ""}, Request{"Half", "activate without an end"},
                                           Request{"Nonsense", "nonsense\n"},
                                           Request{"Flood", "activate " + QByteArray(20000, 'x')}),
                         [](const ::testing::TestParamInfo<Request> &row) { return row.param.name; });

} // namespace
} // namespace Tessaline
