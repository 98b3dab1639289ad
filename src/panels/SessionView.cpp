#include "panels/SessionView.h"

#include "documents/EditorArea.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "MarkdownUI/LinkOpening.h"
#include "panels/ChatSection.h"
#include "panels/ContextLink.h"
#include "panels/SessionContextView.h"
#include "Services/LocalAIService.h"

#include <QtWidgets/QSplitter>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

SessionView::SessionView(SessionViewParts parts, QWidget *parent)
    : QWidget(parent), m_parts(std::move(parts)),
      m_context(new SessionContextView({.context = m_parts.context,
                                        .theme = m_parts.theme,
                                        .askForFiles = m_parts.askForFiles,
                                        .trailing = m_parts.trailing,
                                        .titleRowHeight = m_parts.titleRowHeight})),
      m_chat(new ChatSection(m_parts.ai, m_parts.composer,
                             {.theme = m_parts.theme,
                              .actions = m_parts.suggestions,
                              .activeFileURL = [this] { return m_parts.workspace.activeFileURL(); },
                              .openURL = [this](const QUrl &url) { openLink(url); }},
                             [this] {
                                 return ChatSubject{m_parts.workspace.activeFileURL(), m_parts.area.activeProject()};
                             }))
{
    setMinimumWidth(kLeastWidth);
    m_context->setMinimumHeight(kLeastContextHeight);
    m_context->setMaximumHeight(kMostContextHeight);

    auto *parted = new QSplitter(Qt::Vertical);
    parted->setChildrenCollapsible(false);
    parted->setHandleWidth(1);
    parted->addWidget(m_context);
    parted->addWidget(m_chat);
    parted->setStretchFactor(0, 0);
    parted->setStretchFactor(1, 1);
    parted->setSizes({kContextHeight, 2 * kContextHeight});
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(parted);

    connect(&m_parts.workspace, &Workspace::activeFileURLChanged, this, [this] {
        if (m_hasAppeared)
            followActiveFile();
    });
}

void SessionView::openLink(const QUrl &url)
{
    const ContextLink link = contextLink(url.toString(QUrl::FullyEncoded));
    if (!link.isHandled) {
        MarkdownUI::openWithCare(url, this, m_parts.openOutside);
        return;
    }
    if (link.topic)
        m_parts.events.post(AppEvents::kAddContextConceptTriggered, {{AppEvents::kConcept, *link.topic}});
}

void SessionView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_hasAppeared)
        return;
    m_hasAppeared = true;
    followActiveFile();
}

void SessionView::followActiveFile()
{
    m_parts.ai.switchActiveFile(m_parts.workspace.activeFileURL());
}

} // namespace Tessaline
