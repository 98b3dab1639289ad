#include "Services/HttpReplyParser.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace Tessaline {

namespace {

std::optional<qint64> numberFrom(QByteArrayView digits, int base)
{
    qint64 number = 0;
    const auto read = std::from_chars(digits.begin(), digits.end(), number, base);
    if (read.ec != std::errc() || read.ptr != digits.end() || number < 0 || digits.startsWith('-'))
        return std::nullopt;
    return number;
}

bool isNamed(QByteArrayView name, QByteArrayView expected)
{
    return name.compare(expected, Qt::CaseInsensitive) == 0;
}

} // namespace

QByteArray HttpReplyParser::take(QByteArray bytes)
{
    // FAST PATH: the usual piece of a stream is a piece of the body and nothing else.
    if (m_part == Part::Body && !m_rest)
        return bytes;

    QByteArray body;
    QByteArrayView left = bytes;
    while (!left.isEmpty() && m_part != Part::End && m_part != Part::Nothing) {
        if (m_part == Part::Body || m_part == Part::Chunk) {
            const qsizetype size =
                m_rest ? static_cast<qsizetype>(std::min<qint64>(*m_rest, left.size())) : left.size();
            body.append(left.first(size));
            left = left.sliced(size);
            if (m_rest && (*m_rest -= size) == 0)
                m_part = m_part == Part::Chunk ? Part::ChunkEnd : Part::End;
            continue;
        }
        const std::optional<QByteArray> line = takeLine(left);
        if (!line)
            break;
        if (m_part == Part::Head)
            takeHeadLine(*line);
        else if (m_part == Part::ChunkSize)
            takeChunkSize(*line);
        else if (m_part == Part::ChunkEnd)
            m_part = line->isEmpty() ? Part::ChunkSize : Part::Nothing;
        else if (line->isEmpty()) // of the trailers
            m_part = Part::End;
        if (m_part != Part::Head && m_part != Part::Trailers)
            m_taken = 0;
    }
    return body;
}

void HttpReplyParser::finish()
{
    const bool isWhole = m_part == Part::End || (m_part == Part::Body && !m_rest);
    m_part = isWhole ? Part::End : Part::Nothing;
}

/// The next line without its end, or absent if its end has yet to arrive.
std::optional<QByteArray> HttpReplyParser::takeLine(QByteArrayView &bytes)
{
    const qsizetype end = bytes.indexOf('\n');
    const QByteArrayView piece = end < 0 ? bytes : bytes.first(end);
    m_taken += piece.size();
    if (m_taken > kLongestHead) {
        m_part = Part::Nothing;
        m_line.clear();
        return std::nullopt;
    }
    m_line.append(piece);
    bytes = bytes.sliced(end < 0 ? bytes.size() : end + 1);
    if (end < 0)
        return std::nullopt;
    QByteArray line = std::exchange(m_line, {});
    if (line.endsWith('\r'))
        line.chop(1);
    return line;
}

// --- the head ---

void HttpReplyParser::takeHeadLine(QByteArrayView line)
{
    if (!m_statusInHead)
        takeStatusLine(line);
    else if (line.isEmpty())
        endHead();
    else
        takeField(line);
}

/// "HTTP/1.1 200 OK"; the words behind the number may be missing.
void HttpReplyParser::takeStatusLine(QByteArrayView line)
{
    constexpr qsizetype kVersion = 9; // "HTTP/1.1 "
    constexpr qsizetype kDigits = 3;
    const bool isSound = line.startsWith("HTTP/1.") && line.size() >= kVersion + kDigits && line[kVersion - 1] == ' ' &&
                         (line.size() == kVersion + kDigits || line[kVersion + kDigits] == ' ');
    const std::optional<qint64> status =
        isSound ? numberFrom(line.sliced(kVersion, kDigits), 10) : std::optional<qint64>();
    if (status && *status >= 100)
        m_statusInHead = static_cast<int>(*status);
    else
        m_part = Part::Nothing;
}

void HttpReplyParser::takeField(QByteArrayView line)
{
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0) {
        m_part = Part::Nothing;
        return;
    }
    const QByteArrayView name = line.first(colon);
    const QByteArrayView value = line.sliced(colon + 1).trimmed();
    if (isNamed(name, "Content-Length")) {
        const std::optional<qint64> length = numberFrom(value, 10);
        if (!length || (m_length && m_length != length))
            m_part = Part::Nothing;
        m_length = length;
    } else if (isNamed(name, "Transfer-Encoding")) {
        m_isChunked = isNamed(value, "chunked");
        if (!m_isChunked)
            m_part = Part::Nothing; // a coding that was not asked for
    }
}

void HttpReplyParser::endHead()
{
    constexpr int kSwitchingProtocols = 101;
    constexpr int kFirstFinal = 200;
    const int status = *std::exchange(m_statusInHead, std::nullopt);
    const std::optional<qint64> length = std::exchange(m_length, std::nullopt);
    if (status < kFirstFinal && status != kSwitchingProtocols) {
        m_isChunked = false;
        m_taken = 0;
        return; // the next head follows
    }
    constexpr int kNoContent = 204;
    constexpr int kNotModified = 304;
    const bool hasNoBody = status < kFirstFinal || status == kNoContent || status == kNotModified;
    m_status = status;
    if (hasNoBody || (!m_isChunked && length == 0))
        m_part = Part::End;
    else if (m_isChunked)
        m_part = Part::ChunkSize;
    else
        m_part = Part::Body;
    if (m_part == Part::Body)
        m_rest = length;
}

// --- chunks ---

/// Hexadecimal digits, and perhaps extensions behind a semicolon.
void HttpReplyParser::takeChunkSize(QByteArrayView line)
{
    const qsizetype semicolon = line.indexOf(';');
    const std::optional<qint64> size = numberFrom((semicolon < 0 ? line : line.first(semicolon)).trimmed(), 16);
    if (!size)
        m_part = Part::Nothing;
    else if (*size == 0)
        m_part = Part::Trailers;
    else
        m_part = Part::Chunk;
    m_rest = size;
}

} // namespace Tessaline
