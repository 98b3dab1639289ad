#include "panels/ChatBubbleView.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Contrast.h"
#include "foundation_ui/FocusRing.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/ProgressIndicator.h"
#include "MarkdownUI/MarkdownView.h"
#include "panels/ChatSenderPill.h"
#include "panels/EditSuggestions.h"
#include "panels/QuotedText.h"
#include "panels/SuggestionCard.h"

#include <QtGui/QFocusEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kWriting = u"Writing..."_s;

constexpr int kSpacing = 6;
constexpr int kCardsTop = 4; // more, above the first card
constexpr double kTextSize = 13;
constexpr double kShadowOpacity = 0.02; // of black, beside an answer
constexpr int kShadowReach = 3;

struct BubbleLook {
    int sidePadding;
    int verticalPadding;
    double radius;
    double groundOpacity; // of the secondary colour
    double borderOpacity;
};

constexpr BubbleLook kQuestionLook{14, 10, 14, 0.08, 0.1};
constexpr BubbleLook kWaitingLook{12, 8, 12, 0.05, 0.15};
constexpr BubbleLook kAnswerLook{14, 10, 14, 0.05, 0.15};

MarkdownUI::DynamicColor dynamicColor(ColorRole role)
{
    const auto bytes = [role](Appearance appearance) {
        const QColor value = color(role, appearance);
        return quint32(value.red()) << 24 | quint32(value.green()) << 16 | quint32(value.blue()) << 8 |
               quint32(value.alpha());
    };
    return {bytes(Appearance::Light), bytes(Appearance::Dark)};
}

/// The display's own theme, but for the text, which takes its face, size and colour from the bubble.
MarkdownUI::DisplayEnvironment answerEnvironment(NetworkImage::NetworkImageLoader *imageLoader)
{
    MarkdownUI::DisplayEnvironment environment;
    environment.imageLoader = imageLoader;
    environment.theme.text = MarkdownUI::TextStyle{MarkdownUI::BackgroundColor{std::nullopt}};
    MarkdownUI::FontProperties font;
    font.family = MarkdownUI::FontProperties::Design::Serif;
    font.size = kTextSize;
    environment.attributes.fontProperties = font;
    environment.attributes.foregroundColor = dynamicColor(ColorRole::Text);
    return environment;
}

/// What assistive technology says of a message beside who said it.
QString spoken(const ChatMessage &message)
{
    if (message.isFromUser())
        return message.content;
    return message.content.isEmpty() ? kWriting : displayText(message);
}

} // namespace

/// Where everything stands in a view of a width.
struct ChatBubbleView::Geometry {
    QRect bubble; // null for none
    QRect body;
    QList<QRect> cards;
    BubbleLook look = kAnswerLook;
    int height = 0;
};

ChatBubbleView::ChatBubbleView(ChatBubbleParts parts, const ChatMessage &message, QWidget *parent)
    : QWidget(parent), m_parts(std::move(parts)), m_message(message),
      m_pill(new ChatSenderPill(
          m_parts.theme, message.isFromUser() ? ChatSenderPill::Sender::User : ChatSenderPill::Sender::Assistant, this))
{
    setAccessibleRole(*this, QAccessible::ListItem);
    setAccessibleName(m_pill->label());
    connect(&m_parts.theme, &Theme::changed, this, &ChatBubbleView::updateColors);
    setMessage(message);
}

ChatBubbleView::~ChatBubbleView() = default;

void ChatBubbleView::setMessage(const ChatMessage &message)
{
    m_message = message;
    updateBody();
    updateCards();
    updateColors();
    place();
    setAccessibleDescription(spoken(message));
    Q_EMIT heightChanged();
}

void ChatBubbleView::updateBody()
{
    if (m_message.isFromUser()) {
        if (!m_question) {
            m_question =
                new QuotedText(m_parts.theme, ColorRole::Text, QuotedText::Tint::None, u"Message"_s, QString(), this);
            m_question->setTextFont(Fonts::body(kTextSize));
            m_question->setPadding(0, 0);
            m_question->setFocusLook(QuotedText::FocusLook::OfHolder);
            m_question->setHeight(QuotedText::Height::OfText);
            m_question->installEventFilter(this);
            m_question->show();
        }
        if (m_question->quotedText() != m_message.content)
            m_question->setQuotedText(m_message.content);
        return;
    }
    const QString text = displayText(m_message);
    if (m_message.content.isEmpty() && !m_waiting)
        m_waiting = makeWaitingRow();
    if (!m_message.content.isEmpty() && m_waiting) {
        delete m_waiting;
        m_waiting = nullptr;
    }
    if (!text.isEmpty() && !m_answer)
        m_answer = makeAnswer();
    if (m_answer) {
        m_answer->setVisible(!text.isEmpty());
        m_answer->setMarkdown(text);
    }
}

QWidget *ChatBubbleView::makeWaitingRow()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    auto *progress = new ProgressIndicator(m_parts.theme);
    progress->setAccessibleName(kWriting);
    progress->setFixedSize(ProgressIndicator::kSide * 7 / 10, ProgressIndicator::kSide * 7 / 10);
    layout->addWidget(progress);
    QFont font = Fonts::interface(12);
    font.setItalic(true);
    layout->addWidget(new Label(m_parts.theme, ColorRole::SecondaryText, font, kWriting));
    row->show();
    return row;
}

MarkdownUI::MarkdownView *ChatBubbleView::makeAnswer()
{
    auto *answer = new MarkdownUI::MarkdownView(m_parts.theme, this);
    answer->setAccessibleName(u"Answer"_s);
    answer->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // it is as high as its text
    answer->setInset(0);
    answer->setEnvironment(answerEnvironment(m_parts.imageLoader));
    answer->setOpenURL(m_parts.openURL);
    answer->installEventFilter(this);
    connect(&answer->display(), &MarkdownUI::MarkdownDisplay::changed, this, &ChatBubbleView::heightChanged);
    answer->show();
    return answer;
}

void ChatBubbleView::updateCards()
{
    if (m_message.isFromUser())
        return;
    const QList<EditSuggestion> suggestions = editSuggestions(m_message);
    const auto remove = [](SuggestionCard *card) {
        card->hide();
        card->deleteLater(); // this may be in answer to one of its buttons
    };
    while (m_cards.size() > suggestions.size())
        remove(m_cards.takeLast());
    for (qsizetype i = 0; i < suggestions.size(); ++i) {
        if (i < m_cards.size() && m_cards[i]->suggestion() == suggestions[i])
            continue;
        auto *card = new SuggestionCard(suggestions[i], m_parts.theme, this);
        connect(card, &SuggestionCard::accepted, this, [this, suggestion = suggestions[i]] {
            m_parts.actions.applySuggestion(suggestion, m_parts.activeFileURL());
        });
        connect(card, &SuggestionCard::rejected, this,
                [this, suggestion = suggestions[i]] { m_parts.actions.rejectSuggestion(suggestion); });
        card->show();
        if (i < m_cards.size()) {
            remove(m_cards[i]);
            m_cards[i] = card;
        } else {
            m_cards.append(card);
        }
    }
    connect(&m_parts.actions, &SuggestionActions::statesChanged, this, &ChatBubbleView::updateStates,
            Qt::UniqueConnection);
    updateStates();
}

void ChatBubbleView::updateStates()
{
    for (SuggestionCard *card : std::as_const(m_cards))
        card->setState(m_parts.actions.state(card->suggestion()));
    place();
    Q_EMIT heightChanged();
}

void ChatBubbleView::updateColors()
{
    if (m_answer)
        m_answer->setGroundColor(
            composed(withOpacity(m_parts.theme.color(ColorRole::SecondaryText), kAnswerLook.groundOpacity),
                     m_parts.theme.color(ColorRole::RightColumn)));
    update();
}

ChatBubbleView::Geometry ChatBubbleView::geometryFor(int width) const
{
    Geometry geometry;
    int y = ChatSenderPill::kHeight;
    const auto place = [&](const BubbleLook &look, int bodyWidth, int bodyHeight) {
        geometry.look = look;
        y += kSpacing;
        geometry.bubble = QRect(0, y, bodyWidth + 2 * look.sidePadding, bodyHeight + 2 * look.verticalPadding);
        geometry.body = QRect(look.sidePadding, y + look.verticalPadding, bodyWidth, bodyHeight);
        y += geometry.bubble.height();
    };
    if (m_question) {
        const int room = width - 2 * kQuestionLook.sidePadding;
        place(kQuestionLook, room, m_question->heightForWidth(room));
    } else if (m_waiting) {
        place(kWaitingLook, m_waiting->sizeHint().width(), m_waiting->sizeHint().height());
    } else if (m_answer && !m_answer->isHidden()) {
        const int room = width - 2 * kAnswerLook.sidePadding;
        m_answer->display().setWidth(room);
        m_answer->display().layOutAll();
        place(kAnswerLook, room, m_answer->display().height());
    }
    for (qsizetype i = 0; i < m_cards.size(); ++i) {
        y += kSpacing + (i == 0 ? kCardsTop : 0);
        const int height = m_cards[i]->heightForWidth(width);
        geometry.cards.append(QRect(0, y, width, height));
        y += height;
    }
    geometry.height = y;
    return geometry;
}

int ChatBubbleView::heightForWidth(int width) const
{
    return geometryFor(width).height;
}

void ChatBubbleView::resizeEvent(QResizeEvent *)
{
    place();
}

/// Brings the parts to their places. Other parts may take as much room as those before.
void ChatBubbleView::place()
{
    const Geometry geometry = geometryFor(width());
    m_pill->move(0, 0);
    for (QWidget *body : {static_cast<QWidget *>(m_question), m_waiting, static_cast<QWidget *>(m_answer)})
        if (body && !body->isHidden())
            body->setGeometry(geometry.body);
    for (qsizetype i = 0; i < m_cards.size(); ++i)
        m_cards[i]->setGeometry(geometry.cards[i]);
}

bool ChatBubbleView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        noteFocus(watched, *static_cast<QFocusEvent *>(event));
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<const QKeyEvent *>(event);
    bool scrolls = key->key() == Qt::Key_PageUp || key->key() == Qt::Key_PageDown;
    if (watched == m_answer) // in a question they move the caret
        scrolls = scrolls || key->key() == Qt::Key_Up || key->key() == Qt::Key_Down || key->key() == Qt::Key_Home ||
                  key->key() == Qt::Key_End;
    if (!scrolls || (key->modifiers() & ~Qt::KeypadModifier))
        return QWidget::eventFilter(watched, event);
    event->ignore(); // so that it goes on to the list
    return true;
}

void ChatBubbleView::noteFocus(const QObject *text, const QFocusEvent &event)
{
    // A menu or another window takes the focus for a moment only.
    if (event.lostFocus() && (event.reason() == Qt::PopupFocusReason || event.reason() == Qt::ActiveWindowFocusReason))
        return;
    // In an answer with links the first of them shows it.
    const bool isTextAlone = text != m_answer || !m_answer->display().nextTarget({}).isValid();
    m_showsFocus = event.gotFocus() && isTextAlone && (m_showsFocus || FocusRing::isKeyboardFocus(event));
    update();
}

void ChatBubbleView::drawShadow(QPainter &painter) const
{
    if (!m_answer || m_answer->isHidden())
        return;
    const auto outline = [box = QRectF(geometryFor(width()).bubble)](int grownBy) {
        const QRectF grown = box.adjusted(-grownBy, -grownBy, grownBy, grownBy);
        QPainterPath path;
        path.addRoundedRect(grown, kAnswerLook.radius + grownBy, kAnswerLook.radius + grownBy);
        return path;
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(m_parts.theme.color(ColorRole::SegmentShadow), kShadowOpacity / kShadowReach));
    for (int reach = 1; reach <= kShadowReach; ++reach)
        painter.drawPath(outline(reach).translated(0, 1).subtracted(outline(0)));
    painter.restore();
}

void ChatBubbleView::paintEvent(QPaintEvent *)
{
    const Geometry geometry = geometryFor(width());
    if (geometry.bubble.isNull())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = m_parts.theme.color(ColorRole::SecondaryText);
    painter.setPen(withOpacity(color, geometry.look.borderOpacity));
    painter.setBrush(withOpacity(color, geometry.look.groundOpacity));
    painter.drawRoundedRect(QRectF(geometry.bubble).adjusted(0.5, 0.5, -0.5, -0.5), geometry.look.radius,
                            geometry.look.radius);
    if (m_showsFocus)
        FocusRing::drawInside(painter, QRectF(geometry.bubble), geometry.look.radius, m_parts.theme);
}

} // namespace Tessaline
