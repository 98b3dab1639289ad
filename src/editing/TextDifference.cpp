#include "editing/TextDifference.h"

#include "editing/Paragraphs.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace Tessaline {

namespace {

QChar unitAt(const ChunkedText &text, qsizetype position)
{
    return text.at(position);
}

QChar unitAt(const AttributedText &text, qsizetype position)
{
    return text.text().at(position);
}

/// Whether the position stands between two units that belong together.
template <class Text>
bool cutsPair(const Text &text, qsizetype position)
{
    if (position == 0 || position == text.size())
        return false;
    const QChar before = unitAt(text, position - 1);
    const QChar after = unitAt(text, position);
    return (before.isHighSurrogate() && after.isLowSurrogate()) || (before == u'\r' && after == u'\n');
}

/// What is left between a common beginning and a common end, neither of which may end inside a pair.
template <class Text>
TextChange withoutCutPairs(const Text &old, const Text &fresh, qsizetype head, qsizetype tail)
{
    if (cutsPair(old, head) || cutsPair(fresh, head))
        --head;
    if (cutsPair(old, old.size() - tail) || cutsPair(fresh, fresh.size() - tail))
        --tail;
    return {head, old.size() - head - tail, fresh.size() - head - tail};
}

/// How many units at the start of both are alike.
qsizetype commonHead(const AttributedText &old, const AttributedText &fresh)
{
    const qsizetype shorter = std::min(old.size(), fresh.size());
    qsizetype head = 0;
    for (qsizetype o = 0, f = 0; head < shorter;) {
        const AttributeRun &oldRun = old.runs().at(o);
        const AttributeRun &freshRun = fresh.runs().at(f);
        if (oldRun.attributes != freshRun.attributes)
            return head;
        const qsizetype end = std::min(oldRun.range.end(), freshRun.range.end());
        const auto [differs, other] =
            std::mismatch(old.text().begin() + head, old.text().begin() + end, fresh.text().begin() + head);
        head = differs - old.text().begin();
        if (head < end)
            return head;
        o += oldRun.range.end() == end;
        f += freshRun.range.end() == end;
    }
    return head;
}

/// How many units at the end of both are alike, at the most `most`.
qsizetype commonTail(const AttributedText &old, const AttributedText &fresh, qsizetype most)
{
    qsizetype tail = 0;
    for (qsizetype o = old.runs().size() - 1, f = fresh.runs().size() - 1; tail < most;) {
        const AttributeRun &oldRun = old.runs().at(o);
        const AttributeRun &freshRun = fresh.runs().at(f);
        if (oldRun.attributes != freshRun.attributes)
            return tail;
        const qsizetype oldLeft = old.size() - oldRun.range.location;
        const qsizetype freshLeft = fresh.size() - freshRun.range.location;
        const qsizetype end = std::min({oldLeft, freshLeft, most});
        while (tail < end && old.text().at(old.size() - 1 - tail) == fresh.text().at(fresh.size() - 1 - tail))
            ++tail;
        if (tail < end)
            return tail;
        o -= oldLeft == end;
        f -= freshLeft == end;
    }
    return tail;
}

} // namespace

TextChange differenceBetween(const ChunkedText &old, const ChunkedText &fresh)
{
    const qsizetype shorter = std::min(old.size(), fresh.size());
    qsizetype head = 0;
    while (head < shorter) {
        const QStringView a = old.chunkFrom(head);
        const QStringView b = fresh.chunkFrom(head);
        const qsizetype length = std::min(a.size(), b.size());
        const auto [differs, other] = std::mismatch(a.begin(), a.begin() + length, b.begin());
        head += differs - a.begin();
        if (differs != a.begin() + length)
            break;
    }
    qsizetype tail = 0;
    while (tail < shorter - head) {
        const QStringView a = old.chunkUpTo(old.size() - tail);
        const QStringView b = fresh.chunkUpTo(fresh.size() - tail);
        const qsizetype length = std::min({a.size(), b.size(), shorter - head - tail});
        qsizetype same = 0;
        while (same < length && a[a.size() - 1 - same] == b[b.size() - 1 - same])
            ++same;
        tail += same;
        if (same != length)
            break;
    }
    return withoutCutPairs(old, fresh, head, tail);
}

TextChange differenceBetween(const AttributedText &old, const AttributedText &fresh)
{
    const qsizetype head = commonHead(old, fresh);
    const qsizetype tail = commonTail(old, fresh, std::min(old.size(), fresh.size()) - head);
    return withoutCutPairs(old, fresh, head, tail);
}

namespace {

/// The lines of a text. Those with the same characters have the same key, whatever their ends and attributes.
struct Lines {
    explicit Lines(const AttributedText &t) : text(t), ranges(Paragraphs::in(t.text(), {0, t.size()}))
    {
        keys.reserve(static_cast<std::size_t>(ranges.size()));
        for (const TextRange &line : ranges) {
            const TextRange content = Paragraphs::contentOf(t.text(), line);
            keys.push_back(
                content.isEmpty() ? kBlank : qHash(QStringView(t.text()).sliced(content.location, content.length), 1));
        }
    }

    qsizetype count() const { return ranges.size(); }
    size_t keyAt(qsizetype line) const { return keys[static_cast<std::size_t>(line)]; }
    /// The characters of some lines.
    TextRange rangeOf(qsizetype first, qsizetype number) const
    {
        const qsizetype start = first < count() ? ranges.at(first).location : text.size();
        const qsizetype end = first + number < count() ? ranges.at(first + number).location : text.size();
        return {start, end - start};
    }

    static constexpr size_t kBlank = 0;
    const AttributedText &text;
    QList<TextRange> ranges;
    std::vector<size_t> keys;
};

/// Goes down two texts side by side and collects what differs.
class LineComparison
{
public:
    LineComparison(const AttributedText &old, const AttributedText &fresh) : m_old(old), m_fresh(fresh) {}

    QList<TextChange> run()
    {
        qsizetype o = 0;
        qsizetype f = 0;
        while (o < m_old.count() && f < m_fresh.count()) {
            const auto [dropped, added] = distanceToMeeting(o, f);
            // As many lines as before are most likely the same ones, each changed a little.
            if (dropped == added) {
                for (qsizetype i = 0; i < dropped; ++i)
                    compare({o + i, 1}, {f + i, 1});
            } else {
                compare({o, dropped}, {f, added});
            }
            o += dropped;
            f += added;
        }
        compare({o, m_old.count() - o}, {f, m_fresh.count() - f});
        return m_changes;
    }

private:
    /// How many lines of each give way to each other until the texts meet in a line that is no blank one; one of each
    /// where they meet at once, or not within reach.
    std::pair<qsizetype, qsizetype> distanceToMeeting(qsizetype o, qsizetype f) const
    {
        constexpr qsizetype kReach = 32; // lines of both together
        if (m_old.keyAt(o) == m_fresh.keyAt(f))
            return {1, 1};
        for (qsizetype distance = 1; distance <= kReach; ++distance) {
            for (qsizetype dropped = 0; dropped <= distance; ++dropped) {
                const qsizetype added = distance - dropped;
                if (o + dropped >= m_old.count() || f + added >= m_fresh.count())
                    continue;
                const size_t key = m_old.keyAt(o + dropped);
                if (key != Lines::kBlank && key == m_fresh.keyAt(f + added))
                    return {dropped, added};
            }
        }
        return {1, 1};
    }

    /// Both ranges are first line and number of lines.
    void compare(const TextRange &old, const TextRange &fresh)
    {
        const TextRange oldRange = m_old.rangeOf(old.location, old.length);
        const TextRange freshRange = m_fresh.rangeOf(fresh.location, fresh.length);
        TextChange change = differenceBetween(m_old.text.sliced(oldRange), m_fresh.text.sliced(freshRange));
        if (change.removed == 0 && change.inserted == 0)
            return;
        change.location += oldRange.location;
        m_changes.append(change);
    }

    Lines m_old;
    Lines m_fresh;
    QList<TextChange> m_changes;
};

qsizetype gapBehind(const QList<TextChange> &changes, qsizetype index)
{
    return changes.at(index + 1).location - changes.at(index).location - changes.at(index).removed;
}

/// Joins the nearest neighbours, with what stands between them, so that there are few enough.
QList<TextChange> joined(const QList<TextChange> &changes)
{
    // The widest gaps stay.
    std::vector<qsizetype> gaps(static_cast<std::size_t>(changes.size() - 1));
    std::iota(gaps.begin(), gaps.end(), qsizetype(0));
    std::nth_element(
        gaps.begin(), gaps.begin() + kMostDifferences - 1, gaps.end(),
        [&](qsizetype left, qsizetype right) { return gapBehind(changes, left) > gapBehind(changes, right); });
    gaps.resize(kMostDifferences - 1);
    std::sort(gaps.begin(), gaps.end());

    QList<TextChange> result;
    auto gap = gaps.cbegin();
    for (qsizetype i = 0; i < changes.size(); ++i) {
        TextChange change = changes.at(i);
        for (const qsizetype last = gap != gaps.cend() ? *gap++ : changes.size() - 1; i < last; ++i) {
            const qsizetype between = gapBehind(changes, i);
            change.removed += between + changes.at(i + 1).removed;
            change.inserted += between + changes.at(i + 1).inserted;
        }
        result.append(change);
    }
    return result;
}

} // namespace

QList<TextChange> differencesByLine(const AttributedText &old, const AttributedText &fresh)
{
    const QList<TextChange> changes = LineComparison(old, fresh).run();
    return changes.size() > kMostDifferences ? joined(changes) : changes;
}

} // namespace Tessaline
