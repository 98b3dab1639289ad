#include "Services/WorkspaceContextBuilder.h"

#include "documents/DocumentType.h"
#include "foundation/BackgroundPool.h"
#include "foundation/CharacterBreaks.h"
#include "foundation/FileAccess.h"
#include "Services/ProjectWalk.h"
#include "Services/TokenSearch.h"

#include <QtConcurrent/QtConcurrentRun>

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <vector>

namespace Tessaline::WorkspaceContextBuilder {

namespace {

using namespace Qt::StringLiterals;

constexpr std::array<QStringView, 8> kIgnoredDirectoryNames = {
    u".git", u".build", u".swiftpm", u"build", u"DerivedData", u"node_modules", u"target", u"xcuserdata",
};

constexpr std::array<QStringView, 24> kStopWords = {
    u"about", u"after", u"again", u"also",   u"could", u"from",  u"have",  u"into",
    u"just",  u"make",  u"more",  u"should", u"that",  u"their", u"there", u"these",
    u"this",  u"what",  u"when",  u"where",  u"which", u"with",  u"would", u"your",
};

/// Whether the character between the positions belongs to a word. Its first code point decides: marks only change it.
bool isWordCharacter(QStringView text, qsizetype begin, qsizetype end)
{
    if (text[begin] == u'_')
        return end == begin + 1; // with a mark it is another sign
    const char32_t first = text[begin].isHighSurrogate() && begin + 1 < end
                               ? QChar::surrogateToUcs4(text[begin], text[begin + 1])
                               : text[begin].unicode();
    const auto codePoint = static_cast<UChar32>(first);
    return u_hasBinaryProperty(codePoint, UCHAR_ALPHABETIC) ||
           u_getIntPropertyValue(codePoint, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

/// The order of the code points, which is that of the bytes in UTF-8. The units of UTF-16 have another one.
bool precedes(QStringView left, QStringView right)
{
    const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (l == left.end() || r == right.end())
        return l == left.end() && r != right.end();
    return l->isSurrogate() == r->isSurrogate() ? *l < *r : r->isSurrogate();
}

struct Excerpt {
    QStringView text; // points into the content
    qsizetype hits = 0;
};

Excerpt bestExcerpt(QStringView content, const TokenSearch &tokens)
{
    Excerpt best;
    for (const QStringView chunk : splitIntoChunks(content, kWindowSize, kWindowOverlap)) {
        const qsizetype hits = tokens.isEmpty() ? 0 : tokens.hits(lowered(chunk));
        if (best.text.isNull() || hits > best.hits)
            best = {chunk, hits};
    }
    return best;
}

bool isReadme(const FileURL &url)
{
    const QString name = url.lastPathComponent();
    const qsizetype extension = FileURL::pathExtensionOf(name).size();
    const QStringView stem = extension > 0 ? QStringView(name).chopped(extension + 1) : QStringView(name);
    return stem.toString().toLower() == u"readme";
}

/// The walk of one call of `rankFiles`.
class Ranking
{
public:
    Ranking(const QString &query, const FileURL &root, const std::optional<FileURL> &activeFileURL)
        : m_project{root}, m_tokens(queryTokens(query))
    {
        if (activeFileURL)
            m_activePath = activeFileURL->standardized().path();
    }

    WalkStep visit(const ProjectEntry &entry)
    {
        if (entry.kind == ProjectEntry::Kind::Folder) {
            const bool isIgnored = std::ranges::count(kIgnoredDirectoryNames, entry.url.lastPathComponent()) > 0;
            return isIgnored ? WalkStep::SkipContents : WalkStep::Continue;
        }
        // Asked here and not behind the reading: so the file that goes beyond the bytes is kept.
        if (m_candidates >= kCandidateLimit || m_totalBytes >= kByteLimit)
            return WalkStep::Stop;
        if (entry.kind == ProjectEntry::Kind::File)
            consider(entry.url, entry.size);
        return WalkStep::Continue;
    }

    /// Those above 0, the best first.
    QList<RankedFile> takeRanked()
    {
        std::ranges::sort(m_ranked, [](const RankedFile &left, const RankedFile &right) {
            return left.score != right.score ? left.score > right.score : precedes(left.path, right.path);
        });
        return std::move(m_ranked);
    }

private:
    void consider(const FileURL &url, qint64 size)
    {
        if (size > kFileSizeLimit || (m_activePath && url.standardized().path() == *m_activePath) || !documentType(url))
            return;
        // No more than its size: a file that grows while it is read is another one than was looked at.
        const Result<QByteArray> bytes = readBytes(url, size);
        if (!bytes || bytes.value().isEmpty())
            return;
        const Result<ChunkedText> text = ChunkedText::fromUtf8(bytes.value());
        if (!text)
            return;

        m_totalBytes += size;
        ++m_candidates;
        score(url, text.value().toString());
    }

    void score(const FileURL &url, const QString &text)
    {
        const QString path = m_project.relativePath(url).value_or(url.lastPathComponent());
        const Excerpt excerpt = bestExcerpt(text, m_tokens);
        const qsizetype score =
            m_tokens.hits(lowered(path)) * kPathWeight + excerpt.hits + (isReadme(url) ? kReadmeBonus : 0);
        if (score > 0)
            m_ranked.append({path, excerpt.text.toString(), score});
    }

    const ProjectReference m_project;
    const TokenSearch m_tokens;
    std::optional<QString> m_activePath;
    QList<RankedFile> m_ranked;
    qsizetype m_candidates = 0;
    qint64 m_totalBytes = 0;
};

} // namespace

QFuture<QList<ContextItem>> buildContext(const QString &query, const std::optional<ProjectReference> &project,
                                         const std::optional<FileURL> &activeFileURL, qsizetype limit,
                                         const std::stop_token &stop)
{
    if (!project)
        return QtFuture::makeReadyFuture(QList<ContextItem>());
    return QtConcurrent::run(&backgroundPool(), rankFiles, query, project->rootURL, activeFileURL, limit, stop);
}

QList<ContextItem> rankFiles(const QString &query, const FileURL &root, const std::optional<FileURL> &activeFileURL,
                             qsizetype limit, const std::stop_token &stop)
{
    Ranking ranking(query, root, activeFileURL);
    walkProject(
        root, kWalkLimit, [&ranking](const ProjectEntry &entry) { return ranking.visit(entry); }, stop);
    if (stop.stop_requested())
        return {};

    const QString subtitle = u"Project · %1"_s.arg(root.lastPathComponent());
    QList<ContextItem> items;
    const QList<RankedFile> ranked = ranking.takeRanked();
    for (const RankedFile &file : ranked.first(std::clamp<qsizetype>(limit, 0, ranked.size())))
        items.append({file.path, subtitle, file.excerpt, std::nullopt});
    return items;
}

QStringList queryTokens(const QString &query)
{
    const QString text = lowered(query);
    const CharacterBreaks breaks(text);
    QStringList kept;
    qsizetype begin = 0;  // of the run
    qsizetype length = 0; // of the run, in characters
    const auto endRun = [&](qsizetype end) {
        const QStringView run = QStringView(text).sliced(begin, end - begin);
        if (length >= kMinimumTokenLength && std::ranges::count(kStopWords, run) == 0)
            kept.append(run.toString());
        length = 0;
    };
    for (qsizetype position = 0; position < text.size() && kept.size() < kTokenLimit;) {
        const qsizetype end = breaks.following(position);
        if (isWordCharacter(text, position, end)) {
            if (length++ == 0)
                begin = position;
        } else {
            endRun(position);
        }
        position = end;
    }
    if (kept.size() < kTokenLimit)
        endRun(text.size());

    std::ranges::sort(kept, precedes);
    kept.removeDuplicates();
    return kept;
}

qsizetype tokenHits(const QStringList &tokens, QStringView text)
{
    return TokenSearch(tokens).hits(text);
}

QList<QStringView> splitIntoChunks(QStringView text, qint64 size, qint64 overlap)
{
    if (size <= 0)
        return {};
    if (text.size() <= size) // FAST PATH: no text has more characters than units
        return {text};

    // An overlap below the negative length leaves out everything behind the first chunk, as this one does.
    const qint64 stride = size - std::clamp<qint64>(overlap, -text.size(), size - 1);
    QList<QStringView> chunks;
    std::vector<qsizetype> starts; // of all chunks so far; those from chunks.size() on have no end yet
    qint64 nextStart = 0;          // counted in characters, as the next two
    qint64 nextEnd = size;
    qint64 index = 0;
    const CharacterBreaks breaks(text);
    for (qsizetype position = 0; position < text.size(); position = breaks.following(position), ++index) {
        if (index == nextStart) {
            starts.push_back(position);
            nextStart += stride;
        }
        if (index == nextEnd) {
            const qsizetype start = starts[static_cast<size_t>(chunks.size())];
            chunks.append(text.sliced(start, position - start));
            nextEnd += stride;
        }
    }
    // The first chunk that reaches the end is the last one.
    if (static_cast<size_t>(chunks.size()) < starts.size())
        chunks.append(text.sliced(starts[static_cast<size_t>(chunks.size())]));
    return chunks;
}

QString bestExcerpt(const QString &content, const QString &query)
{
    return bestExcerpt(QStringView(content), TokenSearch(queryTokens(query))).text.toString();
}

} // namespace Tessaline::WorkspaceContextBuilder
