#include "foundation/ChunkedText.h"

#include <QtCore/QStringDecoder>

#include <algorithm>

namespace Tessaline {

namespace {

constexpr qsizetype kPreferredChunk = ChunkedText::kMaximumChunk / 2; // leaves room to type before a split
constexpr qsizetype kMinimumChunk = ChunkedText::kMaximumChunk / 8;   // smaller ones are joined with a neighbour

/// Whether a chunk may end between these two units.
bool canCutBetween(QChar before, QChar after)
{
    return !(before.isHighSurrogate() && after.isLowSurrogate()) && !(before == u'\r' && after == u'\n');
}

qsizetype cutNear(QStringView text, qsizetype position)
{
    if (position > 0 && position < text.size() && !canCutBetween(text[position - 1], text[position]))
        --position;
    return position;
}

QList<QString> cutIntoChunks(QStringView text)
{
    QList<QString> chunks;
    chunks.reserve(text.size() / kPreferredChunk + 1);
    while (!text.isEmpty()) {
        const qsizetype length =
            text.size() <= ChunkedText::kMaximumChunk ? text.size() : cutNear(text, kPreferredChunk);
        chunks.append(text.first(length).toString());
        text = text.sliced(length);
    }
    return chunks;
}

/// Whether `text` has a surrogate without its partner.
bool hasLoneSurrogate(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text[i].isSurrogate())
            continue;
        if (!text[i].isHighSurrogate() || i + 1 == text.size() || !text[i + 1].isLowSurrogate())
            return true;
        ++i;
    }
    return false;
}

QString withoutLoneSurrogates(QStringView text)
{
    QString clean = text.toString();
    for (qsizetype i = 0; i < clean.size(); ++i) {
        if (!clean.at(i).isSurrogate())
            continue;
        if (clean.at(i).isHighSurrogate() && i + 1 < clean.size() && clean.at(i + 1).isLowSurrogate())
            ++i;
        else
            clean[i] = QChar::ReplacementCharacter;
    }
    return clean;
}

} // namespace

ChunkedText::ChunkedText(QStringView text)
{
    replace(0, 0, text);
}

Result<ChunkedText> ChunkedText::fromUtf8(QByteArrayView bytes)
{
    if (!bytes.isValidUtf8())
        return Failure{FailureKind::Malformed, QStringLiteral("The file is not text in UTF-8.")};

    ChunkedText text;
    text.m_chunks.reserve(bytes.size() / kPreferredChunk + 1);
    using Flag = QStringConverter::Flag;
    QStringDecoder decoder(QStringConverter::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    while (!bytes.isEmpty()) {
        // A chunk ends before the first byte of a character, and not between CR and LF.
        qsizetype length = std::min(bytes.size(), kPreferredChunk);
        while (length < bytes.size() && (bytes[length] & 0xC0) == 0x80)
            --length;
        if (length < bytes.size() && bytes[length] == '\n' && bytes[length - 1] == '\r')
            --length;
        text.m_chunks.append(decoder(bytes.first(length)));
        text.m_size += text.m_chunks.constLast().size();
        bytes = bytes.sliced(length);
    }
    return text;
}

ChunkedText::Place ChunkedText::placeOf(qsizetype position) const
{
    Q_ASSERT(position >= 0 && position <= m_size);
    Place place;
    place.offset = position;
    const qsizetype count = m_chunks.size();
    const QString *chunk = m_chunks.constData();
    while (place.chunk < count && place.offset >= chunk[place.chunk].size()) {
        place.offset -= chunk[place.chunk].size();
        ++place.chunk;
    }
    return place;
}

QChar ChunkedText::at(qsizetype position) const
{
    Q_ASSERT(position >= 0 && position < m_size);
    const Place place = placeOf(position);
    return m_chunks.at(place.chunk).at(place.offset);
}

QString ChunkedText::sliced(qsizetype position, qsizetype length) const
{
    Q_ASSERT(position >= 0 && length >= 0 && position + length <= m_size);
    QString result;
    result.reserve(length);
    Place place = placeOf(position);
    while (result.size() < length) {
        const QStringView rest = QStringView(m_chunks.at(place.chunk)).sliced(place.offset);
        result.append(rest.first(std::min(rest.size(), length - result.size())));
        place = {place.chunk + 1, 0};
    }
    return result;
}

QStringView ChunkedText::chunkFrom(qsizetype position) const
{
    const Place place = placeOf(position);
    return place.chunk < m_chunks.size() ? QStringView(m_chunks.at(place.chunk)).sliced(place.offset) : QStringView();
}

QStringView ChunkedText::chunkUpTo(qsizetype position) const
{
    if (position == 0)
        return {};
    const Place place = placeOf(position - 1);
    return QStringView(m_chunks.at(place.chunk)).first(place.offset + 1);
}

TextChange ChunkedText::replace(qsizetype location, qsizetype length, QStringView text)
{
    Q_ASSERT(location >= 0 && length >= 0 && location + length <= m_size);
    QString cleaned;
    if (hasLoneSurrogate(text)) {
        cleaned = withoutLoneSurrogates(text);
        text = cleaned;
    }
    const TextChange change{location, length, text.size()};
    if (length == 0 && text.isEmpty())
        return change;

    // 1. The chunks that the range touches; an insertion at the end of a chunk belongs to that chunk.
    Place from = placeOf(location);
    if (from.offset == 0 && from.chunk > 0) {
        --from.chunk;
        from.offset = m_chunks.at(from.chunk).size();
    }
    Place to = length == 0 ? from : placeOf(location + length);
    if (to.chunk == m_chunks.size() && to.chunk > 0) {
        --to.chunk;
        to.offset = m_chunks.at(to.chunk).size();
    }

    // FAST PATH: one chunk that stays within its bounds is changed in place, which step 2 would do too. An end that
    // meets another chunk must keep its character, so that no pair comes to straddle the two.
    if (from.chunk == to.chunk && from.chunk < m_chunks.size()) {
        const qsizetype size = m_chunks.at(from.chunk).size();
        const qsizetype grown = size - length + text.size();
        const bool keepsStart = from.chunk == 0 || from.offset > 0;
        const bool keepsEnd = from.chunk == m_chunks.size() - 1 || to.offset < size;
        const bool isLargeEnough = grown >= kMinimumChunk || (m_chunks.size() == 1 && grown > 0);
        if (isLargeEnough && grown <= kMaximumChunk && keepsStart && keepsEnd) {
            m_chunks[from.chunk].replace(from.offset, length, text.data(), text.size());
            m_size += text.size() - length;
            return change;
        }
    }

    // 2. Everything else: the touched chunks and one neighbour on each side are joined, changed and cut again.
    const qsizetype first = std::max<qsizetype>(from.chunk - 1, 0);
    const qsizetype last = std::min(to.chunk + 1, m_chunks.size() - 1); // below `first` if there is no chunk at all
    QString joined;
    for (qsizetype i = first; i < from.chunk; ++i)
        joined.append(m_chunks.at(i));
    if (from.chunk < m_chunks.size())
        joined.append(QStringView(m_chunks.at(from.chunk)).first(from.offset));
    joined.append(text);
    if (to.chunk < m_chunks.size())
        joined.append(QStringView(m_chunks.at(to.chunk)).sliced(to.offset));
    for (qsizetype i = to.chunk + 1; i <= last; ++i)
        joined.append(m_chunks.at(i));

    const QList<QString> fresh = cutIntoChunks(joined);
    QList<QString> chunks;
    chunks.reserve(m_chunks.size() + fresh.size());
    chunks.append(m_chunks.first(first));
    chunks.append(fresh);
    if (last + 1 < m_chunks.size())
        chunks.append(m_chunks.sliced(last + 1));
    m_chunks = std::move(chunks);
    m_size += text.size() - length;
    return change;
}

bool operator==(const ChunkedText &left, const ChunkedText &right)
{
    if (left.m_size != right.m_size)
        return false;
    // Chunks may be cut differently; shared ones compare by their address first (QString does that by itself only for
    // equal lengths, so the pointers are looked at here).
    qsizetype l = 0;
    qsizetype r = 0;
    QStringView leftRest;
    QStringView rightRest;
    for (;;) {
        if (leftRest.isEmpty()) {
            if (l == left.m_chunks.size())
                return true;
            leftRest = left.m_chunks.at(l++);
        }
        if (rightRest.isEmpty())
            rightRest = right.m_chunks.at(r++);
        const qsizetype length = std::min(leftRest.size(), rightRest.size());
        if (leftRest.data() != rightRest.data() && leftRest.first(length) != rightRest.first(length))
            return false;
        leftRest = leftRest.sliced(length);
        rightRest = rightRest.sliced(length);
    }
}

} // namespace Tessaline
