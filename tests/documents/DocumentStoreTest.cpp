#include "documents/DocumentStore.h"

#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "tests/support/Printers.h"
#include "tests/support/ScriptedDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kNever = std::chrono::milliseconds(std::chrono::hours(1)); // a delay that no test sees the end of
const Failure kFull{FailureKind::NoSpace, u"There is no space left on the disk."_s};
const Failure kReadOnly{FailureKind::NotWritable, u"You do not have permission to write there."_s};

class DocumentStoreTest : public ::testing::Test
{
protected:
    DocumentStoreTest()
    {
        m_events.observe(AppEvents::kDocumentSaveFailed, &m_context, [this](const QVariantMap &userInfo) {
            m_failures.append(userInfo);
            m_failuresOnMainThread = m_failuresOnMainThread && QThread::currentThread() == m_context.thread();
        });
    }

    DocumentStore &store(std::chrono::milliseconds delay)
    {
        if (!m_store)
            m_store = std::make_unique<DocumentStore>(m_events, m_disk, delay);
        return *m_store;
    }

    /// Runs until a change that is made now has been saved after the store's delay, so that every delay that began
    /// earlier has ended.
    void waitUntilEarlierDelaysHaveEnded()
    {
        const FileURL sentinel(u"/sentinel/%1.md"_s.arg(++m_sentinels));
        m_store->scheduleSave(ChunkedText(u"sentinel"), sentinel);
        ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(sentinel); }));
    }

    const FileURL m_a{u"/docs/a.md"_s};
    const FileURL m_b{u"/docs/b.md"_s};
    ScriptedDisk m_disk;
    EventCenter m_events;
    QObject m_context;
    QList<QVariantMap> m_failures;
    bool m_failuresOnMainThread = true;
    int m_sentinels = 0;
    std::unique_ptr<DocumentStore> m_store; // gone before what it uses
};

ChunkedText text(const QString &string)
{
    return ChunkedText(string);
}

} // namespace

// The delay

TEST_F(DocumentStoreTest, TenChangesWithin100MillisecondsAreOneWriteOfTheLast300MillisecondsLater)
{
    store(DocumentStore::kAutosaveDelay);
    EXPECT_EQ(DocumentStore::kAutosaveDelay, 300ms);

    for (int i = 1; i <= 10; ++i)
        m_store->scheduleSave(text(u"change %1"_s.arg(i)), m_a);
    const Clock::time_point last = Clock::now();
    ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(m_a); }));

    ASSERT_EQ(m_disk.textsWritten(m_a), QList<QString>{u"change 10"_s});
    EXPECT_GE(m_disk.writes().constFirst().at - last, 290ms);
    waitUntilEarlierDelaysHaveEnded();
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(DocumentStoreTest, EveryChangeStartsTheDelayAnew)
{
    constexpr auto kDelay = 300ms;
    store(kDelay);

    // On a busy machine two changes may come to lie further apart than the delay, which says nothing: then once more.
    int writes = 0;
    Clock::duration longestGap = kDelay;
    for (int attempt = 0; attempt < 20 && longestGap > kDelay / 3; ++attempt) {
        const qsizetype before = m_disk.writes().size();
        longestGap = {};
        Clock::time_point last = Clock::now();
        for (int i = 0; i < 30; ++i) {
            m_store->scheduleSave(text(QString::number(i)), m_a);
            QTest::qWait(20);
            longestGap = std::max(longestGap, Clock::now() - std::exchange(last, Clock::now()));
        }
        ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(m_a); }));
        writes = static_cast<int>(m_disk.writes().size() - before);
    }

    EXPECT_EQ(m_disk.text(m_a), u"29"_s);
    EXPECT_EQ(writes, 1) << "the changes went on for twice the delay";
}

TEST_F(DocumentStoreTest, TwoFilesEditedInTurnHaveIndependentDelays)
{
    store(300ms);
    m_store->scheduleSave(text(u"a"_s), m_a);
    const Clock::time_point lastOfA = Clock::now();

    while (m_disk.textsWritten(m_a).isEmpty() && Clock::now() < lastOfA + kPatience) {
        m_store->scheduleSave(text(u"b"_s), m_b); // would hold up a common delay for ever
        QTest::qWait(20);
    }

    EXPECT_EQ(m_disk.textsWritten(m_a), QList<QString>{u"a"_s});
    ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(m_b); }));
    EXPECT_EQ(m_disk.textsWritten(m_b).constLast(), u"b"_s);
}

TEST_F(DocumentStoreTest, AnEmptyTextIsWritten)
{
    m_disk.setText(m_a, u"old"_s);
    store(10ms).scheduleSave(ChunkedText(), m_a);

    ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(m_a); }));

    EXPECT_EQ(m_disk.text(m_a), QString(u""_s));
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

// On request

TEST_F(DocumentStoreTest, SaveNowWritesAtOnceAndTheDelayWritesNothingMore)
{
    store(60ms).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    EXPECT_EQ(m_disk.textsWritten(m_a), QList<QString>{u"text"_s});
    waitUntilEarlierDelaysHaveEnded();
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(DocumentStoreTest, SaveNowDoesNotWaitForTheDelay)
{
    store(kNever).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    EXPECT_EQ(m_disk.text(m_a), u"text"_s);
}

TEST_F(DocumentStoreTest, SaveNowWithNothingPendingTouchesNoFileAndPostsNothing)
{
    m_disk.failWrites(m_a, kFull);

    ASSERT_TRUE(finishes(store(kNever).saveNow(m_a)));

    EXPECT_TRUE(m_disk.writes().isEmpty());
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(DocumentStoreTest, SaveNowWritesTheOneFileOnly)
{
    store(kNever).scheduleSave(text(u"a"_s), m_a);
    m_store->scheduleSave(text(u"b"_s), m_b);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    EXPECT_EQ(m_disk.text(m_a), u"a"_s);
    EXPECT_EQ(m_disk.text(m_b), std::nullopt);
    EXPECT_TRUE(m_store->hasUnsavedText(m_b));
}

TEST_F(DocumentStoreTest, TwoSpellingsOfOnePathAreTwoFiles)
{
    const FileURL other(u"/docs/./a.md"_s);
    store(kNever).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(other)));
    EXPECT_TRUE(m_disk.writes().isEmpty());

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(DocumentStoreTest, FlushAllWritesAndTheDelaysWriteNothingMore)
{
    store(60ms).scheduleSave(text(u"a"_s), m_a);
    m_store->scheduleSave(text(u"b"_s), m_b);

    ASSERT_TRUE(finishes(m_store->flushAll()));

    EXPECT_EQ(m_disk.text(m_a), u"a"_s);
    EXPECT_EQ(m_disk.text(m_b), u"b"_s);
    waitUntilEarlierDelaysHaveEnded();
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
    EXPECT_EQ(m_disk.textsWritten(m_b).size(), 1);
}

TEST_F(DocumentStoreTest, FlushAllWithNothingPendingDoesNothing)
{
    ASSERT_TRUE(finishes(store(kNever).flushAll()));

    EXPECT_TRUE(m_disk.writes().isEmpty());
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(DocumentStoreTest, FlushAllAndWaitReturnsWhenAllHaveBeenTriedWithoutTheEventLoop)
{
    store(kNever).scheduleSave(text(u"older"_s), m_a);
    m_store->scheduleSave(text(u"a"_s), m_a);
    m_store->scheduleSave(text(u"b"_s), m_b);
    m_disk.failWrites(m_b, kFull);

    m_store->flushAllAndWait();

    EXPECT_EQ(m_disk.textsWritten(m_a), QList<QString>{u"a"_s});
    EXPECT_EQ(m_disk.textsWritten(m_b), QList<QString>{u"b"_s});
}

TEST_F(DocumentStoreTest, OperationsTakeEffectInTheOrderOfTheCalls)
{
    store(kNever);
    QList<QFuture<void>> saves;
    QList<QString> expected;
    for (int i = 0; i < 200; ++i) {
        m_store->scheduleSave(text(QString::number(i)), m_a);
        saves.append(i % 2 == 0 ? m_store->saveNow(m_a) : m_store->flushAll());
        expected.append(QString::number(i));
    }

    ASSERT_TRUE(finishes(saves.constLast()));

    EXPECT_EQ(m_disk.textsWritten(m_a), expected);
    for (const QFuture<void> &save : saves)
        EXPECT_TRUE(save.isFinished());
}

TEST_F(DocumentStoreTest, AChangeDuringAFlushIsNotPartOfItAndGetsItsOwnDelay)
{
    store(60ms).scheduleSave(text(u"a"_s), m_a);
    const auto writeOfA = m_disk.holdNextWrite(m_a);
    const QFuture<void> flush = m_store->flushAll();
    ASSERT_TRUE(eventually([&] { return writeOfA->isReached(); }));
    const auto writeOfB = m_disk.holdNextWrite(m_b);

    m_store->scheduleSave(text(u"b"_s), m_b);
    writeOfA->release();

    ASSERT_TRUE(finishes(flush));
    EXPECT_EQ(m_disk.text(m_b), std::nullopt);
    writeOfB->release();
    ASSERT_TRUE(eventually([&] { return m_disk.text(m_b) == u"b"_s; }));
}

TEST_F(DocumentStoreTest, ANewerTextIsNotLostWhenItComesDuringTheWriteOfAnOlder)
{
    store(kNever).scheduleSave(text(u"old"_s), m_a);
    const auto write = m_disk.holdNextWrite(m_a);
    const QFuture<void> first = m_store->saveNow(m_a);
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    m_store->scheduleSave(text(u"new"_s), m_a);
    write->release();
    ASSERT_TRUE(finishes(first));
    EXPECT_EQ(m_disk.text(m_a), u"old"_s);
    EXPECT_TRUE(m_store->hasUnsavedText(m_a));

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    EXPECT_EQ(m_disk.text(m_a), u"new"_s);
    EXPECT_FALSE(m_store->hasUnsavedText(m_a));
}

// Failures

TEST_F(DocumentStoreTest, AFailureIsPostedOnTheMainThreadWithTheFileAndTheMessage)
{
    m_disk.failWrites(m_a, kFull);
    store(kNever).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    ASSERT_EQ(m_failures.size(), 1); // it has been posted when the future is finished
    EXPECT_EQ(m_failures.at(0).keys(), (QStringList{u"message"_s, u"url"_s}));
    EXPECT_EQ(m_failures.at(0).value(u"url"_s).value<FileURL>(), m_a);
    EXPECT_EQ(m_failures.at(0).value(u"message"_s).toString(), u"There is no space left on the disk."_s);
    EXPECT_TRUE(m_failuresOnMainThread);
}

TEST_F(DocumentStoreTest, AFailedAutosavePostsToo)
{
    m_disk.failWrites(m_a, kReadOnly);
    store(10ms).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(eventually([&] { return !m_failures.isEmpty(); }));

    EXPECT_EQ(m_failures.at(0).value(u"message"_s).toString(), kReadOnly.text);
    EXPECT_TRUE(m_store->hasUnsavedText(m_a));
}

TEST_F(DocumentStoreTest, AFailedAutosaveDoesNotRetryByItself)
{
    m_disk.failWrites(m_a, kFull);
    store(30ms).scheduleSave(text(u"text"_s), m_a);
    ASSERT_TRUE(eventually([&] { return m_failures.size() == 1; }));
    m_disk.allowWrites(m_a);

    waitUntilEarlierDelaysHaveEnded();
    waitUntilEarlierDelaysHaveEnded();

    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
    EXPECT_EQ(m_disk.text(m_a), std::nullopt);
    EXPECT_TRUE(m_store->hasUnsavedText(m_a));
}

TEST_F(DocumentStoreTest, AfterAFailedAutosaveTheNextChangeTriesAgain)
{
    m_disk.failWrites(m_a, kFull);
    store(20ms).scheduleSave(text(u"first"_s), m_a);
    ASSERT_TRUE(eventually([&] { return m_failures.size() == 1; }));
    m_disk.allowWrites(m_a);

    m_store->scheduleSave(text(u"second"_s), m_a);

    ASSERT_TRUE(eventually([&] { return !m_store->hasUnsavedText(m_a); }));
    EXPECT_EQ(m_disk.text(m_a), u"second"_s);
}

TEST_F(DocumentStoreTest, AfterAFailedAutosaveSaveNowTriesAgain)
{
    m_disk.failWrites(m_a, kFull);
    store(20ms).scheduleSave(text(u"text"_s), m_a);
    ASSERT_TRUE(eventually([&] { return m_failures.size() == 1; }));
    m_disk.allowWrites(m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    EXPECT_EQ(m_disk.text(m_a), u"text"_s);
}

TEST_F(DocumentStoreTest, AfterAFailedAutosaveFlushAllTriesAgain)
{
    m_disk.failWrites(m_a, kFull);
    store(20ms).scheduleSave(text(u"text"_s), m_a);
    ASSERT_TRUE(eventually([&] { return m_failures.size() == 1; }));
    m_disk.allowWrites(m_a);

    ASSERT_TRUE(finishes(m_store->flushAll()));

    EXPECT_EQ(m_disk.text(m_a), u"text"_s);
    EXPECT_FALSE(m_store->hasUnsavedText(m_a));
}

TEST_F(DocumentStoreTest, EveryFailedAttemptIsPosted)
{
    m_disk.failWrites(m_a, kFull);
    store(kNever).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    ASSERT_TRUE(finishes(m_store->flushAll()));
    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    EXPECT_EQ(m_failures.size(), 3);
    EXPECT_TRUE(m_store->hasUnsavedText(m_a));
}

TEST_F(DocumentStoreTest, AFailedSaveNowEndsTheDelay)
{
    m_disk.failWrites(m_a, kFull);
    store(40ms).scheduleSave(text(u"text"_s), m_a);

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    waitUntilEarlierDelaysHaveEnded();

    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
    EXPECT_EQ(m_failures.size(), 1);
}

TEST_F(DocumentStoreTest, FlushAllGoesOnAfterAFailureAndKeepsTheFailedText)
{
    m_disk.failWrites(m_b, kReadOnly);
    store(50ms).scheduleSave(text(u"a"_s), m_a);
    m_store->scheduleSave(text(u"b"_s), m_b);

    ASSERT_TRUE(finishes(m_store->flushAll()));
    EXPECT_EQ(m_disk.text(m_a), u"a"_s);
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.at(0).value(u"url"_s).value<FileURL>(), m_b);
    EXPECT_FALSE(m_store->hasUnsavedText(m_a));
    EXPECT_TRUE(m_store->hasUnsavedText(m_b));

    m_disk.allowWrites(m_b);
    m_store->scheduleSave(text(u"b, later"_s), m_b);
    ASSERT_TRUE(eventually([&] { return m_disk.text(m_b) == u"b, later"_s; }));
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(DocumentStoreTest, AFailureThenASuccessLeavesNothingPending)
{
    m_disk.failWrites(m_a, kFull);
    store(kNever).scheduleSave(text(u"text"_s), m_a);
    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    m_disk.allowWrites(m_a);
    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    ASSERT_TRUE(finishes(m_store->flushAll()));

    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 2); // the failed one and the good one
    EXPECT_EQ(m_failures.size(), 1);
}

// Reading

TEST_F(DocumentStoreTest, ReadingAnswersWhatTheDiskHoldsNotWhatIsPending)
{
    m_disk.setText(m_a, u"on the disk"_s);
    store(kNever).scheduleSave(text(u"pending"_s), m_a);

    const QFuture<Result<ChunkedText>> read = m_store->readDocument(m_a);
    ASSERT_TRUE(finishes(read));
    EXPECT_EQ(read.result().value(), text(u"on the disk"_s));

    ASSERT_TRUE(finishes(m_store->saveNow(m_a)));
    const QFuture<Result<ChunkedText>> again = m_store->readDocument(m_a);
    ASSERT_TRUE(finishes(again));
    EXPECT_EQ(again.result().value(), text(u"pending"_s));
}

TEST_F(DocumentStoreTest, AFailedReadIsHandedToTheCallerAndPostsNothing)
{
    const QFuture<Result<ChunkedText>> read = store(kNever).readDocument(m_a);
    ASSERT_TRUE(finishes(read));

    ASSERT_FALSE(read.result());
    EXPECT_EQ(read.result().failure(), (Failure{FailureKind::NotFound, u"The file does not exist."_s}));
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(DocumentStoreTest, ASlowReadHoldsUpNoSaveAndNoOtherRead)
{
    m_disk.setText(m_a, u"a"_s);
    m_disk.setText(m_b, u"b"_s);
    QList<std::shared_ptr<ScriptedDisk::Hold>> holds;
    for (int i = 0; i < 4; ++i)
        holds.append(m_disk.holdNextRead(m_a));
    store(kNever);
    QList<QFuture<Result<ChunkedText>>> slow;
    for (int i = 0; i < 4; ++i)
        slow.append(m_store->readDocument(m_a));
    ASSERT_TRUE(eventually([&] { return holds.constLast()->isReached(); }));

    m_store->scheduleSave(text(u"new b"_s), m_b);
    EXPECT_TRUE(finishes(m_store->saveNow(m_b)));
    EXPECT_TRUE(finishes(m_store->readDocument(m_b)));

    EXPECT_FALSE(slow.constFirst().isFinished());
    for (const auto &hold : holds)
        hold->release();
    EXPECT_TRUE(finishes(slow.constLast()));
}

TEST_F(DocumentStoreTest, ASlowWriteHoldsUpNoReadAndNotTheMainThread)
{
    m_disk.setText(m_b, u"b"_s);
    store(kNever).scheduleSave(text(u"a"_s), m_a);
    const auto write = m_disk.holdNextWrite(m_a);
    const QFuture<void> save = m_store->saveNow(m_a);
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    for (int i = 0; i < 1000; ++i)
        m_store->scheduleSave(text(QString::number(i)), m_a);
    const QFuture<void> flush = m_store->flushAll();

    EXPECT_TRUE(finishes(m_store->readDocument(m_b)));
    EXPECT_FALSE(save.isFinished());
    EXPECT_FALSE(flush.isFinished());
    write->release();
    ASSERT_TRUE(finishes(flush));
    EXPECT_EQ(m_disk.textsWritten(m_a), (QList<QString>{u"a"_s, u"999"_s}));
}

// The end

TEST_F(DocumentStoreTest, WhatWasAskedForIsDoneBeforeTheStoreIsGone)
{
    store(kNever).scheduleSave(text(u"a"_s), m_a);
    const QFuture<void> save = m_store->saveNow(m_a);
    m_store->scheduleSave(text(u"b"_s), m_b);
    const QFuture<void> flush = m_store->flushAll();

    m_store.reset();

    EXPECT_EQ(m_disk.text(m_a), u"a"_s);
    EXPECT_EQ(m_disk.text(m_b), u"b"_s);
    EXPECT_TRUE(save.isFinished());
    EXPECT_TRUE(flush.isFinished());
}

TEST_F(DocumentStoreTest, TheEndOfTheStoreDoesNotFlushByItself)
{
    store(kNever).scheduleSave(text(u"a"_s), m_a);

    m_store.reset();

    EXPECT_TRUE(m_disk.writes().isEmpty());
}

TEST_F(DocumentStoreTest, AFailureAtTheEndIsNotPostedToAnybody)
{
    m_disk.failWrites(m_a, kFull);
    store(kNever).scheduleSave(text(u"a"_s), m_a);
    const QFuture<void> save = m_store->saveNow(m_a);

    m_store.reset();
    QCoreApplication::processEvents();

    EXPECT_TRUE(save.isFinished());
    EXPECT_TRUE(m_failures.isEmpty());
}

} // namespace Tessaline
