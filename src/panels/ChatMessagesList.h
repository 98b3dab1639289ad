#pragma once

#include "panels/ChatBubbleView.h"

#include <QtWidgets/QAbstractScrollArea>

#include <vector>

class QVariantAnimation;

namespace Tessaline {

class LocalAIService;

/// The conversation. Only messages near the viewport have a view; the heights of all others are remembered, or guessed
/// until they come near for the first time, so that a conversation of any length opens at once.
///
/// It goes to its end when a message is added or taken away and when an answer has ended, wherever the person has
/// scrolled, and stays where it is while an answer grows.
class ChatMessagesList final : public QAbstractScrollArea
{
    Q_OBJECT
public:
    static constexpr int kSpacing = 12; // between messages
    static constexpr int kPadding = 16;

    /// The service and what is in the parts outlive the list.
    ChatMessagesList(LocalAIService &ai, ChatBubbleParts parts, QWidget *parent = nullptr);

    /// Scrolls by a page or to an end, if the key is one for that.
    bool scrollByKey(const QKeyEvent &key);

    /// The views that exist at the moment, from top to bottom.
    QList<ChatBubbleView *> bubbles() const;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Row {
        QUuid id;
        int height = 0;
        bool isExact = false; // for the present width
        ChatBubbleView *bubble = nullptr;
    };

    void takeMessages();
    void layOut();
    bool measureNear(int &top);
    void dropFar(int top);
    void place(int top);
    int rowTop(size_t index) const;
    int contentWidth() const;
    int contentHeight() const;
    ChatBubbleView *makeBubble(size_t index);
    void invalidate(const ChatBubbleView *bubble);
    void scrollToEnd();
    void reveal(const QWidget *focus);

    LocalAIService &m_ai;
    ChatBubbleParts m_parts;
    std::vector<Row> m_rows;
    QWidget *m_emptyState;
    QVariantAnimation *m_animation;
    int m_measuredWidth = 0;
    bool m_isLayingOut = false;
    bool m_wasGenerating = false;
};

} // namespace Tessaline
