#include "panels/SessionContext.h"

#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/ConsoleLine.h"
#include "foundation/EventCenter.h"
#include "foundation/FileAccess.h"
#include "panels/LikelyDuplicate.h"
#include "Services/ConceptExpansion.h"
#include "Services/LocalAIService.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

std::optional<QString> unlessEmpty(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace

SessionContext::SessionContext(LocalAIService &ai, EventCenter &events, QObject *parent) : QObject(parent), m_ai(ai)
{
    connect(&ai, &LocalAIService::attachedContextsChanged, this, &SessionContext::changed);
    connect(&ai, &LocalAIService::suggestedContextsChanged, this, &SessionContext::changed);
    events.observe(AppEvents::kAddContextConceptTriggered, this, [this](const QVariantMap &info) {
        const QVariant topic = info.value(AppEvents::kConcept);
        if (topic.typeId() != QMetaType::QString)
            return;
        setConceptInput(topic.toString());
        setShowingAddContextPopover(true);
        submitConcept();
    });
}

SessionContext::~SessionContext()
{
    m_life.request_stop();
}

const QList<ContextItem> &SessionContext::attachedContexts() const
{
    return m_ai.attachedContexts();
}

QStringList SessionContext::visibleSuggestions() const
{
    return Tessaline::visibleSuggestions(m_ai.suggestedContexts(), m_ai.attachedContexts());
}

// --- the popover ---

void SessionContext::setShowingAddContextPopover(bool isShowing)
{
    if (isShowing == m_isShowingAddContextPopover)
        return;
    m_isShowingAddContextPopover = isShowing;
    Q_EMIT changed();
}

void SessionContext::setConceptInput(const QString &text)
{
    if (text == m_conceptInput)
        return;
    m_conceptInput = text;
    Q_EMIT changed();
}

void SessionContext::submitConcept()
{
    const QString topic = m_conceptInput.trimmed();
    if (topic.isEmpty() || topic == m_expandedTopic)
        return;
    m_expandedTopic = topic;
    m_ambiguousOptions.clear();
    Q_EMIT changed();
    expand(topic);
}

QCoro::Task<> SessionContext::expand(QString topic)
{
    const std::stop_token stop = m_life.get_token();
    const std::optional<ConceptExpansionResponse> response = co_await m_ai.expandConcept(topic);
    if (stop.stop_requested())
        co_return;
    m_expandedTopic.clear();
    const ConceptOutcome outcome = conceptOutcome(response, topic);
    if (const auto *item = std::get_if<ContextItem>(&outcome)) {
        attachContextItem(*item);
        resetConceptState();
        co_return;
    }
    m_ambiguousOptions = std::get<QList<ConceptCard>>(outcome);
    Q_EMIT changed();
}

void SessionContext::chooseConcept(const ConceptCard &card)
{
    attachContextItem(contextItem(card));
    resetConceptState();
}

void SessionContext::chooseSuggestion(const QString &suggestion)
{
    setConceptInput(suggestion);
    setShowingAddContextPopover(true);
    submitConcept();
    QStringList rest = m_ai.suggestedContexts();
    const QString key = suggestion.toLower();
    rest.removeIf([&key](const QString &other) { return other.toLower() == key; });
    m_ai.setSuggestedContexts(rest);
}

void SessionContext::resetConceptState()
{
    m_conceptInput.clear();
    m_ambiguousOptions.clear();
    m_expandedTopic.clear();
    m_isShowingAddContextPopover = false;
    Q_EMIT changed();
}

// --- files ---

void SessionContext::attachFiles(const QList<FileURL> &urls, AttachmentSource source)
{
    if (source == AttachmentSource::Panel)
        setShowingAddContextPopover(false);
    for (const FileURL &url : urls)
        attachFile(url, source);
}

QCoro::Task<> SessionContext::attachFile(FileURL url, AttachmentSource source)
{
    const std::stop_token stop = m_life.get_token();
    const Result<ChunkedText> text = co_await QtConcurrent::run(&backgroundPool(), readText, url);
    if (stop.stop_requested())
        co_return;
    if (!text) {
        const QString failed = source == AttachmentSource::Panel ? u"Failed to read context file "_s
                                                                 : u"Failed to read dropped context file "_s;
        printConsoleLine(failed + url.path() + u": "_s + text.failure().text);
        co_return;
    }
    ContextItem item{.name = url.lastPathComponent(), .subtitle = {}, .content = text.value().toString(), .digest = {}};
    item.digest = co_await m_ai.fetchDigest(item.name, item.content);
    if (!stop.stop_requested())
        attachContextItem(item);
}

// --- the sheet ---

void SessionContext::addCustomContext()
{
    setShowingAddContextPopover(false);
    editItem({});
}

void SessionContext::editItem(const ContextItem &item)
{
    m_editingItem = item;
    m_card = {.title = item.name, .subtitle = item.subtitle.value_or(QString()), .content = item.content};
    Q_EMIT changed();
}

void SessionContext::setCard(const Card &card)
{
    if (card == m_card)
        return;
    m_card = card;
    Q_EMIT changed();
}

bool SessionContext::canSaveCard() const
{
    return !m_card.title.trimmed().isEmpty();
}

void SessionContext::saveCard()
{
    if (!m_editingItem || !canSaveCard())
        return;
    const ContextItem saved{.name = m_card.title.trimmed(),
                            .subtitle = unlessEmpty(m_card.subtitle.trimmed()),
                            .content = m_card.content.trimmed(),
                            .digest = {}};
    if (isNewItem()) {
        attachContextItem(saved);
    } else {
        QList<ContextItem> items = m_ai.attachedContexts();
        const auto existing = std::find_if(
            items.begin(), items.end(), [this](const ContextItem &item) { return item.name == m_editingItem->name; });
        if (existing != items.end()) {
            *existing = saved;
            save(items);
        }
    }
    cancelCard();
}

void SessionContext::removeItem()
{
    if (!m_editingItem)
        return;
    QList<ContextItem> items = m_ai.attachedContexts();
    items.removeAll(*m_editingItem);
    save(items);
    cancelCard();
}

void SessionContext::cancelCard()
{
    if (!m_editingItem)
        return;
    m_editingItem.reset();
    Q_EMIT changed();
}

// --- attaching ---

void SessionContext::attachContextItem(const ContextItem &item)
{
    if (!findLikelyDuplicate(item.name, m_ai.attachedContexts())) {
        append(item);
        return;
    }
    m_pendingContextItem = item;
    Q_EMIT changed();
}

QString SessionContext::duplicateMessage() const
{
    const QList<ContextItem> &items = m_ai.attachedContexts();
    const std::optional<qsizetype> found =
        m_pendingContextItem ? findLikelyDuplicate(m_pendingContextItem->name, items) : std::nullopt;
    if (!found)
        return u"A similar context item is already attached. Do you still want to add it?"_s;
    const ContextItem &similar = items[*found];
    return u"A similar item '"_s + similar.name + u"' ("_s + similar.subtitle.value_or(u"Local File"_s) +
           u") is already attached. Do you still want to add '"_s + m_pendingContextItem->name + u"'?"_s;
}

void SessionContext::addAnyway()
{
    if (!m_pendingContextItem)
        return;
    const ContextItem item = *m_pendingContextItem;
    m_pendingContextItem.reset();
    append(item);
    Q_EMIT changed();
}

void SessionContext::cancelPending()
{
    if (!m_pendingContextItem)
        return;
    m_pendingContextItem.reset();
    Q_EMIT changed();
}

void SessionContext::append(const ContextItem &item)
{
    QList<ContextItem> items = m_ai.attachedContexts();
    items.append(item);
    save(items);
}

void SessionContext::save(const QList<ContextItem> &items)
{
    m_ai.setAttachedContexts(items);
    if (m_ai.activeFileURL())
        m_ai.saveSession(*m_ai.activeFileURL());
}

} // namespace Tessaline
