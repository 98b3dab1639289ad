#include "shell/SettingsWindow.h"

#include "panels/AISettingsView.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

SettingsWindow::SettingsWindow(const Theme &theme, AISettings &settings, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Settings"));
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    rows->addWidget(new AISettingsView(theme, settings));
}

} // namespace Tessaline
