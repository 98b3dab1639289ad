#include "tests/Services/WireClientFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Kind = WireFailure::Kind;

} // namespace

// --- failures ---

TEST_F(WireClientTest, OnlyStatus200IsASuccess)
{
    for (const auto &[line, status] : {std::pair("204 No Content", 204),
                                       {"201 Created", 201},
                                       {"302 Found", 302},
                                       {"401 Unauthorized", 401},
                                       {"404 Not Found", 404},
                                       {"407 Proxy Authentication Required", 407},
                                       {"500 Oops", 500},
                                       {"503 Loading", 503}}) {
        QByteArray reply = httpReply(status == 204 ? "" : tokenLine("a"), line);
        reply.replace("\r\n\r\n", "\r\nLocation: /health\r\nWWW-Authenticate: Basic realm=\"x\"\r\n\r\n");
        serve(answerWhole(reply));
        const WireFailure expected{Kind::Status, status, u"The server answered with status %1."_s.arg(status)};

        EXPECT_EQ(chat().result().failure(), expected);
        EXPECT_EQ(digest().result().failure(), expected);
        EXPECT_FALSE(Started(m_client->checkHealth({})).result());

        EXPECT_EQ(m_server->requests().size(), 3) << line; // none followed, none repeated
    }
    EXPECT_TRUE(m_events.isEmpty());
}

TEST_F(WireClientTest, AnEndlessReplyOfAnotherStatusIsNotWaitedFor)
{
    serve(answerBegin(QByteArray(kOpenHead).replace("200 OK", "500 Oops") + tokenLine("a")));

    EXPECT_EQ(chat().result().failure().status, 500);

    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, WithoutAServerThereIsNoConnection)
{
    serve(noAnswer());
    m_server.reset();

    expectTransportFailure(chat().result().failure(), u"Could not connect to the server."_s);
    expectTransportFailure(digest().result().failure(), u"Could not connect to the server."_s);
    EXPECT_FALSE(Started(m_client->checkHealth({})).result());
}

TEST_F(WireClientTest, ARequestWhoseConnectionClosesWithoutAnAnswerIsNotRepeated)
{
    serve(answerWhole(""));

    expectTransportFailure(chat().result().failure(), u"The network connection was lost."_s);
    expectTransportFailure(digest().result().failure(), u"The network connection was lost."_s);

    EXPECT_FALSE(Started(m_client->checkHealth({})).result());
    EXPECT_EQ(m_server->requests().size(), 3);
}

TEST_F(WireClientTest, AStreamThatBreaksOffFailsBehindWhatHasArrived)
{
    for (const QByteArray &head :
         {kChunkedHead + chunk(tokenLine("a")), "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n" + tokenLine("a")}) {
        m_text.clear();
        serve(answerBegin(head));
        const auto running = chat();
        ASSERT_TRUE(eventually([this] { return m_text == u"a"_s; }));

        m_server->connection()->disconnectFromHost();

        expectTransportFailure(running.result().failure(), u"The network connection was lost."_s);
    }
}

TEST_F(WireClientTest, ABodyThatBreaksOffIsNotDecoded)
{
    serve(answerWhole("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n{\"digest\":\"d\"}"));

    expectTransportFailure(digest().result().failure(), u"The network connection was lost."_s);
}

TEST_F(WireClientTest, WhatIsNoHttpIsATransportFailure)
{
    serve(answerWhole("SSH-2.0-something\r\n\r\n"));

    EXPECT_EQ(chat().result().failure().kind, Kind::Transport);
    EXPECT_FALSE(Started(m_client->checkHealth({})).result());
}

// --- time ---

TEST(WireOptions, AllowHalfASecondForHealthTenMinutesForAStreamAndOneForABodyOf64MiB)
{
    const WireOptions options;
    EXPECT_EQ(options.healthTimeout, 500ms);
    EXPECT_EQ(options.streamTimeout, 10min);
    EXPECT_EQ(options.bodyTimeout, 1min);
    EXPECT_EQ(options.longestReply, 64 * 1024 * 1024);
}

TEST_F(WireClientTest, ASilentServerIsGivenUpAfterTheIdleTime)
{
    m_options.healthTimeout = m_options.streamTimeout = m_options.bodyTimeout = 100ms;
    serve(noAnswer());

    expectTransportFailure(chat().result().failure(), u"The request timed out."_s);
    expectTransportFailure(digest().result().failure(), u"The request timed out."_s);
    EXPECT_FALSE(Started(m_client->checkHealth({})).result());

    EXPECT_TRUE(allConnectionsClose());
    EXPECT_EQ(m_server->requests().size(), 3);
}

TEST_F(WireClientTest, AStreamThatFallsSilentIsGivenUp)
{
    m_options.streamTimeout = 300ms;
    serve(answerBegin(kOpenHead + tokenLine("a")));

    expectTransportFailure(chat().result().failure(), u"The request timed out."_s);

    EXPECT_EQ(m_text, u"a"_s);
}

TEST_F(WireClientTest, AStreamThatGoesOnMayTakeLongerThanTheIdleTime)
{
    m_options.streamTimeout = 2s;
    QTimer pace;
    serve([&pace, count = 0](QTcpSocket &connection, const QByteArray &) mutable {
        connection.write(kOpenHead);
        QObject::connect(&pace, &QTimer::timeout, &connection, [&, to = &connection] {
            to->write(tokenLine("a"));
            if (++count == 6)
                to->disconnectFromHost();
        });
        pace.start(400ms);
    });

    EXPECT_TRUE(chat().result());

    EXPECT_EQ(m_text, u"aaaaaa"_s);
}

// --- stopping ---

TEST_F(WireClientTest, AStopBeforeTheStartSendsNothing)
{
    serve(noAnswer());
    m_stop.request_stop();

    EXPECT_EQ(chat().result().failure().kind, Kind::Stopped);
    EXPECT_EQ(digest().result().failure().kind, Kind::Stopped);
    EXPECT_FALSE(Started(m_client->checkHealth(m_stop.get_token())).result());

    EXPECT_EQ(m_server->connectionCount(), 0);
}

TEST_F(WireClientTest, AStopBeforeTheFirstByteClosesTheConnection)
{
    serve(noAnswer());
    const auto stream = chat();
    const auto body = digest();
    ASSERT_TRUE(eventually([this] { return m_server->requests().size() == 2; }));

    m_stop.request_stop();

    EXPECT_TRUE(stream.isOver());
    EXPECT_TRUE(body.isOver());
    EXPECT_EQ(stream.result().failure(), (WireFailure{Kind::Stopped, -1, QString()}));
    EXPECT_EQ(body.result().failure().kind, Kind::Stopped);
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, AStopInMidStreamClosesTheConnectionAndKeepsWhatCame)
{
    serve(answerBegin(kOpenHead + tokenLine("a")));
    const auto running = chat();
    ASSERT_TRUE(eventually([this] { return m_text == u"a"_s; }));

    m_stop.request_stop();

    EXPECT_EQ(running.result().failure().kind, Kind::Stopped);
    EXPECT_EQ(m_text, u"a"_s);
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, AStopInsideTheSinkIsTheLastItHears)
{
    serve(answerBegin(kOpenHead + tokenLine("a") + tokenLine("b")));
    bool isOverInside = false;
    const Started<WireResult<std::monostate>> *running = nullptr;
    m_onEvent = [&] {
        m_stop.request_stop();
        isOverInside = running->isOver();
    };
    const auto started = chat();
    running = &started;

    EXPECT_EQ(started.result().failure().kind, Kind::Stopped);

    EXPECT_FALSE(isOverInside);
    EXPECT_EQ(m_text, u"a"_s);
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, TheEndOfTheClientEndsItsRequests)
{
    serve(answerBegin(kOpenHead + tokenLine("a")));
    const auto stream = chat();
    const auto body = digest();
    const Started health(m_client->checkHealth({}));
    ASSERT_TRUE(eventually([this] { return m_text == u"a"_s && m_server->requests().size() == 3; }));

    m_client.reset();

    EXPECT_TRUE(stream.isOver() && body.isOver() && health.isOver());
    EXPECT_EQ(stream.result().failure().kind, Kind::Stopped);
    EXPECT_FALSE(health.result());
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, AStopAfterTheEndChangesNothing)
{
    serve(answerWhole(kOpenHead + tokenLine("a")));
    const auto running = chat();

    EXPECT_TRUE(running.result());
    m_stop.request_stop();

    EXPECT_TRUE(running.result());
}

TEST_F(WireClientTest, SeveralRequestsRunAtTheSameTime)
{
    serve([](QTcpSocket &connection, const QByteArray &request) {
        if (request.startsWith("POST /v1/chat")) {
            connection.write(kOpenHead + tokenLine("a"));
        } else {
            connection.write(httpReply("{\"digest\":\"d\"}"));
            connection.disconnectFromHost();
        }
    });
    const auto stream = chat();
    ASSERT_TRUE(eventually([this] { return m_text == u"a"_s; }));

    EXPECT_EQ(digest().result().value(), u"d"_s);
    EXPECT_TRUE(Started(m_client->checkHealth({})).result());

    EXPECT_FALSE(stream.isOver());
    m_stop.request_stop();
    EXPECT_EQ(stream.result().failure().kind, Kind::Stopped);
}

} // namespace Tessaline
