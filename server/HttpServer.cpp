#include "server/HttpServer.h"

#include "server/Connections.h"
#include "server/Records.h"
#include "server/RequestGate.h"

#include <httplib.h>

#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <fcntl.h>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

namespace {

constexpr std::chrono::milliseconds kWatchInterval{100}; // within that an answer is told that the server ends

/// The library's view of a connection.
class ClientStream final : public httplib::Stream
{
public:
    explicit ClientStream(ClientSocket &client) : m_client(client) {}

    bool is_readable() const override { return m_client.isReadable(); }
    bool is_writable() const override { return m_client.isWritable(); }
    ssize_t read(char *bytes, size_t size) override { return m_client.read(bytes, size); }
    ssize_t write(const char *bytes, size_t size) override { return m_client.write(bytes, size); }
    void get_remote_ip_and_port(std::string &, int &) const override {} // always this machine
    void get_local_ip_and_port(std::string &, int &) const override {}
    socket_t socket() const override { return m_client.number(); }

private:
    ClientSocket &m_client;
};

/// Asks for a stop as soon as a client has gone or the server ends. Watching takes a thread, as long as it lasts.
class ClientWatch
{
public:
    ClientWatch(int socket, const std::atomic<bool> &isStopping) : m_over(eventfd(0, EFD_CLOEXEC))
    {
        try {
            m_thread = std::thread([this, socket, &isStopping] { watch(socket, isStopping); });
        } catch (const std::exception &) {
            close(m_over);
            throw; // to the library, which answers 500
        }
    }
    ~ClientWatch()
    {
        // NOTE: without the event, if there is none to be had, the thread notices at its next look.
        m_isOver = true;
        eventfd_write(m_over, 1);
        m_thread.join();
        if (m_over != -1)
            close(m_over);
    }
    ClientWatch(const ClientWatch &) = delete;
    ClientWatch &operator=(const ClientWatch &) = delete;

    std::stop_token token() const { return m_stop.get_token(); }

private:
    void watch(int socket, const std::atomic<bool> &isStopping)
    {
        std::array<pollfd, 2> asked{pollfd{socket, POLLRDHUP, 0}, pollfd{m_over, POLLIN, 0}};
        while (asked[1].revents == 0 && !m_isOver && !m_stop.stop_requested()) {
            poll(asked.data(), asked.size(), static_cast<int>(kWatchInterval.count()));
            if (asked[0].revents != 0 || isStopping)
                m_stop.request_stop();
        }
    }

    const int m_over; // readable when there is nothing to watch any more
    std::atomic<bool> m_isOver = false;
    std::stop_source m_stop;
    std::thread m_thread;
};

/// One of the answers to a path that are being worked on, as long as it lives; there are `mostAnswers` at once.
class AnswerPlace
{
public:
    AnswerPlace(std::atomic<int> &taken, int places) : m_taken(taken), m_isThere(++taken <= places) {}
    ~AnswerPlace() { --m_taken; }
    AnswerPlace(const AnswerPlace &) = delete;
    AnswerPlace &operator=(const AnswerPlace &) = delete;

    bool isThere() const { return m_isThere; }

private:
    std::atomic<int> &m_taken;
    const bool m_isThere;
};

/// What an answer needs until its end.
struct RunningAnswer {
    RunningAnswer(std::atomic<int> &taken, int places, int socket, const std::atomic<bool> &isStopping)
        : place(taken, places), watch(socket, isStopping)
    {}
    AnswerPlace place;
    ClientWatch watch;
};

/// What is answered to a request that could not be read.
Reply replyTo(ClientSocket::Limit limit)
{
    switch (limit) {
    case ClientSocket::Limit::Head:
        return {431, errorBody("The request’s head is too large.")};
    case ClientSocket::Limit::Body:
        return {413, errorBody("The body is too large.")};
    case ClientSocket::Limit::Time:
        return {408, errorBody("The request took too long.")};
    case ClientSocket::Limit::Memory:
        return {503, errorBody("The server holds too much at once. Ask again in a moment.")};
    case ClientSocket::Limit::None:
        break;
    }
    return {400, errorBody("The request cannot be answered.")};
}

/// The connection that a thread answers: the library passes it no further than to the stream.
thread_local ClientSocket *t_client = nullptr;

void setReply(httplib::Response &response, const Reply &reply)
{
    response.status = reply.status;
    response.set_content(reply.body, "application/json");
}

} // namespace

class HttpServer::Listener final : public httplib::Server
{
public:
    explicit Listener(const ClientLimits &limits) : m_connections(limits)
    {
        // Without the library's own options, which would let two servers have the port at once.
        set_socket_options([](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
            return isAdmitted(request, response) ? HandlerResponse::Unhandled : HandlerResponse::Handled;
        });
        set_error_handler([](const httplib::Request &, httplib::Response &response) {
            const bool isUnread = t_client->reached() != ClientSocket::Limit::None;
            if (!isUnread && !response.body.empty())
                return;
            const int status = response.status;
            setReply(response, replyTo(t_client->reached()));
            if (!isUnread)
                response.status = status;
        });
        set_exception_handler([](const httplib::Request &, httplib::Response &response, const std::exception_ptr &) {
            setReply(response, {500, errorBody("The request could not be answered.")});
        });
        Get("/health",
            [this](const httplib::Request &, httplib::Response &response) { setReply(response, m_routes.health()); });
    }
    ~Listener() override
    {
        if (svr_sock_ != INVALID_SOCKET)
            close(svr_sock_);
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    bool bind(int port)
    {
        constexpr int kBacklog = SOMAXCONN; // the library asks for five; who comes later waits for a second
        m_port = port == 0 ? bind_to_any_port("127.0.0.1") : bind_to_port("127.0.0.1", port) ? port : -1;
        return m_port > 0 && fcntl(svr_sock_, F_SETFL, O_NONBLOCK) == 0 && ::listen(svr_sock_, kBacklog) == 0;
    }

    int port() const { return m_port; }

    void serve(Routes routes)
    {
        m_routes = std::move(routes);
        for (const auto &[path, answer] : m_routes.posts) {
            m_answers[path] = 0;
            Post(path, [this, &answer = answer](const httplib::Request &request, httplib::Response &response) {
                respond(request, response, answer);
            });
        }
        m_connections.run(svr_sock_, [this](ClientSocket &client) { answerOn(client); });
    }

    void end() { m_connections.stop(); }

private:
    bool isAdmitted(const httplib::Request &request, httplib::Response &response) const
    {
        const std::optional<RequestHead> head = parseHead(t_client->head());
        if (!head) {
            setReply(response, {400, errorBody("The request’s head is malformed.")});
            return false;
        }
        if (const std::optional<Refusal> refused = refusal(*head, m_port, m_connections.limits().largestBody)) {
            setReply(response, {refused->status, errorBody(refused->sentence)});
            return false;
        }
        const bool isHealth = request.path == "/health";
        if (!isHealth && !m_routes.posts.contains(request.path)) {
            setReply(response, {404, errorBody("There is nothing at this path.")});
            return false;
        }
        if (request.method != (isHealth ? "GET" : "POST")) {
            setReply(response, {405, errorBody("This path takes another method.")});
            response.set_header("Allow", isHealth ? "GET" : "POST");
            return false;
        }
        return true;
    }

    template <class Answer>
    void respond(const httplib::Request &request, httplib::Response &response, const Answer &answer)
    {
        t_client->beginAnswer();
        const auto running =
            std::make_shared<RunningAnswer>(m_answers.at(request.path), m_connections.limits().mostAnswers,
                                            t_client->number(), m_connections.isStopping());
        if (!running->place.isThere())
            return setReply(response, {503, errorBody("The server has too much to answer. Ask again in a moment.")});
        std::variant<Reply, EventStream> reply = answer(request.body, running->watch.token());
        if (const Reply *const whole = std::get_if<Reply>(&reply))
            return setReply(response, *whole);
        response.set_header("Cache-Control", "no-store");
        response.set_content_provider("text/event-stream", [running, stream = std::get<EventStream>(std::move(reply))](
                                                               size_t, httplib::DataSink &sink) {
            stream([&sink](std::string_view bytes) { return sink.write(bytes.data(), bytes.size()); });
            sink.done();
            return true;
        });
    }

    void answerOn(ClientSocket &client)
    {
        ClientStream stream(client);
        t_client = &client;
        bool isClosed = true;
        try {
            process_request(stream, true, isClosed, [&client](httplib::Request &) { client.beginBody(); });
        } catch (const std::exception &) {
            client.cut(); // there is no memory for as much as an answer
        }
        t_client = nullptr;
    }

    Routes m_routes;
    int m_port = -1;
    std::map<std::string, std::atomic<int>> m_answers; // that are being worked on, by path; all paths are there
    Connections m_connections;
};

HttpServer::HttpServer(const ClientLimits &limits) : m_listener(std::make_unique<Listener>(limits)) {}

HttpServer::~HttpServer() = default;

bool HttpServer::bind(int port)
{
    return m_listener->bind(port);
}

int HttpServer::port() const
{
    return m_listener->port();
}

void HttpServer::run(Routes routes)
{
    m_listener->serve(std::move(routes));
}

void HttpServer::stop()
{
    m_listener->end();
}

} // namespace Tessaline::Server
