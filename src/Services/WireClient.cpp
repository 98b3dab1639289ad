#include "Services/WireClient.h"

#include "Services/HttpExchange.h"
#include "Services/ReplyBodies.h"
#include "Services/RequestBodies.h"
#include "Services/StreamReader.h"

#include <QtCore/QScopedPointer>

#include <memory>
#include <optional>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

using Kind = WireFailure::Kind;
using End = HttpExchange::End;

/// Who may end a request before its time.
struct StopSigns {
    std::stop_token caller;
    std::stop_token client; // the client itself goes

    bool areGiven() const { return caller.stop_requested() || client.stop_requested(); }
};

/// Looks at none of it, and sees only to its having an end.
class NothingReader final : public BodyReader
{
public:
    explicit NothingReader(qsizetype longest) : m_room(longest) {}

    Wish take(QByteArray bytes) override
    {
        m_room -= bytes.size();
        return m_room < 0 ? Wish::TooLong : Wish::More;
    }
    void finish() override {}
    void stop() override {}

private:
    qsizetype m_room;
};

/// Keeps the whole body.
class WholeBodyReader final : public BodyReader
{
public:
    explicit WholeBodyReader(qsizetype longest) : m_longest(longest) {}

    const QByteArray &body() const { return m_body; }

    Wish take(QByteArray bytes) override
    {
        if (m_body.size() + bytes.size() > m_longest) {
            m_body.clear();
            return Wish::TooLong;
        }
        m_body.append(bytes);
        return Wish::More;
    }
    void finish() override {}
    void stop() override {}

private:
    qsizetype m_longest;
    QByteArray m_body;
};

/// Hands on the events of a stream until it is stopped.
class EventReader final : public BodyReader
{
public:
    EventReader(StreamPath path, qsizetype longest, WireClient::EventSink onEvent)
        : m_stream(path, longest), m_onEvent(std::move(onEvent))
    {}

    Wish take(QByteArray bytes) override
    {
        m_stream.append(std::move(bytes));
        handOn();
        if (m_stream.isLineTooLong())
            return Wish::TooLong;
        return m_stream.isDone() ? Wish::Enough : Wish::More;
    }
    void finish() override
    {
        m_stream.finish();
        handOn();
    }
    void stop() override { m_isStopped = true; }

private:
    void handOn()
    {
        while (!m_isStopped) {
            const std::optional<StreamEvent> event = m_stream.next();
            if (!event)
                return;
            m_onEvent(*event);
        }
    }

    StreamReader m_stream;
    WireClient::EventSink m_onEvent;
    bool m_isStopped = false;
};

/// Runs one exchange to its end. Nothing of the client is used once it waits.
QCoro::Task<End> exchange(HttpExchange::Request request, std::shared_ptr<BodyReader> reader, StopSigns stop,
                          QObject *client)
{
    if (stop.areGiven())
        co_return WireFailure{Kind::Stopped, -1, QString()};
    const std::unique_ptr<HttpExchange, QScopedPointerDeleteLater> running(
        new HttpExchange(std::move(request), std::move(reader), client));
    const auto close = [exchange = running.get()] { exchange->stop(); };
    const std::stop_callback whenCallerStops(stop.caller, close);
    const std::stop_callback whenClientGoes(stop.client, close);
    co_return co_await running->ending();
}

/// The same for a reply whose whole body stands for a value.
template <class Value>
QCoro::Task<WireResult<Value>> exchangeForValue(HttpExchange::Request request, qsizetype longestBody,
                                                std::optional<Value> (*decode)(QByteArrayView), StopSigns stop,
                                                QObject *client)
{
    const auto reader = std::make_shared<WholeBodyReader>(longestBody);
    const End end = co_await exchange(std::move(request), reader, std::move(stop), client);
    if (!end)
        co_return end.failure();
    std::optional<Value> value = decode(reader->body());
    if (!value)
        co_return WireFailure{Kind::Malformed, -1, u"The server's answer could not be read."_s};
    co_return *std::move(value);
}

} // namespace

WireClient::WireClient(WireOptions options, QObject *parent) : QObject(parent), m_options(std::move(options)) {}

WireClient::~WireClient()
{
    m_life.request_stop();
}

QCoro::Task<bool> WireClient::checkHealth(std::stop_token stop)
{
    HttpExchange::Request request{m_options.address, "GET", "/health", {}, m_options.healthTimeout};
    const StopSigns signs{std::move(stop), m_life.get_token()};
    const End end =
        co_await exchange(std::move(request), std::make_shared<NothingReader>(m_options.longestReply), signs, this);
    co_return static_cast<bool>(end);
}

QCoro::Task<WireResult<std::monostate>> WireClient::chat(ChatRequestPayload payload, StreamPath path, EventSink onEvent,
                                                         std::stop_token stop)
{
    HttpExchange::Request request{m_options.address, "POST", "/v1/chat/completions", encodeChatRequest(payload),
                                  m_options.streamTimeout};
    payload = {}; // an answer takes minutes, and a document is large
    const StopSigns signs{std::move(stop), m_life.get_token()};
    const auto reader = std::make_shared<EventReader>(path, m_options.longestReply, std::move(onEvent));
    co_return co_await exchange(std::move(request), reader, signs, this);
}

QCoro::Task<WireResult<QStringList>> WireClient::suggestContext(QString content, std::stop_token stop)
{
    QByteArray body = encodeSuggestionsRequest(content);
    content.clear(); // it would live as long as the caller waits
    return exchangeForValue({m_options.address, "POST", "/v1/suggest-context", std::move(body), m_options.bodyTimeout},
                            m_options.longestReply, decodeSuggestionsResponse, {std::move(stop), m_life.get_token()},
                            this);
}

QCoro::Task<WireResult<ConceptExpansionResponse>> WireClient::expandConcept(QString topic, std::stop_token stop)
{
    return exchangeForValue(
        {m_options.address, "POST", "/v1/expand-concept", encodeConceptRequest(topic), m_options.bodyTimeout},
        m_options.longestReply, decodeConceptResponse, {std::move(stop), m_life.get_token()}, this);
}

QCoro::Task<WireResult<QString>> WireClient::digestFile(QString filename, QString content, std::stop_token stop)
{
    QByteArray body = encodeDigestRequest(filename, content);
    content.clear(); // as above
    return exchangeForValue({m_options.address, "POST", "/v1/digest-file", std::move(body), m_options.bodyTimeout},
                            m_options.longestReply, decodeDigestResponse, {std::move(stop), m_life.get_token()}, this);
}

} // namespace Tessaline
