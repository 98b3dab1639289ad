#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessaline::Server {

/// A request's head, as views of its bytes.
struct RequestHead {
    std::string_view method;
    std::string_view target;
    std::vector<std::pair<std::string_view, std::string_view>> headers; // name and value, without blanks around it
};

/// Reads a head with the empty line at its end, strictly: absent where its words may be taken otherwise by somebody
/// else (a line end of another kind, blanks around a name, folded lines, control characters).
std::optional<RequestHead> parseHead(std::string_view bytes);

/// Why a request is not taken.
struct Refusal {
    int status = 0;
    std::string sentence;
};

/// Absent if the request may come in. Browsers send `Origin` or `Sec-Fetch-Site` with whatever a page asks another site
/// for, and `Host` with the name that the page was given: so no page gets in (403), also not by a name that is made to
/// mean this machine. What is posted is JSON, where it says what it is, neither packed nor in parts, with one length
/// that is sound and within `largestBody`, or in chunks.
std::optional<Refusal> refusal(const RequestHead &head, int port, size_t largestBody);

} // namespace Tessaline::Server
