#include "server/RequestGate.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace Tessaline::Server {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLineEnd = "\r\n";

char lowered(char sign)
{
    return sign >= 'A' && sign <= 'Z' ? static_cast<char>(sign - 'A' + 'a') : sign;
}

bool isSame(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, {}, lowered, lowered);
}

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool isName(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](char sign) {
        return (lowered(sign) >= 'a' && lowered(sign) <= 'z') || (sign >= '0' && sign <= '9') ||
               std::string_view("!#$%&'*+-.^_`|~").find(sign) != std::string_view::npos;
    });
}

bool isValue(std::string_view text)
{
    return std::ranges::none_of(text, [](char sign) {
        const auto code = static_cast<unsigned char>(sign);
        return (code < 0x20 && sign != '\t') || code == 0x7F;
    });
}

std::vector<std::string_view> valuesOf(const RequestHead &head, std::string_view name)
{
    std::vector<std::string_view> values;
    for (const auto &[ownName, value] : head.headers)
        if (isSame(ownName, name))
            values.push_back(value);
    return values;
}

bool hasHeader(const RequestHead &head, std::string_view name)
{
    return !valuesOf(head, name).empty();
}

/// What stands before the parameters of a media type.
std::string_view mediaType(std::string_view value)
{
    return trimmed(value.substr(0, value.find(';')));
}

std::optional<Refusal> foreignRefusal(const RequestHead &head, int port)
{
    constexpr int kForbidden = 403;
    const std::vector<std::string_view> sites = valuesOf(head, "Sec-Fetch-Site");
    const bool isTypedByHand = sites.size() == 1 && sites.front() == "none";
    if (hasHeader(head, "Origin") || (!sites.empty() && !isTypedByHand))
        return Refusal{kForbidden, "Web pages may not use this server."};
    const std::vector<std::string_view> hosts = valuesOf(head, "Host");
    const std::string number = std::to_string(port);
    if (hosts.size() != 1 || (hosts.front() != "127.0.0.1:" + number && hosts.front() != "localhost:" + number))
        return Refusal{kForbidden, "This server answers under its own address only."};
    return {};
}

std::optional<Refusal> bodyRefusal(const RequestHead &head, size_t largestBody)
{
    // 1. Where it ends: one length, or chunks.
    const std::vector<std::string_view> lengths = valuesOf(head, "Content-Length");
    const std::vector<std::string_view> codings = valuesOf(head, "Transfer-Encoding");
    if (lengths.empty() && codings.empty())
        return Refusal{411, "The length of the body is missing."};
    if (lengths.size() + codings.size() > 1)
        return Refusal{400, "The length of the body is told twice."};
    if (!codings.empty() && !isSame(codings.front(), "chunked"))
        return Refusal{400, "The body’s transfer coding is not known."};
    if (!lengths.empty()) {
        const std::string_view text = lengths.front();
        uint64_t length = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
        if (error == std::errc::invalid_argument || end != text.data() + text.size())
            return Refusal{400, "The length of the body is not a number."};
        if (error != std::errc() || length > largestBody)
            return Refusal{413, "The body is too large."};
    }

    // 2. What it is.
    for (const std::string_view coding : valuesOf(head, "Content-Encoding"))
        if (!isSame(coding, "identity"))
            return Refusal{415, "The body is packed; this server does not unpack."};
    const std::vector<std::string_view> types = valuesOf(head, "Content-Type");
    if (types.size() > 1 || (types.size() == 1 && !isSame(mediaType(types.front()), "application/json")))
        return Refusal{415, "The body is told to be something else than application/json."};
    return {};
}

} // namespace

std::optional<RequestHead> parseHead(std::string_view bytes)
{
    RequestHead head;

    // 1. The lines, up to the empty one, behind which nothing stands.
    std::vector<std::string_view> lines;
    for (;;) {
        const size_t end = bytes.find(kLineEnd);
        if (end == std::string_view::npos)
            return {};
        const std::string_view line = bytes.substr(0, end);
        bytes.remove_prefix(end + kLineEnd.size());
        if (line.empty())
            break;
        if (!isValue(line))
            return {};
        lines.push_back(line);
    }
    if (lines.empty() || !bytes.empty())
        return {};

    // 2. The request.
    const std::string_view request = lines.front();
    const size_t first = request.find(' ');
    const size_t last = request.rfind(' ');
    if (first == last) // also when there is none
        return {};
    head.method = request.substr(0, first);
    head.target = request.substr(first + 1, last - first - 1);
    const std::string_view version = request.substr(last + 1);
    if (!isName(head.method) || head.target.empty() || head.target.find_first_of(kBlanks) != std::string_view::npos ||
        (version != "HTTP/1.1" && version != "HTTP/1.0"))
        return {};

    // 3. The headers.
    for (size_t index = 1; index < lines.size(); ++index) {
        const size_t colon = lines[index].find(':');
        if (colon == std::string_view::npos || !isName(lines[index].substr(0, colon)))
            return {};
        head.headers.emplace_back(lines[index].substr(0, colon), trimmed(lines[index].substr(colon + 1)));
    }
    return head;
}

std::optional<Refusal> refusal(const RequestHead &head, int port, size_t largestBody)
{
    if (std::optional<Refusal> foreign = foreignRefusal(head, port))
        return foreign;
    for (const std::string_view expectation : valuesOf(head, "Expect"))
        if (!isSame(expectation, "100-continue"))
            return Refusal{417, "What is expected is not known here."};
    if (hasHeader(head, "Range"))
        return Refusal{400, "Answers are given whole only."};
    if (head.method == "POST")
        return bodyRefusal(head, largestBody);
    return {};
}

} // namespace Tessaline::Server
