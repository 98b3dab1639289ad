#pragma once

#include "server/ClientSocket.h"

#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>

namespace Tessaline::Server {

/// A whole answer; its body is JSON.
struct Reply {
    int status = 200;
    std::string body;
};

/// Writes a piece of a stream of events at once; false when the client has gone.
using EventWriter = std::function<bool(std::string_view bytes)>;

/// Writes a stream of events; the connection is closed when it returns.
using EventStream = std::function<void(const EventWriter &write)>;

/// What is answered to whom. All are called on threads of their connections, many at once. `stop` is told within a
/// moment when the client has gone, and when the server ends.
struct Routes {
    std::function<Reply()> health; // GET /health
    /// POST, by path.
    std::map<std::string,
             std::function<std::variant<Reply, EventStream>(const std::string &body, std::stop_token stop)>>
        posts;
};

/// HTTP on 127.0.0.1. Each connection has a thread of its own and carries one request, which must be there in full
/// within its time. What does not pass the gate is refused (403 for web pages and other names, 4xx for what is
/// malformed), an unknown path gets 404 or 405, what takes too long 408, a body without a length 411, one that is too
/// large 413 or no JSON 415, a head that is too large 431, and what is too much at once 503.
class HttpServer
{
public:
    explicit HttpServer(const ClientLimits &limits = {});
    ~HttpServer();

    /// False if the port is taken. With 0 any free one is taken.
    bool bind(int port);
    int port() const; // once bound

    /// Answers until `stop`, and returns when the last connection has ended. Who connects before it runs waits.
    void run(Routes routes);
    /// Ends all that is being answered; `run` returns within a moment, whatever clients do. From any thread.
    void stop();

private:
    class Listener;
    std::unique_ptr<Listener> m_listener;
};

} // namespace Tessaline::Server
