#include "server/OllamaEngine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <netinet/in.h>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace Tessaline::Server {

namespace {

/// Takes one connection, and begins an answer that it writes on and on.
class EndlessAnswer
{
public:
    EndlessAnswer() : m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *const generic = reinterpret_cast<sockaddr *>(&address);
        EXPECT_EQ(bind(m_listener, generic, size), 0);
        EXPECT_EQ(listen(m_listener, 1), 0);
        EXPECT_EQ(getsockname(m_listener, generic, &size), 0);
        m_port = ntohs(address.sin_port);
        m_thread = std::jthread([this](const std::stop_token &stop) {
            const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            std::string_view bytes = "HTTP/1.1 200 OK\r\n\r\n";
            while (!stop.stop_requested() && send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0) {
                bytes = " ";
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            close(client);
        });
    }
    ~EndlessAnswer()
    {
        shutdown(m_listener, SHUT_RDWR); // if nobody came
        m_thread.request_stop();
        m_thread.join();
        close(m_listener);
    }
    EndlessAnswer(const EndlessAnswer &) = delete;
    EndlessAnswer &operator=(const EndlessAnswer &) = delete;

    int port() const { return m_port; }

private:
    const int m_listener;
    int m_port = 0;
    std::jthread m_thread;
};

} // namespace

TEST(OllamaEngine, IsNotWaitedForWhereSomethingElseWritesOnAndOn)
{
    const EndlessAnswer other;

    EXPECT_FALSE(isOllama({"127.0.0.1", other.port(), {}}, std::chrono::milliseconds(50)));
}

} // namespace Tessaline::Server
