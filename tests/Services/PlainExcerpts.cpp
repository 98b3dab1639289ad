#include "tests/Services/PlainExcerpts.h"

#include "foundation/CharacterBreaks.h"

#include <algorithm>

namespace Tessaline::PlainExcerpts {

QStringList splitIntoChunks(const QString &text, qint64 size, qint64 overlap)
{
    if (size <= 0)
        return {};
    QStringList characters;
    const CharacterBreaks breaks(text);
    for (qsizetype begin = 0, end = 0; begin < text.size(); begin = end) {
        end = breaks.following(begin);
        characters.append(text.sliced(begin, end - begin));
    }
    if (characters.size() <= size)
        return {text};
    const qint64 stride = std::max<qint64>(size - std::min(overlap, size - 1), 1);
    QStringList chunks;
    for (qint64 at = 0; at < characters.size(); at += stride) {
        const qint64 end = std::min<qint64>(at + size, characters.size());
        chunks.append(characters.sliced(at, end - at).join(QString()));
        if (end == characters.size())
            break;
    }
    return chunks;
}

qsizetype tokenHits(const QStringList &tokens, const QString &text)
{
    qsizetype hits = 0;
    for (const QString &token : tokens)
        hits += text.split(token).size() - 1;
    return hits;
}

QString bestExcerpt(const QString &content, const QStringList &tokens)
{
    const QStringList chunks = splitIntoChunks(content, 3000, 240);
    return *std::ranges::max_element(chunks, {},
                                     [&tokens](const QString &chunk) { return tokenHits(tokens, chunk.toLower()); });
}

} // namespace Tessaline::PlainExcerpts
