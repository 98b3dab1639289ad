#include "shell/SessionColumn.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "shell/EmptyState.h"
#include "shell/FramelessWindow.h"
#include "shell/WindowButtons.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

SessionColumn::SessionColumn(const Theme &theme, FramelessWindow &window, QWidget *parent)
    : Ground(theme, ColorRole::RightColumn, parent)
{
    setAccessibleName(tr("Session Context"));

    auto *titleRow = new QWidget;
    titleRow->setFixedHeight(FramelessWindow::kTitleRowHeight);
    auto *title = new QHBoxLayout(titleRow);
    title->setContentsMargins(16, 0, 8, 0);
    title->addWidget(new Label(theme, ColorRole::Heading, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold),
                               tr("Session Context")),
                     1);
    title->addWidget(new WindowButtons(theme, window));

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(titleRow);
    rows->addWidget(
        new EmptyState(theme, tr("No assistant yet"),
                       tr("The assistant that answers here, with your document in view, is not part of this "
                          "version. Everything else works without it.")),
        1);
}

} // namespace Tessaline
