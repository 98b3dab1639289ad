#include "shell/SystemAppearance.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusVariant>
#include <QtGui/QPalette>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kService = u"org.freedesktop.portal.Desktop"_s;
const QString kPath = u"/org/freedesktop/portal/desktop"_s;
const QString kInterface = u"org.freedesktop.portal.Settings"_s;
const QString kGroup = u"org.freedesktop.appearance"_s;
const QString kKey = u"color-scheme"_s;

// The values of the setting; anything else, 0 above all, is no preference.
constexpr uint kPrefersDark = 1;
constexpr uint kPrefersLight = 2;

} // namespace

SystemAppearance::SystemAppearance(Appearance fallback, QObject *parent)
    : QObject(parent), m_fallback(fallback), m_appearance(fallback)
{}

Appearance SystemAppearance::ofPalette(const QPalette &palette)
{
    const bool isDark = palette.color(QPalette::WindowText).lightnessF() > palette.color(QPalette::Window).lightnessF();
    return isDark ? Appearance::Dark : Appearance::Light;
}

void SystemAppearance::follow(const QDBusConnection &bus)
{
    if (std::exchange(m_follows, true) || !bus.isConnected())
        return;
    QDBusConnection connection = bus;
    // NOTE: with the service's name the toolkit would ask for its owner and wait for the answer; the path says enough.
    qRegisterMetaType<QDBusVariant>(); // QtDBus looks for the types of a slot by their names
    [[maybe_unused]] const bool isConnected = connection.connect(
        QString(), kPath, kInterface, u"SettingChanged"_s, this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    Q_ASSERT(isConnected);

    QDBusMessage read = QDBusMessage::createMethodCall(kService, kPath, kInterface, u"Read"_s);
    read.setArguments({kGroup, kKey});
    auto *call = new QDBusPendingCallWatcher(connection.asyncCall(read), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &SystemAppearance::answered);
}

void SystemAppearance::answered(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    const QList<QVariant> arguments = call->reply().arguments();
    if (!call->isError() && !arguments.isEmpty())
        take(arguments.first());
}

void SystemAppearance::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group == kGroup && key == kKey)
        take(QVariant::fromValue(value));
}

void SystemAppearance::take(const QVariant &colorScheme)
{
    // The portal's older call wraps the value twice.
    QVariant value = colorScheme;
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();

    Appearance appearance = m_fallback;
    if (value.toUInt() == kPrefersDark)
        appearance = Appearance::Dark;
    else if (value.toUInt() == kPrefersLight)
        appearance = Appearance::Light;
    if (std::exchange(m_appearance, appearance) != appearance)
        Q_EMIT changed();
}

} // namespace Tessaline
