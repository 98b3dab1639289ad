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

/// Whether the lower case of the unit is one unit too, and does not depend on a second one.
bool isLoweredAlone(char16_t unit)
{
    constexpr char16_t kDottedCapitalI = 0x130; // the only letter whose lower case is two code points
    return !QChar::isSurrogate(unit) && unit != kDottedCapitalI;
}

} // namespace

QString lowered(QStringView text)
{
    QString result(text.size(), Qt::Uninitialized);
    auto *out = reinterpret_cast<char16_t *>(result.data());
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit < 0x80) {
            *out++ = unit >= u'A' && unit <= u'Z' ? unit | 0x20 : unit;
        } else if (isLoweredAlone(unit)) {
            *out++ = static_cast<char16_t>(QChar::toLower(char32_t(unit)));
        } else {
            return text.toString().toLower();
        }
    }
    return result;
}

TokenSearch::TokenSearch(const QStringList &tokens)
{
    m_slots.fill(kNone);
    QStringList distinct = tokens;
    distinct.removeDuplicates();
    distinct.removeAll(QString());
    for (const QString &token : std::as_const(distinct)) {
        if (token.size() < kPrefix) {
            m_shortTokens.append(token);
            continue;
        }
        const quint64 prefix = prefixAt(reinterpret_cast<const char16_t *>(token.utf16()));
        qint32 &first = m_slots[slotOf(prefix)];
        m_tokens.push_back({token, prefix, first});
        first = static_cast<qint32>(m_tokens.size()) - 1;
    }
}

quint64 TokenSearch::prefixAt(const char16_t *units)
{
    return quint64(units[0]) | quint64(units[1]) << 16 | quint64(units[2]) << 32;
}

size_t TokenSearch::slotOf(quint64 prefix)
{
    return static_cast<size_t>((prefix * 0x9E3779B97F4A7C15u) >> 52); // the upper 12 bits of a multiplicative hash
}

qsizetype TokenSearch::hits(QStringView text) const
{
    qsizetype hits = 0;
    for (const QString &token : m_shortTokens)
        hits += count(token, text);
    if (m_tokens.empty())
        return hits;

    // Most positions begin no token: nothing is in their slots.
    QVarLengthArray<qsizetype, 48> ends(static_cast<qsizetype>(m_tokens.size()), 0); // of each token's last occurrence
    const char16_t *const units = text.utf16();
    for (qsizetype at = 0; at + kPrefix <= text.size(); ++at) {
        const quint64 prefix = prefixAt(units + at);
        for (qint32 index = m_slots[slotOf(prefix)]; index != kNone;
             index = m_tokens[static_cast<size_t>(index)].next) {
            const Token &token = m_tokens[static_cast<size_t>(index)];
            if (token.prefix == prefix && at >= ends[index] && text.sliced(at).startsWith(token.text)) {
                ++hits;
                ends[index] = at + token.text.size();
            }
        }
    }
    return hits;
}

} // namespace Tessaline
