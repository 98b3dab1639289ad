#include "server/HttpServer.h"
#include "server/HttpClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaline::Server {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A connection whose bytes the test writes itself.
class RawClient
{
public:
    explicit RawClient(int port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<uint16_t>(port));
        EXPECT_EQ(connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    }
    ~RawClient() { hangUp(); }
    RawClient(const RawClient &) = delete;
    RawClient &operator=(const RawClient &) = delete;

    /// False if the server has closed its end.
    bool write(std::string_view bytes) const
    {
        return send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    /// All that comes until the server closes the connection, or until `enough` has come.
    std::string read(std::string_view enough = {}) const
    {
        std::string all;
        char bytes[4096];
        for (ssize_t count = 0; (count = recv(m_socket, bytes, sizeof bytes, 0)) > 0;) {
            all.append(bytes, static_cast<size_t>(count));
            if (!enough.empty() && all.find(enough) != std::string::npos)
                break;
        }
        return all;
    }

    bool hasAnswer() const { return has(POLLIN); }
    bool isClosed() const { return has(POLLHUP) || has(POLLERR); }

    void hangUp()
    {
        if (m_socket != -1)
            close(m_socket);
        m_socket = -1;
    }

private:
    bool has(short event) const
    {
        pollfd asked{m_socket, POLLIN, 0};
        return poll(&asked, 1, 0) > 0 && (asked.revents & event) != 0;
    }

    int m_socket;
};

/// A server with a path for each kind of answer.
class HttpServerTest : public testing::Test
{
protected:
    explicit HttpServerTest(const ClientLimits &limits = {}) : m_server(limits)
    {
        EXPECT_TRUE(m_server.bind(0));
        Routes routes;
        routes.health = [] { return Reply{200, "{}"}; };
        routes.posts["/echo"] = [](const std::string &body, const std::stop_token &) { return Reply{200, body}; };
        routes.posts["/throw"] = [](const std::string &, const std::stop_token &) -> Reply { throw 1; };
        routes.posts["/wait"] = [this](const std::string &, const std::stop_token &stop) {
            waitFor(stop);
            return Reply{200, "{}"};
        };
        routes.posts["/stream"] = [this](const std::string &, const std::stop_token &stop) {
            return EventStream([this, stop](const EventWriter &write) {
                write("data: one\n\n");
                waitFor(stop);
                write("data: two\n\n");
            });
        };
        routes.posts["/flood"] = [](const std::string &, const std::stop_token &) {
            return EventStream([](const EventWriter &write) {
                while (write("data: " + std::string(10000, 'x') + "\n\n")) {
                }
            });
        };
        m_thread = std::thread([this, routes] { m_server.run(routes); });
    }

    ~HttpServerTest() override
    {
        if (m_thread.joinable())
            end();
    }

    void end()
    {
        m_server.stop();
        m_thread.join();
    }

    int port() const { return m_server.port(); }
    std::string host() const { return "Host: 127.0.0.1:" + std::to_string(port()) + "\r\n"; }
    std::string headers() const { return host() + "Content-Type: application/json\r\n"; }

    std::string answerTo(const std::string &request) const
    {
        const RawClient client(port());
        client.write(request);
        return client.read();
    }

    std::string post(const std::string &path, const std::string &body) const
    {
        return "POST " + path + " HTTP/1.1\r\n" + headers() + "Content-Length: " + std::to_string(body.size()) +
               "\r\n\r\n" + body;
    }

    /// The head of one whose body is to follow.
    std::string begunPost(size_t size) const
    {
        return "POST /echo HTTP/1.1\r\n" + headers() + "Content-Length: " + std::to_string(size) + "\r\n\r\n";
    }

    bool isWell() const { return httpCall({"127.0.0.1", port(), {}}, {"/health", {}, {}}, {}).status == 200; }

    /// Waits until the client has gone, and counts that.
    void waitFor(const std::stop_token &stop)
    {
        ++m_begun;
        while (!stop.stop_requested())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ++m_stopped;
    }

    template <class Condition>
    static bool comesTrue(Condition condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition() && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return condition();
    }

    std::atomic<int> m_begun = 0;
    std::atomic<int> m_stopped = 0;

private:
    HttpServer m_server;
    std::thread m_thread;
};

/// The same with so little room that a test meets the limits, and with all patience.
class HttpServerOfFewTest : public HttpServerTest
{
protected:
    static constexpr size_t kBody = 1000;

    HttpServerOfFewTest()
        : HttpServerTest({.requestTime = std::chrono::hours(1),
                          .silence = std::chrono::hours(1),
                          .largestHead = 500,
                          .largestBody = kBody,
                          .mostBytes = 1500,
                          .mostConnections = 4,
                          .mostAnswers = 2})
    {}
};

/// The same without patience for clients that fall silent.
class SilentClientsTest : public HttpServerTest
{
protected:
    SilentClientsTest()
        : HttpServerTest({.requestTime = std::chrono::hours(1), .silence = std::chrono::milliseconds(100)})
    {}
};

/// The same without patience for clients that are slow without falling silent.
class SlowClientsTest : public HttpServerTest
{
protected:
    SlowClientsTest()
        : HttpServerTest({.requestTime = std::chrono::milliseconds(100), .silence = std::chrono::hours(1)})
    {}
};

} // namespace

TEST_F(HttpServerTest, AnswersOneRequestForEachConnection)
{
    const std::string answer = answerTo(post("/echo", "{\"ü\":1}") + post("/echo", "second"));

    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(answer, HasSubstr("Content-Type: application/json\r\n"));
    EXPECT_TRUE(answer.ends_with("\r\n\r\n{\"ü\":1}")) << answer;
}

TEST_F(HttpServerTest, KeepsWebPagesAndOtherNamesOut)
{
    EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 200"));
    for (const char *header : {"Origin: null", "Origin:", "oRIGIN: http://x", "Sec-Fetch-Site: cross-site",
                               "Sec-Fetch-Site: none\r\nSec-Fetch-Site: none", "Host: 127.0.0.1"})
        EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\n" + host() + header + "\r\n\r\n"), StartsWith("HTTP/1.1 403"))
            << header;
    EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\n" + host() + "Origin : http://x\r\n\r\n"),
                StartsWith("HTTP/1.1 400"));
    EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\nHost: evil.example:" + std::to_string(port()) + "\r\n\r\n"),
                StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\n\r\n"), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(answerTo("GET /health HTTP/1.0\r\n\r\n"), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(answerTo("OPTIONS /echo HTTP/1.1\r\n" + host() + "Origin: http://x\r\n\r\n"),
                StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(answerTo("POST /echo HTTP/1.1\r\n" + headers() + "Origin: http://x\r\nContent-Length: 5\r\n\r\nhello"),
                StartsWith("HTTP/1.1 403"));
}

TEST_F(HttpServerTest, KnowsItsPathsAndTheirMethods)
{
    EXPECT_THAT(answerTo("GET / HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 404"));
    EXPECT_THAT(answerTo("GET /echo HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 405"));
    EXPECT_THAT(answerTo(post("/health", "")), StartsWith("HTTP/1.1 405"));
    EXPECT_THAT(answerTo("DELETE /echo HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 405"));
    EXPECT_THAT(answerTo("NONSENSE /echo HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 400"));
    EXPECT_THAT(answerTo("\r\n\r\n"), StartsWith("HTTP/1.1 400"));
    EXPECT_THAT(answerTo("GET http://evil.example/ HTTP/1.1\r\n" + host() + "\r\n"), StartsWith("HTTP/1.1 4"));
    EXPECT_TRUE(isWell());
}

TEST_F(HttpServerTest, SurvivesAnAnswerThatThrows)
{
    EXPECT_THAT(answerTo(post("/throw", "x")), StartsWith("HTTP/1.1 500"));
    EXPECT_TRUE(isWell());
}

TEST_F(HttpServerTest, TakesBodiesInChunks)
{
    const RawClient client(port());
    EXPECT_TRUE(client.write("POST /echo HTTP/1.1\r\n" + headers() +
                             "Transfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n"));

    EXPECT_TRUE(client.read().ends_with("\r\n\r\nabc"));
}

TEST_F(HttpServerTest, RefusesWhatIsTooLarge)
{
    const ClientLimits limits;
    const std::string header = "X: " + std::string(4000, 'x') + "\r\n";
    std::string endless = "GET /health HTTP/1.1\r\n";
    while (endless.size() < limits.largestHead)
        endless += header;
    EXPECT_THAT(answerTo(endless), StartsWith("HTTP/1.1 431"));
    EXPECT_THAT(answerTo("GET /" + std::string(9000, 'x') + " HTTP/1.1\r\n" + host() + "\r\n"),
                StartsWith("HTTP/1.1 414"));

    // The body's length is believed, and the body is not waited for.
    for (const std::string &length : {std::to_string(limits.largestBody + 1), std::string(40, '9')})
        EXPECT_THAT(answerTo("POST /echo HTTP/1.1\r\n" + headers() + "Content-Length: " + length + "\r\n\r\nx"),
                    StartsWith("HTTP/1.1 413"));
    EXPECT_TRUE(isWell());
}

TEST_F(HttpServerTest, WaitsForNoBodyWhoseEndIsNotTold)
{
    const std::string post = "POST /echo HTTP/1.1\r\n" + headers();
    EXPECT_THAT(answerTo(post + "\r\nx"), StartsWith("HTTP/1.1 411"));
    for (const char *lengths :
         {"Content-Length: -1\r\n", "Content-Length: x\r\n", "Content-Length: 1\r\nContent-Length: 1\r\n",
          "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n", "Transfer-Encoding: gzip, chunked\r\n"})
        EXPECT_THAT(answerTo(post + lengths + "\r\nx"), StartsWith("HTTP/1.1 400")) << lengths;
}

TEST_F(HttpServerTest, UnpacksNothingAndTakesNothingButJson)
{
    const auto statusWith = [this](const std::string &header) {
        return answerTo("POST /echo HTTP/1.1\r\n" + host() + header + "Content-Length: 2\r\n\r\n{}");
    };

    EXPECT_THAT(statusWith("Content-Type: application/json; charset=utf-8\r\n"), StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(statusWith(""), StartsWith("HTTP/1.1 200")) << "what else could it be";
    for (const char *type : {"text/plain", "multipart/form-data; boundary=b", "application/x-www-form-urlencoded"})
        EXPECT_THAT(statusWith("Content-Type: " + std::string(type) + "\r\n"), StartsWith("HTTP/1.1 415")) << type;
    for (const char *coding : {"gzip", "br", "deflate"})
        EXPECT_THAT(statusWith("Content-Type: application/json\r\nContent-Encoding: " + std::string(coding) + "\r\n"),
                    StartsWith("HTTP/1.1 415"))
            << coding;
    EXPECT_THAT(answerTo("GET /health HTTP/1.1\r\n" + host() + "Range: bytes=0-0\r\n\r\n"), StartsWith("HTTP/1.1 400"));
}

TEST_F(HttpServerTest, TellsAClientThatAsksFirstToGoOn)
{
    const std::string head = "POST /echo HTTP/1.1\r\n" + headers() + "Content-Length: 2\r\n";
    const RawClient polite(port());
    polite.write(head + "Expect: 100-continue\r\n\r\n");
    EXPECT_THAT(polite.read("\r\n\r\n"), StartsWith("HTTP/1.1 100"));
    polite.write("ok");
    EXPECT_TRUE(polite.read().ends_with("ok"));

    EXPECT_THAT(answerTo(head + "Expect: wonders\r\n\r\n"), StartsWith("HTTP/1.1 417"));
}

TEST_F(HttpServerTest, SurvivesClientsThatGoAtEveryByte)
{
    const std::string request = post("/flood", "{\"prompt\":\"x\"}");
    for (size_t length = 0; length <= request.size(); ++length) {
        RawClient client(port());
        client.write(request.substr(0, length));
        client.hangUp();
    }

    EXPECT_TRUE(isWell());
    end(); // no answer goes on
}

TEST_F(HttpServerTest, AnswersOthersWhileTwoHundredClientsSaySlowlyWhatTheyWant)
{
    std::vector<std::unique_ptr<RawClient>> slow;
    for (int client = 0; client < 200; ++client) {
        slow.push_back(std::make_unique<RawClient>(port()));
        slow.back()->write(client % 2 == 0 ? std::string("POST /ec")
                                           : "POST /echo HTTP/1.1\r\n" + headers() + "Content-Length: 100\r\n\r\nhalf");
    }

    EXPECT_TRUE(isWell());
    EXPECT_THAT(answerTo(post("/echo", "quick")), HasSubstr("quick"));

    // Who comes to its end after all is answered.
    const RawClient late(port());
    late.write("POST /ec");
    late.write("ho HTTP/1.1\r\n" + headers() + "Content-Length: 2\r\n\r\no");
    late.write("k");
    EXPECT_TRUE(late.read().ends_with("ok"));
}

TEST_F(HttpServerTest, TellsAnAnswerThatItsClientHasGone)
{
    RawClient waiting(port());
    RawClient streaming(port());
    waiting.write(post("/wait", "x"));
    streaming.write(post("/stream", "x"));
    EXPECT_THAT(streaming.read("data: one\n\n"), HasSubstr("data: one\n\n")) << "written at once";
    ASSERT_TRUE(comesTrue([this] { return m_begun == 2; }));
    EXPECT_EQ(m_stopped, 0);

    waiting.hangUp();
    streaming.hangUp();

    EXPECT_TRUE(comesTrue([this] { return m_stopped == 2; }));
    EXPECT_TRUE(isWell());
}

TEST_F(HttpServerTest, EndsWhatIsBeingAnsweredWhenItStops)
{
    const RawClient streaming(port());
    streaming.write(post("/stream", "x"));
    EXPECT_THAT(streaming.read("data: one\n\n"), HasSubstr("text/event-stream"));

    end();

    EXPECT_EQ(m_stopped, 1);
    streaming.read(); // comes to an end
}

TEST_F(HttpServerTest, NoticesThatItsPortIsTaken)
{
    HttpServer second;

    EXPECT_FALSE(second.bind(port()));
}

TEST_F(SilentClientsTest, AreGivenUp)
{
    // NOTE: repeated, since a test that is held up for so long is taken for silent before it has said a word.
    EXPECT_TRUE(comesTrue([this] { return answerTo(begunPost(10) + "half").starts_with("HTTP/1.1 408"); }));
    EXPECT_TRUE(comesTrue([this] { return answerTo("GET /health HTTP/1.1\r\nHost").starts_with("HTTP/1.1 408"); }));
    EXPECT_EQ(answerTo("GET /hea"), "");

    // Also who does not read what is written.
    EXPECT_TRUE(comesTrue([this] {
        const RawClient deaf(port());
        deaf.write(post("/flood", "x"));
        return comesTrue([&deaf] { return deaf.isClosed(); });
    }));
}

TEST_F(SlowClientsTest, AreGivenUp)
{
    EXPECT_TRUE(comesTrue([this] {
        const RawClient slow(port());
        slow.write(begunPost(1'000'000));
        while (slow.write("x") && !slow.hasAnswer())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return slow.read().starts_with("HTTP/1.1 408");
    }));
}

TEST_F(HttpServerOfFewTest, EndsAtOnceWhateverItsClientsDo)
{
    const RawClient silent(port());
    const RawClient halfHead(port());
    const RawClient halfBody(port());
    const RawClient streaming(port());
    halfHead.write("POST /ec");
    halfBody.write(begunPost(100) + "half");
    streaming.write(post("/flood", "x"));
    streaming.read("data: ");

    end(); // although it has the patience of an hour

    EXPECT_EQ(silent.read(), "");
    EXPECT_THAT(halfBody.read(), testing::Not(StartsWith("HTTP/1.1 200")));
}

TEST_F(HttpServerOfFewTest, TakesBodiesUpToTheLastByteThatIsAllowed)
{
    EXPECT_TRUE(answerTo(begunPost(kBody) + std::string(kBody, 'x')).ends_with(std::string(kBody, 'x')));
    EXPECT_THAT(answerTo(begunPost(kBody + 1) + std::string(kBody + 1, 'x')), StartsWith("HTTP/1.1 413"));
    EXPECT_THAT(answerTo("POST /echo HTTP/1.1\r\n" + headers() + "Transfer-Encoding: chunked\r\n\r\nffff\r\n" +
                         std::string(4000, 'x')),
                StartsWith("HTTP/1.1 413"));
    EXPECT_TRUE(isWell());
}

TEST_F(HttpServerOfFewTest, HoldsNoMoreBodiesAtOnceThanItHasRoomFor)
{
    const RawClient one(port());
    one.write(post("/wait", std::string(kBody, 'x')));
    ASSERT_TRUE(comesTrue([this] { return m_begun == 1; }));

    EXPECT_THAT(answerTo(begunPost(kBody) + std::string(kBody, 'x')), StartsWith("HTTP/1.1 503"));
    EXPECT_THAT(answerTo(post("/echo", "small")), StartsWith("HTTP/1.1 200"));
}

TEST_F(HttpServerOfFewTest, TurnsAwayWhatIsTooMuchToAnswerAtOnce)
{
    RawClient one(port());
    RawClient two(port());
    one.write(post("/wait", "x"));
    two.write(post("/wait", "x"));
    ASSERT_TRUE(comesTrue([this] { return m_begun == 2; }));

    EXPECT_THAT(answerTo(post("/wait", "x")), StartsWith("HTTP/1.1 503"));
    EXPECT_THAT(answerTo(post("/echo", "x")), StartsWith("HTTP/1.1 200")) << "who asks for something else";
    EXPECT_TRUE(isWell());

    one.hangUp();
    ASSERT_TRUE(comesTrue([this] { return m_stopped == 1; }));
    RawClient three(port());
    three.write(post("/wait", "x"));
    EXPECT_TRUE(comesTrue([this] { return m_begun == 3; }));
}

TEST_F(HttpServerOfFewTest, AnswersTheNewestWhenOlderOnesSayNothing)
{
    std::vector<std::unique_ptr<RawClient>> idle;
    for (int client = 0; client < 50; ++client)
        idle.push_back(std::make_unique<RawClient>(port()));

    EXPECT_TRUE(isWell());
    EXPECT_EQ(idle.front()->read(), "") << "cut off";
}

TEST_F(HttpServerOfFewTest, HasNoBytesLeftOverFromClientsThatHaveGone)
{
    for (int client = 0; client < 20; ++client) {
        RawClient half(port());
        half.write(begunPost(kBody) + "half");
        half.hangUp();
    }

    EXPECT_TRUE(
        comesTrue([this] { return answerTo(begunPost(kBody) + std::string(kBody, 'x')).starts_with("HTTP/1.1 200"); }));
}

} // namespace Tessaline::Server
