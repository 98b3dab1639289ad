#include "server/HttpClient.h"

#include <httplib.h>

namespace Tessaline::Server {

HttpOutcome httpCall(const LoopbackAddress &address, const HttpCall &call, std::stop_token stop,
                     const std::function<bool(std::string_view)> &bytes)
{
    constexpr size_t kLongestBody = 16 * 1024 * 1024; // of an answer that is kept; the rest of it is not wanted
    constexpr time_t kConnectSeconds = 2;             // it is on this machine
    httplib::Client client(address.host, address.port);
    client.set_connection_timeout(kConnectSeconds);
    client.set_read_timeout(call.silence.count());
    client.set_tcp_nodelay(true);
    client.set_keep_alive(false);
    client.set_decompress(false);

    // 1. The request. Its body is asked for when there is a connection: a stop that came before cannot have closed
    // that.
    HttpOutcome outcome;
    httplib::Request request;
    request.method = call.body.empty() ? "GET" : "POST";
    request.path = address.path + call.path;
    if (!call.key.empty())
        request.set_header("Authorization", "Bearer " + call.key);
    if (!call.body.empty()) {
        request.set_header("Content-Type", "application/json");
        request.content_length_ = call.body.size();
        request.content_provider_ = [&](size_t offset, size_t length, httplib::DataSink &sink) {
            return !stop.stop_requested() && sink.write(call.body.data() + offset, length);
        };
    }

    // 2. The answer.
    request.response_handler = [&](const httplib::Response &response) {
        outcome.status = response.status;
        return !stop.stop_requested();
    };
    request.content_receiver = [&](const char *data, size_t size, uint64_t, uint64_t) {
        if (stop.stop_requested())
            return false;
        const std::string_view piece(data, size);
        if (bytes && outcome.status == 200)
            return bytes(piece);
        outcome.body += piece;
        return outcome.body.size() <= kLongestBody;
    };

    const std::stop_callback close(stop, [&client] { client.stop(); });
    if (stop.stop_requested())
        return outcome;
    outcome.isComplete = static_cast<bool>(client.send(request));
    return outcome;
}

} // namespace Tessaline::Server
