#pragma once

#include "foundation/Descriptor.h"
#include "Services/HttpReplyParser.h"
#include "Services/ServerAddress.h"
#include "Services/WireResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <chrono>
#include <coroutine>
#include <memory>
#include <optional>
#include <variant>

namespace Tessaline {

/// What is done with the body of a reply.
class BodyReader
{
public:
    enum class Wish { More, Enough, TooLong };

    virtual ~BodyReader() = default;
    /// The next bytes of the body of a reply with status 200.
    virtual Wish take(QByteArray bytes) = 0;
    /// The whole body has been taken.
    virtual void finish() = 0;
    /// The exchange has been stopped: nothing more is to be done with the bytes at hand.
    virtual void stop() = 0;
};

/// One request and its reply, on a connection of its own. It starts when it is made and is awaited once:
///
///     const HttpExchange::End end = co_await exchange.ending();
///
/// NOTE: the toolkit's network access manager is not used, since it sends a request a second time when the connection
/// closes at certain moments, even a POST, and cannot be told not to.
class HttpExchange final : public QObject
{
    Q_OBJECT
public:
    using End = WireResult<std::monostate>;

    struct Request {
        ServerAddress address;
        QByteArray method; // "GET" or "POST"
        QByteArray path;
        QByteArray body;                      // JSON; of a POST
        std::chrono::milliseconds timeout{0}; // between two bytes, in either direction
    };

    HttpExchange(Request request, std::shared_ptr<BodyReader> reader, QObject *parent);
    ~HttpExchange() override;

    /// Closes the connection and ends the exchange, if it still runs: at once, or behind the reader's call if it is
    /// asked for in there.
    void stop();

    /// Awaited for what the exchange comes to. What awaits goes on inside the call that ends it.
    class Ending
    {
    public:
        explicit Ending(HttpExchange &exchange) : m_exchange(exchange) {}
        bool await_ready() const { return m_exchange.m_end.has_value(); }
        void await_suspend(std::coroutine_handle<> waiting) { m_exchange.m_waiting = waiting; }
        End await_resume() { return *m_exchange.m_end; }

    private:
        HttpExchange &m_exchange;
    };
    Ending ending() { return Ending(*this); }

private:
    void send();
    void receive();
    std::optional<End> read();
    void connectionEnded();
    void end(End result);

    Request m_request; // its body goes as soon as it is handed to the connection
    std::shared_ptr<BodyReader> m_reader;
    QTcpSocket m_socket;
    Descriptor m_connection; // the same connection once more: the socket lets go of it before it tells of its end
    QTimer m_idle;
    HttpReplyParser m_reply;
    bool m_wasConnected = false;
    bool m_isReading = false;
    bool m_isStopped = false;
    std::optional<End> m_end;
    std::coroutine_handle<> m_waiting;
};

} // namespace Tessaline
