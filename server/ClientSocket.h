#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <sys/types.h>

namespace Tessaline::Server {

/// What clients may take of a server.
struct ClientLimits {
    std::chrono::milliseconds requestTime{30'000}; // for a whole request, head and body
    std::chrono::milliseconds silence{10'000};     // without a byte, in either direction
    size_t largestHead = 64UL * 1024;
    size_t largestBody = 64UL * 1024 * 1024;
    size_t mostBytes = 128UL * 1024 * 1024; // of all bodies that are held at once
    size_t mostConnections = 256;           // at once; when more come, the slowest to say what they want are cut off
    int mostAnswers = 64;                   // to each path, being worked on at once; more get 503
};

/// The connection of one client, with limits on how long it may take to say what it wants and how much that may be.
/// Owns the socket. For one thread, but for `cut` and `isAnswered`.
class ClientSocket
{
public:
    /// Why no more is read.
    enum class Limit { None, Head, Body, Time, Memory };

    /// `heldBytes` counts the bodies of all clients of a server, and outlives this object as `limits` does.
    ClientSocket(int socket, const ClientLimits &limits, std::atomic<size_t> &heldBytes);
    ~ClientSocket();
    ClientSocket(const ClientSocket &) = delete;
    ClientSocket &operator=(const ClientSocket &) = delete;

    int number() const { return m_socket; }

    /// As read(2): 0 at the end, -1 when a limit is reached.
    ssize_t read(char *bytes, size_t size);
    /// Writes all of it: `size`, or -1 if the client has gone or does not read.
    ssize_t write(const char *bytes, size_t size);
    bool isReadable() const;
    bool isWritable() const;

    /// The head has been read; what follows is the body.
    void beginBody();
    /// The bytes of the head, as they came.
    const std::string &head() const { return m_head; }
    Limit reached() const { return m_reached; }

    /// The request is worked on: the client has said what it wants.
    void beginAnswer() { m_isAnswered = true; }
    bool isAnswered() const { return m_isAnswered; }
    /// Once, at the end: says that no more comes, and gives the client a moment to read what was written.
    void finish();
    /// Ends the connection as it is; whoever reads or writes here sees its end.
    void cut();

private:
    bool fill();
    void hold(size_t bytes);

    const int m_socket;
    const ClientLimits &m_limits;
    std::atomic<size_t> &m_heldBytes;
    size_t m_held = 0; // of these, this client's
    const std::chrono::steady_clock::time_point m_deadline;
    size_t m_allowed; // bytes that may still be read
    bool m_isInBody = false;
    Limit m_reached = Limit::None;
    bool m_isLost = false; // it does not take what is written
    std::atomic<bool> m_isAnswered = false;
    std::string m_head;
    std::array<char, 16UL * 1024> m_buffer; // filled by reading; not cleared before
    size_t m_position = 0;
    size_t m_end = 0;
};

} // namespace Tessaline::Server
