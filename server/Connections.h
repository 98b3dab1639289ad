#pragma once

#include "server/ClientSocket.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>

namespace Tessaline::Server {

/// The connections of a server. Each has a thread as long as it lasts, so that slow clients hold up nobody and the idle
/// server has none. When there are as many as may be, a new one takes the place of the oldest that has not said yet
/// what it wants.
class Connections
{
public:
    explicit Connections(const ClientLimits &limits);
    ~Connections();
    Connections(const Connections &) = delete;
    Connections &operator=(const Connections &) = delete;

    const ClientLimits &limits() const { return m_limits; }

    /// Takes who connects to `listener`, which does not block, and has each answered on its thread. Returns after
    /// `stop`, when the last connection has ended: at once those that say what they want, the others within a second.
    void run(int listener, const std::function<void(ClientSocket &)> &answer);
    void stop(); // from any thread, also before `run`
    const std::atomic<bool> &isStopping() const { return m_isStopping; }

private:
    void begin(int socket, const std::function<void(ClientSocket &)> &answer);
    void cutSlowest(); // m_mutex is held
    void makeRoom();
    void endAll();

    const ClientLimits m_limits;
    const int m_wake; // readable when the server stops; -1 if there is none to be had
    std::atomic<bool> m_isStopping = false;
    std::atomic<size_t> m_heldBytes = 0;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    std::list<ClientSocket> m_clients; // the oldest first
};

} // namespace Tessaline::Server
