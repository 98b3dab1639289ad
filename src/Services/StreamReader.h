#pragma once

#include "Services/LineSplitter.h"
#include "Services/StreamLine.h"

#include <QtCore/QByteArray>

#include <optional>
#include <utility>

namespace Tessaline {

/// Turns the bytes of a chat reply, in pieces as they arrive, into its events.
///
///     reader.append(bytes);
///     while (const std::optional<StreamEvent> event = reader.next())
///         …
class StreamReader
{
public:
    explicit StreamReader(StreamPath path, qsizetype longestLine = LineSplitter::kLongestLine)
        : m_path(path), m_splitter(longestLine)
    {}

    /// More bytes. The events of the bytes before must have been taken.
    void append(QByteArray bytes) { m_splitter.append(std::move(bytes)); }
    /// No more bytes: the last line needs no line end.
    void finish() { m_splitter.finish(); }
    /// The next event, or absent if the bytes so far hold no more.
    std::optional<StreamEvent> next();

    /// Whether the stream has said that it is done. Only StreamPath::OneShot listens to that; no event follows then.
    bool isDone() const { return m_isDone; }
    /// Whether a line was longer than allowed; no event follows then.
    bool isLineTooLong() const { return m_splitter.isLineTooLong(); }

private:
    StreamPath m_path;
    LineSplitter m_splitter;
    bool m_isDone = false;
};

} // namespace Tessaline
