#include "shell/UpdateManager.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kDisabled = u"Sparkle is disabled: set TESSALINE_SPARKLE_PUBLIC_ED_KEY when building the release."_s;

class RecordingUpdater final : public UpdaterController
{
public:
    explicit RecordingUpdater(QStringList &log) : m_log(log) { m_log.append(u"started"_s); }
    void setAutomaticallyChecksForUpdates(bool checks) override
    {
        m_log.append(checks ? u"checks automatically"_s : u"does not check"_s);
    }
    void checkForUpdates() override { m_log.append(u"checkForUpdates"_s); }

private:
    QStringList &m_log;
};

class UpdateManagerTest : public ::testing::Test
{
protected:
    UpdateEnvironment environment(const QVariant &publicEDKey)
    {
        UpdateEnvironment made;
        made.environment.insert(u"PATH"_s, u"/bin"_s);
        made.publicEDKey = publicEDKey;
        made.startUpdater = [this] { return std::make_unique<RecordingUpdater>(m_updaterLog); };
        made.log = [this](const QString &line) { m_log.append(line); };
        return made;
    }

    QStringList m_log;
    QStringList m_updaterLog;
};

} // namespace

TEST_F(UpdateManagerTest, WithAKeyTheUpdaterStartsAndChecksByItself)
{
    const UpdateManager manager(environment(u"a public key"_s));

    EXPECT_TRUE(manager.canCheckForUpdates());
    EXPECT_EQ(m_updaterLog, (QStringList{u"started"_s, u"checks automatically"_s}));
    EXPECT_EQ(m_log, QStringList());
}

TEST_F(UpdateManagerTest, TheMenuItemReachesTheUpdater)
{
    UpdateManager manager(environment(u"a public key"_s));

    manager.checkForUpdates();

    EXPECT_EQ(m_updaterLog.constLast(), u"checkForUpdates"_s);
}

TEST_F(UpdateManagerTest, WithoutAKeyOneLineSaysThatItIsOff)
{
    const UpdateManager manager(environment(QVariant()));

    EXPECT_FALSE(manager.canCheckForUpdates());
    EXPECT_EQ(m_log, QStringList{kDisabled});
    EXPECT_EQ(m_updaterLog, QStringList());
}

TEST_F(UpdateManagerTest, AKeyOfBlanksAndLineBreaksCountsAsMissing)
{
    for (const QString &key : {u""_s, u"   "_s, u"\n\n"_s, u" \t\r\n "_s}) {
        m_log.clear();
        const UpdateManager manager(environment(key));
        EXPECT_FALSE(manager.canCheckForUpdates());
        EXPECT_EQ(m_log, QStringList{kDisabled});
    }
}

TEST_F(UpdateManagerTest, AKeyThatIsNoTextCountsAsMissing)
{
    for (const QVariant &key : {QVariant(7), QVariant(true), QVariant(QStringList{u"key"_s}),
                                QVariant(QByteArray("key")), QVariant(QVariantMap())}) {
        m_log.clear();
        const UpdateManager manager(environment(key));
        EXPECT_FALSE(manager.canCheckForUpdates());
        EXPECT_EQ(m_log, QStringList{kDisabled});
    }
}

TEST_F(UpdateManagerTest, UnderATestHostItIsOffWithoutALine)
{
    for (const QString &name : {u"XCTestConfigurationFilePath"_s, u"XCTestBundlePath"_s, u"XCTest"_s}) {
        for (const QVariant &key : {QVariant(u"a public key"_s), QVariant()}) {
            UpdateEnvironment underTest = environment(key);
            underTest.environment.insert(name, u""_s);
            const UpdateManager manager(underTest);
            EXPECT_FALSE(manager.canCheckForUpdates());
        }
    }
    EXPECT_EQ(m_log, QStringList());
    EXPECT_EQ(m_updaterLog, QStringList());
}

TEST_F(UpdateManagerTest, OnlyThePrefixOfAVariablesNameCounts)
{
    UpdateEnvironment other = environment(u"a public key"_s);
    other.environment.insert(u"MY_XCTest"_s, u"1"_s);
    other.environment.insert(u"xctest"_s, u"1"_s);
    other.environment.insert(u"OTHER"_s, u"XCTest"_s);

    EXPECT_TRUE(UpdateManager(other).canCheckForUpdates());
}

TEST_F(UpdateManagerTest, WithoutAFrameworkItIsOffWithOrWithoutAKey)
{
    UpdateEnvironment plain = environment(u"a public key"_s);
    plain.startUpdater = {};

    UpdateManager manager(plain);
    manager.checkForUpdates(); // does nothing

    EXPECT_FALSE(manager.canCheckForUpdates());
    EXPECT_EQ(m_log, QStringList());
}

TEST_F(UpdateManagerTest, TheRealLogIsStandardOutputAndNotStandardError)
{
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    UpdateEnvironment::ofProcess().log(kDisabled);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    const std::string reported = ::testing::internal::GetCapturedStderr();

    EXPECT_EQ(printed, kDisabled.toStdString() + "\n");
    EXPECT_EQ(reported, "");
}

} // namespace Tessaline
