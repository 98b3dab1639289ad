#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// The application's appearance.
enum class AppTheme { System, Light, Dark };

/// In the order in which they are offered.
inline const QList<AppTheme> kAppThemes{AppTheme::System, AppTheme::Light, AppTheme::Dark};

QString rawValue(AppTheme theme);                             // as stored: "System", "Light", "Dark"
std::optional<AppTheme> appThemeFromRaw(const QString &text); // absent for any other text
QString symbol(AppTheme theme);                               // the name of its symbol, "sun.max.fill" for example
QString label(AppTheme theme);
QString helpText(AppTheme theme); // the label followed by " Theme"

} // namespace Tessaline
