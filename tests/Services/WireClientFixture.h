#pragma once

#include "Services/WireClient.h"
#include "tests/Services/LoopbackServer.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>
#include <variant>

namespace Tessaline {

/// An operation that has been started.
template <class Value>
class Started
{
public:
    explicit Started(QCoro::Task<Value> task) { keep(std::move(task), m_result); }

    bool isOver() const { return m_result->has_value(); }
    /// Waits for the end. Unlike `eventually` it never sleeps, since an upload takes many turns of the event loop.
    const Value &result() const
    {
        QTimer limit;
        limit.setSingleShot(true);
        limit.start(std::chrono::seconds(60));
        while (!isOver() && limit.isActive())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (!isOver())
            qFatal("The operation does not end.");
        return **m_result;
    }

private:
    static QCoro::Task<> keep(QCoro::Task<Value> task, std::shared_ptr<std::optional<Value>> result)
    {
        result->emplace(co_await task);
    }

    std::shared_ptr<std::optional<Value>> m_result = std::make_shared<std::optional<Value>>();
};

template <class Value>
Started(QCoro::Task<Value>) -> Started<Value>;

/// Every byte is its own write, as far as the network keeps them apart.
inline void writeByBytes(QTcpSocket &connection, const QByteArray &bytes)
{
    for (const char byte : bytes) {
        connection.write(&byte, 1);
        connection.flush();
    }
}

inline QByteArray tokenLine(const QByteArray &token)
{
    return "data: {\"token\":\"" + token + "\"}\n";
}

/// Answers every request so and closes the connection.
inline LoopbackServer::Answer answerWhole(const QByteArray &reply)
{
    return [reply](QTcpSocket &connection, const QByteArray &) {
        connection.write(reply);
        connection.disconnectFromHost();
    };
}

/// Writes this and leaves the connection open.
inline LoopbackServer::Answer answerBegin(const QByteArray &bytes)
{
    return [bytes](QTcpSocket &connection, const QByteArray &) {
        connection.write(bytes);
        connection.flush();
    };
}

inline LoopbackServer::Answer noAnswer()
{
    return [](QTcpSocket &, const QByteArray &) {};
}

/// A client and a server that does as `answer` says.
class WireClientTest : public ::testing::Test
{
protected:
    void serve(LoopbackServer::Answer answer)
    {
        m_server = std::make_unique<LoopbackServer>(std::move(answer));
        m_options.address.port = m_server->port();
        m_client = std::make_unique<WireClient>(m_options);
    }

    Started<WireResult<std::monostate>> chat(StreamPath path = StreamPath::Chat)
    {
        ChatRequestPayload payload;
        payload.prompt = QStringLiteral("p");
        const auto onEvent = [this](const StreamEvent &event) {
            m_events.append(event);
            if (const auto *token = std::get_if<TokenEvent>(&event))
                m_text += token->token;
            if (m_onEvent)
                m_onEvent();
        };
        return Started(m_client->chat(payload, path, onEvent, m_stop.get_token()));
    }

    Started<WireResult<QString>> digest()
    {
        return Started(m_client->digestFile(QStringLiteral("a.md"), QStringLiteral("# A\n"), m_stop.get_token()));
    }

    bool allConnectionsClose() const
    {
        return eventually([this] { return m_server->openConnectionCount() == 0; });
    }

    static void expectTransportFailure(const WireFailure &failure, const QString &description)
    {
        EXPECT_EQ(failure, (WireFailure{WireFailure::Kind::Transport, -1, description}));
    }

    WireOptions m_options;
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<WireClient> m_client;
    std::stop_source m_stop;
    QList<StreamEvent> m_events;
    QString m_text;
    std::function<void()> m_onEvent;
};

} // namespace Tessaline
