#include "Services/TokenSearch.h"

#include <QtCore/QVarLengthArray>

#include <algorithm>

namespace Tessaline {

namespace {

qsizetype count(QStringView token, QStringView text)
{
    qsizetype hits = 0;
    for (qsizetype at = text.indexOf(token); at >= 0; at = text.indexOf(token, at + token.size()))
        ++hits;
    return hits;
}

} // namespace

TokenSearch::TokenSearch(const QStringList &tokens)
{
    QStringList distinct = tokens;
    distinct.removeDuplicates();
    distinct.removeAll(QString());
    for (const QString &token : std::as_const(distinct)) {
        if (token.size() < kPrefix) {
            m_shortTokens.append(token);
            continue;
        }
        const quint64 prefix = prefixAt(reinterpret_cast<const char16_t *>(token.utf16()));
        m_tokens.push_back({token, prefix});
        m_filter.set(filterBit(prefix));
    }
}

quint64 TokenSearch::prefixAt(const char16_t *units)
{
    return quint64(units[0]) | quint64(units[1]) << 16 | quint64(units[2]) << 32;
}

size_t TokenSearch::filterBit(quint64 prefix)
{
    return static_cast<size_t>((prefix * 0x9E3779B97F4A7C15u) >> 50); // the upper 14 bits of a multiplicative hash
}

qsizetype TokenSearch::hits(QStringView text) const
{
    qsizetype hits = 0;
    for (const QString &token : m_shortTokens)
        hits += count(token, text);
    if (m_tokens.empty())
        return hits;

    // Most positions begin no token, which one bit tells. Where it does not, the prefixes are compared, then the whole.
    QVarLengthArray<qsizetype, 48> ends(static_cast<qsizetype>(m_tokens.size()), 0); // of each token's last occurrence
    const char16_t *const units = text.utf16();
    for (qsizetype at = 0; at + kPrefix <= text.size(); ++at) {
        const quint64 prefix = prefixAt(units + at);
        if (!m_filter.test(filterBit(prefix)))
            continue;
        for (size_t i = 0; i < m_tokens.size(); ++i) {
            const Token &token = m_tokens[i];
            qsizetype &end = ends[static_cast<qsizetype>(i)];
            if (token.prefix == prefix && at >= end && text.sliced(at).startsWith(token.text)) {
                ++hits;
                end = at + token.text.size();
            }
        }
    }
    return hits;
}

} // namespace Tessaline
