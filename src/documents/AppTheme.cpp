#include "documents/AppTheme.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Description {
    AppTheme theme;
    QString rawValue; // the label too
    QString symbol;
};

const Description &description(AppTheme theme)
{
    static const Description table[] = {
        {AppTheme::System, u"System"_s, u"laptopcomputer"_s},
        {AppTheme::Light, u"Light"_s, u"sun.max.fill"_s},
        {AppTheme::Dark, u"Dark"_s, u"moon.fill"_s},
    };
    return table[static_cast<int>(theme)];
}

} // namespace

QString rawValue(AppTheme theme)
{
    return description(theme).rawValue;
}

std::optional<AppTheme> appThemeFromRaw(const QString &text)
{
    for (const AppTheme theme : kAppThemes)
        if (rawValue(theme) == text)
            return theme;
    return std::nullopt;
}

QString symbol(AppTheme theme)
{
    return description(theme).symbol;
}

QString label(AppTheme theme)
{
    return rawValue(theme);
}

QString helpText(AppTheme theme)
{
    return u"%1 Theme"_s.arg(label(theme));
}

} // namespace Tessaline
