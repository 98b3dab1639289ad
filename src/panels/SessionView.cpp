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

#include <algorithm>
#include <utility>

namespace Tessaline {

namespace {

/// What Tab reaches inside of `widget`, from top to bottom.
void appendFocusStops(const QWidget &widget, QList<QWidget *> &stops)
{
    QList<QWidget *> children = widget.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    if (!widget.layout()) // with one, they stand in the order in which they were added
        std::stable_sort(children.begin(), children.end(),
                         [](const QWidget *left, const QWidget *right) { return left->y() < right->y(); });
    for (QWidget *child : std::as_const(children)) {
        if (child->isWindow() || child->isHidden())
            continue;
        if (child->focusPolicy() & Qt::TabFocus)
            stops.append(child);
        appendFocusStops(*child, stops);
    }
}

} // namespace

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
                              .openURL = [this](const QUrl &url) { openLink(url); },
                              .imageLoader = m_parts.imageLoader},
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

bool SessionView::focusNextPrevChild(bool next)
{
    // Messages, rows and chips come and go; their places in the toolkit's order are those in which they came.
    QList<QWidget *> stops;
    appendFocusStops(*this, stops);
    for (qsizetype i = 1; i < stops.size(); ++i)
        setTabOrder(stops[i - 1], stops[i]);
    return QWidget::focusNextPrevChild(next);
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
