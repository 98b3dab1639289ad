#pragma once

#include "foundation/Result.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Tessaline {

/// A replacement inside a text: `removed` units at `location` gave way to `inserted` units. All count UTF-16 units.
struct TextChange {
    qsizetype location = 0;
    qsizetype removed = 0;
    qsizetype inserted = 0;
    friend bool operator==(const TextChange &, const TextChange &) = default;
};

/// The text of a document: a value like QString that is cheap to copy *and* cheap to edit at any size. It is kept in
/// chunks of at most `kMaximumChunk` UTF-16 units which copies share, so an edit costs one chunk and the list of chunks
/// (about 30 kB for a text of 10 MB), and a snapshot for another thread costs nothing.
///
/// A surrogate pair and a CR LF never straddle two chunks, so chunks can be read and written one by one.
class ChunkedText
{
public:
    static constexpr qsizetype kMaximumChunk = 16384; // UTF-16 units; an edit copies at most this much

    ChunkedText() = default;
    explicit ChunkedText(QStringView text);

    /// Reads strict UTF-8: one invalid or cut sequence gives Malformed. A byte order mark stays in the text as U+FEFF.
    static Result<ChunkedText> fromUtf8(QByteArrayView bytes);

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    QChar at(qsizetype position) const;
    QString sliced(qsizetype position, qsizetype length) const;
    QString toString() const { return sliced(0, m_size); }

    /// Replaces `length` units at `location`. Unpaired surrogates in `text` are turned into U+FFFD, since UTF-8 cannot
    /// carry them; the change that was really made is returned. Both ends must lie inside the text.
    TextChange replace(qsizetype location, qsizetype length, QStringView text);

    /// The chunks in order, for readers that walk the whole text. Never empty ones.
    const QList<QString> &chunks() const { return m_chunks; }
    /// The part of a chunk from `position` on, never empty unless `position` is at the end; for walking forwards.
    QStringView chunkFrom(qsizetype position) const;
    /// The part of a chunk that ends at `position`, never empty unless `position` is 0; for walking backwards.
    QStringView chunkUpTo(qsizetype position) const;

    friend bool operator==(const ChunkedText &left, const ChunkedText &right);

private:
    struct Place {
        qsizetype chunk = 0;  // index; the number of chunks for the end of the text
        qsizetype offset = 0; // inside that chunk
    };
    Place placeOf(qsizetype position) const;

    QList<QString> m_chunks;
    qsizetype m_size = 0;
};

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::ChunkedText)
