#include "documents/ThemePicker.h"

#include "documents/AppPreferences.h"

#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

ThemePicker::ThemePicker(AppPreferences &preferences, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_control(new SegmentedControl(theme, this))
{
    setAccessibleName(u"Theme"_s);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_control);

    QList<SegmentedControl::Item> items;
    for (const AppTheme appTheme : kAppThemes)
        items.append({symbol(appTheme), label(appTheme), helpText(appTheme)});
    m_control->setItems(items);

    const auto showTheme = [this, &preferences] {
        m_control->setSelectedIndex(static_cast<int>(kAppThemes.indexOf(preferences.appTheme())));
    };
    showTheme();
    connect(&preferences, &AppPreferences::appThemeChanged, this, showTheme);
    connect(m_control, &SegmentedControl::selected, this,
            [&preferences](int index) { preferences.setAppTheme(kAppThemes.at(index)); });
}

} // namespace Tessaline
