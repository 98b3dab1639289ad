#include "tests/Services/WireClientFixture.h"

#include <QtNetwork/QNetworkProxy>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

using Kind = WireFailure::Kind;

} // namespace

// --- what is sent ---

TEST_F(WireClientTest, HealthIsAPlainGet)
{
    serve(answerWhole(httpReply("whatever")));

    EXPECT_TRUE(Started(m_client->checkHealth({})).result());

    EXPECT_EQ(m_server->request(), "GET /health HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port()) +
                                       "\r\nConnection: close\r\n\r\n");
}

TEST_F(WireClientTest, RequestsArePostsOfJsonWithNoOtherHeaders)
{
    serve(answerWhole(httpReply("{}")));
    ChatRequestPayload payload;
    payload.prompt = u"a/b"_s;
    payload.fileContent = u"é\n"_s;

    (void)Started(m_client->chat(payload, StreamPath::Chat, [](const StreamEvent &) {}, {})).result();
    (void)Started(m_client->suggestContext(u"a/b"_s, {})).result();
    (void)Started(m_client->expandConcept(u"word"_s, {})).result();
    (void)Started(m_client->digestFile(u"a.md"_s, u""_s, {})).result();

    const QList<std::pair<QByteArray, QByteArray>> expected = {
        {"/v1/chat/completions", R"({"prompt":"a\/b","file_content":"é\n","temperature":0.7,"top_p":0.9})"},
        {"/v1/suggest-context", R"({"content":"a\/b"})"},
        {"/v1/expand-concept", R"({"concept":"word"})"},
        {"/v1/digest-file", R"({"filename":"a.md","content":""})"},
    };
    ASSERT_EQ(m_server->requests().size(), expected.size());
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const auto &[path, body] = expected.at(i);
        EXPECT_EQ(m_server->requests().at(i),
                  "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port()) +
                      "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\n\r\n" + body);
    }
}

TEST_F(WireClientTest, ALargeDocumentIsSentWhole)
{
    serve(answerWhole(httpReply("")));
    ChatRequestPayload payload;
    payload.fileContent = u"A line of text. é\n"_s.repeated(300'000);

    EXPECT_TRUE(Started(m_client->chat(payload, StreamPath::Chat, [](const StreamEvent &) {}, {})).result());

    EXPECT_EQ(m_server->request().count("A line of text. é\\n"), 300'000);
}

TEST_F(WireClientTest, NoProxyIsUsedWhateverTheEnvironmentSays)
{
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    const LoopbackServer proxy(answerWhole(httpReply("{\"digest\":\"of the proxy\"}")));
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.port());
    for (const char *name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"})
        qputenv(name, address);
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    serve(answerWhole(httpReply(R"({"digest":"d"})")));

    EXPECT_EQ(digest().result().value(), u"d"_s);

    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, proxy.port()));
    EXPECT_EQ(digest().result().value(), u"d"_s);
    EXPECT_EQ(proxy.connectionCount(), 0);

    for (const char *name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"})
        qunsetenv(name);
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    QNetworkProxy::setApplicationProxy(before);
}

TEST_F(WireClientTest, CookiesAreNotSentBackAndRepliesNotKept)
{
    serve([count = 0](QTcpSocket &connection, const QByteArray &) mutable {
        QByteArray reply = httpReply(R"({"digest":")" + QByteArray::number(++count) + "\"}");
        reply.replace("\r\n\r\n", "\r\nSet-Cookie: a=b; Path=/\r\nCache-Control: max-age=600\r\nETag: \"x\"\r\n\r\n");
        connection.write(reply);
        connection.disconnectFromHost();
    });

    EXPECT_EQ(digest().result().value(), u"1"_s);
    EXPECT_EQ(digest().result().value(), u"2"_s);

    ASSERT_EQ(m_server->requests().size(), 2);
    EXPECT_FALSE(m_server->requests().at(1).toLower().contains("cookie"));
    EXPECT_FALSE(m_server->requests().at(1).toLower().contains("if-none-match"));
}

// --- whole bodies ---

TEST_F(WireClientTest, RepliesAreReadAsTheirRecords)
{
    serve([](QTcpSocket &connection, const QByteArray &request) {
        const bool isConcept = request.startsWith("POST /v1/expand-concept");
        connection.write(
            httpReply(isConcept ? R"({"status":"ambiguous","options":[]})" : R"({"suggestions":["b","a"]})"));
        connection.disconnectFromHost();
    });

    EXPECT_EQ(Started(m_client->suggestContext(u"x"_s, {})).result().value(), (QStringList{u"b"_s, u"a"_s}));
    EXPECT_EQ(Started(m_client->expandConcept(u"x"_s, {})).result().value(),
              (ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>()}));
}

TEST_F(WireClientTest, ABodyCutAtEveryByteArrivesWhole)
{
    serve([](QTcpSocket &connection, const QByteArray &) {
        writeByBytes(connection, httpReply("{\"digest\":\"é📝\"}"));
        connection.disconnectFromHost();
    });

    EXPECT_EQ(digest().result().value(), u"é📝"_s);
}

TEST_F(WireClientTest, ABodyThatDoesNotDecodeIsMalformed)
{
    for (const char *body : {"", "{}", "not json", "{\"digest\":1}"}) {
        serve(answerWhole(httpReply(body)));

        EXPECT_EQ(digest().result().failure(),
                  (WireFailure{Kind::Malformed, -1, u"The server's answer could not be read."_s}))
            << body;
    }
}

TEST_F(WireClientTest, ABodyBeyondTheBoundFailsAndClosesTheConnection)
{
    m_options.longestReply = 1000;
    m_options.healthTimeout = std::chrono::seconds(60); // not the reason why that fails
    serve(answerBegin(kOpenHead + QByteArray(1001, 'x')));

    expectTransportFailure(digest().result().failure(), u"The server's answer is too long."_s);
    EXPECT_FALSE(Started(m_client->checkHealth({})).result());

    EXPECT_TRUE(allConnectionsClose());
}

// --- streams ---

TEST_F(WireClientTest, EventsArriveInTheirOrder)
{
    serve(answerWhole(
        kOpenHead +
        "data: {\"context\":{\"context_window_tokens\":1,\"estimated_input_tokens\":2,\"active_document_chars\":3,"
        "\"attached_context_count\":4,\"workspace_context_count\":5,\"history_message_count\":6}}\n\n"
        "event: message\r\n: comment\rdata:{\"token\":\"a\"}\r\n\r\ndata: nonsense\n"
        "data: [DONE]\ndata: {\"error\":\"e\"}\ndata: {\"token\":\"b\"}"));

    EXPECT_TRUE(chat().result());

    EXPECT_EQ(m_events, (QList<StreamEvent>{ContextStatsEvent{{1, 2, 3, 4, 5, 6}}, TokenEvent{u"a"_s},
                                            ErrorEvent{u"e"_s}, TokenEvent{u"b"_s}}));
}

TEST_F(WireClientTest, AStreamCutAtEveryByteArrivesWhole)
{
    serve([](QTcpSocket &connection, const QByteArray &) {
        connection.write(kChunkedHead);
        for (const char byte : tokenLine("é") + "data: {\"token\":\"📝\"}\r\n\r\ndata: [DONE]\r")
            writeByBytes(connection, chunk(QByteArray(1, byte)));
        writeByBytes(connection, chunk(""));
    });

    EXPECT_TRUE(chat().result());

    EXPECT_EQ(m_text, u"é📝"_s);
}

TEST_F(WireClientTest, EachTokenIsHandedOnAsItComes)
{
    serve(answerBegin(kOpenHead + tokenLine("a")));
    const auto running = chat();

    ASSERT_TRUE(eventually([this] { return m_text == u"a"_s; }));
    m_server->connection()->write(tokenLine("b"));
    ASSERT_TRUE(eventually([this] { return m_text == u"ab"_s; }));

    EXPECT_FALSE(running.isOver());
    m_server->connection()->disconnectFromHost();
    EXPECT_TRUE(running.result());
}

TEST_F(WireClientTest, AStreamWithoutDataEndsWell)
{
    serve(answerWhole(kOpenHead));

    EXPECT_TRUE(chat().result());

    EXPECT_TRUE(m_events.isEmpty());
}

TEST_F(WireClientTest, TheChatReadsOnBehindDoneUntilTheServerCloses)
{
    serve(answerBegin(kOpenHead + "data: [DONE]\n" + tokenLine("a")));
    const auto running = chat();

    ASSERT_TRUE(eventually([this] { return m_text == u"a"_s; }));
    EXPECT_FALSE(running.isOver());

    m_server->connection()->disconnectFromHost();
    EXPECT_TRUE(running.result());
}

TEST_F(WireClientTest, TheOneShotEndsAtDoneAndClosesTheConnection)
{
    serve(answerBegin(kOpenHead + tokenLine("a") +
                      "data:{\"token\":\"no blank\"}\ndata:[DONE]\ndata: {\"error\":\"e\"}\n" + tokenLine("b") +
                      "data: [DONE]\n" + tokenLine("c")));

    EXPECT_TRUE(chat(StreamPath::OneShot).result());

    EXPECT_EQ(m_text, u"ab"_s);
    EXPECT_EQ(m_events.size(), 2);
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, TheOneShotEndsWithoutDoneWhenTheServerCloses)
{
    serve(answerWhole(kOpenHead + tokenLine("a") + "data:[DONE]\n" + tokenLine("b")));

    EXPECT_TRUE(chat(StreamPath::OneShot).result());

    EXPECT_EQ(m_text, u"ab"_s);
}

TEST_F(WireClientTest, ALineBeyondTheBoundFailsAndClosesTheConnection)
{
    m_options.longestReply = 100;
    serve(answerBegin(kOpenHead + tokenLine("a") + QByteArray(101, 'x')));

    expectTransportFailure(chat().result().failure(), u"The server's answer is too long."_s);

    EXPECT_EQ(m_text, u"a"_s);
    EXPECT_TRUE(allConnectionsClose());
}

TEST_F(WireClientTest, AStreamMayBeLongerThanAnyLine)
{
    m_options.longestReply = 100;
    serve(answerWhole(kOpenHead + tokenLine("abcdefgh").repeated(5000)));

    EXPECT_TRUE(chat().result());

    EXPECT_EQ(m_text.size(), 8 * 5000);
}

} // namespace Tessaline
