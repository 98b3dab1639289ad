#include "server/HttpServer.h"

#include "server/ClientSocket.h"
#include "server/Records.h"
#include "server/RequestGate.h"

#include <httplib.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

namespace {

constexpr std::chrono::milliseconds kWatchInterval{100}; // within that an answer is told that the server ends

/// One thread for each connection, as long as it lasts, so that slow clients hold up nobody and the idle server has
/// none.
class ConnectionThreads final : public httplib::TaskQueue
{
public:
    void enqueue(std::function<void()> task) override
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count < HttpServer::kMostConnections; });
        ++m_count;
        lock.unlock();
        std::thread([this, task = std::move(task)] {
            task();
            // NOTE: notified under the lock, since this object may be gone as soon as the count is seen to be 0.
            const std::lock_guard guard(m_mutex);
            --m_count;
            m_changed.notify_all();
        }).detach();
    }

    void shutdown() override
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0; // connections
};

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
        m_thread = std::thread([this, socket, &isStopping] {
            std::array<pollfd, 2> asked{pollfd{socket, POLLRDHUP, 0}, pollfd{m_over, POLLIN, 0}};
            while (asked[1].revents == 0 && !m_isOver && !m_stop.stop_requested()) {
                poll(asked.data(), asked.size(), static_cast<int>(kWatchInterval.count()));
                if (asked[0].revents != 0 || isStopping)
                    m_stop.request_stop();
            }
        });
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
    const int m_over; // readable when there is nothing to watch any more
    std::atomic<bool> m_isOver = false;
    std::stop_source m_stop;
    std::thread m_thread;
};

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
    Listener()
    {
        new_task_queue = [] { return new ConnectionThreads; };
        set_payload_max_length(ClientSocket::kLargestBody);
        // Without the library's own options, which would let two servers have the port at once.
        set_socket_options([](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
            return isAdmitted(request, response) ? HandlerResponse::Unhandled : HandlerResponse::Handled;
        });
        set_error_handler([](const httplib::Request &, httplib::Response &response) {
            if (response.body.empty())
                response.set_content(errorBody("The request cannot be answered."), "application/json");
        });
        set_exception_handler([](const httplib::Request &, httplib::Response &response, const std::exception_ptr &) {
            setReply(response, {500, errorBody("The request could not be answered.")});
        });
        Get("/health",
            [this](const httplib::Request &, httplib::Response &response) { setReply(response, m_routes.health()); });
    }

    bool bind(int port)
    {
        constexpr int kBacklog = 128; // the library asks for five
        m_port = port == 0 ? bind_to_any_port("127.0.0.1") : bind_to_port("127.0.0.1", port) ? port : -1;
        return m_port > 0 && ::listen(svr_sock_, kBacklog) == 0;
    }

    int port() const { return m_port; }

    void serve(Routes routes)
    {
        m_routes = std::move(routes);
        for (const auto &[path, answer] : m_routes.posts)
            Post(path, [this, &answer = answer](const httplib::Request &request, httplib::Response &response) {
                respond(request, response, answer);
            });
        if (!m_isStopping)
            listen_after_bind();
        m_hasEnded = true;
    }

    void end()
    {
        // NOTE: the library forgets a stop that comes before it runs, so that is waited for.
        m_isStopping = true;
        while (!m_hasEnded && !is_running())
            std::this_thread::sleep_for(kWatchInterval / 10);
        if (is_running())
            stop();
    }

private:
    bool isAdmitted(const httplib::Request &request, httplib::Response &response) const
    {
        const RequestHead head{request.has_header("Origin"), static_cast<int>(request.get_header_value_count("Host")),
                               request.get_header_value("Host")};
        if (const std::optional<std::string> sentence = refusal(head, m_port)) {
            setReply(response, {403, errorBody(*sentence)});
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
        const auto watch = std::make_shared<ClientWatch>(t_client->number(), m_isStopping);
        std::variant<Reply, EventStream> reply = answer(request.body, watch->token());
        if (const Reply *const whole = std::get_if<Reply>(&reply))
            return setReply(response, *whole);
        response.set_header("Cache-Control", "no-store");
        response.set_content_provider("text/event-stream", [watch, stream = std::get<EventStream>(std::move(reply))](
                                                               size_t, httplib::DataSink &sink) {
            stream([&sink](std::string_view bytes) { return sink.write(bytes.data(), bytes.size()); });
            sink.done();
            return true;
        });
    }

    bool process_and_close_socket(socket_t socket) override
    {
        ClientSocket client(socket);
        ClientStream stream(client);
        t_client = &client;
        bool isClosed = true;
        const bool isGood =
            process_request(stream, true, isClosed, [&client](httplib::Request &) { client.beginBody(); });
        t_client = nullptr;
        return isGood;
    }

    Routes m_routes;
    int m_port = -1;
    std::atomic<bool> m_isStopping = false;
    std::atomic<bool> m_hasEnded = false;
};

HttpServer::HttpServer() : m_listener(std::make_unique<Listener>()) {}

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
