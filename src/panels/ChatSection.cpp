#include "panels/ChatSection.h"

#include "foundation_ui/Hairline.h"
#include "panels/ChatMessagesList.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

ChatSection::ChatSection(LocalAIService &ai, ChatComposer &composer, ChatBubbleParts parts,
                         std::function<ChatSubject()> subject, QWidget *parent)
    : QWidget(parent), m_messages(new ChatMessagesList(ai, parts)),
      m_input(new ChatInput(ai, composer, parts.theme, std::move(subject)))
{
    setMinimumHeight(kLeastHeight);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_messages, 1);
    column->addWidget(new Hairline(parts.theme, Qt::Horizontal));
    column->addWidget(m_input);
}

void ChatSection::keyPressEvent(QKeyEvent *event)
{
    const bool isPage = event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
    if (!isPage || !m_messages->scrollByKey(*event))
        QWidget::keyPressEvent(event);
}

} // namespace Tessaline
