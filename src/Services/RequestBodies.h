#pragma once

#include "Services/ChatRequestPayload.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringView>

namespace Tessaline {

/// The bodies of the requests to the server: JSON in one line, in UTF-8. The keys stand in the order of the records,
/// what is absent has no key and `null` is never written. Slashes are escaped, numbers have the fewest digits that read
/// back as the same value. Half a surrogate pair, which UTF-8 cannot carry, becomes U+FFFD. None of them can fail; all
/// are safe from any thread.

/// For /v1/chat/completions. Some 20 ms for a document of 10 MB.
QByteArray encodeChatRequest(const ChatRequestPayload &payload);

/// For /v1/suggest-context: {"content":…}.
QByteArray encodeSuggestionsRequest(QStringView content);

/// For /v1/expand-concept: {"concept":…}.
QByteArray encodeConceptRequest(QStringView topic);

/// For /v1/digest-file: {"filename":…,"content":…}.
QByteArray encodeDigestRequest(QStringView filename, QStringView content);

} // namespace Tessaline
