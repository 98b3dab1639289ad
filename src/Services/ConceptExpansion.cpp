#include "Services/ConceptExpansion.h"

#include "foundation/ConsoleLine.h"
#include "Services/WireClient.h"

namespace Tessaline {

using namespace Qt::StringLiterals;

QCoro::Task<std::optional<ConceptExpansionResponse>> expandConcept(WireClient &wire, QString topic,
                                                                   std::stop_token stop)
{
    const auto response = co_await wire.expandConcept(std::move(topic), stop);
    if (response)
        co_return response.value();
    const WireFailure::Kind kind = response.failure().kind;
    if (kind == WireFailure::Kind::Transport || kind == WireFailure::Kind::Malformed)
        printConsoleLine(u"Concept expansion failed: "_s + response.failure().description);
    co_return std::nullopt;
}

ConceptOutcome conceptOutcome(const std::optional<ConceptExpansionResponse> &response, const QString &topic)
{
    if (response && response->status == u"success" && response->card)
        return contextItem(*response->card);
    if (response && response->status == u"ambiguous" && response->options)
        return *response->options;
    return ContextItem{topic, u"Concept"_s, u"Reference card for "_s + topic, std::nullopt};
}

ContextItem contextItem(const ConceptCard &card)
{
    return {card.title, card.subtitle, card.content, std::nullopt};
}

} // namespace Tessaline
