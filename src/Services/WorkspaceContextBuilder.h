#pragma once

#include "documents/ProjectReference.h"
#include "foundation/FileURL.h"
#include "Services/ContextItem.h"

#include <QtCore/QFuture>
#include <QtCore/QList>
#include <QtCore/QStringList>

#include <optional>
#include <stop_token>

/// Finds the excerpts of a project's files that go along with a prompt, without an index: it walks the project's folder
/// within fixed budgets and ranks the files by how often the words of the prompt occur in them. Keeps no state. A
/// character is an extended grapheme cluster.
namespace Tessaline::WorkspaceContextBuilder {

constexpr qsizetype kWalkLimit = 5000;       // entries visited, of all kinds
constexpr qsizetype kCandidateLimit = 300;   // files scored
constexpr qint64 kByteLimit = 4'000'000;     // the sum of the sizes of the files read
constexpr qint64 kFileSizeLimit = 400'000;   // bytes; a larger file is skipped
constexpr qint64 kWindowSize = 3000;         // characters of an excerpt
constexpr qint64 kWindowOverlap = 240;       // characters that two neighbouring windows share
constexpr qsizetype kTokenLimit = 48;        // tokens kept from a query
constexpr qsizetype kMinimumTokenLength = 3; // characters
constexpr qsizetype kPathWeight = 6;         // a hit in the path counts as much as six in the excerpt
constexpr qsizetype kReadmeBonus = 12;       // added for a file named readme

/// A file that the query speaks of.
struct RankedFile {
    QString path;        // inside of the project
    QString excerpt;     // the chosen window of its text
    qsizetype score = 0; // only files above 0 are kept
    friend bool operator==(const RankedFile &, const RankedFile &) = default;
};

/// At most `limit` items for the query, the best first; see `rankFiles`, which runs on the worker pool. Ready at once
/// and empty without a project. Once `stop` is requested the list comes soon, and empty.
QFuture<QList<ContextItem>> buildContext(const QString &query, const std::optional<ProjectReference> &project,
                                         const std::optional<FileURL> &activeFileURL, qsizetype limit,
                                         const std::stop_token &stop = {});

/// Ranks the text files of the folder `root` for the query and gives the best `limit` of them (none for a negative
/// limit), named by their paths, which decide between equal scores. The score is 6 for each hit of a token in the path,
/// 1 for each in the excerpt, and 12 for a readme file.
///
/// Hidden files, the contents of packages and of folders of generated files ("node_modules", "build" and the like),
/// symbolic links, files of more than 400,000 bytes, files without a DocumentType, empty ones and the active file are
/// left out, and so is what cannot be read, or vanishes or grows meanwhile. After 5,000 entries, 300 files or 4,000,000
/// bytes the walk ends. Equal trees give equal lists. Blocks; safe from any thread. Empty once `stop` is requested.
QList<ContextItem> rankFiles(const QString &query, const FileURL &root, const std::optional<FileURL> &activeFileURL,
                             qsizetype limit, const std::stop_token &stop = {});

/// The words of the query, in lower case, sorted, each once: the runs of letters, numbers and "_" that have at least 3
/// characters and are no stop words, of which the first 48 count, repeats included.
QStringList queryTokens(const QString &query);

/// How often the tokens, which are a set, occur in the text, in sum; see TokenSearch. The caller lower-cases the text.
qsizetype tokenHits(const QStringList &tokens, QStringView text);

/// Windows of `size` characters, each of which but the first repeats the last `overlap` characters (at most size - 1)
/// of the one before; a negative overlap leaves characters out. A text of no more than `size` characters is one chunk,
/// even when it is empty; without a size above 0 there is none. The chunks point into the text.
QList<QStringView> splitIntoChunks(QStringView text, qint64 size, qint64 overlap);

/// The window of 3000 characters in which the tokens of the query occur most often, the earliest of several; the whole
/// content if it is no longer.
QString bestExcerpt(const QString &content, const QString &query);

} // namespace Tessaline::WorkspaceContextBuilder
