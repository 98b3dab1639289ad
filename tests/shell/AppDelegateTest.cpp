#include "shell/AppDelegate.h"

#include "documents/DocumentStore.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "tests/support/Printers.h"
#include "tests/support/ScriptedDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Writes down what it is told, and what was on the disk then.
class RecordingAssistant final : public AssistantLifecycle
{
public:
    explicit RecordingAssistant(QStringList &log) : m_log(log) {}

    void startServer() override { m_log.append(u"startServer"_s); }
    std::optional<FileURL> activeFileURL() const override { return active; }
    void saveSession(const FileURL &url) override { m_log.append(u"saveSession %1"_s.arg(url.path())); }
    void stopServer() override { m_log.append(u"stopServer"_s); }

    std::optional<FileURL> active;

private:
    QStringList &m_log;
};

class AppDelegateTest : public ::testing::Test
{
protected:
    static constexpr auto kNever = std::chrono::milliseconds(std::chrono::hours(1));

    AppDelegate &delegate(const QProcessEnvironment &environment = {})
    {
        m_delegate = std::make_unique<AppDelegate>(
            AppDelegateServices{m_store, &m_assistant, [this] { m_log.append(u"setUpWindows"_s); }, environment});
        QObject::connect(m_delegate.get(), &AppDelegate::terminationReady, m_delegate.get(),
                         [this] { m_log.append(u"terminationReady"_s); });
        return *m_delegate;
    }

    void type(const FileURL &url, const QString &text) { m_store.scheduleSave(ChunkedText(text), url); }

    const FileURL m_a{u"/docs/a.md"_s};
    const FileURL m_b{u"/docs/b.md"_s};
    ScriptedDisk m_disk;
    EventCenter m_events;
    DocumentStore m_store{m_events, m_disk, kNever};
    QStringList m_log;
    RecordingAssistant m_assistant{m_log};
    std::unique_ptr<AppDelegate> m_delegate;
};

} // namespace

// Start

TEST_F(AppDelegateTest, TheServerStartsAtOnceAndTheWindowsAreSetUpAfterTheLaunch)
{
    delegate().applicationDidFinishLaunching();
    EXPECT_EQ(m_log, QStringList{u"startServer"_s});

    QCoreApplication::processEvents();
    EXPECT_EQ(m_log, (QStringList{u"startServer"_s, u"setUpWindows"_s}));
}

TEST_F(AppDelegateTest, UnderATestHostTheServerIsNotStartedButTheWindowsAreSetUp)
{
    QProcessEnvironment environment;
    environment.insert(u"XCTestConfigurationFilePath"_s, u""_s); // being there is enough

    delegate(environment).applicationDidFinishLaunching();
    QCoreApplication::processEvents();

    EXPECT_EQ(m_log, QStringList{u"setUpWindows"_s});
}

TEST_F(AppDelegateTest, AnotherVariableOfATestHostDoesNotKeepTheServerFromStarting)
{
    QProcessEnvironment environment;
    environment.insert(u"XCTestBundlePath"_s, u"/tests"_s);

    delegate(environment).applicationDidFinishLaunching();

    EXPECT_EQ(m_log, QStringList{u"startServer"_s});
}

TEST_F(AppDelegateTest, WithoutAnAssistantItStartsAndEnds)
{
    AppDelegate plain({m_store, nullptr, {}, {}});
    QSignalSpy ready(&plain, &AppDelegate::terminationReady);

    plain.applicationDidFinishLaunching();
    QCoreApplication::processEvents();
    plain.applicationShouldTerminate();
    EXPECT_TRUE(eventually([&] { return ready.count() == 1; }));
    plain.applicationWillTerminate();
}

// End

TEST_F(AppDelegateTest, TheClosingOfTheLastWindowEndsTheApplication)
{
    EXPECT_TRUE(delegate().applicationShouldTerminateAfterLastWindowClosed());
}

TEST_F(AppDelegateTest, ATextYoungerThanTheDelayIsOnTheDiskBeforeTheEnd)
{
    type(m_a, u"typed just now"_s);
    std::optional<QString> onDisk;
    AppDelegate &appDelegate = delegate();
    QObject::connect(&appDelegate, &AppDelegate::terminationReady, &appDelegate, [&] { onDisk = m_disk.text(m_a); });

    appDelegate.applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));

    EXPECT_EQ(onDisk, u"typed just now"_s);
}

TEST_F(AppDelegateTest, DocumentsAreSavedFirstTheSessionSecondAndTheServerIsStoppedLast)
{
    type(m_a, u"text"_s);
    m_assistant.active = m_a;
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));
    EXPECT_EQ(m_disk.text(m_a), u"text"_s);

    m_delegate->applicationWillTerminate();

    EXPECT_EQ(m_log, (QStringList{u"terminationReady"_s, u"saveSession /docs/a.md"_s, u"stopServer"_s}));
}

TEST_F(AppDelegateTest, WithNoDocumentOpenOnlyTheServerIsStopped)
{
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));

    m_delegate->applicationWillTerminate();

    EXPECT_EQ(m_log, (QStringList{u"terminationReady"_s, u"stopServer"_s}));
    EXPECT_TRUE(m_disk.writes().isEmpty());
}

TEST_F(AppDelegateTest, TheAnswerIsNeverGivenFromInsideTheQuestion)
{
    delegate().applicationShouldTerminate();

    EXPECT_TRUE(m_delegate->isTerminating());
    EXPECT_TRUE(m_log.isEmpty());
    EXPECT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));
}

TEST_F(AppDelegateTest, TheApplicationStaysResponsiveWhileTheTextsAreWritten)
{
    type(m_a, u"text"_s);
    const auto write = m_disk.holdNextWrite(m_a);
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    bool ran = false;
    QMetaObject::invokeMethod(
        m_delegate.get(), [&ran] { ran = true; }, Qt::QueuedConnection);
    QCoreApplication::processEvents();

    EXPECT_TRUE(ran);
    EXPECT_TRUE(m_log.isEmpty());
    write->release();
    EXPECT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));
}

TEST_F(AppDelegateTest, AFailedWriteNeitherCancelsNorDelaysTheEnd)
{
    m_disk.failWrites(m_a, {FailureKind::NoSpace, u"There is no space left on the disk."_s});
    int failures = 0;
    m_events.observe(AppEvents::kDocumentSaveFailed, &delegate(), [&](const QVariantMap &) { ++failures; });
    type(m_a, u"a"_s);
    type(m_b, u"b"_s);

    m_delegate->applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));

    EXPECT_EQ(m_disk.text(m_b), u"b"_s);
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(AppDelegateTest, AskingAgainNeitherRestartsNorCutsShortTheFlush)
{
    type(m_a, u"text"_s);
    const auto write = m_disk.holdNextWrite(m_a);
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    for (int i = 0; i < 5; ++i) {
        m_delegate->applicationShouldTerminate();
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(m_log.isEmpty());
    write->release();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));
    m_delegate->applicationShouldTerminate();
    QTest::qWait(20);

    EXPECT_EQ(m_log.count(u"terminationReady"_s), 1);
    EXPECT_EQ(m_disk.textsWritten(m_a).size(), 1);
}

TEST_F(AppDelegateTest, WhatIsTypedWhileTheTextsAreWrittenIsWrittenToo)
{
    type(m_a, u"first"_s);
    const auto write = m_disk.holdNextWrite(m_a);
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    type(m_a, u"second"_s);
    type(m_b, u"other"_s);
    write->release();
    ASSERT_TRUE(eventually([&] { return m_log.contains(u"terminationReady"_s); }));

    EXPECT_EQ(m_disk.text(m_a), u"second"_s);
    EXPECT_EQ(m_disk.text(m_b), u"other"_s);
}

TEST_F(AppDelegateTest, TheLastStepsAreTakenOnce)
{
    m_assistant.active = m_a;

    delegate().applicationWillTerminate();
    m_delegate->applicationWillTerminate();

    EXPECT_EQ(m_log, (QStringList{u"saveSession /docs/a.md"_s, u"stopServer"_s}));
}

TEST_F(AppDelegateTest, MayBeDestroyedWhileTheTextsAreWritten)
{
    type(m_a, u"text"_s);
    const auto write = m_disk.holdNextWrite(m_a);
    delegate().applicationShouldTerminate();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    m_delegate.reset();
    write->release();
    ASSERT_TRUE(finishes(m_store.flushAll()));

    EXPECT_TRUE(m_log.isEmpty());
}

} // namespace Tessaline
