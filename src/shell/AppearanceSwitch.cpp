#include "shell/AppearanceSwitch.h"

#include "documents/AppPreferences.h"
#include "shell/SystemAppearance.h"

#include <QtDBus/QDBusConnection>

namespace Tessaline {

Appearance effectiveAppearance(AppTheme choice, Appearance system)
{
    switch (choice) {
    case AppTheme::System:
        return system;
    case AppTheme::Light:
        return Appearance::Light;
    case AppTheme::Dark:
        return Appearance::Dark;
    }
    return system;
}

AppearanceSwitch::AppearanceSwitch(const AppPreferences &preferences, SystemAppearance &system, Theme &theme,
                                   QObject *parent)
    : QObject(parent), m_preferences(preferences), m_system(system), m_theme(theme)
{}

void AppearanceSwitch::apply()
{
    if (!std::exchange(m_follows, true)) {
        connect(&m_preferences, &AppPreferences::appThemeChanged, this, &AppearanceSwitch::apply);
        connect(&m_system, &SystemAppearance::changed, this, &AppearanceSwitch::apply);
    }
    const AppTheme choice = m_preferences.appTheme();
    if (choice == AppTheme::System)
        m_system.follow(QDBusConnection::sessionBus());
    m_theme.setAppearance(effectiveAppearance(choice, m_system.appearance()));
}

} // namespace Tessaline
