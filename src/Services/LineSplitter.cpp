#include "Services/LineSplitter.h"

#include <algorithm>
#include <utility>

namespace Tessaline {

void LineSplitter::append(QByteArray bytes)
{
    m_bytes = std::move(bytes);
    m_position = 0;
}

void LineSplitter::finish()
{
    m_isFinished = true;
}

std::optional<QByteArrayView> LineSplitter::next()
{
    if (m_isTooLong)
        return std::nullopt;
    if (m_hasTaken)
        m_begun.clear();
    m_hasTaken = false;

    // 1. The LF of a CR LF belongs to the line before.
    if (m_endsWithCr && m_position < m_bytes.size()) {
        if (m_bytes.at(m_position) == '\n')
            ++m_position;
        m_endsWithCr = false;
    }

    // 2. The next line end, or all there is.
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_position);
    const auto end = std::find_if(rest.begin(), rest.end(), [](char byte) { return byte == '\n' || byte == '\r'; });
    const qsizetype length = end - rest.begin();
    if (m_begun.size() + length > m_longestLine) {
        *this = LineSplitter(m_longestLine);
        m_isTooLong = true;
        return std::nullopt;
    }
    if (end == rest.end()) {
        m_begun.append(rest);
        m_bytes.clear();
        m_position = 0;
        if (!m_isFinished || m_begun.isEmpty())
            return std::nullopt;
        m_hasTaken = true;
        return QByteArrayView(m_begun);
    }
    m_position += length + 1;
    m_endsWithCr = *end == '\r';

    // 3. FAST PATH: a line that lies whole in one piece is not copied.
    if (m_begun.isEmpty())
        return rest.first(length);
    m_begun.append(rest.first(length));
    m_hasTaken = true;
    return QByteArrayView(m_begun);
}

} // namespace Tessaline
