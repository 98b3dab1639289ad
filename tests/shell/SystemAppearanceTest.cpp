#include "shell/SystemAppearance.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QProcess>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusContext>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVariant>
#include <QtGui/QPalette>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

/// The settings portal of a desktop.
class Portal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    uint colorScheme = 0;
    bool hasSetting = true;
    int reads = 0;

    void change(uint scheme)
    {
        colorScheme = scheme;
        Q_EMIT SettingChanged(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QDBusVariant(scheme));
    }

public Q_SLOTS:
    QDBusVariant Read(const QString &group, const QString &key) // NOLINT: the name is the interface's
    {
        ++reads;
        if (!hasSetting || group != u"org.freedesktop.appearance"_s || key != u"color-scheme"_s) {
            sendErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"Requested setting not found"_s);
            return QDBusVariant();
        }
        return QDBusVariant(QVariant::fromValue(QDBusVariant(colorScheme))); // wrapped twice, as the real one does
    }

Q_SIGNALS:
    void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);
};

/// A session bus of the test's own, with or without a portal on it.
class DesktopAppearance : public ::testing::Test
{
protected:
    DesktopAppearance()
    {
        m_daemon.setStandardErrorFile(QProcess::nullDevice());
        m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s,
                                          u"--address=unix:path=%1"_s.arg(m_files.url(u"bus"_s).path())});
        EXPECT_TRUE(m_daemon.waitForReadyRead(10000));
        const QString address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        m_ours = QDBusConnection::connectToBus(address, u"ours"_s);
        m_portals = QDBusConnection::connectToBus(address, u"portals"_s);
        EXPECT_TRUE(m_ours.isConnected() && m_portals.isConnected());
    }
    ~DesktopAppearance() override
    {
        QDBusConnection::disconnectFromBus(u"ours"_s);
        QDBusConnection::disconnectFromBus(u"portals"_s);
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    void offerPortal()
    {
        EXPECT_TRUE(m_portals.registerObject(u"/org/freedesktop/portal/desktop"_s, &m_portal,
                                             QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        EXPECT_TRUE(m_portals.registerService(u"org.freedesktop.portal.Desktop"_s));
    }

    TemporaryFiles m_files;
    QProcess m_daemon;
    QDBusConnection m_ours{QString()};
    QDBusConnection m_portals{QString()};
    Portal m_portal;
};

TEST_F(DesktopAppearance, IsTheFallbackUntilTheDesktopIsAsked)
{
    EXPECT_EQ(SystemAppearance(Appearance::Light).appearance(), Appearance::Light);
    EXPECT_EQ(SystemAppearance(Appearance::Dark).appearance(), Appearance::Dark);
}

TEST_F(DesktopAppearance, IsWhatThePortalSays)
{
    m_portal.colorScheme = 1;
    offerPortal();
    SystemAppearance system(Appearance::Light);
    QSignalSpy changes(&system, &SystemAppearance::changed);

    system.follow(m_ours);

    EXPECT_EQ(system.appearance(), Appearance::Light) << "nobody waits for the answer";
    EXPECT_TRUE(eventually([&] { return changes.count() == 1; }));
    EXPECT_EQ(system.appearance(), Appearance::Dark);
}

TEST_F(DesktopAppearance, FollowsEveryChange)
{
    m_portal.colorScheme = 2;
    offerPortal();
    SystemAppearance system(Appearance::Dark);
    system.follow(m_ours);
    ASSERT_TRUE(eventually([&] { return system.appearance() == Appearance::Light; }));

    m_portal.change(1);
    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Dark; }));
    m_portal.change(2);
    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Light; }));
    m_portal.change(0); // no preference: back to the fallback
    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Dark; }));
}

TEST_F(DesktopAppearance, IgnoresOtherSettings)
{
    m_portal.colorScheme = 2;
    offerPortal();
    SystemAppearance system(Appearance::Dark);
    system.follow(m_ours);
    ASSERT_TRUE(eventually([&] { return system.appearance() == Appearance::Light; }));

    Q_EMIT m_portal.SettingChanged(u"org.freedesktop.appearance"_s, u"accent-color"_s, QDBusVariant(1u));
    Q_EMIT m_portal.SettingChanged(u"org.gnome.desktop.interface"_s, u"color-scheme"_s, QDBusVariant(1u));
    m_portal.change(2); // behind the two others
    QSignalSpy changes(&system, &SystemAppearance::changed);
    m_portal.change(1);

    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Dark; }));
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(DesktopAppearance, AValueOfAnotherTypeIsNoPreference)
{
    m_portal.colorScheme = 1;
    offerPortal();
    SystemAppearance system(Appearance::Light);
    system.follow(m_ours);
    ASSERT_TRUE(eventually([&] { return system.appearance() == Appearance::Dark; }));

    Q_EMIT m_portal.SettingChanged(u"org.freedesktop.appearance"_s, u"color-scheme"_s, QDBusVariant(u"prefer-dark"_s));

    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Light; }));
}

TEST_F(DesktopAppearance, APortalWithoutTheSettingLeavesTheFallbackAndIsFollowedAllTheSame)
{
    m_portal.hasSetting = false;
    offerPortal();
    SystemAppearance system(Appearance::Light);
    system.follow(m_ours);
    ASSERT_TRUE(eventually([&] { return m_portal.reads == 1; }));

    m_portal.change(1);

    EXPECT_TRUE(eventually([&] { return system.appearance() == Appearance::Dark; }));
}

TEST_F(DesktopAppearance, ABusWithoutAPortalLeavesTheFallback)
{
    SystemAppearance system(Appearance::Dark);
    QSignalSpy changes(&system, &SystemAppearance::changed);

    system.follow(m_ours);

    QTest::qWait(200); // long enough for the bus to say that there is nobody
    EXPECT_EQ(system.appearance(), Appearance::Dark);
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(DesktopAppearance, NoBusAtAllLeavesTheFallbackAtOnce)
{
    SystemAppearance system(Appearance::Dark);

    system.follow(QDBusConnection(u"there is no such connection"_s));

    EXPECT_EQ(system.appearance(), Appearance::Dark);
}

TEST_F(DesktopAppearance, IsAskedOnce)
{
    offerPortal();
    SystemAppearance system(Appearance::Light);
    system.follow(m_ours);
    system.follow(m_ours);
    ASSERT_TRUE(eventually([&] { return m_portal.reads > 0; }));
    QTest::qWait(100); // a second call would have come by now
    EXPECT_EQ(m_portal.reads, 1);
}

TEST(SystemAppearance, OfAPaletteIsDarkIfTextsAreLighterThanTheirGround)
{
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    EXPECT_EQ(SystemAppearance::ofPalette(palette), Appearance::Light);
    palette.setColor(QPalette::Window, QColor(40, 40, 40));
    palette.setColor(QPalette::WindowText, QColor(230, 230, 230));
    EXPECT_EQ(SystemAppearance::ofPalette(palette), Appearance::Dark);
}

} // namespace
} // namespace Tessaline

#include "SystemAppearanceTest.moc"
