#include "Services/OneShotGeneration.h"

#include <QtCore/QPromise>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Outcome = OneShotGeneration::Outcome;

QCoro::Task<> answer(WireClient *wire, ChatRequestPayload payload, std::shared_ptr<TokenAccumulator> accumulator,
                     std::shared_ptr<QPromise<Outcome>> promise)
{
    const WireClient::EventSink onEvent = [&accumulator](const StreamEvent &event) {
        if (const auto *token = std::get_if<TokenEvent>(&event))
            accumulator->append(token->token);
    };
    Outcome outcome = co_await wire->chat(std::move(payload), StreamPath::OneShot, onEvent, std::stop_token());
    if (!outcome && outcome.failure().kind == WireFailure::Kind::Status) {
        WireFailure failure = outcome.failure();
        failure.description = u"Server returned status code %1"_s.arg(failure.status);
        outcome = failure;
    }
    promise->addResult(std::move(outcome));
    promise->finish();
}

} // namespace

/// The requests, on the thread of this object: a client's connections belong to the thread that made it.
class OneShotGeneration::Worker final : public QObject
{
public:
    explicit Worker(WireOptions options) : m_options(std::move(options)) {}

    WireClient *wire()
    {
        if (!m_wire)
            m_wire = std::make_unique<WireClient>(m_options);
        return m_wire.get();
    }

private:
    WireOptions m_options;
    std::unique_ptr<WireClient> m_wire;
};

OneShotGeneration::OneShotGeneration(WireOptions options) : m_options(std::move(options))
{
    m_thread.setObjectName(u"OneShotGeneration"_s);
}

OneShotGeneration::~OneShotGeneration()
{
    if (!m_worker)
        return;
    // Queued behind all that was asked for, so that all of it has begun and ends with an outcome.
    QMetaObject::invokeMethod(
        m_worker, [this] { m_thread.quit(); }, Qt::QueuedConnection);
    m_thread.wait();
}

QFuture<Outcome> OneShotGeneration::generate(QString prompt, QString fileContent,
                                             std::shared_ptr<TokenAccumulator> accumulator)
{
    if (!m_worker) {
        m_worker = new Worker(m_options);
        m_worker->moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
        m_thread.start();
    }

    ChatRequestPayload payload;
    payload.prompt = std::move(prompt);
    payload.fileContent = std::move(fileContent);
    payload.temperature = ChatRequestPayload::kOneShotTemperature;
    const auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    QFuture<Outcome> future = promise->future();
    QMetaObject::invokeMethod(
        m_worker,
        [worker = m_worker, payload = std::move(payload), accumulator = std::move(accumulator), promise] {
            answer(worker->wire(), payload, accumulator, promise);
        },
        Qt::QueuedConnection);
    return future;
}

} // namespace Tessaline
