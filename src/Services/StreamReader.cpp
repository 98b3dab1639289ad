#include "Services/StreamReader.h"

namespace Tessaline {

std::optional<StreamEvent> StreamReader::next()
{
    while (!m_isDone) {
        const std::optional<QByteArrayView> bytes = m_splitter.next();
        if (!bytes)
            break;
        StreamLine line = streamLine(*bytes, m_path);
        if (auto *token = std::get_if<TokenEvent>(&line))
            return std::move(*token);
        if (auto *stats = std::get_if<ContextStatsEvent>(&line))
            return *stats;
        if (auto *error = std::get_if<ErrorEvent>(&line))
            return std::move(*error);
        m_isDone = m_path == StreamPath::OneShot && std::holds_alternative<DoneLine>(line);
    }
    return std::nullopt;
}

} // namespace Tessaline
