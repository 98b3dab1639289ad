#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <optional>

namespace Tessaline {

/// Cuts bytes that arrive in pieces into lines. A line ends with LF, CR or CR LF, also when that pair arrives in two
/// pieces; a line is handed out as soon as its end is seen. Lines are cut from bytes, so that a character which arrived
/// in two pieces is whole in its line.
///
///     splitter.append(bytes);
///     while (const std::optional<QByteArrayView> line = splitter.next())
///         …
///     if (splitter.isLineTooLong()) …
class LineSplitter
{
public:
    static constexpr qsizetype kLongestLine = 64 * 1024 * 1024; // bytes

    explicit LineSplitter(qsizetype longestLine = kLongestLine) : m_longestLine(longestLine) {}

    /// More bytes, of any number. The lines of the bytes before must have been taken.
    void append(QByteArray bytes);
    /// No more bytes: what stands behind the last line end is a line, unless it is empty.
    void finish();
    /// The next whole line without its end, or absent if its end has yet to arrive. The bytes are valid until the next
    /// call of any function.
    std::optional<QByteArrayView> next();

    /// Whether a line was met that is longer than allowed. It is not handed out, and nothing after it; what has been
    /// kept of it is let go.
    bool isLineTooLong() const { return m_isTooLong; }

private:
    qsizetype m_longestLine;
    QByteArray m_bytes;        // the newest piece
    qsizetype m_position = 0;  // in m_bytes: the start of what has yet to be handed out
    QByteArray m_begun;        // the start of a line whose end has yet to arrive
    bool m_endsWithCr = false; // the last line ended with CR: a LF next belongs to it
    bool m_hasTaken = false;   // m_begun has been handed out
    bool m_isFinished = false;
    bool m_isTooLong = false;
};

} // namespace Tessaline
