#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// What of a request's head decides whether it is let in.
struct RequestHead {
    bool hasOrigin = false;
    int hostCount = 0; // how many `Host` headers there are
    std::string host;  // the first
};

/// Why the request is refused with 403, in one sentence; absent if it may come in. Browsers send `Origin` with whatever
/// a page asks another site for, and `Host` with the name that the page was given: so no page gets in, also not by a
/// name that is made to mean this machine.
std::optional<std::string> refusal(const RequestHead &head, int port);

} // namespace Tessaline::Server
