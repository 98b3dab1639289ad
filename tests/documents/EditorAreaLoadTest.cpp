#include "tests/documents/EditorAreaFixture.h"

/// How texts come from the disk: loads, reloads, and the results that are dropped.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const Failure kGone{FailureKind::NotFound, u"The file does not exist."_s};

class EditorAreaLoadTest : public EditorAreaFixture
{};

} // namespace

// States

TEST_F(EditorAreaLoadTest, ShowsNothingWithoutAnActiveFile)
{
    m_area->appear();

    EXPECT_EQ(m_area->state(), EditorAreaState::None);
    EXPECT_TRUE(m_disk.reads().isEmpty());
}

TEST_F(EditorAreaLoadTest, IsLoadingUntilTheTextIsThere)
{
    const auto read = m_disk.holdNextRead(m_a);
    m_area->appear();
    QSignalSpy presented(m_area.get(), &EditorArea::presentationChanged);
    m_workspace.openFile(m_a);
    EXPECT_EQ(m_area->state(), EditorAreaState::Loading);
    EXPECT_GT(presented.count(), 0);
    presented.clear();

    read->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));

    EXPECT_EQ(shown(m_a), u"text of a"_s);
    EXPECT_GT(presented.count(), 0);
}

TEST_F(EditorAreaLoadTest, AnEmptyFileIsReady)
{
    m_disk.setText(m_a, u""_s);
    m_area->appear();

    open(m_a);

    EXPECT_TRUE(m_area->hasText(m_a));
}

TEST_F(EditorAreaLoadTest, AFileThatWasActiveBeforeTheAppearanceIsLoadedThen)
{
    m_workspace.openFile(m_a);
    EXPECT_TRUE(m_disk.reads().isEmpty());

    m_area->appear();

    EXPECT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));
}

TEST_F(EditorAreaLoadTest, AFailedLoadShowsItsMessageAndPrintsOneLine)
{
    const FileURL missing(u"/docs/missing.md"_s);
    m_area->appear();
    ::testing::internal::CaptureStdout();

    m_workspace.openFile(missing);
    const bool failed = eventually([&] { return m_area->state() == EditorAreaState::Failed; });
    const std::string printed = ::testing::internal::GetCapturedStdout();

    ASSERT_TRUE(failed);
    EXPECT_EQ(m_area->loadErrorMessage(), u"The file does not exist."_s);
    EXPECT_EQ(printed, "Failed to load file at /docs/missing.md: The file does not exist.\n");
    EXPECT_FALSE(m_area->hasText(missing));
}

TEST_F(EditorAreaLoadTest, TryAgainGoesBackToLoadingAndThenToReady)
{
    const FileURL missing(u"/docs/missing.md"_s);
    m_area->appear();
    ::testing::internal::CaptureStdout();
    m_workspace.openFile(missing);
    const bool failed = eventually([&] { return m_area->state() == EditorAreaState::Failed; });
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(failed);
    m_disk.setText(missing, u"here again"_s);
    QSignalSpy presented(m_area.get(), &EditorArea::presentationChanged);
    const auto read = m_disk.holdNextRead(missing);

    m_area->loadFile(missing, EditorArea::LoadPolicy::Force);
    EXPECT_EQ(m_area->state(), EditorAreaState::Loading);
    EXPECT_EQ(m_area->loadErrorMessage(), QString());
    EXPECT_EQ(presented.count(), 1);

    read->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));
    EXPECT_EQ(shown(missing), u"here again"_s);
}

TEST_F(EditorAreaLoadTest, AFileThatIsNotUtf8ShowsTheFailedState)
{
    m_disk.failReads(m_a, {FailureKind::Malformed, u"The file is not text in UTF-8."_s});
    m_area->appear();
    ::testing::internal::CaptureStdout();

    m_workspace.openFile(m_a);
    const bool failed = eventually([&] { return m_area->state() == EditorAreaState::Failed; });
    ::testing::internal::GetCapturedStdout();

    EXPECT_TRUE(failed);
    EXPECT_EQ(m_area->loadErrorMessage(), u"The file is not text in UTF-8."_s);
}

TEST_F(EditorAreaLoadTest, AFailedReloadLeavesTheTextOnScreenAndTheNextEditIsSaved)
{
    m_area->appear();
    open(m_a);
    m_disk.failReads(m_a, kGone);
    ::testing::internal::CaptureStdout();
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    const bool failed = eventually([&] { return !m_area->loadErrorMessage().isEmpty(); });
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(failed);

    EXPECT_EQ(m_area->state(), EditorAreaState::Ready);
    EXPECT_EQ(shown(m_a), u"text of a"_s);

    type(m_a, u"!"_s);
    ASSERT_TRUE(finishes(m_store.flushAll()));
    EXPECT_EQ(m_disk.text(m_a), u"text of a!"_s);
}

// Which loads there are

TEST_F(EditorAreaLoadTest, AFileIsReadAgainEachTimeItBecomesActive)
{
    m_area->appear();
    open(m_a);
    open(m_b);
    m_disk.setText(m_a, u"changed by another program"_s);

    m_workspace.setActiveFileURL(m_a);
    EXPECT_EQ(m_area->state(), EditorAreaState::Ready); // the old text stays on screen meanwhile

    EXPECT_TRUE(eventually([&] { return shown(m_a) == u"changed by another program"_s; }));
}

TEST_F(EditorAreaLoadTest, ALazyLoadLeavesAKnownTextAlone)
{
    m_area->appear();
    open(m_a);
    const qsizetype reads = m_disk.reads().size();

    m_area->loadFile(m_a, EditorArea::LoadPolicy::KeepLoaded);
    EXPECT_EQ(m_disk.reads().size(), reads);

    m_area->loadFile(m_b, EditorArea::LoadPolicy::KeepLoaded);
    EXPECT_TRUE(eventually([&] { return m_area->hasText(m_b); }));
}

TEST_F(EditorAreaLoadTest, AnEqualTextDisturbsNoEditor)
{
    m_area->appear();
    open(m_a);
    QSignalSpy replaced(m_area.get(), &EditorArea::textReplaced);

    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    settle();
    EXPECT_EQ(replaced.count(), 0);

    m_disk.setText(m_a, u"other"_s);
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return replaced.count() == 1; }));
    EXPECT_EQ(replaced.at(0).at(0).value<FileURL>(), m_a);
}

TEST_F(EditorAreaLoadTest, TwoLoadsOfOneFileInARowYieldOneResult)
{
    QSignalSpy replaced(m_area.get(), &EditorArea::textReplaced);
    m_workspace.openFile(m_a);

    m_area->appear();
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return m_area->hasText(m_a); }));
    settle();

    EXPECT_EQ(replaced.count(), 1);
    EXPECT_EQ(m_disk.reads().count(m_a), 2);
}

TEST_F(EditorAreaLoadTest, SwitchingQuicklyBetweenABAAppliesTheLastLoadOnly)
{
    const auto firstOfA = m_disk.holdNextRead(m_a);
    const auto secondOfA = m_disk.holdNextRead(m_a);
    const auto readOfB = m_disk.holdNextRead(m_b);
    m_area->appear();
    QSignalSpy replaced(m_area.get(), &EditorArea::textReplaced);
    m_workspace.openFile(m_a);
    ASSERT_TRUE(eventually([&] { return firstOfA->isReached(); }));
    m_workspace.openFile(m_b);
    ASSERT_TRUE(eventually([&] { return readOfB->isReached(); }));
    m_disk.setText(m_a, u"newer text of a"_s);
    m_workspace.setActiveFileURL(m_a);
    ASSERT_TRUE(eventually([&] { return secondOfA->isReached(); }));

    secondOfA->release();
    ASSERT_TRUE(eventually([&] { return m_area->hasText(m_a); }));
    readOfB->release();
    firstOfA->release();
    settle();

    EXPECT_EQ(shown(m_a), u"newer text of a"_s);
    EXPECT_FALSE(m_area->hasText(m_b)); // its load was no longer wanted
    EXPECT_EQ(replaced.count(), 1);
    EXPECT_EQ(m_area->state(), EditorAreaState::Ready);
}

TEST_F(EditorAreaLoadTest, OneFileByTwoNamesIsReadBehindTheSaveOfWhatWasTypedUnderTheOther)
{
    m_disk.link(m_b, m_a);
    m_area->appear();
    open(m_b);
    open(m_a);
    type(m_a, u"!"_s);
    const auto write = m_disk.holdNextWrite(m_a);

    m_workspace.setActiveFileURL(m_b);
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));
    QCoreApplication::processEvents();
    write->release();

    ASSERT_TRUE(eventually([&] { return shown(m_b) == u"text of a!"_s; }));
    settle();
    EXPECT_EQ(m_disk.reads().count(m_b), 2) << "once when it was opened, once behind the save";
}

TEST_F(EditorAreaLoadTest, AnotherFileIsNotHeldUpByTheSaveOfTheOneBefore)
{
    m_area->appear();
    open(m_a);
    type(m_a, u"!"_s);
    const auto write = m_disk.holdNextWrite(m_a);

    m_workspace.setActiveFileURL(m_b);

    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));
    EXPECT_EQ(shown(m_b), u"text of b"_s);
    write->release();
}

TEST_F(EditorAreaLoadTest, AStaleFailureIsDroppedWithoutALine)
{
    m_disk.failReads(m_a, kGone);
    const auto readOfA = m_disk.holdNextRead(m_a);
    m_area->appear();
    ::testing::internal::CaptureStdout();
    m_workspace.openFile(m_a);
    const bool reached = eventually([&] { return readOfA->isReached(); });
    open(m_b);
    readOfA->release();
    settle();
    const std::string printed = ::testing::internal::GetCapturedStdout();

    EXPECT_TRUE(reached);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(m_area->loadErrorMessage(), QString());
}

TEST_F(EditorAreaLoadTest, WithoutAnActiveFileTheRunningLoadIsDropped)
{
    const auto read = m_disk.holdNextRead(m_a);
    m_area->appear();
    m_workspace.openFile(m_a);
    ASSERT_TRUE(eventually([&] { return read->isReached(); }));

    m_workspace.closeFile(m_a);
    read->release();
    settle();

    EXPECT_EQ(m_area->state(), EditorAreaState::None);
    EXPECT_FALSE(m_area->hasText(m_a));
}

TEST_F(EditorAreaLoadTest, AfterItHasGoneTheRunningLoadIsDropped)
{
    const auto read = m_disk.holdNextRead(m_a);
    m_area->appear();
    m_workspace.openFile(m_a);
    ASSERT_TRUE(eventually([&] { return read->isReached(); }));

    m_area->disappear();
    read->release();
    settle();

    EXPECT_FALSE(m_area->hasText(m_a));
}

TEST_F(EditorAreaLoadTest, MayBeDestroyedWhileItLoadsAndWhileItFlushes)
{
    const auto read = m_disk.holdNextRead(m_a);
    m_area->appear();
    m_workspace.openFile(m_a);
    ASSERT_TRUE(eventually([&] { return read->isReached(); }));
    m_area->applicationActivated();

    m_area.reset();
    read->release();
    settle();
}

TEST_F(EditorAreaLoadTest, TextsStayKnownAfterTheirFilesAreClosed)
{
    m_area->appear();
    open(m_a);

    m_workspace.closeFile(m_a);

    EXPECT_TRUE(m_area->hasText(m_a));
}

// Changes from outside

TEST_F(EditorAreaLoadTest, AnUpdateFromOutsideReloadsTheActiveFile)
{
    m_area->appear();
    open(m_a);
    m_disk.setText(m_a, u"accepted suggestion"_s);

    m_events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(m_a)}});

    EXPECT_TRUE(eventually([&] { return shown(m_a) == u"accepted suggestion"_s; }));
}

TEST_F(EditorAreaLoadTest, AnUpdateOfAnotherFileChangesNothingNow)
{
    m_area->appear();
    open(m_b);
    open(m_a);
    const qsizetype reads = m_disk.reads().size();
    m_disk.setText(m_b, u"new text of b"_s);

    m_events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(m_b)}});
    EXPECT_EQ(m_disk.reads().size(), reads);
    EXPECT_EQ(shown(m_b), u"text of b"_s);

    m_workspace.setActiveFileURL(m_b);
    EXPECT_TRUE(eventually([&] { return shown(m_b) == u"new text of b"_s; }));
}

TEST_F(EditorAreaLoadTest, AnUpdateWithoutAFileOrWithAValueOfAnotherTypeIsIgnored)
{
    m_area->appear();
    open(m_a);
    const qsizetype reads = m_disk.reads().size();

    m_events.post(AppEvents::kFileDidUpdateExternally);
    m_events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, m_a.path()}});
    m_events.post(AppEvents::kFileDidUpdateExternally, {{u"URL"_s, QVariant::fromValue(m_a)}});
    settle();

    EXPECT_EQ(m_disk.reads().count(m_a), reads);
}

TEST_F(EditorAreaLoadTest, ComingBackShowsWhatAnotherProgramWrote)
{
    m_area->appear();
    open(m_a);
    m_area->applicationDeactivated();
    m_disk.setText(m_a, u"written by another program"_s);

    m_area->applicationActivated();

    EXPECT_TRUE(eventually([&] { return shown(m_a) == u"written by another program"_s; }));
}

TEST_F(EditorAreaLoadTest, ComingBackWithUnsavedChangesWritesThemOverTheOtherProgramsChange)
{
    m_area->appear();
    open(m_a);
    type(m_a, u", edited"_s);
    m_disk.setText(m_a, u"written by another program"_s);
    const qsizetype reads = m_disk.reads().size();

    m_area->applicationActivated();
    ASSERT_TRUE(eventually([&] { return m_disk.reads().size() > reads; }));
    settle();

    EXPECT_EQ(m_disk.text(m_a), u"text of a, edited"_s);
    EXPECT_EQ(shown(m_a), u"text of a, edited"_s);
}

TEST_F(EditorAreaLoadTest, ComingBackReloadsOnlyWhatIsStillActiveAfterTheFlush)
{
    m_area->appear();
    open(m_b);
    open(m_a);
    type(m_a, u"!"_s);
    const auto write = m_disk.holdNextWrite(m_a);
    m_area->applicationActivated();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));
    const qsizetype readsOfA = m_disk.reads().count(m_a);

    m_workspace.setActiveFileURL(m_b);
    write->release();
    settle();

    EXPECT_EQ(m_disk.reads().count(m_a), readsOfA);
}

TEST_F(EditorAreaLoadTest, ComingBackWithoutAnActiveFileReadsNothing)
{
    m_area->appear();

    m_area->applicationActivated();
    settle();

    EXPECT_EQ(m_disk.reads(), QList<FileURL>{m_sentinel});
}

// What the person typed is newer than what a read brings

TEST_F(EditorAreaLoadTest, WhatIsTypedDuringAReloadIsNotReplacedByTheOldText)
{
    m_area->appear();
    open(m_a);
    const auto read = m_disk.holdNextRead(m_a);
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return read->isReached(); }));

    type(m_a, u", typed"_s);
    read->release();
    settle();

    EXPECT_EQ(shown(m_a), u"text of a, typed"_s);
}

TEST_F(EditorAreaLoadTest, WhatIsTypedAndSavedDuringASlowReloadIsNotReplacedByTheOldText)
{
    m_area->appear();
    open(m_a);
    const auto read = m_disk.holdNextRead(m_a);
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return read->isReached(); }));

    type(m_a, u", typed"_s);
    ASSERT_TRUE(finishes(m_store.saveNow(m_a)));
    read->release();
    settle();

    EXPECT_EQ(shown(m_a), u"text of a, typed"_s);
    EXPECT_EQ(m_disk.text(m_a), u"text of a, typed"_s);
}

TEST_F(EditorAreaLoadTest, ATextWhoseSaveFailedStaysOnScreenWhenItsFileBecomesActiveAgain)
{
    m_area->appear();
    open(m_a);
    m_disk.failWrites(m_a, {FailureKind::NoSpace, u"There is no space left on the disk."_s});
    type(m_a, u", unsaved"_s);
    open(m_b);

    const qsizetype reads = m_disk.reads().count(m_a);
    m_workspace.setActiveFileURL(m_a);
    ASSERT_TRUE(eventually([&] { return m_disk.reads().count(m_a) > reads; }));
    settle();

    EXPECT_EQ(shown(m_a), u"text of a, unsaved"_s);
    m_disk.allowWrites(m_a);
    ASSERT_TRUE(finishes(m_store.flushAll()));
    EXPECT_EQ(m_disk.text(m_a), u"text of a, unsaved"_s);
}

} // namespace Tessaline
