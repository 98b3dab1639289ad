#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>
#include <stop_token>

namespace Tessaline {

enum class SearchCase { Exact, Ignored };
enum class SearchWords { Any, Whole };

struct SearchQuery {
    QString text; // an empty one is found nowhere
    SearchCase searchCase = SearchCase::Ignored;
    SearchWords words = SearchWords::Any;
    friend bool operator==(const SearchQuery &, const SearchQuery &) = default;
};

/// What was found: the ranges in ascending order, apart from each other.
struct SearchResult {
    static constexpr qsizetype kMostRanges = 100'000; // that are looked for to be shown
    QList<TextRange> ranges;
    bool isComplete = true; // false if there are more
    friend bool operator==(const SearchResult &, const SearchResult &) = default;
};

/// All occurrences of the query, or the first `most`. A range begins and ends between characters. Blocks for about 10
/// ms per MB at the worst; stops early, with what it has, when asked to. Safe from any thread.
SearchResult occurrences(const SearchQuery &query, const ChunkedText &text, qsizetype most = SearchResult::kMostRanges,
                         const std::stop_token &stop = {});

/// The index of the first range that begins at or behind `position`, going round to the first; absent if there is none.
std::optional<qsizetype> firstFrom(const QList<TextRange> &ranges, qsizetype position);
/// The index of the last range that ends at or before `position`, going round to the last.
std::optional<qsizetype> lastBefore(const QList<TextRange> &ranges, qsizetype position);

} // namespace Tessaline
