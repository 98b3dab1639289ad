#include "server/Connections.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <exception>
#include <new>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace Tessaline::Server {

namespace {

constexpr std::chrono::milliseconds kInterval{100}; // between two looks where nothing wakes this one

} // namespace

Connections::Connections(const ClientLimits &limits) : m_limits(limits), m_wake(eventfd(0, EFD_CLOEXEC)) {}

Connections::~Connections()
{
    if (m_wake != -1)
        close(m_wake);
}

void Connections::run(int listener, const std::function<void(ClientSocket &)> &answer)
{
    while (!m_isStopping) {
        std::array<pollfd, 2> asked{pollfd{listener, POLLIN, 0}, pollfd{m_wake, POLLIN, 0}};
        poll(asked.data(), asked.size(), m_wake == -1 ? static_cast<int>(kInterval.count()) : -1);
        if (m_isStopping || asked[0].revents == 0)
            continue;
        makeRoom();
        const int socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket != -1)
            begin(socket, answer);
        else if (errno != EAGAIN && errno != ECONNABORTED && errno != EINTR) {
            // NOTE: mostly there is no descriptor left. Who wants to connect stays there, so that without a pause this
            // would turn at full speed.
            std::unique_lock lock(m_mutex);
            cutSlowest();
            m_changed.wait_for(lock, kInterval);
        }
    }
    endAll();
}

void Connections::stop()
{
    m_isStopping = true;
    if (m_wake != -1)
        eventfd_write(m_wake, 1);
    const std::lock_guard guard(m_mutex);
    m_changed.notify_all();
}

void Connections::begin(int socket, const std::function<void(ClientSocket &)> &answer)
{
    // 1. Its place. Who is not given one is turned away: there is no memory, or no thread.
    std::list<ClientSocket> place;
    try {
        place.emplace_back(socket, m_limits, m_heldBytes);
    } catch (const std::bad_alloc &) {
        close(socket);
        return;
    }
    const auto client = place.begin();
    {
        const std::lock_guard guard(m_mutex);
        m_clients.splice(m_clients.end(), place);
    }
    const auto end = [this, client] {
        // NOTE: all under the lock. Nobody cuts a socket whose number is another's by now, and this object may be gone
        // as soon as the last client is.
        const std::lock_guard guard(m_mutex);
        m_clients.erase(client);
        m_changed.notify_all();
    };

    // 2. Its thread.
    try {
        std::thread([client, answer, end] {
            answer(*client);
            client->finish();
            end();
        }).detach();
    } catch (const std::exception &) {
        end();
    }
}

void Connections::cutSlowest()
{
    const auto slowest = std::find_if(m_clients.begin(), m_clients.end(),
                                      [](const ClientSocket &client) { return !client.isAnswered(); });
    if (slowest != m_clients.end())
        slowest->cut();
}

void Connections::makeRoom()
{
    std::unique_lock lock(m_mutex);
    const auto hasRoom = [this] { return m_isStopping || m_clients.size() < m_limits.mostConnections; };
    while (!hasRoom()) {
        cutSlowest();
        m_changed.wait_for(lock, kInterval, hasRoom);
    }
}

void Connections::endAll()
{
    constexpr int kIntervals = 10; // for answers that have been told to stop
    std::unique_lock lock(m_mutex);
    const auto haveEnded = [this] { return m_clients.empty(); };
    for (int interval = 0; !haveEnded(); ++interval) {
        for (ClientSocket &client : m_clients)
            if (interval >= kIntervals || !client.isAnswered())
                client.cut();
        m_changed.wait_for(lock, kInterval, haveEnded);
    }
}

} // namespace Tessaline::Server
