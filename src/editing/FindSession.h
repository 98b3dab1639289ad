#pragma once

#include "editing/SearchTarget.h"
#include "editing/TextSearch.h"

#include <QCoroTask>
#include <QtCore/QObject>

#include <stop_token>

namespace Tessaline {

/// One search through a text: what is looked for, what was found, and which occurrence is the current one. The text is
/// searched on the worker pool; steps that are asked for meanwhile are taken when the result is there. Main thread
/// only.
class FindSession final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~FindSession() override; // stops a search that is running

    /// The text that is searched, null for none.
    void setTarget(SearchTarget *target);
    /// The target is being destroyed: the session has none from now on and does not touch the old one.
    void forgetTarget();

    const SearchQuery &query() const { return m_query; }
    /// Looks for something else. With SelectFirst the first occurrence from where the search began is selected, so that
    /// the selection follows someone who types into a search field.
    enum class Follow { Nothing, SelectFirst };
    void setQuery(const SearchQuery &query, Follow follow);

    /// Shown occurrences are marked in the target only while the session is active.
    void setActive(bool active);
    /// To be called when the target's text has changed; its occurrences are looked for again.
    void targetChanged();
    /// To be called when the person puts the selection elsewhere: searches go on from there, and one that runs does not
    /// take it away.
    void originMoved();

    bool isSearching() const { return m_isSearching; }
    qsizetype count() const { return m_result.ranges.size(); }
    bool isComplete() const { return m_result.isComplete; } // false if there are more than `count`
    /// The place of the selected occurrence among all, from 0; absent if the selection is none.
    std::optional<qsizetype> currentIndex() const;

    void findNext();
    void findPrevious();
    /// Replaces the selected occurrence, if the selection is one, and goes to the next.
    void replaceCurrent(const QString &replacement);
    /// Replaces every occurrence as one step of undo.
    void replaceAll(const QString &replacement);

Q_SIGNALS:
    void changed();
    void replacedAll(qsizetype count);

private:
    enum class Step { SelectFirst, Next, Previous, ReplaceCurrent, ReplaceAll };
    QCoro::Task<> search();
    void take(Step step);
    void run(Step step);
    void selectIndex(std::optional<qsizetype> index);

    SearchTarget *m_target = nullptr;
    SearchQuery m_query;
    SearchResult m_result;
    std::stop_source m_search;
    bool m_isSearching = false;
    bool m_isActive = false;
    QList<Step> m_pendingSteps; // taken in order when the running search has ended
    QString m_replacement;
    qsizetype m_origin = 0; // where following a typed query begins
};

} // namespace Tessaline
