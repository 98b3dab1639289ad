#include "shell/SettingsWindow.h"

#include "shell/EmptyState.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

SettingsWindow::SettingsWindow(const Theme &theme, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Settings"));
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(
        new EmptyState(theme, tr("Nothing to set here yet"),
                       tr("Appearance, view and text size are chosen at the top of the window. The settings of the "
                          "assistant come with the assistant.")));
    resize(420, 280);
}

} // namespace Tessaline
