#include "documents/AppTheme.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct ThemeCase {
    const char *name;
    AppTheme theme;
    QString rawValue;
    QString symbol;
    QString label;
    QString helpText;
};

void PrintTo(const ThemeCase &row, std::ostream *out)
{
    *out << row.name;
}

const QList<ThemeCase> kCases{
    {"System", AppTheme::System, u"System"_s, u"laptopcomputer"_s, u"System"_s, u"System Theme"_s},
    {"Light", AppTheme::Light, u"Light"_s, u"sun.max.fill"_s, u"Light"_s, u"Light Theme"_s},
    {"Dark", AppTheme::Dark, u"Dark"_s, u"moon.fill"_s, u"Dark"_s, u"Dark Theme"_s},
};

class EachAppTheme : public ::testing::TestWithParam<ThemeCase>
{};

TEST_P(EachAppTheme, HasItsTexts)
{
    const ThemeCase &row = GetParam();
    EXPECT_EQ(rawValue(row.theme), row.rawValue);
    EXPECT_EQ(symbol(row.theme), row.symbol);
    EXPECT_EQ(label(row.theme), row.label);
    EXPECT_EQ(helpText(row.theme), row.helpText);
    EXPECT_EQ(appThemeFromRaw(row.rawValue), row.theme);
}

INSTANTIATE_TEST_SUITE_P(AppTheme, EachAppTheme, ::testing::ValuesIn(kCases),
                         [](const auto &row) { return row.param.name; });

} // namespace

TEST(AppTheme, IsOfferedInItsOrder)
{
    EXPECT_EQ(kAppThemes, (QList<AppTheme>{AppTheme::System, AppTheme::Light, AppTheme::Dark}));
}

TEST(AppTheme, AnyOtherTextIsNone)
{
    for (const QString &text : {u""_s, u"dark"_s, u"DARK"_s, u" Dark"_s, u"Sepia"_s})
        EXPECT_EQ(appThemeFromRaw(text), std::nullopt);
}

} // namespace Tessaline
