#pragma once

#include "MarkdownUI/LinkOpening.h"
#include "panels/SuggestionActions.h"
#include "Services/ChatMessage.h"

#include <QtCore/QList>
#include <QtWidgets/QWidget>

#include <functional>

namespace MarkdownUI {
class MarkdownView;
}

namespace NetworkImage {
class NetworkImageLoader;
}

namespace Tessaline {

class ChatSenderPill;
class QuotedText;
class SuggestionCard;
class Theme;

struct ChatBubbleParts {
    const Theme &theme;
    SuggestionActions &actions;
    std::function<std::optional<FileURL>()> activeFileURL; // at the moment of a press
    MarkdownUI::OpenURL openURL;
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // null: pictures are not loaded
};

/// One message: who said it, the bubble with its text, and the cards of the edits that it proposes. A message of the
/// user is shown as it was typed; all others are Markdown. Keys by which a text would scroll are left to the list
/// around, since the text is as high as it is long.
class ChatBubbleView final : public QWidget
{
    Q_OBJECT
public:
    /// The parts outlive the view.
    ChatBubbleView(ChatBubbleParts parts, const ChatMessage &message, QWidget *parent = nullptr);
    ~ChatBubbleView() override;

    const ChatMessage &message() const { return m_message; }
    /// The same message with another content.
    void setMessage(const ChatMessage &message);

    /// Lays the message out at this width; cheap for what has not changed.
    int heightForWidth(int width) const override;

    /// Draws what the bubble of an answer casts around itself, in the view's own places. The view ends where the bubble
    /// does, so this is for the widget around.
    void drawShadow(QPainter &painter) const;

Q_SIGNALS:
    /// Another height may be needed for the same width.
    void heightChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Geometry;
    Geometry geometryFor(int width) const;
    void place();
    void updateBody();
    void updateCards();
    void updateStates();
    void updateColors();
    void noteFocus(const QObject *text, const QFocusEvent &event);
    QWidget *makeWaitingRow();
    MarkdownUI::MarkdownView *makeAnswer();

    ChatBubbleParts m_parts;
    ChatMessage m_message;
    ChatSenderPill *m_pill;
    QuotedText *m_question = nullptr;
    QWidget *m_waiting = nullptr;                 // while there is no word yet
    MarkdownUI::MarkdownView *m_answer = nullptr; // once there is text to show
    QList<SuggestionCard *> m_cards;
    bool m_showsFocus = false; // of the text, which came to it by a key
};

} // namespace Tessaline
