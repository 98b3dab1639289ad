#pragma once

#include "foundation_ui/Theme.h"

#include <QtCore/QObject>

class QDBusConnection;
class QDBusPendingCallWatcher;
class QDBusVariant;
class QPalette;

namespace Tessaline {

/// Whether the desktop is light or dark, as its settings portal says. Nothing here waits for the bus. Main thread only.
class SystemAppearance final : public QObject
{
    Q_OBJECT
public:
    /// `fallback` holds until the desktop has answered, and where it has no portal or no preference.
    explicit SystemAppearance(Appearance fallback, QObject *parent = nullptr);

    Appearance appearance() const { return m_appearance; }

    /// Asks the desktop and follows its changes from here on. Further calls do nothing.
    void follow(const QDBusConnection &bus);

    /// Dark if texts are lighter than what they stand on.
    static Appearance ofPalette(const QPalette &palette);

Q_SIGNALS:
    void changed();

private Q_SLOTS: // QtDBus finds it by its name
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void answered(QDBusPendingCallWatcher *call);
    void take(const QVariant &colorScheme);

    Appearance m_fallback;
    Appearance m_appearance;
    bool m_follows = false;
};

} // namespace Tessaline
