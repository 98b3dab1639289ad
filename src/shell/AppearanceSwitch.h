#pragma once

#include "documents/AppTheme.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QObject>

namespace Tessaline {

class AppPreferences;
class SystemAppearance;

/// The appearance that a choice comes to while the desktop has `system`.
Appearance effectiveAppearance(AppTheme choice, Appearance system);

/// Keeps the theme, and with it every window, in step with the stored choice and with the desktop. The desktop is asked
/// only once the choice leaves it to the desktop.
class AppearanceSwitch final : public QObject
{
    Q_OBJECT
public:
    /// All three must outlive this object. Nothing happens before the first `apply`.
    AppearanceSwitch(const AppPreferences &preferences, SystemAppearance &system, Theme &theme,
                     QObject *parent = nullptr);

    /// Gives the theme the appearance that holds now; it is followed from then on.
    void apply();

private:
    const AppPreferences &m_preferences;
    SystemAppearance &m_system;
    Theme &m_theme;
    bool m_follows = false;
};

} // namespace Tessaline
