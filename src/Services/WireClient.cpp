#include "Services/WireClient.h"

#include "Services/ReplyBodies.h"
#include "Services/RequestBodies.h"
#include "Services/StreamReader.h"

#include <QCoro/QCoroNetworkReply>

#include <QtCore/QBuffer>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kSuccess = 200;
constexpr qsizetype kReadAhead = 1024 * 1024; // bytes; what arrives beyond waits in the connection

/// Who may end a request before its time.
struct StopSigns {
    std::stop_token caller;
    std::stop_token client; // the client itself goes

    bool areGiven() const { return caller.stop_requested() || client.stop_requested(); }
};

/// What is done with the bytes of a reply.
class ReplyReader
{
public:
    enum class Wish { More, Enough, TooLong };

    virtual ~ReplyReader() = default;
    virtual Wish take(QByteArray bytes, const StopSigns &stop) = 0;
    /// All bytes have been taken.
    virtual Wish finish(const StopSigns &) { return Wish::Enough; }
};

/// Looks at none of it.
class StatusReader final : public ReplyReader
{
public:
    Wish take(QByteArray, const StopSigns &) override { return Wish::More; }
};

/// Keeps the whole body.
class BodyReader final : public ReplyReader
{
public:
    explicit BodyReader(qsizetype longest) : m_longest(longest) {}

    const QByteArray &body() const { return m_body; }

    Wish take(QByteArray bytes, const StopSigns &) override
    {
        if (m_body.size() + bytes.size() > m_longest) {
            m_body.clear();
            return Wish::TooLong;
        }
        m_body.append(bytes);
        return Wish::More;
    }

private:
    qsizetype m_longest;
    QByteArray m_body;
};

/// Hands on the events of a stream until it is stopped.
class EventReader final : public ReplyReader
{
public:
    EventReader(StreamPath path, qsizetype longest, WireClient::EventSink onEvent)
        : m_stream(path, longest), m_onEvent(std::move(onEvent))
    {}

    Wish take(QByteArray bytes, const StopSigns &stop) override
    {
        m_stream.append(std::move(bytes));
        return handOn(stop);
    }

    Wish finish(const StopSigns &stop) override
    {
        m_stream.finish();
        const Wish wish = handOn(stop);
        return wish == Wish::More ? Wish::Enough : wish;
    }

private:
    Wish handOn(const StopSigns &stop)
    {
        while (!stop.areGiven()) {
            const std::optional<StreamEvent> event = m_stream.next();
            if (!event)
                break;
            m_onEvent(*event);
        }
        if (m_stream.isLineTooLong())
            return Wish::TooLong;
        return m_stream.isDone() ? Wish::Enough : Wish::More;
    }

    StreamReader m_stream;
    WireClient::EventSink m_onEvent;
};

/// The body of a request. The toolkit sends a request again by itself if the connection closes before an answer came,
/// but not if it cannot go back to the start of the body; nothing is to be asked for twice.
class BodyOfOneTry final : public QBuffer
{
public:
    using QBuffer::QBuffer;
    bool reset() override { return false; }
};

const WireFailure kStopped{WireFailure::Kind::Stopped, -1, QString()};

WireFailure transportFailure(const QString &description)
{
    return {WireFailure::Kind::Transport, -1, description};
}

WireFailure transportFailure(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::NetworkSessionFailedError:
        return transportFailure(u"Could not connect to the server."_s);
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError: // nobody but the toolkit's timer is left to cancel it
        return transportFailure(u"The request timed out."_s);
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ProtocolUnknownError:
        return transportFailure(u"The server's answer could not be read."_s);
    default:
        return transportFailure(u"The network connection was lost."_s);
    }
}

int statusOf(const QNetworkReply &reply)
{
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return status.isValid() ? status.toInt() : -1;
}

/// A request on its way. The bytes are looked at while the reply sends a signal, and whoever gets them may stop the
/// request there and then; so this is shared with the receiving function, and the reply is closed only behind it.
class Exchange
{
public:
    Exchange(QNetworkReply *reply, std::shared_ptr<ReplyReader> reader, StopSigns stop)
        : m_reply(reply), m_reader(std::move(reader)), m_stop(std::move(stop))
    {}

    /// Takes the bytes that have arrived.
    void receive()
    {
        if (m_isReceiving || isOver())
            return;
        m_isReceiving = true;
        if (const int status = statusOf(*m_reply); status == kSuccess)
            m_wish = m_reader->take(m_reply->readAll(), m_stop);
        else if (status >= 0)
            m_wish = ReplyReader::Wish::Enough; // whatever the body says
        m_isReceiving = false;
        if (isOver())
            m_reply->abort();
    }

    /// Closes the connection, which finishes the reply; not while bytes are being looked at.
    void close()
    {
        if (!m_isReceiving)
            m_reply->abort();
    }

    /// What came of it, once the reply has finished.
    WireResult<std::monostate> end()
    {
        const int status = statusOf(*m_reply);
        const bool isWhole = m_reply->error() == QNetworkReply::NoError && status == kSuccess;
        if (!isOver() && isWhole) {
            receive();
            if (!isOver())
                m_wish = m_reader->finish(m_stop);
        }
        if (m_stop.areGiven())
            return kStopped;
        if (m_wish == ReplyReader::Wish::TooLong)
            return transportFailure(u"The server's answer is too long."_s);
        if (status >= 0 && status != kSuccess)
            return WireFailure{WireFailure::Kind::Status, status, u"The server answered with status %1."_s.arg(status)};
        if (m_wish == ReplyReader::Wish::More)
            return transportFailure(m_reply->error());
        return std::monostate();
    }

private:
    bool isOver() const { return m_wish != ReplyReader::Wish::More || m_stop.areGiven(); }

    QNetworkReply *m_reply;
    std::shared_ptr<ReplyReader> m_reader;
    StopSigns m_stop;
    ReplyReader::Wish m_wish = ReplyReader::Wish::More;
    bool m_isReceiving = false;
};

/// Waits for the end of a reply, whose bytes go to `reader` as they arrive.
QCoro::Task<WireResult<std::monostate>> exchange(QNetworkReply *started, std::shared_ptr<ReplyReader> reader,
                                                 StopSigns stop)
{
    const std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> reply(started);
    const auto running = std::make_shared<Exchange>(started, std::move(reader), stop);
    const auto receive = [running] { running->receive(); };
    QObject::connect(started, &QNetworkReply::metaDataChanged, started, receive);
    QObject::connect(started, &QNetworkReply::readyRead, started, receive);
    {
        const auto close = [running] { std::shared_ptr(running)->close(); };
        const std::stop_callback whenCallerStops(stop.caller, close);
        const std::stop_callback whenClientGoes(stop.client, close);
        co_await reply.get();
    }
    co_return running->end();
}

/// The value that a whole body stands for.
template <class Value>
WireResult<Value> bodyResult(const WireResult<std::monostate> &end, const BodyReader &reader,
                             std::optional<Value> (*decode)(QByteArrayView))
{
    if (!end)
        return end.failure();
    std::optional<Value> value = decode(reader.body());
    if (!value)
        return WireFailure{WireFailure::Kind::Malformed, -1, u"The server's answer could not be read."_s};
    return *std::move(value);
}

QNetworkRequest requestFor(const QUrl &url, std::chrono::milliseconds timeout)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // The toolkit would ask for compressed bytes, and a small reply could then become a huge one.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setTransferTimeout(static_cast<int>(timeout.count()));
    return request;
}

} // namespace

WireClient::WireClient(WireOptions options, QObject *parent) : QObject(parent), m_options(std::move(options))
{
    m_network.setProxy(QNetworkProxy::NoProxy);
}

WireClient::~WireClient()
{
    m_life.request_stop();
}

QNetworkReply *WireClient::post(QLatin1String path, const QByteArray &body, std::chrono::milliseconds timeout)
{
    QNetworkRequest request = requestFor(m_options.address.url(path), timeout);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json"_L1);
    auto *upload = new BodyOfOneTry;
    upload->setData(body);
    upload->open(QIODevice::ReadOnly);
    QNetworkReply *reply = m_network.post(request, upload);
    upload->setParent(reply);
    reply->setReadBufferSize(kReadAhead);
    return reply;
}

QCoro::Task<bool> WireClient::checkHealth(std::stop_token stop)
{
    const StopSigns signs{std::move(stop), m_life.get_token()};
    if (signs.areGiven())
        co_return false;
    QNetworkReply *reply = m_network.get(requestFor(m_options.address.url("/health"_L1), m_options.healthTimeout));
    reply->setReadBufferSize(kReadAhead);
    const auto end = co_await exchange(reply, std::make_shared<StatusReader>(), signs);
    co_return static_cast<bool>(end);
}

QCoro::Task<WireResult<std::monostate>> WireClient::chat(ChatRequestPayload payload, StreamPath path, EventSink onEvent,
                                                         std::stop_token stop)
{
    const StopSigns signs{std::move(stop), m_life.get_token()};
    if (signs.areGiven())
        co_return kStopped;
    QNetworkReply *reply = post("/v1/chat/completions"_L1, encodeChatRequest(payload), m_options.streamTimeout);
    const auto reader = std::make_shared<EventReader>(path, m_options.longestReply, std::move(onEvent));
    co_return co_await exchange(reply, reader, signs);
}

QCoro::Task<WireResult<QStringList>> WireClient::suggestContext(QString content, std::stop_token stop)
{
    const StopSigns signs{std::move(stop), m_life.get_token()};
    if (signs.areGiven())
        co_return kStopped;
    const auto reader = std::make_shared<BodyReader>(m_options.longestReply);
    QNetworkReply *reply = post("/v1/suggest-context"_L1, encodeSuggestionsRequest(content), m_options.bodyTimeout);
    const auto end = co_await exchange(reply, reader, signs);
    co_return bodyResult(end, *reader, decodeSuggestionsResponse);
}

QCoro::Task<WireResult<ConceptExpansionResponse>> WireClient::expandConcept(QString topic, std::stop_token stop)
{
    const StopSigns signs{std::move(stop), m_life.get_token()};
    if (signs.areGiven())
        co_return kStopped;
    const auto reader = std::make_shared<BodyReader>(m_options.longestReply);
    QNetworkReply *reply = post("/v1/expand-concept"_L1, encodeConceptRequest(topic), m_options.bodyTimeout);
    const auto end = co_await exchange(reply, reader, signs);
    co_return bodyResult(end, *reader, decodeConceptResponse);
}

QCoro::Task<WireResult<QString>> WireClient::digestFile(QString filename, QString content, std::stop_token stop)
{
    const StopSigns signs{std::move(stop), m_life.get_token()};
    if (signs.areGiven())
        co_return kStopped;
    const auto reader = std::make_shared<BodyReader>(m_options.longestReply);
    QNetworkReply *reply = post("/v1/digest-file"_L1, encodeDigestRequest(filename, content), m_options.bodyTimeout);
    const auto end = co_await exchange(reply, reader, signs);
    co_return bodyResult(end, *reader, decodeDigestResponse);
}

} // namespace Tessaline
