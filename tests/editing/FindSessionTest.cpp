#include "editing/FindSession.h"

#include "tests/editing/Printers.h"
#include "tests/support/HeldWorkers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtTest/QSignalSpy>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// An editor that is nothing but its text.
class FakeTarget final : public SearchTarget
{
public:
    explicit FakeTarget(const QString &text) : m_text(text) {}

    ChunkedText shownText() const override { return m_text; }
    TextRange selection() const override { return m_selection; }
    void select(const TextRange &range) override
    {
        m_selection = range;
        ++selects;
    }
    void replaceRanges(const QList<TextRange> &ranges, const QString &replacement) override
    {
        ++replacements;
        qsizetype growth = 0;
        for (const TextRange &range : ranges) {
            m_text.replace(range.location + growth, range.length, replacement);
            growth += replacement.size() - range.length;
        }
        m_selection = {ranges.constLast().end() + growth, 0};
        if (session)
            session->targetChanged();
    }
    void setHighlights(const QList<TextRange> &ranges) override { highlights = ranges; }

    void setText(const QString &text)
    {
        m_text = ChunkedText(text);
        session->targetChanged();
    }
    QString text() const { return m_text.toString(); }

    FindSession *session = nullptr;
    QList<TextRange> highlights;
    int selects = 0;
    int replacements = 0;

private:
    ChunkedText m_text;
    TextRange m_selection;
};

/// A session that searches a text, as an open bar has it.
struct Search {
    FakeTarget target;
    FindSession session;

    explicit Search(const QString &text, qsizetype caret = 0) : target(text)
    {
        target.session = &session;
        target.select({caret, 0});
        session.setTarget(&target);
        session.setActive(true);
    }
    ~Search() { session.setTarget(nullptr); }

    bool settles()
    {
        return eventually([this] { return !session.isSearching(); });
    }
    bool look(const SearchQuery &query, FindSession::Follow follow = FindSession::Follow::Nothing)
    {
        session.setQuery(query, follow);
        return settles();
    }
};

} // namespace

TEST(FindSession, CountsAndMarksAllOccurrences)
{
    Search search(u"one two one"_s);
    QSignalSpy changed(&search.session, &FindSession::changed);

    ASSERT_TRUE(search.look({u"one"_s}));

    EXPECT_EQ(search.session.count(), 2);
    EXPECT_TRUE(search.session.isComplete());
    EXPECT_EQ(search.target.highlights, (QList<TextRange>{{0, 3}, {8, 3}}));
    EXPECT_EQ(search.session.currentIndex(), std::nullopt);
    EXPECT_GE(changed.count(), 1);
}

TEST(FindSession, AnEmptyQueryFindsNothing)
{
    Search search(u"one"_s);
    ASSERT_TRUE(search.look({u"one"_s}));

    ASSERT_TRUE(search.look({u""_s}));

    EXPECT_EQ(search.session.count(), 0);
    EXPECT_TRUE(search.target.highlights.isEmpty());
}

TEST(FindSession, TypingAQuerySelectsTheFirstOccurrenceFromWhereTheSearchBegan)
{
    Search search(u"to two two"_s, 2);

    ASSERT_TRUE(search.look({u"t"_s}, FindSession::Follow::SelectFirst));
    EXPECT_EQ(search.target.selection(), (TextRange{3, 1}));
    ASSERT_TRUE(search.look({u"tw"_s}, FindSession::Follow::SelectFirst));
    EXPECT_EQ(search.target.selection(), (TextRange{3, 2}));
    EXPECT_EQ(search.session.currentIndex(), 0);
    ASSERT_TRUE(search.look({u"t"_s}, FindSession::Follow::SelectFirst));
    EXPECT_EQ(search.target.selection(), (TextRange{3, 1}));
    EXPECT_EQ(search.session.currentIndex(), 1);
}

TEST(FindSession, TypingAQueryThatIsNotFoundLeavesTheSelection)
{
    Search search(u"one two"_s, 5);

    ASSERT_TRUE(search.look({u"x"_s}, FindSession::Follow::SelectFirst));

    EXPECT_EQ(search.target.selection(), (TextRange{5, 0}));
}

TEST(FindSession, OriginMovedLetsTheSearchBeginAnewFromTheSelection)
{
    Search search(u"a a a"_s);
    search.target.select({3, 0});

    search.session.originMoved();
    ASSERT_TRUE(search.look({u"a"_s}, FindSession::Follow::SelectFirst));

    EXPECT_EQ(search.target.selection(), (TextRange{4, 1}));
}

TEST(FindSession, NextAndPreviousGoRound)
{
    Search search(u"a b a b a"_s, 1);
    ASSERT_TRUE(search.look({u"a"_s}));

    search.session.findNext();
    EXPECT_EQ(search.target.selection(), (TextRange{4, 1}));
    EXPECT_EQ(search.session.currentIndex(), 1);
    search.session.findNext();
    search.session.findNext();
    EXPECT_EQ(search.target.selection(), (TextRange{0, 1}));
    search.session.findPrevious();
    EXPECT_EQ(search.target.selection(), (TextRange{8, 1}));
    search.session.findPrevious();
    EXPECT_EQ(search.target.selection(), (TextRange{4, 1}));
}

TEST(FindSession, ACaretInFrontOfAnOccurrenceGoesOntoIt)
{
    Search search(u"a b a"_s, 4);
    ASSERT_TRUE(search.look({u"a"_s}));

    search.session.findNext();

    EXPECT_EQ(search.target.selection(), (TextRange{4, 1}));
}

TEST(FindSession, AStepThatIsAskedForDuringTheSearchIsTakenWhenItEnds)
{
    Search search(u"a b a"_s, 1);
    HeldWorkers workers;
    search.session.setQuery({u"a"_s}, FindSession::Follow::Nothing);
    ASSERT_TRUE(search.session.isSearching());

    search.session.findNext();

    EXPECT_EQ(search.target.selection(), (TextRange{1, 0}));
    workers.letGo();
    ASSERT_TRUE(search.settles());
    EXPECT_EQ(search.target.selection(), (TextRange{4, 1}));
}

TEST(FindSession, StepsThatAreAskedForDuringTheSearchAreTakenInOrder)
{
    Search search(u"cat cat dog cat"_s);
    HeldWorkers workers;
    search.session.setQuery({u"cat"_s}, FindSession::Follow::SelectFirst);
    search.session.replaceCurrent(u"lion"_s); // the first, which is about to be selected
    search.session.findNext();
    ASSERT_TRUE(search.session.isSearching());

    workers.letGo();
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.text(), u"lion cat dog cat"_s);
    EXPECT_EQ(search.target.selection(), (TextRange{13, 3}));
}

TEST(FindSession, ASearchDoesNotTakeASelectionAwayThatThePersonMadeMeanwhile)
{
    Search search(u"cat dog"_s);
    HeldWorkers workers;
    search.session.setQuery({u"cat"_s}, FindSession::Follow::SelectFirst);
    ASSERT_TRUE(search.session.isSearching());

    search.target.select({5, 1});
    search.session.originMoved();
    workers.letGo();
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.selection(), (TextRange{5, 1}));
}

TEST(FindSession, TheNewestQueryWins)
{
    Search search(u"one two"_s);
    HeldWorkers workers;

    search.session.setQuery({u"one"_s}, FindSession::Follow::Nothing);
    search.session.setQuery({u"two"_s}, FindSession::Follow::Nothing);
    workers.letGo();
    ASSERT_TRUE(search.settles());
    QTest::qWait(20); // the older one must not come later

    EXPECT_EQ(search.target.highlights, (QList<TextRange>{{4, 3}}));
}

TEST(FindSession, AnInactiveSessionMarksNothingAndStillFinds)
{
    Search search(u"a b a"_s, 1);
    ASSERT_TRUE(search.look({u"a"_s}));

    search.session.setActive(false);
    EXPECT_TRUE(search.target.highlights.isEmpty());
    search.target.setText(u"b b b a"_s); // nobody searches meanwhile
    EXPECT_FALSE(search.session.isSearching());
    search.session.findNext();
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.selection(), (TextRange{6, 1}));
    EXPECT_TRUE(search.target.highlights.isEmpty());
}

TEST(FindSession, AChangeOfTheTextIsSearchedAgain)
{
    Search search(u"a b"_s);
    ASSERT_TRUE(search.look({u"a"_s}));

    search.target.setText(u"a b a a"_s);
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.session.count(), 3);
    EXPECT_EQ(search.target.highlights.size(), 3);
}

TEST(FindSession, ReplaceCurrentReplacesTheSelectedOccurrenceAndGoesToTheNext)
{
    Search search(u"cat cat dog cat"_s);
    ASSERT_TRUE(search.look({u"cat"_s}, FindSession::Follow::SelectFirst));

    search.session.replaceCurrent(u"lion"_s);
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.text(), u"lion cat dog cat"_s);
    EXPECT_EQ(search.target.selection(), (TextRange{5, 3}));
    EXPECT_EQ(search.session.currentIndex(), 0);
    search.session.replaceCurrent(u"lion"_s);
    ASSERT_TRUE(search.settles());
    search.session.replaceCurrent(u"lion"_s);
    ASSERT_TRUE(search.settles());
    EXPECT_EQ(search.target.text(), u"lion lion dog lion"_s);
    EXPECT_EQ(search.session.count(), 0);
}

TEST(FindSession, ReplaceCurrentWithoutASelectedOccurrenceOnlyGoesToTheNext)
{
    Search search(u"dog cat"_s);
    ASSERT_TRUE(search.look({u"cat"_s}));

    search.session.replaceCurrent(u"lion"_s);
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.text(), u"dog cat"_s);
    EXPECT_EQ(search.target.selection(), (TextRange{4, 3}));
}

TEST(FindSession, ReplaceCurrentDoesNotReplaceInItsOwnReplacement)
{
    Search search(u"a b"_s);
    ASSERT_TRUE(search.look({u"a"_s}, FindSession::Follow::SelectFirst));

    search.session.replaceCurrent(u"aa"_s);
    ASSERT_TRUE(search.settles());

    // Going round it comes to the replacement, which is an occurrence like any other.
    EXPECT_EQ(search.target.text(), u"aa b"_s);
    EXPECT_EQ(search.target.selection(), (TextRange{0, 1}));
}

TEST(FindSession, ReplaceAllReplacesEveryOccurrenceAtOnce)
{
    Search search(u"cat cat dog cat"_s);
    QSignalSpy replaced(&search.session, &FindSession::replacedAll);
    ASSERT_TRUE(search.look({u"cat"_s}));

    search.session.replaceAll(u"a cat"_s);
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.text(), u"a cat a cat dog a cat"_s);
    EXPECT_EQ(search.target.replacements, 1);
    ASSERT_EQ(replaced.count(), 1);
    EXPECT_EQ(replaced.at(0).at(0).toLongLong(), 3);
}

TEST(FindSession, ReplaceAllOfNothingReportsNone)
{
    Search search(u"dog"_s);
    QSignalSpy replaced(&search.session, &FindSession::replacedAll);
    ASSERT_TRUE(search.look({u"cat"_s}));

    search.session.replaceAll(u"x"_s);

    EXPECT_EQ(search.target.replacements, 0);
    ASSERT_EQ(replaced.count(), 1);
    EXPECT_EQ(replaced.at(0).at(0).toLongLong(), 0);
}

TEST(FindSession, ReplaceAllReachesBeyondTheGreatestNumberOfRangesThatIsShown)
{
    Search search(QString(SearchResult::kMostRanges + 10, u'a'));
    ASSERT_TRUE(search.look({u"a"_s}));
    EXPECT_FALSE(search.session.isComplete());
    QSignalSpy replaced(&search.session, &FindSession::replacedAll);

    search.session.replaceAll(u"b"_s);
    ASSERT_TRUE(search.settles());

    EXPECT_EQ(search.target.text().count(u'a'), 0);
    EXPECT_EQ(search.target.replacements, 1) << "one step of undo";
    ASSERT_EQ(replaced.count(), 1);
    EXPECT_EQ(replaced.at(0).at(0).toLongLong(), SearchResult::kMostRanges + 10);
}

TEST(FindSession, WithoutATargetEveryStepDoesNothing)
{
    FindSession session;
    session.setActive(true);

    session.setQuery({u"a"_s}, FindSession::Follow::SelectFirst);
    session.findNext();
    session.findPrevious();
    session.replaceCurrent(u"x"_s);
    session.replaceAll(u"x"_s);

    EXPECT_FALSE(session.isSearching());
    EXPECT_EQ(session.count(), 0);
    EXPECT_EQ(session.currentIndex(), std::nullopt);
}

TEST(FindSession, AnotherTargetIsSearchedAndTheOldOneUnmarked)
{
    Search search(u"a b a"_s);
    ASSERT_TRUE(search.look({u"a"_s}));
    FakeTarget other(u"a"_s);

    search.session.setTarget(&other);
    ASSERT_TRUE(search.settles());

    EXPECT_TRUE(search.target.highlights.isEmpty());
    EXPECT_EQ(search.session.count(), 1);
    EXPECT_EQ(other.highlights, (QList<TextRange>{{0, 1}}));
    search.session.setTarget(&search.target);
}

TEST(FindSession, ATargetThatGoesDuringASearchIsNotTouched)
{
    FindSession session;
    HeldWorkers workers;
    auto target = std::make_unique<FakeTarget>(u"a"_s);
    session.setActive(true);
    session.setTarget(target.get());
    session.setQuery({u"a"_s}, FindSession::Follow::SelectFirst);
    ASSERT_TRUE(session.isSearching());

    session.forgetTarget();
    target.reset();
    workers.letGo();
    QTest::qWait(50);

    EXPECT_FALSE(session.isSearching());
    EXPECT_EQ(session.count(), 0);
}

TEST(FindSession, ASessionThatGoesDuringASearchLeavesItsTargetAlone)
{
    FakeTarget target(u"a"_s);
    HeldWorkers workers;
    {
        FindSession session;
        session.setActive(true);
        session.setTarget(&target);
        session.setQuery({u"a"_s}, FindSession::Follow::SelectFirst);
    }
    const int selects = target.selects;
    workers.letGo();
    QTest::qWait(50);

    EXPECT_EQ(target.selects, selects);
    EXPECT_TRUE(target.highlights.isEmpty());
}

} // namespace Tessaline
