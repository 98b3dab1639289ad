#pragma once

#include "panels/ChatComposer.h"
#include "panels/SelectionTools.h"
#include "panels/SessionContext.h"
#include "panels/SuggestionActions.h"

namespace Tessaline {

struct AssistantPanelsParts {
    LocalAIService &ai;
    DocumentStore &documents;
    EditorArea &area;
    Workspace &workspace;
    EventCenter &events;
    FileAccess &disk;
    std::function<void(const QString &)> copyToClipboard;
};

/// What the panels of the assistant decide, for the views that show it. All parts outlive it.
struct AssistantPanels {
    explicit AssistantPanels(AssistantPanelsParts parts)
        : ai(parts.ai), composer(parts.ai, parts.documents),
          suggestions({parts.ai, parts.documents, parts.area, parts.events, parts.disk}),
          context(parts.ai, parts.events), tools({parts.workspace, parts.area, parts.documents, parts.ai, parts.events,
                                                  std::move(parts.copyToClipboard)})
    {}

    LocalAIService &ai;
    ChatComposer composer;
    SuggestionActions suggestions;
    SessionContext context;
    SelectionTools tools;
};

} // namespace Tessaline
