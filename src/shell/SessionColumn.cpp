#include "shell/SessionColumn.h"

#include "panels/AssistantPanels.h"
#include "panels/SessionView.h"
#include "shell/FramelessWindow.h"
#include "shell/WindowButtons.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

SessionColumn::SessionColumn(const SessionColumnParts &parts, QWidget *parent)
    : Ground(parts.theme, ColorRole::RightColumn, parent),
      m_session(new SessionView({.ai = parts.assistant.ai,
                                 .composer = parts.assistant.composer,
                                 .suggestions = parts.assistant.suggestions,
                                 .context = parts.assistant.context,
                                 .workspace = parts.workspace,
                                 .area = parts.area,
                                 .events = parts.events,
                                 .theme = parts.theme,
                                 .askForFiles = parts.askForFiles,
                                 .openOutside = parts.openOutside,
                                 .imageLoader = parts.imageLoader,
                                 .trailing = new WindowButtons(parts.theme, parts.window),
                                 .titleRowHeight = FramelessWindow::kTitleRowHeight}))
{
    setAccessibleName(tr("Session Context"));
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_session);
}

} // namespace Tessaline
