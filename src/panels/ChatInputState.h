#pragma once

#include <QtCore/QString>

namespace Tessaline {

/// What the row under the conversation depends on.
struct ChatInputConditions {
    QString serverStatus;
    bool isServerRunning = false;
    bool isGenerating = false;
    bool isPreparingContext = false; // a question of this panel is under way, until its answer has ended
    QString text;                    // in the field
};

/// What the row shows.
struct ChatInputState {
    enum class LeadingIcon { Progress, Sparkles, Warning };
    enum class SendButton { Send, Preparing, Stop };

    QString placeholder;
    LeadingIcon leadingIcon = LeadingIcon::Warning;
    bool isOffline = false; // offers to start the server again
    bool isFieldEnabled = false;
    bool canSend = false; // there is something to send, and someone to send it to
    SendButton sendButton = SendButton::Send;
    bool isSendButtonEnabled = false;
    friend bool operator==(const ChatInputState &, const ChatInputState &) = default;
};

/// The words for the server's state go first by its status, then by whether it runs: while a running server is started
/// again, the field already speaks of the start. The stop button is dim while the panel's own question is answered: it
/// stops answers that were asked for from elsewhere.
ChatInputState chatInputState(const ChatInputConditions &conditions);

} // namespace Tessaline
