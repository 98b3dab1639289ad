#include "Connection.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace Scripted {

namespace {

struct Request {
    std::string bytes; // all of it
    std::string path;
};

std::string headerValue(const std::string &head, const std::string &name)
{
    const auto isSame = [](char left, char right) { return std::tolower(left) == std::tolower(right); };
    const std::string line = "\r\n" + name + ":";
    const auto found = std::search(head.begin(), head.end(), line.begin(), line.end(), isSame);
    if (found == head.end())
        return {};
    const auto begin = found + static_cast<std::ptrdiff_t>(line.size());
    const std::string value(begin, std::find(begin, head.end(), '\r'));
    return value.substr(std::min(value.find_first_not_of(" \t"), value.size()));
}

bool isThere(const std::string &path)
{
    return access(path.c_str(), F_OK) == 0;
}

class Connection
{
public:
    Connection(int socket, Replies &replies, Recorder &recorder)
        : m_socket(socket), m_replies(replies), m_recorder(recorder)
    {}
    ~Connection() { close(m_socket); }

    void run()
    {
        bool stays = true;
        while (stays) {
            const std::optional<Request> request = read();
            if (!request)
                return;
            const int number = m_recorder.recordRequest(request->bytes);
            const Reply &reply = m_replies.next(request->path);
            const Outcome outcome = send(reply);
            if (outcome == Outcome::ClosedByClient)
                m_recorder.recordClosed(number);
            else
                m_recorder.recordDone(number);
            stays = outcome == Outcome::Sent && reply.transfer != Transfer::Close;
        }
    }

private:
    enum class Outcome { Sent, Closed, ClosedByClient };

    /// More bytes into m_received; false at the end.
    bool receive()
    {
        char bytes[65536];
        const ssize_t count = recv(m_socket, bytes, sizeof bytes, 0);
        if (count > 0)
            m_received.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    /// The next request; absent when the client has closed the connection.
    std::optional<Request> read()
    {
        std::size_t end = std::string::npos;
        while ((end = m_received.find("\r\n\r\n")) == std::string::npos)
            if (!receive())
                return {};
        const std::string head = m_received.substr(0, end + 2);
        const std::string length = headerValue(head, "Content-Length");
        const std::size_t size = end + 4 + (length.empty() ? 0 : std::stoul(length));
        while (m_received.size() < size)
            if (!receive())
                return {};

        Request request{m_received.substr(0, size), {}};
        m_received.erase(0, size);
        const std::size_t path = request.bytes.find(' ') + 1;
        request.path = request.bytes.substr(path, request.bytes.find(' ', path) - path);
        return request;
    }

    /// Waits; false as soon as the client has closed the connection.
    bool wait(Milliseconds duration)
    {
        if (duration == Milliseconds(0))
            return true;
        pollfd descriptor{m_socket, POLLRDHUP, 0};
        return poll(&descriptor, 1, static_cast<int>(duration.count())) == 0;
    }

    /// Waits for a file; false as soon as the client has closed the connection.
    bool waitFor(const std::string &path)
    {
        constexpr Milliseconds kInterval{10};
        while (!isThere(path))
            if (!wait(kInterval))
                return false;
        return true;
    }

    bool write(const std::string &bytes)
    {
        const std::size_t piece = m_reply->cutEvery == 0 ? std::max<std::size_t>(bytes.size(), 1) : m_reply->cutEvery;
        for (std::size_t begin = 0; begin < bytes.size(); begin += piece) {
            const std::size_t end = std::min(begin + piece, bytes.size());
            for (std::size_t sent = begin; sent < end;) {
                const ssize_t count = ::send(m_socket, bytes.data() + sent, end - sent, MSG_NOSIGNAL);
                if (count <= 0)
                    return false;
                sent += static_cast<std::size_t>(count);
            }
            if (!wait(m_reply->pause))
                return false;
        }
        return true;
    }

    bool writeBody(const std::string &bytes)
    {
        if (m_reply->transfer != Transfer::Chunked)
            return write(bytes);
        // Where pieces are asked for, they are the chunks.
        const std::size_t piece = m_reply->cutEvery == 0 ? std::max<std::size_t>(bytes.size(), 1) : m_reply->cutEvery;
        for (std::size_t begin = 0; begin < bytes.size(); begin += piece) {
            const std::string part = bytes.substr(begin, piece);
            char size[32];
            std::snprintf(size, sizeof size, "%zx\r\n", part.size());
            if (!write(size + part + "\r\n"))
                return false;
        }
        return true;
    }

    bool writeHead()
    {
        std::string head = "HTTP/1.1 " + std::to_string(m_reply->status) + " " + m_reply->reason + "\r\n";
        for (const auto &[name, value] : m_reply->headers)
            head += name + ": " + value + "\r\n";
        if (m_reply->transfer == Transfer::Chunked) {
            head += "Transfer-Encoding: chunked\r\n";
        } else if (m_reply->transfer == Transfer::Close) {
            head += "Connection: close\r\n";
        } else {
            std::size_t length = 0;
            for (const Step &step : m_reply->steps)
                if (const Send *part = std::get_if<Send>(&step))
                    length += part->bytes.size() * static_cast<std::size_t>(part->count);
            head += "Content-Length: " + std::to_string(length) + "\r\n";
        }
        return write(head + "\r\n");
    }

    Outcome perform(const Step &step)
    {
        if (const Send *part = std::get_if<Send>(&step)) {
            const auto goesOn = [part](std::int64_t turn) {
                return part->until.empty() ? turn < part->count : !isThere(part->until);
            };
            for (std::int64_t turn = 0; goesOn(turn); ++turn)
                if (!writeBody(part->bytes) || !wait(part->every))
                    return Outcome::ClosedByClient;
        } else if (const Wait *pause = std::get_if<Wait>(&step)) {
            if (!wait(pause->duration))
                return Outcome::ClosedByClient;
        } else if (const Until *gate = std::get_if<Until>(&step)) {
            if (!waitFor(gate->path))
                return Outcome::ClosedByClient;
        } else if (std::holds_alternative<Hang>(step)) {
            wait(Milliseconds(-1));
            return Outcome::ClosedByClient;
        } else if (const Close *end = std::get_if<Close>(&step)) {
            if (end->isReset) {
                const linger reset{1, 0};
                setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
            }
            return Outcome::Closed;
        } else {
            endProgram(std::get<Exit>(step));
        }
        return Outcome::Sent;
    }

    Outcome send(const Reply &reply)
    {
        m_reply = &reply;
        if (!wait(reply.after) || (!reply.until.empty() && !waitFor(reply.until)) || !writeHead())
            return Outcome::ClosedByClient;
        for (const Step &step : reply.steps) {
            const Outcome outcome = perform(step);
            if (outcome != Outcome::Sent)
                return outcome;
        }
        if (reply.transfer == Transfer::Chunked && !write("0\r\n\r\n"))
            return Outcome::ClosedByClient;
        return Outcome::Sent;
    }

    int m_socket;
    Replies &m_replies;
    Recorder &m_recorder;
    const Reply *m_reply = nullptr; // that is being sent
    std::string m_received;         // and not used yet
};

} // namespace

const Reply &Replies::next(const std::string &path)
{
    static const Reply kNotFound{404, "Not Found", {}, Milliseconds(0), {}, {}, Transfer::Length, 0, Milliseconds(0)};
    static const Reply kWell;

    auto list = m_script.replies.find(path);
    if (list == m_script.replies.end() && path != "/health")
        list = m_script.replies.find("*");
    if (list == m_script.replies.end() || list->second.empty())
        return path == "/health" ? kWell : kNotFound;

    const std::lock_guard lock(m_mutex);
    const std::size_t used = m_used[path]++;
    return list->second[std::min(used, list->second.size() - 1)];
}

void endProgram(const Exit &exit)
{
    if (exit.signal != 0) {
        signal(exit.signal, SIG_DFL);
        kill(getpid(), exit.signal);
        pause();
    }
    _exit(exit.code);
}

void serve(int socket, Replies &replies, Recorder &recorder)
{
    Connection(socket, replies, recorder).run();
}

} // namespace Scripted
