#pragma once

#include <QtWidgets/QDialog>

namespace Tessaline {

class AISettings;
class Theme;

/// The settings, which are those of the assistant. Appearance, view and text size are chosen in the window itself.
class SettingsWindow final : public QDialog
{
    Q_OBJECT
public:
    /// Both must outlive the window.
    SettingsWindow(const Theme &theme, AISettings &settings, QWidget *parent = nullptr);
};

} // namespace Tessaline
