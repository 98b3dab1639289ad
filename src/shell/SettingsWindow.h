#pragma once

#include <QtWidgets/QDialog>

namespace Tessaline {

class Theme;

/// The settings. They are about the assistant, so while there is none the window says where the other choices are made.
class SettingsWindow final : public QDialog
{
    Q_OBJECT
public:
    /// `theme` must outlive the window.
    explicit SettingsWindow(const Theme &theme, QWidget *parent = nullptr);
};

} // namespace Tessaline
