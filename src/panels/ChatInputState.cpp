#include "panels/ChatInputState.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using LeadingIcon = ChatInputState::LeadingIcon;
using SendButton = ChatInputState::SendButton;

SendButton sendButton(const ChatInputConditions &conditions)
{
    if (conditions.isGenerating)
        return SendButton::Stop;
    return conditions.isPreparingContext ? SendButton::Preparing : SendButton::Send;
}

} // namespace

ChatInputState chatInputState(const ChatInputConditions &conditions)
{
    ChatInputState state;
    if (conditions.serverStatus == u"Starting…") {
        state.placeholder = u"Initializing Tessaline..."_s;
        state.leadingIcon = LeadingIcon::Progress;
    } else if (conditions.isServerRunning) {
        state.placeholder = u"Discuss with Tessaline..."_s;
        state.leadingIcon = LeadingIcon::Sparkles;
    } else {
        state.placeholder = u"Tessaline is offline..."_s;
        state.isOffline = true;
    }
    state.isFieldEnabled = conditions.isServerRunning && !conditions.isGenerating && !conditions.isPreparingContext;
    state.canSend = conditions.isServerRunning && !conditions.text.trimmed().isEmpty();
    state.sendButton = sendButton(conditions);
    state.isSendButtonEnabled = !conditions.isPreparingContext && (conditions.isGenerating || state.canSend);
    return state;
}

} // namespace Tessaline
