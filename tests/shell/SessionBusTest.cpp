#include "shell/SessionBus.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A bus that says what the test says, in a folder whose name has to be written in the address as "%20".
class Bus : public ::testing::Test
{
protected:
    Bus()
    {
        m_files.makeFolder(u"a b"_s);
        EXPECT_TRUE(m_server.listen(m_files.url(u"a b/bus"_s).path()));
    }

    QByteArray address() const
    {
        return "unix:guid=1,path=" + m_files.folder().path().toUtf8() + "/a%20b/bus;unix:path=/another";
    }

    QLocalSocket *take()
    {
        EXPECT_TRUE(eventually([this] { return m_server.hasPendingConnections(); }));
        return m_server.nextPendingConnection();
    }

    TemporaryFiles m_files;
    QLocalServer m_server;
};

TEST_F(Bus, AnswersTheLineThatEveryClientBeginsWith)
{
    SessionBus bus(address());
    QLocalSocket *connection = take();
    QByteArray hello;
    ASSERT_TRUE(eventually([&] { return (hello += connection->readAll()).endsWith("\r\n"); }));
    EXPECT_TRUE(hello.startsWith(QByteArrayView("\0AUTH EXTERNAL ", 15)));
    EXPECT_FALSE(bus.answersWithin(0ms));

    connection->write("OK 1234\r\n");
    ASSERT_TRUE(connection->waitForBytesWritten());

    EXPECT_TRUE(bus.answersWithin(kPatience));
    EXPECT_TRUE(bus.answersWithin(0ms)) << "from then on";
}

TEST_F(Bus, ThatSaysNothingIsWaitedForNoLongerThanThePatience)
{
    SessionBus bus(address());

    EXPECT_FALSE(bus.answersWithin(50ms));
    EXPECT_FALSE(bus.answersWithin(-1ms));
}

TEST_F(Bus, ThatHangsUpKeepsNobodyWaiting)
{
    SessionBus bus(address());

    take()->abort();

    EXPECT_TRUE(bus.answersWithin(kPatience));
}

TEST_F(Bus, ThatTakesNoMoreConnectionsIsSilent)
{
    std::vector<std::unique_ptr<SessionBus>> waiting;
    for (int i = 0; i < 200; ++i) // more than the queue holds
        waiting.push_back(std::make_unique<SessionBus>(address()));

    EXPECT_FALSE(waiting.back()->answersWithin(20ms));
}

TEST_F(Bus, WhereNobodyListensKeepsNobodyWaiting)
{
    m_server.close();

    EXPECT_TRUE(SessionBus(address()).answersWithin(0ms));
}

TEST(SessionBus, AddressesThatAreNotAskedKeepNobodyWaiting)
{
    for (const char *address : {"", "autolaunch:", "tcp:host=localhost,port=1", "unix:tmpdir=/tmp", "nonsense"})
        EXPECT_TRUE(SessionBus(address).answersWithin(0ms)) << address;
    EXPECT_TRUE(SessionBus("unix:path=/" + QByteArray(200, 'x')).answersWithin(0ms));
    EXPECT_TRUE(SessionBus("unix:abstract=/tessaline/nobody-listens-here").answersWithin(0ms));
}

} // namespace
} // namespace Tessaline
