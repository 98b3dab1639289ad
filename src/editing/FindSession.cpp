#include "editing/FindSession.h"

#include "foundation/BackgroundPool.h"

#include <QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

#include <limits>
#include <utility>

namespace Tessaline {

FindSession::~FindSession()
{
    m_search.request_stop();
}

void FindSession::setTarget(SearchTarget *target)
{
    if (target == m_target)
        return;
    if (m_target)
        m_target->setHighlights({});
    m_target = target;
    m_pendingSteps.clear();
    originMoved();
    search();
}

void FindSession::forgetTarget()
{
    m_target = nullptr;
    m_pendingSteps.clear();
    search();
}

void FindSession::setQuery(const SearchQuery &query, Follow follow)
{
    if (query != m_query) {
        m_query = query;
        search();
    }
    if (follow == Follow::SelectFirst)
        take(Step::SelectFirst);
}

void FindSession::setActive(bool active)
{
    m_isActive = active;
    if (m_target)
        m_target->setHighlights(active && !m_isSearching ? m_result.ranges : QList<TextRange>());
    if (active)
        search();
}

void FindSession::targetChanged()
{
    m_result = {};
    if (m_isActive)
        search();
}

void FindSession::originMoved()
{
    m_origin = m_target ? m_target->selection().location : 0;
    m_pendingSteps.removeAll(Step::SelectFirst);
}

QCoro::Task<> FindSession::search()
{
    m_search.request_stop(); // a newer search replaces the older
    m_search = std::stop_source();
    const std::stop_token stop = m_search.get_token();

    m_isSearching = m_target != nullptr && !m_query.text.isEmpty();
    if (!m_isSearching) {
        m_result = {};
        if (m_target)
            m_target->setHighlights({});
        Q_EMIT changed();
        co_return;
    }
    const SearchResult result = co_await QtConcurrent::run(
        &backgroundPool(),
        [](const SearchQuery &query, const ChunkedText &text, const std::stop_token &token) {
            return occurrences(query, text, SearchResult::kMostRanges, token);
        },
        m_query, m_target->shownText(), stop);
    if (stop.stop_requested())
        co_return; // replaced, or the session is gone

    m_isSearching = false;
    m_result = result;
    if (m_isActive)
        m_target->setHighlights(m_result.ranges);
    for (const Step step : std::exchange(m_pendingSteps, {}))
        take(step); // one that changes the text begins a search, which the next ones wait for
    Q_EMIT changed();
}

std::optional<qsizetype> FindSession::currentIndex() const
{
    if (!m_target)
        return std::nullopt;
    const TextRange selection = m_target->selection();
    const std::optional<qsizetype> index = firstFrom(m_result.ranges, selection.location);
    return index && m_result.ranges.at(*index) == selection ? index : std::nullopt;
}

void FindSession::take(Step step)
{
    if (!m_target || m_query.text.isEmpty())
        return;
    // The result of an inactive session may be of an older text.
    if (!m_isActive && !m_isSearching)
        search();
    if (m_isSearching)
        m_pendingSteps.append(step);
    else
        run(step);
}

void FindSession::selectIndex(std::optional<qsizetype> index)
{
    if (!index)
        return;
    m_target->select(m_result.ranges.at(*index));
    Q_EMIT changed();
}

void FindSession::run(Step step)
{
    const TextRange selection = m_target->selection();
    switch (step) {
    case Step::SelectFirst:
        selectIndex(firstFrom(m_result.ranges, m_origin));
        return;
    case Step::Next:
        // From the end of the selection; a caret in front of an occurrence goes onto it.
        selectIndex(firstFrom(m_result.ranges, selection.end()));
        m_origin = m_target->selection().location;
        return;
    case Step::Previous:
        selectIndex(lastBefore(m_result.ranges, selection.location));
        m_origin = m_target->selection().location;
        return;
    case Step::ReplaceCurrent:
        if (currentIndex()) {
            m_target->replaceRanges({selection}, m_replacement); // its change starts a search
            m_target->select({selection.location + m_replacement.size(), 0});
        }
        take(Step::Next);
        return;
    case Step::ReplaceAll: {
        // NOTE: more than are shown are rare enough to wait for.
        constexpr qsizetype kAll = std::numeric_limits<qsizetype>::max();
        const QList<TextRange> ranges =
            m_result.isComplete ? m_result.ranges : occurrences(m_query, m_target->shownText(), kAll).ranges;
        if (!ranges.isEmpty())
            m_target->replaceRanges(ranges, m_replacement);
        Q_EMIT replacedAll(ranges.size());
        return;
    }
    }
}

void FindSession::findNext()
{
    take(Step::Next);
}

void FindSession::findPrevious()
{
    take(Step::Previous);
}

void FindSession::replaceCurrent(const QString &replacement)
{
    m_replacement = replacement;
    take(Step::ReplaceCurrent);
}

void FindSession::replaceAll(const QString &replacement)
{
    m_replacement = replacement;
    take(Step::ReplaceAll);
}

} // namespace Tessaline
