#pragma once

#include "server/Settings.h"

#include <chrono>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// A request to an engine.
struct HttpCall {
    std::string path;
    std::string body; // JSON; a request without one is a GET
    std::string key;  // sent as the bearer's token unless it is empty
    std::chrono::seconds silence{
        600}; // how long nothing may come: a long prompt is read for minutes before the first token
};

struct HttpOutcome {
    int status = 0;          // 0: there was no answer
    std::string body;        // of an answer that was not handed to `bytes`
    bool isComplete = false; // the answer came to its end, and `bytes` wanted all of it
};

/// Asks and waits for the end. What comes with status 200 is handed to `bytes` in pieces, as long as that answers true;
/// without `bytes` it is kept. `stop` closes the connection at once, which is what ends an engine's work. From any
/// thread.
HttpOutcome httpCall(const LoopbackAddress &address, const HttpCall &call, std::stop_token stop,
                     const std::function<bool(std::string_view bytes)> &bytes = {});

} // namespace Tessaline::Server
