#pragma once

#include "foundation/FileURL.h"
#include "Services/ConceptCard.h"
#include "Services/ContextItem.h"

#include <QCoro/QCoroTask>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <optional>
#include <stop_token>

namespace Tessaline {

class EventCenter;
class LocalAIService;

/// Where a file that is attached comes from; only the line about a failure depends on it.
enum class AttachmentSource { Panel, Drop };

/// The form above the chat: what is attached to the session, by which way more comes to it, and the question before
/// something similar is attached twice. The items themselves live on the service. Main thread only; the service and the
/// events outlive this object.
class SessionContext final : public QObject
{
    Q_OBJECT
public:
    /// The fields of the sheet in which a card is written.
    struct Card {
        QString title;
        QString subtitle;
        QString content;
        friend bool operator==(const Card &, const Card &) = default;
    };

    SessionContext(LocalAIService &ai, EventCenter &events, QObject *parent = nullptr);
    ~SessionContext() override; // what runs attaches nothing any more

    const QList<ContextItem> &attachedContexts() const;
    QStringList visibleSuggestions() const;

    // The popover
    bool isShowingAddContextPopover() const { return m_isShowingAddContextPopover; }
    void setShowingAddContextPopover(bool isShowing);
    const QString &conceptInput() const { return m_conceptInput; }
    void setConceptInput(const QString &text);
    bool isExpandingConcept() const { return !m_expandedTopic.isEmpty(); }
    const QList<ConceptCard> &ambiguousOptions() const { return m_ambiguousOptions; }

    /// Asks the server for a card about what is typed. The popover closes once something is attached or asked about,
    /// and stays open with the options where there are several readings. Blank text does nothing, nor does the topic
    /// that is being looked up, which would end in a question about a duplicate.
    void submitConcept();
    void chooseConcept(const ConceptCard &card);
    /// Takes a suggested topic into the popover, submits it, and takes its chip away.
    void chooseSuggestion(const QString &suggestion);

    // Files. Each is read and digested on its own, and attached when that is done.
    void attachFiles(const QList<FileURL> &urls, AttachmentSource source);

    // The sheet
    const std::optional<ContextItem> &editingItem() const { return m_editingItem; } // present while it is shown
    bool isNewItem() const { return m_editingItem && m_editingItem->name.isEmpty(); }
    void addCustomContext(); // closes the popover
    void editItem(const ContextItem &item);
    const Card &card() const { return m_card; }
    void setCard(const Card &card);
    bool canSaveCard() const; // it has a title
    void saveCard();          // an existing item loses its digest; the first of its name is the one that changes
    void removeItem();        // every item equal to the one that is edited
    void cancelCard();

    // The question about a likely duplicate
    bool isShowingDuplicateAlert() const { return m_pendingContextItem.has_value(); }
    QString duplicateMessage() const;
    void addAnyway();
    void cancelPending();

    /// Attaches the item, or asks first if one of a similar name is there.
    void attachContextItem(const ContextItem &item);

Q_SIGNALS:
    /// Something that is shown here has changed: of the form, the items or the suggestions.
    void changed();

private:
    void append(const ContextItem &item);
    void save(const QList<ContextItem> &items);
    void resetConceptState();
    QCoro::Task<> expand(QString topic);
    QCoro::Task<> attachFile(FileURL url, AttachmentSource source);

    LocalAIService &m_ai;
    bool m_isShowingAddContextPopover = false;
    QString m_conceptInput;
    QString m_expandedTopic; // that is being looked up; empty for none
    QList<ConceptCard> m_ambiguousOptions;
    std::optional<ContextItem> m_editingItem;
    Card m_card;
    std::optional<ContextItem> m_pendingContextItem; // a later one takes the place of an earlier
    std::stop_source m_life;
};

} // namespace Tessaline
