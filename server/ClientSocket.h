#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <sys/types.h>

namespace Tessaline::Server {

/// The connection of one client, with limits on how long it may take to say what it wants and how much that may be.
/// Owns the socket. For one thread.
class ClientSocket
{
public:
    static constexpr std::chrono::seconds kRequestTime{30}; // for the whole request, head and body
    static constexpr std::chrono::seconds kSilence{10};     // without a byte, in either direction
    static constexpr size_t kLargestHead = 64 * 1024;
    static constexpr size_t kLargestBody = 64 * 1024 * 1024;

    explicit ClientSocket(int socket);
    ~ClientSocket(); // says that no more comes, and gives the client a moment to read what was written
    ClientSocket(const ClientSocket &) = delete;
    ClientSocket &operator=(const ClientSocket &) = delete;

    int number() const { return m_socket; }

    /// As read(2): 0 at the end, -1 when a limit is reached.
    ssize_t read(char *bytes, size_t size);
    /// Writes all of it: `size`, or -1 if the client has gone or does not read.
    ssize_t write(const char *bytes, size_t size);
    /// The head has been read; what follows is the body.
    void beginBody();

    bool isReadable() const;
    bool isWritable() const;

private:
    bool fill();

    int m_socket;
    std::chrono::steady_clock::time_point m_deadline;
    size_t m_allowed = kLargestHead; // bytes that may still be read
    std::array<char, 16 * 1024> m_buffer{};
    size_t m_position = 0;
    size_t m_end = 0;
};

} // namespace Tessaline::Server
