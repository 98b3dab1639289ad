#include "panels/ChatMessagesList.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Theme.h"
#include "panels/ChatEmptyState.h"
#include "Services/LocalAIService.h"

#include <QtCore/QVariantAnimation>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyle>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kGuessedHeight = 160; // of a message that was never near
constexpr int kLineStep = 24;
constexpr int kAnimationDuration = 200; // milliseconds
constexpr int kMeasuringRounds = 20;    // each brings at least one message to its height

} // namespace

ChatMessagesList::ChatMessagesList(LocalAIService &ai, ChatBubbleParts parts, QWidget *parent)
    : QAbstractScrollArea(parent), m_ai(ai), m_parts(std::move(parts)),
      m_emptyState(new ChatEmptyState(m_parts.theme, viewport())), m_animation(new QVariantAnimation(this))
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus); // its messages take the focus
    viewport()->setAutoFillBackground(false);
    setAccessibleRole(*viewport(), QAccessible::List);
    viewport()->setAccessibleName(u"Chat Messages"_s);
    setAccessibleName(u"Chat Messages"_s);
    verticalScrollBar()->setSingleStep(kLineStep);
    m_animation->setDuration(kAnimationDuration);
    m_animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &value) { verticalScrollBar()->setValue(value.toInt()); });
    connect(m_animation, &QVariantAnimation::finished, this,
            [this] { verticalScrollBar()->setValue(verticalScrollBar()->maximum()); });

    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *focus) { reveal(focus); });
    m_wasGenerating = ai.isGenerating();
    connect(&ai, &LocalAIService::chatMessagesChanged, this, &ChatMessagesList::takeMessages);
    connect(&ai, &LocalAIService::isGeneratingChanged, this, [this] {
        if (m_wasGenerating && !m_ai.isGenerating())
            scrollToEnd();
        m_wasGenerating = m_ai.isGenerating();
    });
    takeMessages();
}

QList<ChatBubbleView *> ChatMessagesList::bubbles() const
{
    QList<ChatBubbleView *> bubbles;
    for (const Row &row : m_rows)
        if (row.bubble)
            bubbles.append(row.bubble);
    return bubbles;
}

void ChatMessagesList::takeMessages()
{
    const QList<ChatMessage> &messages = m_ai.chatMessages();
    const size_t count = static_cast<size_t>(messages.size());
    const bool isOtherCount = count != m_rows.size();
    for (size_t i = count; i < m_rows.size(); ++i)
        delete m_rows[i].bubble;
    m_rows.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const ChatMessage &message = messages[static_cast<qsizetype>(i)];
        Row &row = m_rows[i];
        if (row.id != message.id) {
            delete row.bubble;
            row = {.id = message.id, .height = kGuessedHeight, .isExact = false, .bubble = nullptr};
        } else if (row.bubble && row.bubble->message() != message) {
            row.bubble->setMessage(message);
        }
    }
    m_emptyState->setVisible(messages.isEmpty());
    layOut();
    if (isOtherCount)
        viewport()->update(); // the shadows of views that have gone
    if (isOtherCount && count > 0)
        scrollToEnd();
}

ChatBubbleView *ChatMessagesList::makeBubble(size_t index)
{
    auto *bubble = new ChatBubbleView(m_parts, m_ai.chatMessages().at(static_cast<qsizetype>(index)), viewport());
    // Assistive technology reads the views in the order of the toolkit, which is that in which they were made.
    const auto next = std::find_if(m_rows.begin() + static_cast<std::ptrdiff_t>(index) + 1, m_rows.end(),
                                   [](const Row &row) { return row.bubble != nullptr; });
    if (next != m_rows.end())
        bubble->stackUnder(next->bubble);
    connect(bubble, &ChatBubbleView::heightChanged, this, [this, bubble] { invalidate(bubble); });
    bubble->installEventFilter(this);
    return bubble;
}

void ChatMessagesList::invalidate(const ChatBubbleView *bubble)
{
    for (Row &row : m_rows)
        if (row.bubble == bubble)
            row.isExact = false;
    // Outside of an answer something else than new words has become higher, and the end stays in view.
    const bool wasAtEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    layOut();
    if (wasAtEnd && !m_isLayingOut && !m_ai.isGenerating())
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

int ChatMessagesList::contentWidth() const
{
    // The bar stands in the padding: the messages are as wide with it as without, and as the field below.
    return std::min(width() - 2 * kPadding, viewport()->width() - kPadding);
}

int ChatMessagesList::rowTop(size_t index) const
{
    int top = kPadding;
    for (size_t i = 0; i < index; ++i)
        top += m_rows[i].height + kSpacing;
    return top;
}

int ChatMessagesList::contentHeight() const
{
    return rowTop(m_rows.size()) - (m_rows.empty() ? 0 : kSpacing) + kPadding;
}

/// Brings the messages within a screen of the viewport to their heights. `top` moves along with what grows above it.
/// False if nothing has changed.
bool ChatMessagesList::measureNear(int &top)
{
    const int screen = viewport()->height();
    const int width = contentWidth();
    bool hasChanged = false;
    int y = kPadding;
    for (size_t i = 0; i < m_rows.size(); ++i) {
        Row &row = m_rows[i];
        const int bottom = y + row.height;
        if (bottom >= top - screen && y <= top + 2 * screen && (!row.bubble || !row.isExact)) {
            if (!row.bubble)
                row.bubble = makeBubble(i);
            const int height = row.bubble->heightForWidth(width);
            if (height != row.height && bottom <= top)
                top += height - row.height;
            hasChanged = hasChanged || height != row.height;
            row.height = height;
            row.isExact = true;
        }
        y += row.height + kSpacing;
    }
    return hasChanged;
}

/// Takes the views away that are more than two screens off, but for the one with the focus.
void ChatMessagesList::dropFar(int top)
{
    const int screen = viewport()->height();
    int y = kPadding;
    for (Row &row : m_rows) {
        const bool isFar = y + row.height < top - 2 * screen || y > top + 3 * screen;
        const QWidget *focus = row.bubble ? row.bubble->focusWidget() : nullptr;
        if (isFar && row.bubble && !(focus && focus->hasFocus())) {
            row.bubble->deleteLater(); // this may be in answer to its own change
            row.bubble->hide();
            row.bubble = nullptr;
        }
        y += row.height + kSpacing;
    }
}

void ChatMessagesList::place(int top)
{
    const int width = contentWidth();
    int y = kPadding - top;
    for (const Row &row : m_rows) {
        if (row.bubble) {
            const QRect box(kPadding, y, width, row.height);
            if (row.bubble->geometry() != box) {
                row.bubble->setGeometry(box);
                viewport()->update(); // shadows fall outside of the views
            }
            row.bubble->show();
        }
        y += row.height + kSpacing;
    }
}

void ChatMessagesList::layOut()
{
    if (m_isLayingOut || viewport()->width() <= 2 * kPadding)
        return;
    m_isLayingOut = true;
    QScrollBar *bar = verticalScrollBar();
    // What is measured moves the end, and the end what is near.
    int top = bar->value();
    int lowest = 0;
    bool hasChanged = true;
    for (int round = 0; round < kMeasuringRounds && hasChanged; ++round) {
        lowest = std::max(0, contentHeight() - viewport()->height());
        top = std::clamp(top, 0, lowest);
        hasChanged = measureNear(top);
    }
    lowest = std::max(0, contentHeight() - viewport()->height());
    top = std::clamp(top, 0, lowest);
    bar->setPageStep(viewport()->height());
    bar->setRange(0, lowest);
    bar->setValue(top);
    dropFar(top);
    place(top);
    m_isLayingOut = false;
}

void ChatMessagesList::scrollToEnd()
{
    if (m_rows.empty())
        return;
    QScrollBar *bar = verticalScrollBar();
    m_animation->stop();
    const int from = bar->value();
    const bool moves = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0 && isVisible();
    // At the end everything there gets its height, which moves the end.
    for (int round = 0; round < kMeasuringRounds && bar->value() != bar->maximum(); ++round)
        bar->setValue(bar->maximum());
    const int to = bar->value();
    if (moves && to - from > 0 && to - from <= 2 * viewport()->height()) {
        bar->setValue(from);
        m_animation->setStartValue(from);
        m_animation->setEndValue(to);
        m_animation->start();
    }
}

/// Brings what has taken the focus into view. A text is left where it is if some of it can be seen.
void ChatMessagesList::reveal(const QWidget *focus)
{
    if (!focus || !viewport()->isAncestorOf(focus))
        return;
    const QRect box(focus->mapTo(viewport(), QPoint(0, 0)), focus->size());
    const bool isButton = qobject_cast<const QAbstractButton *>(focus) != nullptr;
    if (isButton ? viewport()->rect().contains(box) : viewport()->rect().intersects(box))
        return;
    const int step = box.top() < 0 ? box.top() - kPadding : box.bottom() + kPadding - viewport()->height();
    m_animation->stop();
    verticalScrollBar()->setValue(verticalScrollBar()->value() + step);
}

void ChatMessagesList::resizeEvent(QResizeEvent *)
{
    if (m_measuredWidth != contentWidth()) {
        m_measuredWidth = contentWidth();
        for (Row &row : m_rows)
            row.isExact = false;
    }
    m_emptyState->setGeometry(viewport()->rect());
    const bool wasAtEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    layOut();
    if (wasAtEnd) // a row below has come or gone
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

bool ChatMessagesList::scrollByKey(const QKeyEvent &key)
{
    using Action = QAbstractSlider::SliderAction;
    Action action = Action::SliderNoAction;
    switch (key.key()) {
    case Qt::Key_PageUp:
        action = Action::SliderPageStepSub;
        break;
    case Qt::Key_PageDown:
        action = Action::SliderPageStepAdd;
        break;
    case Qt::Key_Home:
        action = Action::SliderToMinimum;
        break;
    case Qt::Key_End:
        action = Action::SliderToMaximum;
        break;
    default:
        return false;
    }
    m_animation->stop();
    verticalScrollBar()->triggerAction(action);
    return true;
}

void ChatMessagesList::keyPressEvent(QKeyEvent *event)
{
    if (!scrollByKey(*event))
        QAbstractScrollArea::keyPressEvent(event);
}

void ChatMessagesList::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    for (const Row &row : m_rows) {
        if (!row.bubble || !row.bubble->geometry().intersects(viewport()->rect()))
            continue;
        painter.translate(row.bubble->pos());
        row.bubble->drawShadow(painter);
        painter.resetTransform();
    }
}

void ChatMessagesList::scrollContentsBy(int, int)
{
    layOut();
}

bool ChatMessagesList::eventFilter(QObject *watched, QEvent *event)
{
    // A scroll by wheel over a message is one of the list. The bars are watched too, and get it from there.
    if (event->type() == QEvent::Wheel && watched->parent() == viewport()) {
        viewportEvent(event);
        return true;
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

} // namespace Tessaline
