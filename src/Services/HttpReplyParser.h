#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <optional>

namespace Tessaline {

/// Takes an HTTP/1.1 reply apart, in pieces as they arrive. Interim replies (100 to 199, but for 101) are passed over.
/// The end of the body is told by its chunks, by its length or, without either, by the end of the connection.
class HttpReplyParser
{
public:
    static constexpr qsizetype kLongestHead =
        64 * 1024; // bytes; of the head, of a chunk's size and of the trailers each

    /// The bytes of the body among these bytes, in one piece.
    QByteArray take(QByteArray bytes);
    /// The connection has ended.
    void finish();

    /// From the head; absent until that has arrived.
    std::optional<int> status() const { return m_status; }
    bool isComplete() const { return m_part == Part::End; }      // what follows does not belong to the reply
    bool isMalformed() const { return m_part == Part::Nothing; } // no HTTP, or an end before the reply was complete

private:
    enum class Part { Head, Body, ChunkSize, Chunk, ChunkEnd, Trailers, End, Nothing };

    std::optional<QByteArray> takeLine(QByteArrayView &bytes);
    void takeHeadLine(QByteArrayView line);
    void takeStatusLine(QByteArrayView line);
    void takeField(QByteArrayView line);
    void endHead();
    void takeChunkSize(QByteArrayView line);

    Part m_part = Part::Head;
    QByteArray m_line;     // the start of a line whose end has yet to arrive
    qsizetype m_taken = 0; // bytes of the head, or of the trailers, so far
    std::optional<int> m_status;
    std::optional<int> m_statusInHead; // of the head that is being read
    std::optional<qint64> m_length;    // as the head says
    bool m_isChunked = false;
    std::optional<qint64> m_rest; // bytes of the body, or of the chunk, that have yet to arrive; absent: until the end
};

} // namespace Tessaline
