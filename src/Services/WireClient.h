#pragma once

#include "Services/ChatRequestPayload.h"
#include "Services/ConceptCard.h"
#include "Services/LineSplitter.h"
#include "Services/ServerAddress.h"
#include "Services/StreamLine.h"
#include "Services/WireResult.h"

#include <QCoro/QCoroTask>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <chrono>
#include <functional>
#include <stop_token>
#include <variant>

namespace Tessaline {

struct WireOptions {
    ServerAddress address;
    // How long to wait for the next byte; not for the whole reply.
    std::chrono::milliseconds healthTimeout{500};
    std::chrono::milliseconds streamTimeout{std::chrono::seconds(600)};
    std::chrono::milliseconds bodyTimeout{std::chrono::seconds(60)};
    qsizetype longestReply = LineSplitter::kLongestLine; // bytes of a line of a stream, or of a whole body
};

/// The requests to the assistant's server, one operation each. They know no proxy, no cookies, no cache and no
/// redirects, and every request is tried once.
///
/// Each operation starts at once, ends in its result and never throws. Several may run at the same time. A stop that is
/// requested by `stop` closes the connection and ends the operation with WireFailure::Kind::Stopped (health: false)
/// inside request_stop(), so that what awaits it has gone on when that returns; the end of this object does the same.
/// Every call, and every request to stop, is made on the thread of this object, which runs an event loop.
class WireClient final : public QObject
{
    Q_OBJECT
public:
    explicit WireClient(WireOptions options = {}, QObject *parent = nullptr);
    ~WireClient() override;

    /// GET /health: whether the server answered 200.
    QCoro::Task<bool> checkHealth(std::stop_token stop);

    /// Called for each event of a stream in its order. It may request the stop of its operation: then it is not called
    /// again, and the operation ends soon after it has returned, never inside. It must not destroy the client.
    using EventSink = std::function<void(const StreamEvent &event)>;

    /// POST /v1/chat/completions. Ends when the server closes the stream, for StreamPath::OneShot already at "[DONE]".
    /// What the sink holds must live until the operation ends.
    QCoro::Task<WireResult<std::monostate>> chat(ChatRequestPayload payload, StreamPath path, EventSink onEvent,
                                                 std::stop_token stop);

    /// POST /v1/suggest-context: topics for the text.
    QCoro::Task<WireResult<QStringList>> suggestContext(QString content, std::stop_token stop);

    /// POST /v1/expand-concept: cards for a word.
    QCoro::Task<WireResult<ConceptExpansionResponse>> expandConcept(QString topic, std::stop_token stop);

    /// POST /v1/digest-file: a summary of a file's text.
    QCoro::Task<WireResult<QString>> digestFile(QString filename, QString content, std::stop_token stop);

private:
    WireOptions m_options;
    std::stop_source m_life; // stopped when this object goes
};

} // namespace Tessaline
