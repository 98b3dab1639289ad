#include "editing/TextSearch.h"

#include "editing/TextBoundaries.h"
#include "foundation/CharacterBreaks.h"

#include <QtCore/QStringMatcher>

#include <algorithm>

namespace Tessaline {

namespace {

/// The text with a short way to the units around the place that is searched.
struct Scope {
    const ChunkedText &text;
    QString window; // a chunk, behind the last units of the one before
    qsizetype windowStart = 0;

    QChar at(qsizetype position) const
    {
        const qsizetype offset = position - windowStart;
        return offset >= 0 && offset < window.size() ? window.at(offset) : text.at(position);
    }
};

bool isCharacterBoundary(const Scope &scope, qsizetype position)
{
    if (position == 0 || position == scope.text.size())
        return true;
    // FAST PATH: equals what the true rules say.
    if (alwaysStandsAlone(scope.at(position - 1)) && alwaysStandsAlone(scope.at(position)))
        return true;
    return TextBoundaries::isCharacterBoundary(scope.text, position);
}

bool isOfWord(char32_t c)
{
    return QChar::isLetterOrNumber(c) || QChar::isMark(c) || c == U'_';
}

/// Whether a word goes on over this position, which is a boundary.
bool isInsideWord(const Scope &scope, qsizetype position)
{
    if (position == 0 || position == scope.text.size())
        return false;
    const QChar before = scope.at(position - 1);
    const QChar after = scope.at(position);
    return isOfWord(before.isLowSurrogate() ? QChar::surrogateToUcs4(scope.at(position - 2), before)
                                            : before.unicode()) &&
           isOfWord(after.isHighSurrogate() ? QChar::surrogateToUcs4(after, scope.at(position + 1)) : after.unicode());
}

/// Whether the range begins and ends between characters and, if asked for, between words.
bool isAcceptable(const Scope &scope, const TextRange &range, SearchWords words)
{
    return isCharacterBoundary(scope, range.location) && isCharacterBoundary(scope, range.end()) &&
           (words == SearchWords::Any || (!isInsideWord(scope, range.location) && !isInsideWord(scope, range.end())));
}

} // namespace

SearchResult occurrences(const SearchQuery &query, const ChunkedText &text, qsizetype most, const std::stop_token &stop)
{
    SearchResult result;
    const qsizetype length = query.text.size();
    if (length == 0)
        return result;
    const QStringMatcher matcher(query.text,
                                 query.searchCase == SearchCase::Exact ? Qt::CaseSensitive : Qt::CaseInsensitive);
    // Chunk by chunk; what straddles two chunks is found in the chunk's last units joined with the next one.
    Scope scope{text, {}, 0};
    qsizetype nextAllowed = 0; // occurrences do not overlap
    for (const QString &chunk : text.chunks()) {
        if (stop.stop_requested())
            return result;
        scope.window.append(chunk);
        for (qsizetype at = 0; (at = matcher.indexIn(scope.window, at)) >= 0;) {
            const TextRange range{scope.windowStart + at, length};
            if (range.location < nextAllowed || !isAcceptable(scope, range, query.words)) {
                ++at;
                continue;
            }
            if (result.ranges.size() == most) {
                result.isComplete = false;
                return result;
            }
            result.ranges.append(range);
            nextAllowed = range.end();
            at += length;
        }
        const qsizetype kept = std::min(scope.window.size(), length - 1);
        scope.windowStart += scope.window.size() - kept;
        scope.window = scope.window.last(kept);
    }
    return result;
}

std::optional<qsizetype> firstFrom(const QList<TextRange> &ranges, qsizetype position)
{
    if (ranges.isEmpty())
        return std::nullopt;
    const auto found = std::partition_point(ranges.begin(), ranges.end(),
                                            [position](const TextRange &range) { return range.location < position; });
    return found == ranges.end() ? 0 : found - ranges.begin();
}

std::optional<qsizetype> lastBefore(const QList<TextRange> &ranges, qsizetype position)
{
    if (ranges.isEmpty())
        return std::nullopt;
    const auto behind = std::partition_point(ranges.begin(), ranges.end(),
                                             [position](const TextRange &range) { return range.end() <= position; });
    return (behind == ranges.begin() ? ranges.end() : behind) - ranges.begin() - 1;
}

} // namespace Tessaline
