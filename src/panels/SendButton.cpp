#include "panels/SendButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/Symbols.h"

#include <QtCore/QEasingCurve>
#include <QtCore/QVariantAnimation>
#include <QtGui/QPainter>
#include <QtWidgets/QStyle>

#include <cmath>
#include <numbers>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Kind = ChatInputState::SendButton;

constexpr double kReturnSize = 10;
constexpr double kStopSize = 15;       // of the outline; the square in it is 9 wide
constexpr double kBorderOpacity = 0.2; // of the accent
constexpr int kProgressSide = ProgressIndicator::kSide * 6 / 10;

constexpr int kTransition = 400;  // milliseconds, after which the spring is at rest
constexpr double kSmallest = 0.5; // of the new picture, when the transition begins

/// A spring with a response of 0.2 seconds and 0.6 of the damping that would keep it from swinging.
double spring(double progress)
{
    constexpr double kResponse = 0.2;
    constexpr double kDamping = 0.6;
    constexpr double kFrequency = 2 * std::numbers::pi / kResponse;
    const double seconds = progress * kTransition / 1000;
    const double swing = kFrequency * std::sqrt(1 - kDamping * kDamping);
    return 1 - std::exp(-kDamping * kFrequency * seconds) *
                   (std::cos(swing * seconds) + kDamping * kFrequency / swing * std::sin(swing * seconds));
}

} // namespace

SendButton::SendButton(const Theme &theme, QWidget *parent)
    : PlainButton(theme, parent), m_progress(new ProgressIndicator(theme, this)),
      m_transition(new QVariantAnimation(this))
{
    QEasingCurve curve;
    curve.setCustomType(spring);
    m_transition->setEasingCurve(curve);
    m_transition->setDuration(kTransition);
    m_transition->setStartValue(kSmallest);
    m_transition->setEndValue(1.0);
    connect(m_transition, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    setFixedSize(kSide, kSide);
    setCornerRadius(kSide / 2.0);
    m_progress->setFixedSize(kProgressSide, kProgressSide);
    m_progress->move((kSide - kProgressSide) / 2, (kSide - kProgressSide) / 2);
    setState({});
}

void SendButton::setState(const ChatInputState &state)
{
    const bool isOther = state.sendButton != m_state.sendButton;
    m_state = state;
    if (isOther)
        startTransition();
    setEnabled(state.isSendButtonEnabled);
    m_progress->setVisible(state.sendButton == Kind::Preparing);
    switch (state.sendButton) {
    case Kind::Send:
        setHelp(u"Send"_s);
        break;
    case Kind::Preparing:
        setHelp(u"Preparing"_s);
        break;
    case Kind::Stop:
        setHelp(u"Stop"_s);
        break;
    }
    update();
}

void SendButton::startTransition()
{
    if (isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0)
        m_transition->start();
}

void SendButton::paintEvent(QPaintEvent *)
{
    if (m_state.sendButton == Kind::Preparing)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_transition->state() == QAbstractAnimation::Running) {
        const QPointF centre = QRectF(rect()).center();
        const double scale = m_transition->currentValue().toDouble();
        painter.translate(centre);
        painter.scale(scale, scale);
        painter.translate(-centre);
    }
    const bool isStop = m_state.sendButton == Kind::Stop;
    QColor color = theme().color(ColorRole::TertiaryText);
    if (isStop || m_state.canSend) {
        const QColor accent = theme().color(ColorRole::Accent);
        painter.setPen(isStop ? QPen(Qt::NoPen) : QPen(withOpacity(accent, kBorderOpacity)));
        painter.setBrush(accent);
        painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
        painter.setPen(Qt::NoPen);
        painter.setBrush(stateTone());
        painter.drawEllipse(QRectF(rect()));
        color = theme().color(ColorRole::OnAccent);
    }
    Symbols::draw(painter, isStop ? u"stop.fill" : u"return", QRectF(rect()), isStop ? kStopSize : kReturnSize, color);
}

} // namespace Tessaline
