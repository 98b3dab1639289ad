#include "panels/ChatInput.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/SymbolView.h"
#include "foundation_ui/TextButton.h"
#include "panels/ChatComposer.h"
#include "panels/OptionButton.h"
#include "panels/SendButton.h"
#include "panels/ShownPart.h"
#include "panels/SmallButton.h"
#include "Services/LocalAIService.h"

#include <QtGui/QAccessible>
#include <QtGui/QPainter>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using LeadingIcon = ChatInputState::LeadingIcon;

constexpr int kSidePadding = 16;
constexpr int kTop = 4;
constexpr int kBottom = 16;
constexpr int kRowSpacing = 6;
constexpr int kRetryTop = 8;
constexpr int kRetryBottom = 8;
constexpr double kTextSize = 14;
constexpr int kLongestQuestion = 1'000'000; // UTF-16 units: more than a model takes. The field lays out one line.
constexpr double kRadius = 18;
constexpr double kIconSize = 12;
constexpr double kWarningSize = 11;
constexpr double kWarningOpacity = 0.8;
constexpr double kSmallText = 10;
constexpr int kStatusPadding = 6;

/// The rounded ground of the field and its button.
class FieldGround final : public QWidget
{
public:
    explicit FieldGround(const Theme &theme) : m_theme(theme)
    {
        connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(m_theme.color(ColorRole::BubbleBorder));
        painter.setBrush(m_theme.color(ColorRole::Field));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    }

private:
    const Theme &m_theme;
};

/// The whole of a line that may be cut: an error of the server can be of any length and have signs of markup in it. As
/// markup the toolkit breaks it into lines.
QString statusToolTip(const QString &status)
{
    constexpr qsizetype kMost = 1000;
    return status.isEmpty() ? status : u"<qt>%1</qt>"_s.arg(shownPart(status, kMost).toHtmlEscaped());
}

} // namespace

ChatInput::ChatInput(LocalAIService &ai, ChatComposer &composer, const Theme &theme,
                     std::function<ChatSubject()> subject, QWidget *parent)
    : QWidget(parent), m_ai(ai), m_composer(composer), m_theme(theme), m_subject(std::move(subject)),
      m_field(new QLineEdit), m_icon(new SymbolView(theme, ColorRole::Accent, kIconSize)),
      m_progress(new ProgressIndicator(theme)), m_send(new SendButton(theme)),
      m_status(new Label(theme, ColorRole::SecondaryText, Fonts::interface(kSmallText))), m_retryRow(makeRetryRow()),
      m_clear(makeClearRow())
{
    setAccessibleRole(*m_status, QAccessible::StatusBar);
    m_field->setAccessibleName(u"Chat Input"_s);
    m_field->setFont(Fonts::interface(kTextSize));
    m_field->setMaxLength(kLongestQuestion); // at first it would cut in silence what is pasted
    m_field->setFrame(false);
    m_field->setAttribute(Qt::WA_MacShowFocusRect, false);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kSidePadding, kTop, kSidePadding, kBottom);
    column->setSpacing(0);
    column->addWidget(makeRow());
    m_status->setContentsMargins(kStatusPadding, kStatusPadding, kStatusPadding, kStatusPadding);
    column->addWidget(m_status);
    column->addWidget(m_retryRow);
    column->addWidget(m_clear, 0, Qt::AlignLeft);

    connect(m_field, &QLineEdit::textEdited, &composer, &ChatComposer::setChatInput);
    connect(m_field, &QLineEdit::returnPressed, this, &ChatInput::send);
    connect(m_send, &QAbstractButton::clicked, this, [this] {
        if (m_ai.isGenerating())
            m_composer.stop();
        else
            send();
    });
    connect(&composer, &ChatComposer::stateChanged, this, &ChatInput::update);
    connect(&ai, &LocalAIService::contextStatusChanged, this, &ChatInput::updateStatus);
    connect(&ai, &LocalAIService::chatMessagesChanged, this,
            [this] { m_clear->setVisible(!m_ai.chatMessages().isEmpty()); });
    update();
    updateStatus();
    m_clear->setVisible(!ai.chatMessages().isEmpty());
}

QWidget *ChatInput::field() const
{
    return m_field;
}

QWidget *ChatInput::makeRow()
{
    auto *row = new FieldGround(m_theme);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(12, 7, 12, 7); // of a field that is higher than its text: 10 around the button
    layout->setSpacing(kRowSpacing);
    m_progress->setFixedSize(ProgressIndicator::kSide * 6 / 10, ProgressIndicator::kSide * 6 / 10);
    m_icon->setFixedSize(ProgressIndicator::kSide, ProgressIndicator::kSide);
    layout->addWidget(m_icon);
    layout->addWidget(m_progress);
    layout->addWidget(m_field, 1);
    layout->addSpacing(4);
    layout->addWidget(m_send);
    row->setFocusProxy(m_field);
    return row;
}

QWidget *ChatInput::makeRetryRow()
{
    auto *retry = new TextButton(m_theme, u"Retry Local AI"_s, TextButton::Kind::Plain);
    retry->setFont(Fonts::interface(Fonts::kSmallSize, QFont::Medium));
    connect(retry, &QAbstractButton::clicked, this, [this, retry] {
        takeFocusFrom(*retry);
        m_composer.retry();
    });
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, kRetryTop, 0, kRetryBottom);
    layout->addWidget(retry);
    layout->addStretch();
    return row;
}

QWidget *ChatInput::makeClearRow()
{
    auto *clear = new SmallButton(m_theme, u"Clear Chat"_s, SmallButton::Kind::Bare, kSmallText, u"trash"_s);
    clear->setHelp(u"Clear Chat History"_s);
    connect(clear, &QAbstractButton::clicked, this, [this, clear] {
        takeFocusFrom(*clear);
        m_composer.clearChat();
    });
    return clear;
}

/// A button that goes by its own press leaves the focus to the field, or to the input until the field can have it.
void ChatInput::takeFocusFrom(const QWidget &button)
{
    if (button.hasFocus())
        (m_field->isEnabled() ? static_cast<QWidget *>(m_field) : this)->setFocus(Qt::OtherFocusReason);
}

void ChatInput::send()
{
    const ChatSubject subject = m_subject();
    m_composer.send(subject.document, subject.project);
}

void ChatInput::update()
{
    const ChatInputState state = m_composer.state();
    if (m_field->text() != m_composer.chatInput())
        m_field->setText(m_composer.chatInput());
    m_field->setPlaceholderText(state.placeholder);
    m_progress->setAccessibleName(state.placeholder);
    m_field->setAccessibleDescription(state.placeholder); // what the server is doing; the name hides the placeholder
    // A field that is disabled would hand its focus on to anything. The input keeps it, for when it can be used again.
    if (m_field->hasFocus() && !state.isFieldEnabled)
        setFocus(Qt::OtherFocusReason);
    m_field->setEnabled(state.isFieldEnabled);
    if (hasFocus() && state.isFieldEnabled)
        m_field->setFocus(Qt::OtherFocusReason);
    m_progress->setVisible(state.leadingIcon == LeadingIcon::Progress);
    m_icon->setVisible(state.leadingIcon != LeadingIcon::Progress);
    const bool isWarning = state.leadingIcon == LeadingIcon::Warning;
    m_icon->setSymbol(isWarning ? u"exclamationmark.triangle.fill"_s : u"sparkles"_s);
    m_icon->setSymbolSize(isWarning ? kWarningSize : kIconSize);
    m_icon->setOpacity(isWarning ? kWarningOpacity : 1);
    m_icon->setColorRole(isWarning ? ColorRole::RemovedText : ColorRole::Accent);
    m_send->setState(state);
    m_retryRow->setVisible(state.isOffline);
}

void ChatInput::updateStatus()
{
    m_status->setText(m_ai.contextStatus());
    m_status->setToolTip(statusToolTip(m_ai.contextStatus()));
    m_status->setVisible(!m_ai.contextStatus().isEmpty());
    // A live region: what is new in it is told wherever the focus is.
    m_status->setAccessibleName(m_ai.contextStatus());
    m_status->setAccessibleDescription(m_ai.contextStatus()); // in the place of the tool tip with its markup
    QAccessibleEvent alert(m_status, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace Tessaline
