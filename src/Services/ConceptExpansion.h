#pragma once

#include "Services/ConceptCard.h"
#include "Services/ContextItem.h"

#include <QCoro/QCoroTask>

#include <optional>
#include <stop_token>
#include <variant>

namespace Tessaline {

class WireClient;

/// Asks the server for a card about a topic, or for several where the word is ambiguous. Absent on any failure; one
/// that is no refusal of the server's leaves a line on the console. `wire` outlives the call; see there for the thread.
QCoro::Task<std::optional<ConceptExpansionResponse>> expandConcept(WireClient &wire, QString topic,
                                                                   std::stop_token stop);

/// What becomes of an expansion: an item to attach, or cards to choose from, possibly none.
using ConceptOutcome = std::variant<ContextItem, QList<ConceptCard>>;

/// The card of "success", the options of "ambiguous". Anything else, the absence of an answer included, gives a
/// placeholder: an item named `topic`, of the kind "Concept". So a topic can be attached in any case.
ConceptOutcome conceptOutcome(const std::optional<ConceptExpansionResponse> &response, const QString &topic);

/// The item that a card becomes, chosen or given. It has no digest.
ContextItem contextItem(const ConceptCard &card);

} // namespace Tessaline
