#pragma once

#include "Services/ConceptCard.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QStringList>

#include <optional>

namespace Tessaline {

/// The whole bodies with which the server answers, from UTF-8 JSON. Absent if the bytes are no JSON, if a required key
/// is missing or if a value has another type. Unknown keys are passed over; an optional one may be `null`. Safe from
/// any thread.

/// {"suggestions":[…]}, in the server's order.
std::optional<QStringList> decodeSuggestionsResponse(QByteArrayView body);

/// {"status":…,"card":…,"options":…}.
std::optional<ConceptExpansionResponse> decodeConceptResponse(QByteArrayView body);

/// {"digest":…}.
std::optional<QString> decodeDigestResponse(QByteArrayView body);

} // namespace Tessaline
