#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// A reference card that the server made of a word. In lists its title is its identity.
struct ConceptCard {
    QString title;
    QString subtitle;
    QString content;
    friend bool operator==(const ConceptCard &, const ConceptCard &) = default;
};

/// What the server makes of a word. `status` is free text: "success" comes with a card, "ambiguous" with options;
/// anything else, or one of these without its field, is no usable answer.
struct ConceptExpansionResponse {
    QString status;
    std::optional<ConceptCard> card;
    std::optional<QList<ConceptCard>> options; // may be present and empty
    friend bool operator==(const ConceptExpansionResponse &, const ConceptExpansionResponse &) = default;
};

} // namespace Tessaline
