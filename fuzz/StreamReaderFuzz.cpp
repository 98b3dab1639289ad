// Reads bytes as a stream of events, in one piece and in many, and holds the lines against the plainest way to cut
// them.

#include "fuzz/Require.h"

#include "Services/StreamReader.h"

#include <QtCore/QList>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <vector>

using namespace Tessaline;

namespace {

std::vector<StreamEvent> eventsOf(const std::vector<QByteArray> &pieces, StreamPath path, qsizetype longestLine,
                                  bool *isTooLong)
{
    StreamReader reader(path, longestLine);
    std::vector<StreamEvent> events;
    const auto takeEvents = [&] {
        while (std::optional<StreamEvent> event = reader.next())
            events.push_back(*std::move(event));
    };
    for (const QByteArray &piece : pieces) {
        reader.append(piece);
        takeEvents();
    }
    reader.finish();
    takeEvents();
    *isTooLong = reader.isLineTooLong();
    return events;
}

/// The same from all bytes at once, with lines cut by replacing their ends.
std::vector<StreamEvent> plainEventsOf(QByteArray bytes, StreamPath path, qsizetype longestLine, bool *isTooLong)
{
    bytes.replace("\r\n", "\n").replace('\r', '\n');
    std::vector<StreamEvent> events;
    *isTooLong = false;
    for (const QByteArray &line : bytes.split('\n')) {
        if (line.size() > longestLine) {
            *isTooLong = true;
            break;
        }
        const StreamLine meaning = streamLine(line, path);
        if (std::holds_alternative<DoneLine>(meaning) && path == StreamPath::OneShot)
            break;
        if (const auto *token = std::get_if<TokenEvent>(&meaning))
            events.emplace_back(*token);
        if (const auto *stats = std::get_if<ContextStatsEvent>(&meaning))
            events.emplace_back(*stats);
        if (const auto *error = std::get_if<ErrorEvent>(&meaning))
            events.emplace_back(*error);
    }
    return events;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The numbers are taken from the end, so that an input is a readable stream.
    FuzzedDataProvider input(data, size);
    const StreamPath path = input.ConsumeBool() ? StreamPath::Chat : StreamPath::OneShot;
    const qsizetype longestLine = input.ConsumeBool() ? LineSplitter::kLongestLine : input.ConsumeIntegral<uint8_t>();
    std::vector<size_t> cuts(input.ConsumeIntegralInRange<size_t>(0, 12));
    for (size_t &cut : cuts)
        cut = input.ConsumeIntegral<uint8_t>();
    const QByteArray bytes = QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());

    std::vector<QByteArray> pieces;
    qsizetype at = 0;
    for (const size_t cut : cuts) {
        const qsizetype length = std::min(static_cast<qsizetype>(cut), bytes.size() - at);
        pieces.push_back(bytes.mid(at, length));
        at += length;
    }
    pieces.push_back(bytes.mid(at));

    bool isTooLong = false;
    const std::vector<StreamEvent> events = eventsOf(pieces, path, longestLine, &isTooLong);

    bool isPlainTooLong = false;
    REQUIRE(events == plainEventsOf(bytes, path, longestLine, &isPlainTooLong));
    REQUIRE(isTooLong == isPlainTooLong);
    if (path == StreamPath::OneShot) {
        for (const StreamEvent &event : events)
            REQUIRE(std::holds_alternative<TokenEvent>(event));
    }
    return 0;
}
