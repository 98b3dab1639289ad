#include "Services/RequestBodies.h"
#include "Services/SessionCodec.h"
#include "Services/StreamReader.h"
#include "Services/WireClient.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QThread>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <benchmark/benchmark.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A stream of so many tokens, in lines as the server writes them, with an empty line behind each.
QByteArray tokenStream(int64_t tokens)
{
    constexpr const char *kTokens[] = {"The", " quick", " brown", " fox\\n", " jumps", " \\\"over\\\"", " naïve", " 📝"};
    QByteArray stream;
    for (int64_t i = 0; i < tokens; ++i)
        stream += "data: {\"token\":\"" + QByteArray(kTokens[i % 8]) + "\"}\n\n";
    return stream + "data: [DONE]\n\n";
}

QString manuscript(qsizetype size)
{
    const QString paragraph = u"The quick brown fox jumps over the lazy dog, and then it *runs* away from the **big** "
                              u"bear; nobody knows [why](https://example.org/a) it said “no” and \"yes\".\n\n"_s;
    return paragraph.repeated(size / paragraph.size() + 1).first(size);
}

void setRate(benchmark::State &state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// --- streams ---

void decodeStream(benchmark::State &state)
{
    constexpr qsizetype kPiece = 16 * 1024;
    const QByteArray stream = tokenStream(state.range(0));
    for (auto _ : state) {
        StreamReader reader(StreamPath::Chat);
        QString accumulator;
        const auto takeEvents = [&] {
            while (const std::optional<StreamEvent> event = reader.next())
                accumulator += std::get<TokenEvent>(*event).token;
        };
        for (qsizetype at = 0; at < stream.size(); at += kPiece) {
            reader.append(stream.mid(at, kPiece));
            takeEvents();
        }
        reader.finish();
        takeEvents();
        benchmark::DoNotOptimize(accumulator);
    }
    setRate(state);
}

BENCHMARK(decodeStream)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// Answers each connection with the same bytes, on a thread of its own.
class StreamServer
{
public:
    explicit StreamServer(const QByteArray &stream)
    {
        m_thread.start();
        m_server.moveToThread(&m_thread);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this, stream] {
            QTcpSocket *connection = m_server.nextPendingConnection();
            QObject::connect(connection, &QTcpSocket::readyRead, connection, [connection, stream] {
                connection->readAll();
                connection->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + stream);
                connection->disconnectFromHost();
            });
        });
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.listen(QHostAddress::LocalHost); }, Qt::BlockingQueuedConnection);
    }

    ~StreamServer()
    {
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.moveToThread(nullptr); }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    quint16 port() const { return m_server.serverPort(); }

private:
    QTcpServer m_server;
    QThread m_thread;
};

QCoro::Task<> receiveAll(WireClient &client, QString *accumulator, QEventLoop *loop)
{
    ChatRequestPayload payload;
    const WireClient::EventSink onEvent = [accumulator](const StreamEvent &event) {
        *accumulator += std::get<TokenEvent>(event).token;
    };
    const auto end = co_await client.chat(payload, StreamPath::Chat, onEvent, {});
    if (!end)
        accumulator->clear();
    loop->quit();
}

/// The same through a connection.
void receiveStream(benchmark::State &state)
{
    int argc = 1;
    char name[] = "wire_bench";
    char *argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    const StreamServer server(tokenStream(state.range(0)));
    WireOptions options;
    options.address.port = server.port();
    for (auto _ : state) {
        WireClient client(options);
        QString accumulator;
        QEventLoop loop;
        receiveAll(client, &accumulator, &loop);
        loop.exec();
        if (accumulator.isEmpty())
            state.SkipWithError("The stream did not arrive.");
    }
    setRate(state);
}

BENCHMARK(receiveStream)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

// --- requests and files; the arguments are their sizes in UTF-16 units ---

void encodeRequest(benchmark::State &state)
{
    ChatRequestPayload payload;
    payload.fileContent = manuscript(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeChatRequest(payload));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

void decodeHistory(benchmark::State &state)
{
    constexpr qsizetype kMessage = 5000;
    QList<ChatMessage> messages(state.range(0) / kMessage,
                                {QUuid::createUuid(), kAssistantRole.toString(), manuscript(kMessage)});
    const QByteArray file = encodeChatHistory(messages);
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeChatHistory(file));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * file.size());
}

BENCHMARK(encodeRequest)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeHistory)->Arg(5'000'000)->Arg(50'000'000)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace Tessaline
