#pragma once

#include "Services/ContextItem.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// An earlier turn, as it goes to the server.
struct ChatMessageHistoryItem {
    QString role;
    QString content;
    friend bool operator==(const ChatMessageHistoryItem &, const ChatMessageHistoryItem &) = default;
};

/// A question for the model and everything that goes with it. Empty lists are not sent at all; an empty document is.
struct ChatRequestPayload {
    static constexpr double kChatTemperature = 0.7;
    static constexpr double kOneShotTemperature = 0.3;
    static constexpr double kTopP = 0.9;

    QString prompt;
    std::optional<QString> fileContent; // the active document
    QList<ContextItem> contextItems;    // attached by the user
    QList<ContextItem> workspaceContextItems;
    QList<ChatMessageHistoryItem> history; // oldest first, without the prompt
    double temperature = kChatTemperature; // finite
    double topP = kTopP;                   // finite
    friend bool operator==(const ChatRequestPayload &, const ChatRequestPayload &) = default;
};

} // namespace Tessaline
