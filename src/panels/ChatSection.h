#pragma once

#include "panels/ChatBubbleView.h"
#include "panels/ChatInput.h"

namespace Tessaline {

class ChatMessagesList;

/// The conversation over its input.
class ChatSection final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kLeastHeight = 250;

    /// The parts outlive the section.
    ChatSection(LocalAIService &ai, ChatComposer &composer, ChatBubbleParts parts, std::function<ChatSubject()> subject,
                QWidget *parent = nullptr);

    ChatMessagesList &messages() { return *m_messages; }
    ChatInput &input() { return *m_input; }

protected:
    void keyPressEvent(QKeyEvent *event) override; // by pages through the conversation, while typing below it

private:
    ChatMessagesList *m_messages;
    ChatInput *m_input;
};

} // namespace Tessaline
