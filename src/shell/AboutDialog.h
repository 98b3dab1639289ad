#pragma once

#include <QtWidgets/QDialog>

namespace Tessaline {

class Theme;

/// What this is, and which version of it.
class AboutDialog final : public QDialog
{
    Q_OBJECT
public:
    /// `theme` must outlive the dialog.
    explicit AboutDialog(const Theme &theme, QWidget *parent = nullptr);
};

} // namespace Tessaline
