#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class AppPreferences;
class Label;
class Theme;

/// The editor's text size as a whole number between a button that lowers and one that raises it by one step. A button
/// at its limit does nothing.
class FontSizeAdjuster final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kFieldWidth = 36;

    /// Both must outlive the adjuster.
    FontSizeAdjuster(AppPreferences &preferences, const Theme &theme, QWidget *parent = nullptr);

private:
    void showSize();

    AppPreferences &m_preferences;
    Label *m_size;
};

} // namespace Tessaline
