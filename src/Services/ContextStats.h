#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Tessaline {

/// What the server says it used of a request. All counts are the server's own.
struct ContextStats {
    qint64 contextWindowTokens = 0;   // the model's window
    qint64 estimatedInputTokens = 0;  // the prompt as it was put together
    qint64 activeDocumentChars = 0;   // 0 if no document came with the request
    qint64 attachedContextCount = 0;  // of the attached items
    qint64 workspaceContextCount = 0; // of the excerpts of the project
    qint64 historyMessageCount = 0;   // of the earlier turns
    friend bool operator==(const ContextStats &, const ContextStats &) = default;
};

/// The line shown with the chat: "Using document + 4 sources · ~2.3K tokens". Tokens are written in full below 1000,
/// with one decimal and "K" from there; it is "no document" without one, and always "sources".
QString statusLine(const ContextStats &stats);

} // namespace Tessaline
